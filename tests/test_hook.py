"""The client's exit hook, sourced by a shell as the client's script does it."""

import fcntl
import os
import re
import signal
import time
from pathlib import Path
from subprocess import PIPE, Popen, TimeoutExpired

import pytest

from trial import PATIENCE, SOURCE, eventually, run

HOOK = SOURCE / "dhclient/exit-hook/kiro-dhcp-mgr"
RECORDER = Path.cwd() / "dhclient/exit-hook/record-lease"
FAKE_CLIENT = Path.cwd() / "tests/fakeclient"

UNSHOWN = ("\n\r\x1f\x7f\x85\x9f\xad\u061c\u115f\u180e\u200b\u200e\u2028\u202e\u2060\u3164\uf8ff\ufdd0\ufeff\uffa0"
           "\ufff0\U0001bca0\U0001d173\U0001ffff\U000e0000")


class Hook:
    def __init__(self, root):
        self.directory = root.path("/var/lib/dhcp3/vars")
        root.write("/usr/libexec/kiro-dhcp-mgr/record-lease", RECORDER.read_bytes()).chmod(0o755)
        # Debian's script too has changed some values before it sources the hooks.
        self.script = root.write("/script", f"""
            umask 077; cd "$KIRO_DHCP_MGR_ROOT"; unset new_host_name; new_interface_mtu=''
            . "{HOOK}" """)

    def event(self, reason, interface, errors=0, **variables):
        """The values that everybody may read after an event of the client, at which so many errors were reported."""
        done = run("dash", self.script, env=os.environ | {"reason": reason, "interface": interface} | variables)
        assert done.stdout == b"" and len(done.stderr.splitlines()) == errors, done.stderr
        values = {}
        for file in self.directory.glob("eth?/*"):
            if file.is_file() and file.stat().st_mode & file.parent.stat().st_mode & 0o004:
                assignment = f"new_{file.name}='(.*)'\n".replace("-", "_")
                values[f"{file.parent.name}/{file.name}"] = re.fullmatch(assignment, file.read_bytes().decode())[1]
        return values


@pytest.fixture
def hook(root):
    return Hook(root)


@pytest.fixture
def start(request):
    """Starts a fake client, or a program that does so, with that name and those arguments."""
    def start(*arguments, program=FAKE_CLIENT, **variables):
        process = Popen(arguments, executable=program, env=os.environ | variables, stdout=PIPE)
        request.addfinalizer(lambda: (process.kill(), process.communicate()))
        process.client = process.stdout.readline().decode().strip()
        time.sleep(0.025)  # the start times of two clients differ by a step of 10 ms
        return process
    return start


def test_values(hook, root):
    for passed, shown in [
            (r"\$(>ran)\`>ran\`\';>ran;\' \| >ran \& \"", "$(>ran)`>ran`';>ran;' | >ran & \""),
            (r"\303\244\342\200\214\360\237\230\200", "\u00e4\u200c\U0001f600"),  # the second joins others
            (r"C:\\x\\012\q\12\400\378" "\\", r"C:\x\012\q\12\400\378" "\\"),
            (UNSHOWN, "".join(rf"\{byte:03o}" for byte in UNSHOWN.encode())),
            *[(same, same) for same in (
                r"  grüß=b 1234 $(>ran)`>ran`';>ran;' \000\011\015\033[2J\177\342\200\256 ",
                # Not UTF-8.
                r"\355\240\200\364\220\200\200\300\257\340\237\277\360\200\257\257\370\220\200\200\303x\303\303")]]:
        assert hook.event("BOUND", "eth0", new_v=passed) == {"eth0/v": shown}
    assert not root.path("/ran").exists()


def test_names(hook):
    variables = """new_host_name new_interface_mtu new_unknown_228 new_expiry new_ip_address new_network_number
        new_filename new_server_name new_next_server old_routers old_new_x new_ new_.x new__x new_a/b new_a+b""".split()
    options = ["eth1/host-name", "eth1/interface-mtu", "eth1/unknown-228"]
    assert hook.event("BOUND", "eth1", **dict.fromkeys(variables, "x")) == dict.fromkeys(options, "x")


def test_caller(hook):
    # A strict shell notices what the client's own script would not.
    hook.script.write_text(f"""
        exec 2>&1; set -euf; trap : EXIT; IFS=e/; set -- one 'two x'; cd "$KIRO_DHCP_MGR_ROOT"
        state() {{ set; set -o; trap; umask; pwd; echo "$# $*"; }}
        for program in /nonexistent /bin/false /usr/bin/tee /bin/echo; do
            ln -sf "$program" usr/libexec/kiro-dhcp-mgr/record-lease
            state >before; . "{HOOK}"; state >after; cmp before after
        done
        unset reason; . "{HOOK}"
        # The event is not for a program that is installed here.
        [ -e /usr/libexec/kiro-dhcp-mgr ] || {{ unset KIRO_DHCP_MGR_ROOT; reason=BOUND; . "{HOOK}"; }}
        cat""")
    assert run("dash", hook.script, env=os.environ | {"reason": "BOUND"}, input=b"input\n").stdout == b"input\n"


def test_interfaces(hook, root):
    # Of the record's lines only that of wlan1 makes sense.
    root.write("/var/lib/dhcp3/vars/.interfaces", "x\nbr0 ../x -\neth0 eth1 1,1,x\nwlan1 eth1 -\nwlan2 eth1 -\n")
    root.write("/var/lib/dhcp3/vars/..interfaces.new", "")  # a killed hook may have left it
    for reason, interface, shown in [
            ("BOUND", "br0", {"eth0/from": "br0"}),
            ("BOUND", "wlan2", {"eth0/from": "br0"}),
            ("BOUND", "wlan1", {"eth0/from": "br0", "eth1/from": "wlan1"}),
            ("BOUND", "eth0", {"eth0/from": "eth0", "eth1/from": "wlan1"}),
            ("EXPIRE", "eth0", {"eth1/from": "wlan1"}),
            ("BOUND", "br0", {"eth1/from": "wlan1"}),
            ("TIMEOUT", "wlan1", {})]:  # no interface got the address
        assert hook.event(reason, interface, new_from=interface, new_ip_address="192.0.2.9") == shown


def test_obstacles(hook):
    run("bash", "-c", """umask 022; mkdir -p "$0"/{.interfaces,eth0/{a/x,.c.new}}; cd "$0/eth0"; ln -s x ../.lock
        ln -s /dev/full b; echo "new_c='0'" >c; umask 077; echo "new_d=''" >d""", hook.directory)
    assert hook.event("BOUND", "eth0", errors=1, new_a="") == {"eth0/c": "0"}
    hook.directory.joinpath(".lock").unlink()
    # The record can be neither read nor written, nor two of the values.
    assert hook.event("BOUND", "eth0", errors=4, new_a="", new_b="", new_c="", new_d="") == {"eth0/b": "", "eth0/d": ""}
    hook.script.write_text(f'exec 2>&-; . "{HOOK}"')
    hook.event("BOUND", "eth0", new_a="2")
    assert hook.directory.joinpath(".lock").read_bytes() == b""  # no report is in it


def test_linked_value_directory_is_refused(hook, root):
    other = root.write("/etc/important", "new_important='kept'\n").parent
    hook.directory.mkdir(parents=True)
    hook.directory.joinpath("eth0").symlink_to(other)
    assert hook.event("BOUND", "eth0", errors=1, new_a="1") == {"eth0/important": "kept"}


def test_renewal(hook):
    hook.event("BOUND", "eth0", new_other="1", new_same="1")
    with open(hook.directory / "eth0/other") as other, open(hook.directory / "eth0/same") as same:
        hook.event("RENEW", "eth0", new_other="2", new_same="1")
        assert other.read() == "new_other='1'\n"  # a reader gets all of what it has opened
        assert os.path.samestat(os.fstat(same.fileno()), os.stat(same.name))  # not written again


def test_value_that_a_renewal_did_not_ask_for_is_kept(hook):
    hook.event("BOUND", "eth0", new_asked="1", new_not_asked="1", new_sent_again="1")
    kept = hook.event("RENEW", "eth0", new_sent_again="2", requested_asked="1", requested_sent_again="1")
    assert kept == {"eth0/not-asked": "1", "eth0/sent-again": "2"}


def test_hooks_wait_for_each_other(hook, root, start):
    script = start("script", reason="BOUND", interface="eth0", new_a="1").client
    with open(root.write("/var/lib/dhcp3/vars/.lock", "")) as lock:
        fcntl.flock(lock, fcntl.LOCK_SH)
        waiting = Popen([RECORDER, script])
        with pytest.raises(TimeoutExpired):
            waiting.wait(1)
    assert waiting.wait(PATIENCE) == 0
    assert hook.event("PREINIT", "eth0") == {"eth0/a": "1"}


@pytest.mark.parametrize("reasons, after_owner, after_stranger", [
    ("BOUND REBOOT TIMEOUT", "new", "new"),
    ("RENEW REBIND", "new", "old"),
    ("EXPIRE FAIL RELEASE STOP V6ONLY", None, "old")])
def test_events(hook, start, reasons, after_owner, after_stranger):
    owner, stranger, ended = start("owner").client, start("stranger").client, "4194304"  # beyond all process numbers
    for reason in reasons.split():
        for pid, shown in (owner, after_owner), (stranger, after_stranger), (ended, "old"):
            hook.event("BOUND", "eth0", pid=owner, new_a="old")
            assert hook.event(reason, "eth0", pid=pid, new_a="new", new_ip_address="127.0.0.1").get("eth0/a") == shown


def test_next_owner(hook, start):
    owner, stranger = start("owner", FAKE_FORK="1").client, start("stranger").client
    hook.event("BOUND", "eth0", pid=owner)
    hook.event("EXPIRE", "eth0", pid=owner)
    assert hook.event("RENEW", "eth0", pid=stranger, new_a="1") == {"eth0/a": "1"}
    for change in "s/,[0-9]*,/,1,/", "s/[^,]*$//":  # another process of that number, another boot
        hook.event("BOUND", "eth0", pid=owner)
        run("sed", "-i", change, hook.directory / ".interfaces")
        assert hook.event("RENEW", "eth0", pid=stranger, new_a="2") == {"eth0/a": "2"}
    hook.event("BOUND", "eth0", pid=owner)
    os.kill(int(owner), signal.SIGKILL)  # nobody waits for it
    eventually(lambda: hook.event("RENEW", "eth0", pid=stranger, new_a="3") == {"eth0/a": "3"})


@pytest.mark.parametrize("options, shown", [("--net", "theirs"), ("--pid --fork --kill-child", "ours")])
def test_other_namespaces(hook, start, options, shown):
    theirs = start("unshare", "--map-root-user", *options.split(), "bash", "-c",
                   'exec -a dhclient "$0" -1', FAKE_CLIENT, program=None)
    if not theirs.client:
        pytest.skip("namespaces are not allowed here")
    ours = start("ours").client
    hook.event("BOUND", "eth1", pid=ours)
    hook.event("BOUND", "eth0", pid=str(theirs.pid), new_a="theirs")
    # Another network has another interface of that name.
    assert hook.event("BOUND", "eth0", pid=ours, new_a="ours") == {"eth0/a": shown}
    assert b"another process namespace" in run("unshare", "--map-root-user", "--pid", "--fork", RECORDER).stderr
    assert theirs.poll() is None


def test_refresh(hook, start):
    window = start("window", FAKE_WINDOW="1")
    os.set_blocking(window.stdout.fileno(), False)
    for reason in "BOUND", "EXPIRE":
        hook.event(reason, "eth0")
        eventually(lambda: window.stdout.readline() == b"hangup\n")
