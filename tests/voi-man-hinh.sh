#!/usr/bin/env bash
# Runs a command on a virtual display of its own, which goes away with it:
#   voi-man-hinh.sh [--rieng] [--quan-ly-cua-so] command…
# --quan-ly-cua-so starts a window manager there as well; with --rieng other users of this machine cannot look at it.
set -u
rieng=khong
if [ "${1:-}" = --rieng ]; then
    rieng=co
    shift
fi
quanLy=khong
if [ "${1:-}" = --quan-ly-cua-so ]; then
    quanLy=co
    shift
fi
thuMuc=$(mktemp -d)
quyen=()
if [ "$rieng" = co ]; then
    # The key is the server's before it has a number, and its clients' afterwards.
    khoa=$(od -An -N16 -tx1 /dev/urandom | tr -d ' \n')
    printf 'add :0 . %s\n' "$khoa" | xauth -q -f "$thuMuc/may-chu" source - 2>/dev/null
    quyen=(-auth "$thuMuc/may-chu")
fi
cacTienTrinh=()
con=
# shellcheck disable=SC2317  # called by the trap
dep() {
    if [ -n "$con" ]; then
        kill "$con" 2>/dev/null
        wait "$con" 2>/dev/null
    fi
    for p in "${cacTienTrinh[@]}"; do kill "$p" 2>/dev/null; done
    wait 2>/dev/null
    rm -rf "$thuMuc"
}
trap dep EXIT
trap 'exit 143' TERM INT

mkfifo "$thuMuc/so"
Xvfb -displayfd 3 -screen 0 "${TOVIRA_THU_MAN_HINH:-1280x800x24}" -nolisten tcp -noreset +extension XTEST ${quyen[@]+"${quyen[@]}"} 3>"$thuMuc/so" >"$thuMuc/xvfb.log" 2>&1 &
cacTienTrinh+=($!)
read -r -t 20 so <"$thuMuc/so" || { cat "$thuMuc/xvfb.log" >&2; echo "Xvfb did not start" >&2; exit 1; }
export DISPLAY=":$so"
unset WAYLAND_DISPLAY XAUTHORITY
if [ "$rieng" = co ]; then
    export XAUTHORITY=$thuMuc/quyen
    printf 'add :%s . %s\n' "$so" "$khoa" | xauth -q source - 2>/dev/null
fi
export XDG_SESSION_TYPE=x11
# The web engine cannot start its sandbox for root; on a display of its own nothing but the command's pages runs.
[ "$(id -u)" -ne 0 ] || export QTWEBENGINE_DISABLE_SANDBOX=1
if [ "$quanLy" = co ]; then
    openbox >"$thuMuc/wm.log" 2>&1 &
    cacTienTrinh+=($!)
fi
# In the background, so that a signal reaches this script at once; it ends first, while its display still stands.
"$@" <&0 &
con=$!
wait "$con"
ketQua=$?
con=
exit "$ketQua"
