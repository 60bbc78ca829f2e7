#!/usr/bin/env bash
# share.sh ROOT: tells how many lines the tests have for each hundred of what they try, and fails above the limit.
set -euo pipefail
limit=36
cd "$1"

lines() {
    find "$@" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.sh' -o -name '*.py' \) -exec cat {} + | wc -l
}
tests="$(lines tests)"
others="$(lines src demo benchmarks fuzzing)"
echo "$tests lines of tests to $others others: $((100 * tests / others)) %, and $limit % at most"
((tests > 0 && 100 * tests <= limit * others))
