#!/bin/sh
# Fails, naming the lines, when anything under the given source folder reads the wall clock or
# today's date, waits on it, or times itself by it, except the real clock (support/QtClock.cpp):
# everything else takes its time from kx::Clock, so that the tests' manual clock and the
# bench's faster clock see the same program.
src=${1:?usage: no_wall_clock.sh <source folder>}
pattern='QDateTime::current|QDate::current|QTime::current|QElapsedTimer|QDeadlineTimer|QTimer|'\
'steady_clock|system_clock|high_resolution_clock|[a-z_]+_clock::now|std::time\(|'\
'[^_[:alnum:].>:]time\(|std::clock\(|gettimeofday|clock_gettime|localtime|sleep_for|'\
'sleep_until|usleep|QThread::[a-z]*sleep'
found=$(grep -rnE "$pattern" "$src" --include='*.cpp' --include='*.h' |
        grep -v "^$src/support/QtClock\.cpp:")
if [ -n "$found" ]; then
    echo "The wall clock read outside the real clock; take the time from kx::Clock:"
    echo "$found"
    exit 1
fi
