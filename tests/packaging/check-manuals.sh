#!/bin/sh
# The manual pages: clean for man (no warning, as lintian reads them), and kxplate's page names
# every command and option that kxplate's own help knows, and every exit status; kxcpl's page
# every option of kxcpl --help.
# Usage: check-manuals.sh KXPLATE KXCPL KXCPL_PAGE KXPLATE_PAGE
set -u
kxplate=$1 kxcpl=$2 kxcpl_page=$3 kxplate_page=$4
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

for page in "$kxcpl_page" "$kxplate_page"; do
    warnings=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 \
        man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || fail "$page: $warnings"
done

# The options a help text lists, one a line: "--name" or "-x".
options() { grep -oE '^  (-[a-z], )?--[a-z-]+' | grep -oE -- '--[a-z-]+'; }
documented() { grep -q -- "$(echo "$1" | sed 's/-/\\\\-/g')" "$2"; }

for command in list info capture zero noise fit report; do
    grep -qE "^\.BI? $command( |$)" "$kxplate_page" || fail "kxplate.1 does not describe $command"
    for option in $("$kxplate" "$command" --help | options); do
        documented "$option" "$kxplate_page" || fail "kxplate.1 lacks $command $option"
    done
done
for status in 0 2 3 4 130 143; do
    grep -q "^\.B.* $status\b\|^\.B $status$" "$kxplate_page" || fail "kxplate.1 lacks status $status"
done
for option in $("$kxcpl" --help 2>/dev/null | options); do
    documented "$option" "$kxcpl_page" || fail "kxcpl.1 lacks $option"
done

[ "$failures" -eq 0 ] && echo "manual pages complete"
exit "$failures"
