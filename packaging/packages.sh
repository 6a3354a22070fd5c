# Debian packages by purpose; sourced by run.sh and test.sh.

build_packages="
    g++ cmake ninja-build pkg-config ccache
    qt6-base-dev qt6-pdf-dev libgl-dev
    libqpdf-dev libjpeg-dev libpng-dev libdeflate-dev libgif-dev libtiff-dev libexif-dev
    libexpat1-dev libicu-dev libsane-dev
"

# What the program needs to show its window and reach scanners.
run_packages="libsane1 fonts-dejavu-core qt6-qpa-plugins qt6-translations-l10n"

# What drives and photographs a window on a display of its own.
picture_packages="xvfb dbus at-spi2-core python3-pyatspi xdotool imagemagick fonts-noto-cjk"

# Test tools; each checks files that we write with code that we did not.
test_packages="
    libgtest-dev libgmock-dev git
    $picture_packages xauth x11-utils
    sane-utils netpbm libjpeg-turbo-progs libtiff-tools qpdf poppler-utils pngcheck
    libimage-exiftool-perl giflib-tools jpeginfo img2pdf locales
"

# install_missing PACKAGE...: asks the package system only for what is not there.
install_missing() {
    missing=""
    for package in "$@"; do
        status=$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null || true)
        [ "$status" = "ii " ] || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    as_root=""
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "These packages are missing and sudo is not here:$missing" >&2; return 1; }
        as_root="sudo"
    fi
    echo "Installing:$missing" >&2
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq >&2
    # shellcheck disable=SC2086
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >&2
}
