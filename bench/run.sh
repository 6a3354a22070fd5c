#!/bin/sh
# Builds the optimised programs and compares every writer with the public tool for its format.
# bench/run.sh [--pages N] [--rounds N] [CASE...]; without cases all of them run.
set -eu
cd "$(dirname "$0")/.."
. packaging/packages.sh

# shellcheck disable=SC2086
install_missing $build_packages $run_packages $test_packages

cmake --preset test >/dev/null
cmake --build --preset test --target paperline_bench >/dev/null
exec build/test/bench/paperline_bench "$@"
