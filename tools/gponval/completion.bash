# Completes the command line of gponval in bash.

_gponval_options() {
  local inputs="--running --change --set --create --replace --delete --remove --candidate"
  inputs+=" --input-format"
  local validation="--plugin --confirm --trace --stats --format"
  case $1 in
    commit)
      echo "$inputs --card $validation --only --all --changes --save --state --label --comment --help"
      ;;
    diff) echo "$inputs --format --help" ;;
    request) echo "$inputs --card $validation --value --help" ;;
    load) echo "--running --input-format --card --fit --plugin --format --help" ;;
    points) echo "--plugin --format --help" ;;
    generate)
      echo "--size --seed --faults --links --xgs-links --onus --service-ports --bandwidth-profiles --line-profiles --gems" \
        "--service-profiles --rg-profiles --tr069-profiles --sip-profiles --media-profiles --help"
      ;;
    serve)
      echo "--running --state --import --if-new --keep --card --input-format --plugin --socket --warnings --allow" \
        "--ssh --authorized-keys --sshd --log --log-level --log-config --max-message" \
        "--max-sessions --hello-timeout --filter-time --help"
      ;;
    netconf) echo "--socket --help" ;;
    history) echo "--last --format --help" ;;
    export) echo "--at --json --help" ;;
    rollback) echo "--card --label --comment $validation --all --help" ;;
    state) echo "--help" ;;
    "state check") echo "--format --help" ;;
    "state create") echo "--running --input-format --help" ;;
    *) echo "--help --version" ;;
  esac
}

_gponval_requests() {
  "${COMP_WORDS[0]}" points 2>/dev/null | awk '!seen[$1]++ { print $1 }'
}

# Offers the words that begin with the text.
_gponval_offer() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

# Offers the requests for the last of a list separated by commas.
_gponval_offer_list() {
  local given=""
  [[ $1 != *,* ]] || given=${1%,*},
  compopt -o nospace
  mapfile -t COMPREPLY < <(compgen -P "$given" -W "$(_gponval_requests)" -- "${1##*,}")
}

_gponval_offer_files() {
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

# The file that --running names on the command line.
_gponval_running() {
  local at
  for ((at = 1; at < COMP_CWORD; ++at)); do
    [[ ${COMP_WORDS[at]} == --running ]] || continue
    [[ ${COMP_WORDS[at + 1]} != = ]] || ((++at))
    local file=${COMP_WORDS[at + 1]//[\'\"\\]/}
    [[ ! -f ${file/#\~/$HOME} ]] || echo "${file/#\~/$HOME}"
    return
  done
}

# _gponval_offer_paths TEXT [OPTION]: names of the model, and entries of the running configuration.
_gponval_offer_paths() {
  local typed=$1 quote="" running
  shift
  case $typed in
    [\'\"]*) quote=${typed:0:1} typed=${typed:1} ;;
    *) typed=${typed//\\/} ;;
  esac
  running=$(_gponval_running)
  compopt -o nospace
  mapfile -t COMPREPLY < <("${COMP_WORDS[0]}" complete-path "$@" \
    ${running:+--running "$running"} -- "$typed" 2>/dev/null)
  [[ -n $quote ]] || COMPREPLY=("${COMPREPLY[@]// /\\ }")
  # After a single match bash would close the quotes, but most paths go on.
  ((${#COMPREPLY[@]} != 1)) || COMPREPLY+=("${COMPREPLY[0]}...")
}

_gponval_offer_value() {
  case $1 in
    --running | --change | --candidate | --card | --plugin | --save | --state | --socket | --authorized-keys | \
      --sshd | --log | --log-config) _gponval_offer_files "$2" ;;
    --set | --create | --replace) _gponval_offer_paths "$2" --values ;;
    --delete | --remove) _gponval_offer_paths "$2" ;;
    --size) _gponval_offer "full town" "$2" ;;
    --faults) _gponval_offer "all list" "$2" ;;
    --log-level) _gponval_offer "error warning info" "$2" ;;
    --only) _gponval_offer_list "$2" ;;
    --confirm) _gponval_offer "yes no ask" "$2" ;;
    --trace) _gponval_offer "off flow entry detail" "$2" ;;
    --format) _gponval_offer "text json" "$2" ;;
    --warnings) _gponval_offer "accept reject report" "$2" ;;
    --allow) mapfile -t COMPREPLY < <(compgen -u -- "$2") ;;
    --input-format) _gponval_offer "xml json" "$2" ;;
  esac
}

_gponval() {
  local command=${COMP_WORDS[1]} current=${COMP_WORDS[COMP_CWORD]}
  local previous=${COMP_WORDS[COMP_CWORD - 1]}
  # In --option=value the equals sign is a word of its own.
  [[ $previous != = ]] || previous=${COMP_WORDS[COMP_CWORD - 2]}
  [[ $current != = ]] || current=""

  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _gponval_offer "commit diff request points load generate serve netconf history export rollback \
      state --help --version" \
      "$current"
  elif [[ $previous == --* && ! $previous =~ ^--(stats|all|changes|import|if-new|json|help|version)$ ]]; then
    _gponval_offer_value "$previous" "$current"
  elif [[ $previous == request && $current != -* ]] && ((COMP_CWORD == 2)); then
    _gponval_offer "$(_gponval_requests)" "$current"
  elif [[ $command == request && $current != -* ]] && ((COMP_CWORD == 3)); then
    _gponval_offer_paths "$current"
  elif [[ $command == state && $current != -* ]] && ((COMP_CWORD == 2)); then
    _gponval_offer "create check" "$current"
  elif [[ $command =~ ^(history|export|rollback)$ && $current != -* ]] && ((COMP_CWORD == 2)) ||
    [[ $command == state && $current != -* ]] && ((COMP_CWORD == 3)); then
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  elif [[ $previous == /* ]]; then
    : # a value after a path
  else
    [[ $command != state || ${COMP_WORDS[2]} == -* ]] || command+=" ${COMP_WORDS[2]}"
    _gponval_offer "$(_gponval_options "$command")" "$current"
  fi
}

complete -F _gponval gponval
