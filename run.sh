#!/bin/sh
# Builds what is missing and starts the program. Words after it go to the program.
# Without a display and without words, three pages are scanned with the software scanner.
set -eu
cd "$(dirname "$0")"
. packaging/packages.sh

# shellcheck disable=SC2086
install_missing $build_packages $run_packages

program=build/release/bin/paperline
log=build/release.log
mkdir -p build
if ! { { [ -f build/release/build.ninja ] || cmake --preset release; } && cmake --build --preset release; } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "The build failed; all of it is in $log" >&2
    exit 1
fi

if [ $# -eq 0 ] && [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    echo "No display here: scanning three pages with the software scanner." >&2
    exec "$program" scan --source "Software Scanner" --option count=3
fi
exec "$program" "$@"
