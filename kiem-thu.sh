#!/usr/bin/env bash
# Sets up, builds and runs every test, those that need a display on a virtual one.
# An optional argument names another preset: ./kiem-thu.sh asan
set -euo pipefail
cd "$(dirname "$0")"

noi() { printf '• %s\n' "$*"; }

noi "Installing what is missing"
./cai-dat.sh --kiem-thu
macDinh=dev
[ "$(uname -s)" = Darwin ] && macDinh=macos
preset=${1:-$macDinh}
noi "Configuring ($preset)"
nhatKy=$(mktemp)
trap 'rm -f "$nhatKy"' EXIT
cmake --preset "$preset" -DTOVIRA_KIEM_THU=ON >"$nhatKy" 2>&1 || { cat "$nhatKy"; exit 1; }
noi "Building"
cmake --build "build/$preset" >"$nhatKy" 2>&1 || { cat "$nhatKy"; exit 1; }
# Containers run as root, where the web engine cannot start its sandbox; only the tests' pages run there.
if [ "$(id -u)" -eq 0 ]; then
    noi "Started by root: the web engine of the tests runs without its sandbox"
    export QTWEBENGINE_DISABLE_SANDBOX=1
fi
noi "Testing"
ctest --test-dir "build/$preset" --no-tests=error --output-on-failure -j "$(getconf _NPROCESSORS_ONLN)"
