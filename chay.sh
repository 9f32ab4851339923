#!/usr/bin/env bash
# Sets up, builds and starts Tovira. Arguments go to the program, for example --server https://may-chu.example
# Without a display it starts a virtual one, writes a screenshot there and says how to look at it.
set -euo pipefail
cd "$(dirname "$0")"

noi() { printf '• %s\n' "$*"; }

# The second half of a start without a display: $2 is the program, the rest its arguments.
chayTrongManHinhAo() {
    local chuongTrinh=$1 anh thuMuc tienTrinh han
    shift
    thuMuc=$(mktemp -d)
    anh=$(mktemp --suffix=.png "${TMPDIR:-/tmp}/tovira-XXXXXX")
    TOVIRA_TEP_SAN_SANG=$thuMuc/san-sang "$chuongTrinh" "$@" &
    tienTrinh=$!
    trap 'kill "$tienTrinh" 2>/dev/null; wait "$tienTrinh" 2>/dev/null; rm -rf "$thuMuc"' EXIT
    trap 'exit 130' INT TERM
    noi "Waiting for the page to load"
    han=$((SECONDS + 60))
    until [ -e "$thuMuc/san-sang" ]; do
        kill -0 "$tienTrinh" 2>/dev/null || { echo "Tovira ended before its page had loaded" >&2; exit 1; }
        [ $SECONDS -lt $han ] || { echo "The page has not loaded within 60 s" >&2; exit 1; }
        sleep 0.2
    done
    # One more moment, so that the first picture is on the screen.
    sleep 1
    import -window root "$anh"
    noi "Tovira is running on display $DISPLAY; screenshot: $anh"
    noi "Another look: DISPLAY=$DISPLAY import -window root picture.png"
    noi "Live, from another machine: x11vnc -localhost -display $DISPLAY behind an SSH tunnel to port 5900"
    noi "Ctrl+C ends it"
    wait "$tienTrinh"
}
if [ "${1:-}" = --trong-man-hinh-ao ]; then
    shift
    chayTrongManHinhAo "$@"
    exit
fi

noi "Installing what is missing"
./cai-dat.sh
preset=release
[ "$(uname -s)" = Darwin ] && preset=macos
noi "Configuring ($preset)"
nhatKy=$(mktemp)
trap 'rm -f "$nhatKy"' EXIT
cmake --preset "$preset" -DTOVIRA_KIEM_THU=OFF >"$nhatKy" 2>&1 || { cat "$nhatKy"; exit 1; }
noi "Building"
dich=tovira
[ "$preset" = macos ] && dich=goi
cmake --build "build/$preset" --target "$dich" >"$nhatKy" 2>&1 || { cat "$nhatKy"; exit 1; }
chuongTrinh=$PWD/build/$preset/tovira

if [ "$(uname -s)" = Darwin ]; then
    noi "Opening dist/Tovira.app"
    open dist/Tovira.app --args "$@"
    exit
fi

# The web engine cannot start its sandbox for root, as in a container.
if [ "$(id -u)" -eq 0 ]; then
    noi "Started by root: the web engine runs without its sandbox"
    export QTWEBENGINE_DISABLE_SANDBOX=1
fi
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    noi "Starting Tovira"
    "$chuongTrinh" "$@"
    exit
fi

noi "No display: starting a virtual one"
rm -f "$nhatKy"
TOVIRA_THU_MAN_HINH=${TOVIRA_MAN_HINH_AO:-1440x900x24} exec tests/voi-man-hinh.sh --quan-ly-cua-so \
    "$PWD/chay.sh" --trong-man-hinh-ao "$chuongTrinh" "$@"
