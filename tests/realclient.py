"""The machine's DHCP client, run as a copy under another path, where its AppArmor profile does not hold, on interfaces
that only this process sees. No address is taken and no script is run."""

import ctypes
import re
import select
import shutil
import socket
import subprocess
import time

from trial import PATIENCE, run

INSTALLED = "/usr/sbin/dhclient"
INTERFACES = ("eth0", "wlan0", "eth1")
SETUP = """ip link add eth0 type veth peer name eth1 && ip link add wlan0 type veth peer name wlan1 &&
    for name in eth0 eth1 wlan0 wlan1; do ip link set $name up || exit; done"""
NEW_NAMESPACES = 0x40000000 | 0x00020000  # CLONE_NEWNET | CLONE_NEWNS, for unshare(2)
EVERY_PROTOCOL = socket.htons(3)  # ETH_P_ALL
COOKIE = b"\x63\x82\x53\x63"  # before a packet's options, RFC 2131
REQUEST_LIST = 55
END = 255


# Why the client or its interfaces can't be had here; empty if they can.
def obstacle():
    tried = run("unshare", "--net", "--mount", "sh", "-c", f"ls {INSTALLED} && {SETUP}")
    return tried.returncode and tried.stderr.decode()


class RealClient:
    # Takes this process into a network namespace of its own, for good.
    def __init__(self, directory):
        self.program = shutil.copy(INSTALLED, directory / "client")
        if ctypes.CDLL(None, use_errno=True).unshare(NEW_NAMESPACES) != 0:
            raise OSError(ctypes.get_errno(), "unshare")
        subprocess.run(["sh", "-c", SETUP], check=True)

    def command(self, conf, *interfaces):
        return [self.program, *"-d -1 -4 -lf /dev/null -pf /dev/null -sf /bin/true -cf".split(), conf, *interfaces]

    # The lines "FILE line N: REASON", and one if it crashes or does not end.
    def complaints(self, conf):
        client = run("timeout", "5", *self.command(conf, "nosuchif0"), text=True, errors="replace")
        complaints = re.findall(rf"^{re.escape(str(conf))} line .*", client.stderr, re.MULTILINE)
        return complaints if client.returncode in (0, 1) else [*complaints, f"status {client.returncode}"]

    # The set of codes in the first packet on each interface, by interface.
    def requests(self, conf):
        requested = {}
        with socket.socket(socket.AF_PACKET, socket.SOCK_RAW, EVERY_PROTOCOL) as wire, \
                subprocess.Popen(self.command(conf, *INTERFACES), stderr=subprocess.DEVNULL) as client:
            deadline = time.monotonic() + PATIENCE
            while len(requested) < len(INTERFACES) and time.monotonic() < deadline:
                if select.select([wire], [], [], 0.05)[0]:
                    packet, (interface, _, direction, *_) = wire.recvfrom(4096)
                    if direction == socket.PACKET_OUTGOING and COOKIE in packet:
                        requested.setdefault(interface, request_list(packet))
                elif client.poll() is not None:
                    break
            client.kill()
        return requested


def request_list(packet):
    options = packet[packet.index(COOKIE) + len(COOKIE):]
    while options[0] not in (REQUEST_LIST, END):
        options = options[2 + options[1]:]
    return set(options[2:2 + options[1]]) if options[0] == REQUEST_LIST else set()
