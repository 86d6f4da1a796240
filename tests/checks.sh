# What the checks with real programs share; sourced by them. A command that fails ends the check, is named with its
# lines, from the inside out, and followed by the ends of the files in $logs.
# shellcheck shell=bash

set -Eeuo pipefail
export PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 TZ=UTC DEBIAN_FRONTEND=noninteractive
unset KIRO_DHCP_MGR_ROOT DISPLAY WAYLAND_DISPLAY XAUTHORITY XDG_RUNTIME_DIR

logs=(/dev/null)
trap 'echo "${0##*/}: failed in line $LINENO ${BASH_LINENO[*]}: $BASH_COMMAND" >&2; tail -n 30 "${logs[@]}" >&2' ERR

# REASON: why the check cannot run here.
skip() {
    echo "skipped: $1"
    exit 77
}

# COMMAND...: as root in mount, network and process namespaces. With the first process all others end, and with the
# last all mounts.
in_namespaces() {
    local as_root=()
    ((EUID == 0)) || as_root=(sudo -n)
    local reason
    reason=$("${as_root[@]}" unshare --net --mount --pid --fork true 2>&1) || skip "no namespaces: $reason"
    "${as_root[@]}" unshare --net --mount --pid --fork --kill-child --mount-proc --propagation private "$@"
}

# COMMAND...: whether it fails; with a plain "!" a check would go on.
not() {
    ! "$@"
}

# COMMAND...: waits until it succeeds.
wait_until() {
    local end=$((SECONDS + 120))
    until "$@"; do
        ((SECONDS < end))
        sleep 0.1
    done
}
