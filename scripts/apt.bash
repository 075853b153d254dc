# For scripts that fetch packages of another release or architecture than the machine's: to be sourced.
# The script that sources it has a function fail, and a folder of its own in $temporary.

zlog_packages=(libzlog1 libzlog-dev)
debian_keyring=/usr/share/keyrings/debian-archive-keyring.gpg

# Runs a command without its output; on failure prints the last line of it.
quietly() {
  local what=$1 log=$temporary/log
  shift
  if ! "$@" >"$log" 2>&1; then
    local last
    last=$(grep -E '^(E|W|dpkg):' "$log" | tail -n 1 || true)
    [ -n "$last" ] || last=$(tail -n 1 "$log")
    fail "$what failed: $last"
  fi
}

# The first Debian release from the one named on that has zlog.
release_with_zlog() {
  case "$1" in
    bookworm | trixie) echo trixie ;;
    *) fail "no source for ${zlog_packages[*]} is known on Debian '$1'" ;;
  esac
}

machine_release() {
  (. /etc/os-release && echo "${VERSION_CODENAME:-unknown}")
}

# private_apt FOLDER RELEASE ARCHITECTURE ARGUMENT...: runs apt-get for that release and architecture
# from the mirror in the machine's own sources, checking signatures. Its settings, lists and packages
# are in FOLDER; the machine's own sources, lists and architectures stay as they are.
private_apt() {
  local folder=$1 release=$2 architecture=$3 mirror option=""
  shift 3
  mkdir -p "$folder/lists/partial" "$folder/cache/archives/partial"
  [ -e "$folder/status" ] || : >"$folder/status"
  if [ ! -e "$folder/sources.list" ]; then
    mirror=$("$(dirname "${BASH_SOURCE[0]}")/mirror") || fail "no mirror to fetch packages from"
    [ ! -f "$debian_keyring" ] || option="[signed-by=$debian_keyring] "
    echo "deb ${option}$mirror $release main" >"$folder/sources.list"
  fi
  apt-get \
    -o "Dir::Etc::SourceList=$folder/sources.list" -o Dir::Etc::SourceParts=/dev/null \
    -o "Dir::State::Lists=$folder/lists" -o "Dir::Cache=$folder/cache" \
    -o "Dir::State::status=$folder/status" \
    -o "APT::Architecture=$architecture" -o "APT::Architectures=$architecture" \
    -o APT::Sandbox::User=root "$@"
}

# fetch_zlog FOLDER RELEASE ARCHITECTURE: leaves the packages of zlog in FOLDER. Debian 12 has none, but
# those of Debian 13 can be installed there.
fetch_zlog() {
  local folder=$1 release architecture=$3
  release=$(release_with_zlog "$2")
  quietly "reading the package list of Debian $release" \
    private_apt "$folder" "$release" "$architecture" update
  (cd "$folder" && quietly "fetching ${zlog_packages[*]} of Debian $release" \
    private_apt "$folder" "$release" "$architecture" download "${zlog_packages[@]}")
}
