#!/bin/sh
# Builds the optimised programs and prints every measurement as Markdown tables.
# bench/run.sh [--pages N] [--rounds N] [CASE...]; without cases all of them run: those of
# paperline_bench, then device (scan_bench.py) and window (window_bench.py).
set -eu
cd "$(dirname "$0")/.."
. packaging/packages.sh

# shellcheck disable=SC2086
install_missing $build_packages $run_packages $test_packages

cmake --preset test >/dev/null
cmake --build --preset test --target paperline_bench >/dev/null

device="" window="" encoders="" words=""
for word in "$@"; do
    case $word in
        device) device=yes ;;
        window) window=yes ;;
        *)
            case $word in [a-z]*) encoders=yes ;; esac
            words="$words $word"
            ;;
    esac
done
[ -n "$device$window$encoders" ] || device=yes window=yes encoders=yes

# shellcheck disable=SC2086
[ -z "$encoders" ] || build/test/bench/paperline_bench $words
[ -z "$device" ] || { echo; /usr/bin/python3 bench/scan_bench.py build/test; }
[ -z "$window" ] || { echo; /usr/bin/python3 bench/window_bench.py build/test 2>/dev/null; }
