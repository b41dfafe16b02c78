# Completion of vellumor for fish.

complete -c vellumor -f
complete -c vellumor -n __fish_use_subcommand -a status -d 'Print what is known of each account'
complete -c vellumor -l help -s h -d 'Print a help text'
complete -c vellumor -l version -d 'Print the version'
complete -c vellumor -n '__fish_seen_subcommand_from status' -l json -d 'Print one JSON object'
complete -c vellumor -n '__fish_seen_subcommand_from status' -l waybar -d 'Print one line for a module of waybar'
complete -c vellumor -n '__fish_seen_subcommand_from status' -l format -x -d 'Print each account in this form'
complete -c vellumor -n '__fish_seen_subcommand_from status' -l separator -x -d 'What stands between two accounts'
complete -c vellumor -n '__fish_seen_subcommand_from status' -l account -x -d 'Only this account' \
    -a '(vellumor status --format "{name}" 2>/dev/null)'
complete -c vellumor -n '__fish_seen_subcommand_from status' -l watch -d 'Go on, with a line at each change'
