#!/bin/sh
# Takes the pictures of docs/pictures from the built program, on a display of its own, with folders of
# its own and the software scanner. ./docs/make-pictures.sh [-d FOLDER] [-b BUILD] [scene...]
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
target=$top/docs/pictures
build=$top/build/release
while getopts b:d: option; do
    case $option in
    b) build=$OPTARG ;;
    d) target=$OPTARG ;;
    *) echo "usage: $0 [-d FOLDER] [-b BUILD] [scene...]" >&2; exit 2 ;;
    esac
done
shift $((OPTIND - 1))

. "$top/packaging/packages.sh"
# shellcheck disable=SC2086
install_missing $picture_packages
[ -x "$build/Paperline.app/Contents/MACOS/paperline" ] || {
    echo "There is no program in $build; ./run.sh builds it." >&2
    exit 1
}
PYTHONDONTWRITEBYTECODE=1 exec /usr/bin/python3 "$top/tests/gui/make_pictures.py" "$build/Paperline.app" "$target" "$@"
