#!/usr/bin/env bash
# Sets up, builds and starts the whole service on this machine: a rendezvous server and Tovira, reached through it
# from any browser. Prints the address, and on Linux the machine code and the password. Ctrl+C ends both.
# Arguments go to the program; with --server https://may-chu.example that server is used and none is started.
# The server takes its settings from the environment (may-chu/README.md), its ports from CONG and STUN_CONG; one that
# serves https (CHUNG_CHI, KHOA) needs TOVIRA_TEN as well, the name that its certificate is for.
# Without a display Tovira gets a virtual one; a screenshot of it is written, and how to look at it is said.
set -euo pipefail
cd "$(dirname "$0")"

noi() { printf '• %s\n' "$*"; }
hong() { printf '%s\n' "$*" >&2; exit 1; }

# Waits for process $1 and meanwhile says what the page shows, read from file $2, at the start and at each change.
theoDoi() {
    local truoc='' ma matKhau
    while kill -0 "$1" 2>/dev/null; do
        if [ -e "$2" ] && { read -r ma && read -r matKhau; } <"$2" && [ "$ma $matKhau" != "$truoc" ]; then
            truoc="$ma $matKhau"
            noi "Machine code ${ma:0:3} ${ma:3:3} ${ma:6:3}, password $matKhau"
        fi
        sleep 1
    done
    wait "$1"
}

# The second half of a start without a display: $1 is the file for code and password, $2 the program, the rest its
# arguments.
chayTrongManHinhAo() {
    local tepMa=$1 chuongTrinh=$2 anh han
    shift 2
    thuMuc=$(mktemp -d) # not local, like tienTrinh: the trap runs when this function is left
    anh=$(mktemp --suffix=.png "${TMPDIR:-/tmp}/tovira-XXXXXX")
    TOVIRA_TEP_MA=$tepMa TOVIRA_TEP_SAN_SANG=$thuMuc/san-sang "$chuongTrinh" "$@" &
    tienTrinh=$!
    trap 'set +e; kill "$tienTrinh" 2>/dev/null; wait "$tienTrinh" 2>/dev/null; rm -rf "$thuMuc"' EXIT
    trap 'exit 130' INT TERM
    noi "Waiting for the page to load"
    han=$((SECONDS + 60))
    until [ -e "$thuMuc/san-sang" ]; do
        kill -0 "$tienTrinh" 2>/dev/null || hong "Tovira ended before its page had loaded"
        [ $SECONDS -lt $han ] || hong "The page has not loaded within 60 s; one over https does only when this machine trusts the certificate"
        sleep 0.2
    done
    # One more moment, so that the first picture is on the screen.
    sleep 1
    import -window root "$anh"
    noi "Tovira is running on display $DISPLAY; screenshot: $anh"
    noi "Another look: DISPLAY=$DISPLAY XAUTHORITY=$XAUTHORITY import -window root picture.png"
    noi "Live, from another machine: x11vnc -localhost -auth $XAUTHORITY -display $DISPLAY behind an SSH tunnel to port 5900"
    noi "Ctrl+C ends it"
    theoDoi "$tienTrinh" "$tepMa"
}
if [ "${1:-}" = --trong-man-hinh-ao ]; then
    shift
    chayTrongManHinhAo "$@"
    exit
fi

cacTienTrinh=()
thuMuc=$(mktemp -d)
# shellcheck disable=SC2317  # called by the trap
dep() {
    local p
    set +e
    for p in ${cacTienTrinh[@]+"${cacTienTrinh[@]}"}; do kill "$p" 2>/dev/null; done
    for p in ${cacTienTrinh[@]+"${cacTienTrinh[@]}"}; do wait "$p" 2>/dev/null; done
    rm -rf "$thuMuc"
}
trap dep EXIT
trap 'exit 130' INT TERM

# The rendezvous server, unless the arguments name one: sets `mayChu`, and says how to reach it.
moMayChu() {
    local nhatKy=$thuMuc/may-chu.log nut cong tienTrinh han cacDiaChi diaChi giaoThuc=http
    if [ -n "${CHUNG_CHI:-}" ]; then
        giaoThuc=https
        [ -n "${TOVIRA_TEN:-}" ] || hong "CHUNG_CHI is set: TOVIRA_TEN has to be the name that the certificate is for"
    fi
    nut=$(command -v node || command -v nodejs) || hong "Node.js is missing"
    # shellcheck disable=SC2016  # the dollars are JavaScript's
    cacDiaChi=$("$nut" -e '
        const cac = Object.values(os.networkInterfaces()).flat().filter((d) => !d.internal && !d.address.startsWith("fe80:"));
        cac.sort((a, b) => a.family.localeCompare(b.family)); // IPv4 first
        for (const { address: d } of cac) console.log(d.includes(":") ? `[${d}]` : d);
    ')
    # Tovira comes over loopback, where a STUN server would tell it nothing.
    TEN=${TOVIRA_TEN:-${cacDiaChi%%$'\n'*}} CONG=${CONG:-3000+} STUN_CONG=${STUN_CONG:-3478+} "$nut" may-chu/nguon/chinh.js >"$nhatKy" 2>&1 &
    tienTrinh=$!
    cacTienTrinh+=("$tienTrinh")
    han=$((SECONDS + 30))
    until grep -q '"su":"nghe"' "$nhatKy"; do
        kill -0 "$tienTrinh" 2>/dev/null || { cat "$nhatKy" >&2; hong "The server did not start"; }
        [ $SECONDS -lt $han ] || hong "The server did not start within 30 s"
        sleep 0.1
    done
    cong=$(sed -n 's/.*"su":"nghe","cong":\([0-9]*\).*/\1/p' "$nhatKy")
    if [ "$giaoThuc" = https ]; then
        mayChu=https://$TOVIRA_TEN:$cong
        noi "Any browser controls this machine at $mayChu/app"
        return
    fi
    # A page from the loopback interface may do more than one from another plain-http address.
    mayChu=http://127.0.0.1:$cong
    noi "Any browser controls this machine at:"
    while read -r diaChi; do
        [ -z "$diaChi" ] || printf '    http://%s:%s/app\n' "$diaChi" "$cong"
    done <<<"$cacDiaChi"
    printf '    %s (on this machine)\n' "http://127.0.0.1:$cong/app"
    noi "Not https: whoever controls the network in between could alter the page. See https in may-chu/README.md."
}

noi "Installing what is missing"
./cai-dat.sh
preset=release
[ "$(uname -s)" = Darwin ] && preset=macos
noi "Configuring ($preset)"
nhatKy=$thuMuc/dung.log
cmake --preset "$preset" -DTOVIRA_KIEM_THU=OFF >"$nhatKy" 2>&1 || { cat "$nhatKy"; exit 1; }
noi "Building"
dich=tovira
[ "$preset" = macos ] && dich=goi
cmake --build "build/$preset" --target "$dich" >"$nhatKy" 2>&1 || { cat "$nhatKy"; exit 1; }
chuongTrinh=$PWD/build/$preset/tovira

cuaTa=co
truoc=
for doi in "$@"; do
    [ "$truoc" != --server ] || cuaTa=khong
    truoc=$doi
done
if [ "$cuaTa" = co ]; then
    noi "Starting the server"
    moMayChu
    set -- --server "$mayChu" "$@"
fi

if [ "$(uname -s)" = Darwin ]; then
    noi "Opening dist/Tovira.app; its window shows the machine code and the password"
    open dist/Tovira.app --args "$@"
    [ "$cuaTa" = co ] || exit 0
    noi "Ctrl+C ends the server"
    wait "${cacTienTrinh[0]}"
    exit
fi

# The web engine cannot start its sandbox for root, as in a container.
if [ "$(id -u)" -eq 0 ]; then
    noi "Started by root: the web engine runs without its sandbox"
    export QTWEBENGINE_DISABLE_SANDBOX=1
fi
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    noi "Starting Tovira"
    TOVIRA_TEP_MA=$thuMuc/ma "$chuongTrinh" "$@" &
    cacTienTrinh=("$!" ${cacTienTrinh[@]+"${cacTienTrinh[@]}"})
    theoDoi "${cacTienTrinh[0]}" "$thuMuc/ma"
    exit
fi

noi "No display: starting a virtual one"
TOVIRA_THU_MAN_HINH=${TOVIRA_MAN_HINH_AO:-1440x900x24} tests/voi-man-hinh.sh --rieng --quan-ly-cua-so \
    "$PWD/chay.sh" --trong-man-hinh-ao "$thuMuc/ma" "$chuongTrinh" "$@" &
cacTienTrinh=("$!" ${cacTienTrinh[@]+"${cacTienTrinh[@]}"})
wait "${cacTienTrinh[0]}"
