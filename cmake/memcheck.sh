#!/usr/bin/env bash
# memcheck.sh PROGRAM ARGUMENT...: runs a program under valgrind's memcheck; a leak is an error. What
# is found is appended to build/valgrind/errors, too: a test may take any exit status for a refusal.
#
# The preset "valgrind" runs the tests with it, but not all: programs under valgrind cannot be traced,
# nor does their posix_spawn tell that a program cannot be started; packaging_test builds its kwbatch
# anew. A program that only lists its tests, as the build asks of it, runs by itself: that is quicker.
[[ $2 != --gtest_list_tests ]] || exec "$@"
root=${BASH_SOURCE[0]%/*}/..
exec valgrind --quiet --log-fd=9 --trace-children=no --error-exitcode=99 --leak-check=full \
  --show-leak-kinds=definite,possible --errors-for-leak-kinds=definite,possible \
  --suppressions="$root/tests/valgrind.supp" "$@" 9>>"$root/build/valgrind/errors"
