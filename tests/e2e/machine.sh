# A machine of Debian's for the end-to-end tests, sourced by them: ifupdown brings up eth0 by DHCP and eth1 with a fixed
# address; eth2, by DHCP, is brought up by hand. The server is in a network of its own, on a bridge that all of them
# reach. Everything happens in namespaces of its own, on an overlay of this machine's file system that is gone
# afterwards. ctest installs the programs in the build directory, below staged, and runs the tests there; they begin with
#
#     make_machine "$@"
# shellcheck shell=bash
# shellcheck source=tests/checks.sh
. "$(dirname "${BASH_SOURCE[0]}")/../checks.sh"

scratch=/mnt # mounted over: it is always there and not needed here
root=$scratch/root
server_log=$root/tmp/server.log
logs=("$server_log" "$root/tmp/apply.log" "$root/etc/dhcp/dhclient.conf")

make_machine() {
    if [[ ${*: -1} != inside ]]; then
        type dhclient dhcpd ifup ip ping sqlite3 >/dev/null || skip "not all programs are installed"
        in_namespaces "$(realpath "$0")" "$@" inside
        exit
    fi

    # An overlay's upper layer cannot be on an overlay, hence the tmpfs.
    mount -t tmpfs tmpfs "$scratch"
    mkdir "$scratch"/{upper,work,root}
    mount -t overlay overlay -o "lowerdir=/,upperdir=$scratch/upper,workdir=$scratch/work" "$root" 2>/dev/null ||
        skip "this file system takes no overlay"
    mount -t proc proc "$root/proc"
    mount -t sysfs sysfs "$root/sys"
    mount --rbind /dev "$root/dev"
    mount -t tmpfs -o mode=700 tmpfs "$root/run"
    mount -t tmpfs tmpfs "$root/tmp"
    cp -dR --preserve=mode staged/. "$root"
    mkdir "$root/run/network"
    cat >"$root/etc/network/interfaces" <<'END'
auto eth0
iface eth0 inet dhcp

auto eth1
iface eth1 inet static
    address 10.78.0.9/24

iface eth2 inet dhcp
END

    : >"$scratch/network"
    unshare --net="$scratch/network" true
    in_server_network ip link add bridge0 type bridge
    in_server_network ip link set bridge0 up
    in_server_network ip addr add 10.77.0.1/24 dev bridge0
    for number in 0 1 2; do
        ip link add "eth$number" address "02:00:00:00:00:0$number" type veth peer name "port$number" \
            netns "$scratch/network"
        in_server_network ip link set "port$number" up master bridge0
    done
    ip link set lo up
    : >"$root/tmp/dhcpd.leases"
    start_server 5
}

in_server_network() {
    nsenter --net="$scratch/network" "$@"
}

on_machine() {
    chroot "$root" "$@"
}

# SECONDS: the length of its leases
start_server() {
    cat >"$root/tmp/dhcpd.conf" <<END
option local-224 code 224 = ip-address;
option local-240 code 240 = ip-address;
authoritative;
default-lease-time $1; max-lease-time $1; min-lease-time $1;
log(info, concat("ASKED ", binary-to-ascii(16, 8, ":", substring(hardware, 1, 6)), " ",
    binary-to-ascii(10, 8, ",", option dhcp-parameter-request-list)));
subnet 10.77.0.0 netmask 255.255.255.0 {
    range 10.77.0.100 10.77.0.120;
    option routers 10.77.0.1;
    option domain-name-servers 10.77.0.53, 10.77.0.54;
    option ntp-servers 10.77.0.123;
    option local-224 10.77.0.224;
    option local-240 10.77.0.240;
}
END
    : >"$server_log"
    in_server_network chroot "$root" dhcpd -4 -f -d -user root -group root -cf /tmp/dhcpd.conf \
        -lf /tmp/dhcpd.leases -pf /tmp/dhcpd.pid bridge0 >>"$server_log" 2>&1 &
    wait_until grep -q "Sending on" "$server_log"
}

stop_server() {
    local server
    server=$(<"$root/tmp/dhcpd.pid")
    kill "$server"
    wait_until not kill -0 "$server" 2>/dev/null
}

# What ifupdown does at boot, after the unit of the package
boot() {
    on_machine env PATH=/nonexistent /usr/bin/kiro-dhcp-mgr --apply
    on_machine ifup -a >"$root/tmp/ifup.log" 2>&1
}

apply() {
    # The client and its script inherit standard error and have much to say; our lines all begin so.
    on_machine kiro-dhcp-mgr --apply >"$root/tmp/apply.log" 2>&1
    not grep -E '^(Cannot|Parse error|DhcpOption|Error:  |Error: linux|kiro-|Q[A-Z])' "$root/tmp/apply.log"
}

# A line per option: on or off, code, name, value
table() {
    on_machine kiro-dhcpctl list --all
}

# OPTION VALUE: whether it is shown
has_value() {
    [[ $(table | awk -F'\t' -v name="$1" '$3 == name { print $4 }') == "$2" ]]
}

# PATTERN: requests those options and no other. All have an entry since the first apply.
choose() {
    sqlite3 -batch -init /dev/null "$root/var/lib/vorkan/registry.db" "
        UPDATE entry SET value = key GLOB 'root/DHCP/Req_$1' WHERE key GLOB 'root/DHCP/Req_*'"
}

# NUMBER: the codes that the client on that interface asked the server for last, in order
last_asked() {
    sed -n "s/^ASKED 2:0:0:0:0:$1 //p" "$server_log" | tail -n 1 | tr ',' '\n' | sort -n | paste -sd,
}

to_be_asked() {
    table | awk '$1 == "on" { print $2 }' | sort -n | paste -sd,
}

asks_for_the_choices() {
    [[ $(last_asked 0) == "$(to_be_asked)" ]]
}

# INTERFACE: the processes of its clients; one that has not bound yet has two
clients_on() {
    local process
    for process in /proc/[0-9]*; do
        if [[ $(readlink "$process/exe") == */usr/sbin/dhclient ]] &&
            tr '\0' '\n' <"$process/cmdline" 2>/dev/null | grep -qx "$1"; then
            echo "${process#/proc/}"
        fi
    done
}

# INTERFACE: whether one client, and the one that ifdown knows, has its lease
has_one_client() {
    [[ $(clients_on "$1") == "$(<"$root/run/dhclient.$1.pid")" ]]
}

# INTERFACE
address_of() {
    ip -4 -o addr show dev "$1" | awk '{ print $4 }'
}

has_address_and_route() {
    [[ $(address_of eth0) == 10.77.0.1[012]?/24 && $(ip route) == *"default via 10.77.0.1 dev eth0"* ]]
}
