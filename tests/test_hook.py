"""The client's exit hook, sourced by a shell as the client's script does it."""

import os
import re
import time
from pathlib import Path
from subprocess import PIPE, Popen

import pytest

from trial import SOURCE, eventually, run

HOOK = SOURCE / "dhclient/exit-hook/kiro-dhcp-mgr"
RECORDER = Path.cwd() / "dhclient/exit-hook/record-lease"
FAKE_CLIENT = Path.cwd() / "tests/fakeclient"


class Hook:
    def __init__(self, root):
        self.directory = root.path("/var/lib/dhcp3/vars")
        root.write("/usr/libexec/kiro-dhcp-mgr/record-lease", RECORDER.read_bytes()).chmod(0o755)
        # Debian's script too has changed some values before it sources the hooks.
        self.script = root.write("/script", f"""
            umask 077; cd "$KIRO_DHCP_MGR_ROOT"; unset new_host_name; new_interface_mtu=''
            . "{HOOK}" """)

    # The lines that were reported at an event of the client.
    def event(self, reason, interface="eth0", **variables):
        done = run("dash", self.script, env=os.environ | {"reason": reason, "interface": interface} | variables)
        assert done.stdout == b""
        return done.stderr.decode().splitlines()

    # The values that everybody may read, by the file's name.
    def values(self):
        values = {}
        for file in self.directory.glob("eth?/*"):
            if file.is_file() and file.stat().st_mode & file.parent.stat().st_mode & 0o004:
                assignment = f"new_{file.name.replace('-', '_')}='(.*)'\n"
                values[f"{file.parent.name}/{file.name}"] = re.fullmatch(assignment, file.read_bytes().decode())[1]
        return values


@pytest.fixture
def hook(root):
    return Hook(root)


# Starts a fake client with that name.
@pytest.fixture
def start(request):
    def start(name, **variables):
        process = Popen([name], executable=FAKE_CLIENT, env=os.environ | variables, stdout=PIPE)
        request.addfinalizer(lambda: (process.kill(), process.communicate()))
        process.client = process.stdout.readline().decode().strip()
        time.sleep(0.025)  # the start times of two clients differ by a step of 10 ms
        return process
    return start


@pytest.mark.parametrize("passed, shown", [
    (r"\$(>ran)\`>ran\`\';>ran;\' \| >ran \& \"", "$(>ran)`>ran`';>ran;' | >ran & \""),
    (r"\303\244\360\237\230\200", "\u00e4\U0001f600"),
    ("\u202e\u2028\U000e0000", r"\342\200\256\342\200\250\363\240\200\200"),
    (r"\355\240\200\300\257\370\303x\303", r"\355\240\200\300\257\370\303x\303"),  # not UTF-8
])
def test_value_is_shown_and_runs_nothing(hook, root, passed, shown):
    assert hook.event("BOUND", new_v=passed) == []
    assert hook.values() == {"eth0/v": shown}
    assert not root.path("/ran").exists()


def test_only_options_become_files(hook):
    variables = """new_host_name new_interface_mtu new_unknown_228 new_expiry new_ip_address new_network_number
        new_filename new_server_name new_next_server old_routers old_new_x new_ new_.x new__x new_a/b new_a+b""".split()
    hook.event("BOUND", "eth1", **dict.fromkeys(variables, "x"))
    assert set(hook.values()) == {"eth1/host-name", "eth1/interface-mtu", "eth1/unknown-228"}


def test_script_that_sources_it_keeps_its_state(hook, root):
    # A strict shell notices what the client's own script would not; the program swallows input, says much and fails.
    root.program("/usr/libexec/kiro-dhcp-mgr/record-lease", "cat; echo said; false")
    hook.script.write_text(f"""
        set -euf; trap : EXIT; IFS=e/; set -- one 'two x'; cd "$KIRO_DHCP_MGR_ROOT"
        state() {{ set; set -o; trap; umask; pwd; echo "$# $*"; }}
        state >before; . "{HOOK}"; state >after; cmp before after
        rm usr/libexec/kiro-dhcp-mgr/record-lease; . "{HOOK}"
        unset reason; . "{HOOK}"
        cat""")
    done = run("dash", hook.script, env=os.environ | {"reason": "BOUND"}, input=b"input\n")
    assert done.stdout == b"input\n"


def test_directories_of_interfaces(hook):
    def shown_after(reason, interface):
        hook.event(reason, interface, new_from=interface, new_ip_address="192.0.2.9")
        return hook.values()

    assert shown_after("BOUND", "br0") == {"eth0/from": "br0"}
    assert shown_after("BOUND", "wlan1") == {"eth0/from": "br0", "eth1/from": "wlan1"}
    assert shown_after("BOUND", "wlan2") == {"eth0/from": "br0", "eth1/from": "wlan1"}
    assert shown_after("BOUND", "eth0") == {"eth0/from": "eth0", "eth1/from": "wlan1"}
    assert shown_after("EXPIRE", "eth0") == {"eth1/from": "wlan1"}
    assert shown_after("BOUND", "br0") == {"eth1/from": "wlan1"}
    assert shown_after("TIMEOUT", "wlan1") == {}  # no interface got the address


def test_value_that_cannot_be_written_does_not_keep_others(hook):
    hook.directory.joinpath("eth0/a/x").mkdir(parents=True)  # a directory in the place of its file
    assert len(hook.event("BOUND", new_a="1", new_b="2")) == 1
    assert hook.values() == {"eth0/b": "2"}


def test_value_that_a_renewal_did_not_ask_for_is_kept(hook):
    hook.event("BOUND", new_asked="1", new_not_asked="1", new_sent_again="1")
    hook.event("RENEW", new_sent_again="2", requested_asked="1", requested_sent_again="1")
    assert hook.values() == {"eth0/not-asked": "1", "eth0/sent-again": "2"}


@pytest.mark.parametrize("reasons, after_owner, after_stranger", [
    ("BOUND REBOOT TIMEOUT", "new", "new"),
    ("RENEW REBIND", "new", "old"),
    ("EXPIRE FAIL RELEASE STOP V6ONLY", None, "old"),
])
def test_event_of_the_owner_and_of_another_client(hook, start, reasons, after_owner, after_stranger):
    owner, stranger, ended = start("owner").client, start("stranger").client, "4194304"  # beyond all process numbers
    for reason in reasons.split():
        for client, shown in (owner, after_owner), (stranger, after_stranger), (ended, "old"):
            hook.event("BOUND", pid=owner, new_a="old")
            hook.event(reason, pid=client, new_a="new", new_ip_address="127.0.0.1")
            assert hook.values().get("eth0/a") == shown, (reason, client)


def test_owner_that_has_ended_is_replaced(hook, start):
    owner = start("owner")
    hook.event("BOUND", pid=owner.client)
    owner.kill()
    owner.wait()
    hook.event("RENEW", pid=start("stranger").client, new_a="new")
    assert hook.values() == {"eth0/a": "new"}


def test_window_is_asked_to_refresh(hook, start):
    window = start("window", FAKE_WINDOW="1")
    os.set_blocking(window.stdout.fileno(), False)
    for reason in "BOUND", "EXPIRE":
        hook.event(reason)
        eventually(lambda: window.stdout.readline() == b"hangup\n", f"the signal after {reason}")
