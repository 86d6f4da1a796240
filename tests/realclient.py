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


def obstacle():
    """Why the client or its interfaces can't be had here; empty if they can."""
    tried = run("unshare", "--net", "--mount", "sh", "-c", f"ls {INSTALLED} && {SETUP}")
    return tried.returncode and tried.stderr.decode()


class RealClient:
    """In a directory of its own."""

    def __init__(self, directory):
        """Takes this process into a network namespace of its own, for good."""
        self.directory = directory
        self.program = shutil.copy(INSTALLED, directory / "client")
        if ctypes.CDLL(None, use_errno=True).unshare(NEW_NAMESPACES) != 0:
            raise OSError(ctypes.get_errno(), "unshare")
        subprocess.run(["sh", "-c", SETUP], check=True)

    def start(self, configuration, *interfaces, **settings):
        options = ["-d", "-1", "-4", "-cf", configuration, "-lf", "/dev/null", "-pf", "/dev/null", "-sf", "/bin/true"]
        return subprocess.Popen([self.program, *options, *interfaces], stdin=subprocess.DEVNULL, **settings)

    def complaints(self, configuration):
        """The lines "FILE line N: REASON", and whether it crashes or does not end."""
        with open(self.directory / "said", "w+b") as said:
            client = self.start(configuration, "nosuchif0", stderr=said)
            try:
                status = client.wait(5)
            except subprocess.TimeoutExpired:
                client.kill()
                status = client.wait()
            said.seek(0)
            text = said.read(1 << 20).decode("latin-1")  # over some open strings it writes for ever
        lines = re.findall(f"^{re.escape(str(configuration))} line .*", text, re.MULTILINE)
        return lines + ["ended by a signal"] * (status < 0)

    def requests(self, configuration):
        """The codes in the list of the first packet on each interface, by interface."""
        requested = {}
        with socket.socket(socket.AF_PACKET, socket.SOCK_RAW, EVERY_PROTOCOL) as wire, \
                self.start(configuration, *INTERFACES, stderr=subprocess.DEVNULL) as client:
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
    codes = []
    while len(options) > 1 and options[0] != END:
        following = 2 + options[1]
        if options[0] == REQUEST_LIST:
            codes += options[2:following]
        options = options[following:]
    return codes
