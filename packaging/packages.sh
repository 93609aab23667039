# What the build and the tests need from Debian 12; sourced by `run` and `check`.

MIRTA_PACKAGES="build-essential cmake ninja-build ccache qtbase5-dev qtbase5-private-dev qtbase5-dev-tools fonts-dejavu-core libxcb-xtest0-dev libxcb-keysyms1-dev libpcap-dev libqwt-qt5-dev"
# A panel for the tests: an X server without a screen, a window manager. What names the fields of a capture.
MIRTA_TEST_PACKAGES="xvfb openbox util-linux tshark"
# libFuzzer and the sanitizers that go with it.
MIRTA_FUZZ_PACKAGES="clang libclang-rt-dev"
# A bare Debian to prove the package in.
MIRTA_PACKAGING_PACKAGES="dpkg-dev file iproute2 lintian mmdebstrap procps util-linux"
# Other charts, which the strip chart is measured against.
MIRTA_BENCH_PACKAGES="libqcustomplot-dev"

# Installs what is missing, as root or with sudo: install_missing [PACKAGE ...] besides those of the build. Says
# nothing when nothing is.
install_missing() {
    missing=""
    for package in $MIRTA_PACKAGES "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing="$missing $package"
    done
    [ -z "$missing" ] && return 0
    echo "Installing:$missing"
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    export DEBIAN_FRONTEND=noninteractive
    # shellcheck disable=SC2086
    $sudo apt-get update -qq && $sudo apt-get install -y -qq --no-install-recommends $missing >/dev/null
}

# Configures and builds a preset: build_preset NAME [TARGET ...]
build_preset() {
    preset=$1
    shift
    cmake --preset "$preset" >/dev/null || return 1
    if [ $# -gt 0 ]; then
        cmake --build --preset "$preset" --target "$@"
    else
        cmake --build --preset "$preset"
    fi
}
