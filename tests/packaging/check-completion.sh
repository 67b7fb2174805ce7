#!/bin/bash
# The bash completion of kxplate and kxcpl, as bash runs it for a line typed so far.
# Usage: check-completion.sh COMPLETION_DIR PROGRAM_DIR
set -u
completion=$1
export PATH="$2:$PATH"
source "$completion/kxplate"
source "$completion/kxcpl"
failures=0

# expect "LINE" "WORDS": completing LINE (the last word is the one being typed) offers WORDS.
expect() {
    local line=$1 wanted=$2
    read -r -a COMP_WORDS <<<"$line"
    [[ $line == *" " ]] && COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    "_${COMP_WORDS[0]}"
    local offered="${COMPREPLY[*]}"
    if [[ $offered != "$wanted" ]]; then
        echo "FAIL: '$line' offers '$offered', not '$wanted'"
        failures=$((failures + 1))
    fi
}

expect "kxplate c" "capture"
expect "kxplate -" "--scenario --speed --help --version"
expect "kxplate zero 20418 --" "--seconds --write --json --scenario --speed --help"
expect "kxplate --speed 10" "10 100 1000"
expect "kxplate --speed 100 n" "noise"
expect "kxplate capture 20418 --signals b" "bridges"
expect "kxplate -o out.txt capture 20418 --f" "--frequency"
expect "kxplate fit a.cal --engine " "builtin octave"
expect "kxplate info " "20418 11093"
expect "kxplate info 20418 " ""
expect "kxcpl --b" "--bench"
expect "kxcpl --speed 1" "1 10 100 1000"

[ "$failures" -eq 0 ] && echo "completion complete"
exit "$failures"
