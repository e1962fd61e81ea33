#!/bin/bash
# manual_page.sh PROGRAM MANUAL_PAGE COMPLETION: every command and option that the program's help
# names has its place in the manual page, and the completion offers it.
set -eu
program=$1 page=$(sed 's/\\-/-/g' "$2")
# shellcheck source=/dev/null
. "$3"
faults=0

offered() {  # WORD ...: what the completion offers for a command line
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  _keltrun2 "$program"
  printf '%s\n' "${COMPREPLY[@]-}"
}

check() {  # NAME OFFERED
  printf '%s\n' "$page" | grep -q -e "$1\\b" || { echo "not in the manual page: $1"; faults=1; }
  printf '%s\n' "$2" | grep -qx -e "$1" || { echo "not completed: $1"; faults=1; }
}

commands=$("$program" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
[ -n "$commands" ]
offered_commands=$(offered keltrun2 '')
for command in $commands; do
  check "$command" "$offered_commands"
  offered_options=$(offered keltrun2 "$command" --)
  options=$("$program" "$command" --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | sed 's/.*--/--/')
  for option in $options; do
    check "$option" "$offered_options"
  done
done
offered_modes=$(offered keltrun2 site --charts '')
for mode in all map; do
  printf '%s\n' "$offered_modes" | grep -qx $mode || { echo "--charts lacks $mode"; faults=1; }
done
exit $faults
