#!/usr/bin/env bash
# Installs what building and running Tovira needs and this machine does not have yet. Nothing else.
#   --kiem-thu         also what the tests need
#   --nha-phat-trien   also what formatting, linting, fuzzing and the benchmarks need
set -euo pipefail

noi() { printf '• %s\n' "$*"; }

# Debian and Ubuntu. One line a purpose.
goiDebian=(
    g++ cmake ninja-build pkg-config
    libasio-dev libfast-float-dev libutf8proc-dev liburiparser-dev libspng-dev
    libturbojpeg0-dev libjpeg-dev libyuv-dev
    libxcb1-dev libxcb-shm0-dev libxcb-xtest0-dev libxcb-randr0-dev libxcb-xfixes0-dev libxcb-damage0-dev
    libxcb-xkb-dev libxcb-keysyms1-dev libxcb-composite0-dev libxcb-render0-dev libxcb-xinput-dev libxcb-screensaver0-dev libxcb-sync-dev
    libxkbcommon-dev
    libxkbcommon-x11-dev
    qt6-base-dev qt6-webengine-dev qt6-webengine-dev-tools qt6-webchannel-dev qt6-positioning-dev libgl-dev
    libgtest-dev nodejs
    xvfb xauth openbox xdotool xterm x11-utils x11-xserver-utils x11-apps imagemagick curl dbus
    fonts-dejavu-core fonts-noto-core
)
# The end-to-end test's browser and networks. Ubuntu has this browser only as a snap, which a driver cannot start.
goiDebianKiemThu=(iproute2)
! grep -qs '^ID=debian' /etc/os-release || goiDebianKiemThu+=(chromium chromium-driver)
# Second compiler, formatter, linter and fuzzer; the benchmarks' libraries; the peers they measure beside.
goiDebianPhatTrien=(
    clang clang-format clang-tidy libclang-rt-dev ccache
    libbenchmark-dev libsimdjson-dev libcairo2-dev
    nginx-light ffmpeg gstreamer1.0-tools gstreamer1.0-plugins-good
)
goiHomebrew=(cmake ninja pkgconf asio fast_float utf8proc uriparser libspng googletest node)
goiHomebrewPhatTrien=(clang-format llvm ccache google-benchmark simdjson cairo)

# The packages of a folder's package-lock.json, when that changed since they were last installed.
caiNpm() {
    local thuMuc=$1 dau=$1/node_modules/.da-cai
    if cmp -s "$thuMuc/package-lock.json" "$dau"; then
        return
    fi
    noi "Installing the packages of $thuMuc"
    npm ci --prefix "$thuMuc" --no-audit --no-fund --loglevel=error
    cp "$thuMuc/package-lock.json" "$dau"
}

caiDebian() {
    local thieu=() goi
    # Node.js from elsewhere brings its own npm, beside which Debian's cannot be installed.
    command -v npm >/dev/null || goiDebian+=(npm)
    for goi in "${goiDebian[@]}"; do
        dpkg-query -W -f='${Status}' "$goi" 2>/dev/null | grep -q 'ok installed' || thieu+=("$goi")
    done
    if [ ${#thieu[@]} -eq 0 ]; then
        noi "Every package is installed."
        return
    fi
    local quyen=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "These packages are missing and sudo is not there: ${thieu[*]}" >&2; exit 1; }
        quyen=(sudo)
    fi
    noi "Installing ${#thieu[@]} packages: ${thieu[*]}"
    "${quyen[@]}" apt-get update -qq
    "${quyen[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${thieu[@]}" >/dev/null
}

caiHomebrew() {
    command -v brew >/dev/null || { echo "Homebrew is missing: see https://brew.sh" >&2; exit 1; }
    local thieu=() goi
    for goi in "${goiHomebrew[@]}"; do
        brew list --formula "$goi" >/dev/null 2>&1 || thieu+=("$goi")
    done
    if [ ${#thieu[@]} -eq 0 ]; then
        noi "Every package is installed."
        return
    fi
    noi "Installing ${#thieu[@]} packages: ${thieu[*]}"
    brew install --quiet "${thieu[@]}"
}

case "${1:-}" in
    "") ;;
    --kiem-thu) goiDebian+=("${goiDebianKiemThu[@]}") ;;
    --nha-phat-trien)
        goiDebian+=("${goiDebianKiemThu[@]}" "${goiDebianPhatTrien[@]}")
        goiHomebrew+=("${goiHomebrewPhatTrien[@]}")
        ;;
    *) echo "Unknown option: $1" >&2; exit 2 ;;
esac

case "$(uname -s)" in
    Darwin) caiHomebrew ;;
    Linux)
        command -v apt-get >/dev/null || { echo "Only Debian and Ubuntu are set up by this script; the packages needed are listed in it." >&2; exit 1; }
        caiDebian
        ;;
    *) echo "Tovira runs on macOS and Linux." >&2; exit 1 ;;
esac

cd "$(dirname "$0")"
caiNpm giao-dien
caiNpm may-chu
