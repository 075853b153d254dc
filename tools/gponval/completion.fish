# Completes the options and requests of gponval in fish.

function __gponval_requests
    gponval points 2>/dev/null | awk '!seen[$1]++ { print $1 }'
end

function __gponval_needs_request
    set -l words (commandline -opc)
    test (count $words) -eq 2; and test $words[2] = request
end

function __gponval_needs_state_command
    set -l words (commandline -opc)
    test (count $words) -eq 2; and test $words[2] = state
end

complete -c gponval -f
complete -c gponval -n __fish_use_subcommand -a commit -d 'Commit a change'
complete -c gponval -n __fish_use_subcommand -a diff -d 'Print how configurations differ'
complete -c gponval -n __fish_use_subcommand -a request -d 'Run one request'
complete -c gponval -n __fish_use_subcommand -a points -d 'List the validation points'
complete -c gponval -n __fish_use_subcommand -a load -d 'Print what a card carries'
complete -c gponval -n __fish_use_subcommand -a generate -d 'Write the configuration of a card'
complete -c gponval -n __fish_use_subcommand -a serve -d 'Offer a card to NETCONF clients'
complete -c gponval -n __fish_use_subcommand -a netconf -d 'Connect to a card that is served'
complete -c gponval -n __fish_use_subcommand -a history -d 'List the commits of a state'
complete -c gponval -n __fish_use_subcommand -a export -d 'Write the configuration of a state'
complete -c gponval -n __fish_use_subcommand -a rollback -d 'Commit the way back to an earlier commit'
complete -c gponval -n __fish_use_subcommand -a state -d 'Make a state'
complete -c gponval -n __gponval_needs_state_command -a create -d 'Make a state'
complete -c gponval -n __fish_use_subcommand -l version -d 'Print the version'
complete -c gponval -l help -s h -d 'Print the help'
complete -c gponval -n __gponval_needs_request -a '(__gponval_requests)'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request load serve create' -l running -r -F -d 'The committed configuration'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request' -l change -r -F -d 'An edit of it'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request' -l set -x -d 'Set a node'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request' -l create -x -d 'Create a node'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request' -l replace -x -d 'Replace a node'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request' -l delete -x -d 'Delete a node'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request' -l remove -x -d 'Remove a node'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request' -l candidate -r -F -d 'The whole new configuration'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request load serve create' -l input-format -x -a 'xml json' -d 'How inputs without a known ending are read'
complete -c gponval -n '__fish_seen_subcommand_from commit request load serve rollback' -l card -r -F -d 'What the card can do'
complete -c gponval -n '__fish_seen_subcommand_from commit request points load serve rollback' -l plugin -r -F -d 'The validation plug-in'
complete -c gponval -n '__fish_seen_subcommand_from commit request rollback' -l confirm -x -a 'yes no ask' -d 'The answer to warnings'
complete -c gponval -n '__fish_seen_subcommand_from commit request rollback' -l trace -x -a 'off flow entry detail' -d 'Write the trace'
complete -c gponval -n '__fish_seen_subcommand_from commit request rollback' -l stats -d 'Print the number of platform calls'
complete -c gponval -n '__fish_seen_subcommand_from commit diff request points load history rollback' -l format -x -a 'text json' -d 'How the answer is printed'
complete -c gponval -n '__fish_seen_subcommand_from commit' -l only -x -a '(__gponval_requests)' -d 'Call these validators only'
complete -c gponval -n '__fish_seen_subcommand_from commit rollback' -l all -d 'Go on after an error'
complete -c gponval -n '__fish_seen_subcommand_from commit' -l changes -d 'Print what the commit changes'
complete -c gponval -n '__fish_seen_subcommand_from commit' -l save -r -F -d 'Write the new configuration here'
complete -c gponval -n '__fish_seen_subcommand_from request' -l value -x -d 'The new value of the leaf'
complete -c gponval -n '__fish_seen_subcommand_from load' -l fit -x -d 'How many more ONUs with this line profile'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l links -x -d 'Number of links'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l xgs-links -x -d 'Number of xgs links'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l onus -x -d 'Number of onus'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l service-ports -x -d 'Number of service ports'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l bandwidth-profiles -x -d 'Number of bandwidth profiles'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l line-profiles -x -d 'Number of line profiles'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l gems -x -d 'Number of gems'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l service-profiles -x -d 'Number of service profiles'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l rg-profiles -x -d 'Number of rg profiles'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l tr069-profiles -x -d 'Number of tr069 profiles'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l sip-profiles -x -d 'Number of sip profiles'
complete -c gponval -n '__fish_seen_subcommand_from generate' -l media-profiles -x -d 'Number of media profiles'
complete -c gponval -n '__fish_seen_subcommand_from serve netconf' -l socket -r -F -d 'The socket'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l warnings -x -a 'accept reject report' -d 'What a commit does with warnings'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l allow -x -a '(__fish_complete_users)' -d 'Who else may connect'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l ssh -x -d 'Where to listen for SSH clients'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l authorized-keys -r -F -d 'Who may log in'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l sshd -r -F -d 'The OpenSSH server'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l log -r -F -d 'Where the log goes'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l log-level -x -a 'error warning info' -d 'The least that is logged'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l log-config -r -F -d 'A configuration of zlog'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l max-message -x -d 'The longest message in MiB'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l max-sessions -x -d 'Number of sessions'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l hello-timeout -x -d 'Seconds for the hello'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l filter-time -x -d 'Seconds for a filter'
complete -c gponval -n '__fish_seen_subcommand_from serve commit' -l state -r -F -d 'Where commits are kept'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l import -d 'Replace what an existing state has'
complete -c gponval -n '__fish_seen_subcommand_from serve' -l keep -x -d 'How much of the history is kept'
complete -c gponval -n '__fish_seen_subcommand_from history export rollback create' -F
complete -c gponval -n '__fish_seen_subcommand_from commit rollback' -l label -x -d 'A short name of the commit'
complete -c gponval -n '__fish_seen_subcommand_from commit rollback' -l comment -x -d 'What the commit is for'
complete -c gponval -n '__fish_seen_subcommand_from history' -l last -x -d 'Number of commits'
complete -c gponval -n '__fish_seen_subcommand_from export' -l at -x -d 'After this commit'
complete -c gponval -n '__fish_seen_subcommand_from export' -l json -d 'As JSON instead of XML'
