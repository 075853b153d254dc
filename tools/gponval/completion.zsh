#compdef gponval
# Completes the options and requests of gponval in zsh.

_gponval_requests() {
  local -a requests
  requests=(${(u)${(f)"$(gponval points 2>/dev/null | awk '{ print $1 }')"}})
  compadd "$@" -a requests
}

_gponval() {
  local -a configuration validation remarks
  configuration=(
    '--running[the committed configuration]:file:_files'
    '*--change[an edit of it]:file:_files'
    '*--set[set a node]:path: '
    '*--create[create a node]:path: '
    '*--replace[replace a node]:path: '
    '*--delete[delete a node]:path: '
    '*--remove[remove a node]:path: '
    '--candidate[the whole new configuration]:file:_files'
    '--input-format[how inputs without a known ending are read]:format:(xml json)'
    '--format[how the answer is printed]:format:(text json)'
    '(-h --help)'{-h,--help}'[print the help]'
  )
  validation=(
    '--card[what the card can do]:file:_files'
    '--plugin[the validation plug-in]:file:_files'
    '--confirm[the answer to warnings]:answer:(yes no ask)'
    '--trace[write the trace]:level:(off flow entry detail)'
    '--stats[print the number of platform calls]'
  )
  remarks=(
    '--label[a short name of the commit]:text: '
    '--comment[what the commit is for]:text: '
  )
  if ((CURRENT == 2)); then
    compadd commit diff request points load generate serve netconf history export rollback state \
      --help --version
    return
  fi
  local command=$words[2]
  shift words
  ((CURRENT--))
  case $command in
    commit)
      _arguments $configuration $validation \
        '*--only[call these validators only]:request:_gponval_requests' \
        '--all[go on after an error]' \
        '--changes[print what the commit changes]' \
        '--save[write the new configuration here]:file:_files' \
        '--state[commit to this state]:file:_files' $remarks
      ;;
    diff) _arguments $configuration ;;
    request)
      _arguments $configuration $validation '--value[the new value of the leaf]:value: ' \
        '1:request:_gponval_requests' '2:path: '
      ;;
    points)
      _arguments '--plugin[the validation plug-in]:file:_files' \
        '--format[how the list is printed]:format:(text json)' \
        '(-h --help)'{-h,--help}'[print the help]'
      ;;
    load)
      _arguments '--running[the committed configuration]:file:_files' \
        '--input-format[how inputs without a known ending are read]:format:(xml json)' \
        '--card[what the card can do]:file:_files' \
        '--fit[how many more ONUs with this line profile]:line profile: ' \
        '--plugin[the validation plug-in]:file:_files' \
        '--format[how the load is printed]:format:(text json)' \
        '(-h --help)'{-h,--help}'[print the help]'
      ;;
    history)
      _arguments '--last[list so many commits only]:number: ' \
        '--format[how the answer is printed]:format:(text json)' \
        '(-h --help)'{-h,--help}'[print the help]' '1:state:_files' '2:commit: '
      ;;
    export)
      _arguments '--at[after this commit]:number: ' '--json[as JSON instead of XML]' \
        '(-h --help)'{-h,--help}'[print the help]' '1:state:_files'
      ;;
    rollback)
      _arguments $validation $remarks '--all[go on after an error]' \
        '--format[how the answer is printed]:format:(text json)' \
        '(-h --help)'{-h,--help}'[print the help]' '1:state:_files' '2:commit: '
      ;;
    state)
      if ((CURRENT == 2)); then
        compadd create check --help
        return
      fi
      if [[ $words[2] == check ]]; then
        shift words
        ((CURRENT--))
        _arguments '--format[how the answer is printed]:format:(text json)' \
          '(-h --help)'{-h,--help}'[print the help]' '1:state:_files'
        return
      fi
      shift words
      ((CURRENT--))
      _arguments '--running[the configuration to begin with]:file:_files' \
        '--input-format[how inputs without a known ending are read]:format:(xml json)' \
        '(-h --help)'{-h,--help}'[print the help]' '1:state:_files'
      ;;
    serve)
      _arguments '--running[the committed configuration]:file:_files' \
        '--state[where commits are kept]:file:_files' \
        '--if-new[use --running for a new state only]' \
        '--import[replace what an existing state has]' \
        '--keep[how much of the history is kept]:commits or days: ' \
        '--input-format[how inputs without a known ending are read]:format:(xml json)' \
        '--card[what the card can do]:file:_files' \
        '--plugin[the validation plug-in]:file:_files' \
        '--socket[where to listen]:file:_files' \
        '--warnings[what a commit does with warnings]:answer:(accept reject report)' \
        '--allow[who else may connect]:user:_users' \
        '--ssh[where to listen for SSH clients]:address: ' \
        '--authorized-keys[who may log in]:file:_files' '--sshd[the OpenSSH server]:file:_files' \
        '(--log-config)--log[where the log goes]:file:_files' \
        '(--log-config)--log-level[the least that is logged]:level:(error warning info)' \
        '(--log --log-level)--log-config[a configuration of zlog]:file:_files' \
        '--max-message:number: ' \
        '--max-sessions:number: ' '--hello-timeout:number: ' '--filter-time:number: ' \
        '(-h --help)'{-h,--help}'[print the help]'
      ;;
    netconf)
      _arguments '--socket[where to connect]:file:_files' \
        '(-h --help)'{-h,--help}'[print the help]'
      ;;
    generate)
      _arguments '--size[the numbers that are not given]:size:(full town)' \
        '--seed[makes cards that differ]:number: ' \
        '--faults[known faults, separated by commas]:faults:(all list)' \
        '--links:number: ' '--xgs-links:number: ' '--onus:number: ' \
        '--service-ports:number: ' '--bandwidth-profiles:number: ' '--line-profiles:number: ' \
        '--gems:number: ' '--service-profiles:number: ' '--rg-profiles:number: ' \
        '--tr069-profiles:number: ' '--sip-profiles:number: ' '--media-profiles:number: ' \
        '(-h --help)'{-h,--help}'[print the help]'
      ;;
  esac
}

_gponval "$@"
