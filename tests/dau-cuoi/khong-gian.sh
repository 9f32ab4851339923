#!/usr/bin/env bash
# Runs a command in a small network made for it, which goes away with it and with every process started there:
#   this namespace is the rendezvous server's (10.77.0.1), "may" the host's (10.77.0.2), "khach" the controller's (10.77.0.3).
# TOVIRA_DC_MANG tells the command "rieng" (namespaces) or "chung" (they cannot be made here: all on 127.0.0.1).
set -eu

if [ "${1:-}" = --ben-trong ]; then
    shift
    mkdir -p /run/netns 2>/dev/null || true
    mount -t tmpfs tovira /run/netns
    ip link set lo up
    ip link add cau type bridge
    ip addr add 10.77.0.1/24 dev cau
    ip link set cau up
    so=2
    for ben in may khach; do
        ip netns add "$ben"
        ip link add "d-$ben" type veth peer name mang netns "$ben"
        ip link set "d-$ben" master cau up
        ip -n "$ben" link set lo up
        ip -n "$ben" addr add "10.77.0.$so/24" dev mang
        ip -n "$ben" link set mang up
        ip -n "$ben" route add default via 10.77.0.1
        so=$((so + 1))
    done
    [ "${1:-}" != --thu ] || exit 0
    TOVIRA_DC_MANG=rieng exec "$@"
fi

tach=(unshare --net --mount --pid --fork --kill-child --mount-proc)
[ "$(id -u)" -eq 0 ] || tach+=(--user --map-root-user)
if "${tach[@]}" "$0" --ben-trong --thu 2>/dev/null; then
    exec "${tach[@]}" "$0" --ben-trong "$@"
fi
echo "• Network namespaces cannot be made here: host, server and controller share one network" >&2
TOVIRA_DC_MANG=chung exec "$@"
