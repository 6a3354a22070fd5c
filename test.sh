#!/bin/sh
# Installs what is missing, builds everything with warnings as errors, and runs every test.
# ./test.sh [ctest options]; PAPERLINE_SANITIZERS=1 adds a round under the sanitizers.
set -eu
cd "$(dirname "$0")"
. packaging/packages.sh

# shellcheck disable=SC2086
install_missing $build_packages $run_packages $test_packages

cmake --preset test
cmake --build --preset test
ctest --test-dir build/test --output-on-failure -j "$(nproc)" -LE device "$@"
# Scanners and their watchdogs have clocks of their own: one at a time.
ctest --test-dir build/test --output-on-failure -L device "$@"

# A second round under the address and undefined-behaviour sanitizers, on request: it takes as long again.
if [ -n "${PAPERLINE_SANITIZERS:-}" ]; then
    cmake --preset asan
    cmake --build --preset asan
    export LSAN_OPTIONS="suppressions=$PWD/tests/leaks-of-others.supp"
    ctest --test-dir build/asan --output-on-failure -j "$(nproc)" -L unit "$@"
    ctest --test-dir build/asan --output-on-failure -L device "$@"
fi
