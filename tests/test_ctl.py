"""kiro-dhcpctl, with the real edit tool, below a root of the test's own."""

import subprocess
from pathlib import Path

import pytest

from trial import CONFIGURATION, REGISTRY, run


@pytest.fixture(autouse=True)
def machine(root):
    off = "<default>No</default>"
    predefined = "<linux-predefined>Yes</linux-predefined>"
    root.define("proxy", 200, off)
    root.define("ntp-servers", 42, off + predefined)
    root.define("routers", 3, off + predefined + "<dhcp-class>Always-On</dhcp-class>")
    root.define("mtu", 26, predefined + "<dhcp-class>Always-Off</dhcp-class>")
    root.define("host-name", 12, off + predefined + "<dhcp-class>Managed</dhcp-class>")
    root.define("secret", 201, off + "<hide-option>Yes</hide-option>")
    root.write(CONFIGURATION, "request routers;\n")
    # It reads a configuration, and is started for nothing else.
    root.program("/usr/sbin/dhclient", '[[ $1 != -q ]] || exec /usr/sbin/dhclient "$@"')
    for program, place in (
            ("app/kiro-dhcp-mgr", "/usr/bin"),
            ("dhclient/kiro-dhclient-edit", "/usr/sbin")):
        link = root.path(f"{place}/{Path(program).name}")
        link.parent.mkdir(parents=True, exist_ok=True)
        link.symlink_to(Path.cwd() / program)


# The exit status and what it wrote.
def ctl(command):
    done = run("ctl/kiro-dhcpctl", *command.split(), stderr=subprocess.STDOUT)
    return done.returncode, done.stdout.decode()


def test_choice_is_stored_and_applied(root):
    assert ctl("set proxy on --code 240") == (0, "proxy: on, code 240 (changed)\n")
    assert ctl("check")[1].startswith("proxy: on, but ")
    assert ctl("apply") == (0, "")
    assert ctl("check") == (0, "")
    assert root.path(CONFIGURATION).read_text() == "option proxy code 240 = text;\nrequest routers, proxy;\n"


def test_standard_code_removes_the_stored_one():
    ctl("set proxy on --code 240")
    assert ctl("set proxy on") == (0, "proxy: on, code 240 (unchanged)\n")
    assert ctl("set proxy on --code 200") == (0, "proxy: on, code 200 (changed)\n")
    assert ctl("set proxy off --code standard") == (0, "proxy: off, code 200 (changed)\n")


@pytest.mark.parametrize("command", [
    "set proxi on",
    "set proxy yes",
    "set proxy on --code 255",
    "set ntp-servers on --code 43",
    "set routers off",
    "set host-name on",
    "show proxi",
])
def test_wrong_usage_is_refused_and_stores_nothing(root, command):
    status, complaint = ctl(command)
    assert status == 2
    assert complaint.startswith("kiro-dhcpctl: ")
    assert complaint.count("\n") == 1
    assert not root.path(REGISTRY).exists()


def test_list_in_a_pipe(root):
    root.write("/var/lib/dhcp3/vars/eth0/proxy", "new_proxy='\x1b[2Jx'\n")
    status, lines = ctl("list")
    names = [line.split("\t")[2] for line in lines.splitlines()]
    assert names == ["routers", "host-name", "mtu", "ntp-servers", "proxy"]  # by code
    assert lines.endswith("off\t200\tproxy\t\\u001b[2Jx\n")


def test_apply_names_what_the_client_would_not_accept(root):
    conf = root.write(CONFIGURATION, "request routers\n")
    status, lines = ctl("apply")
    assert status == 1
    assert str(conf) in lines


def test_check_names_a_code_that_was_left_behind(root):
    root.write(CONFIGURATION, "option proxy code 200 = text;\nrequest routers, proxy;\n")
    ctl("set proxy on --code 240")
    assert ctl("check")[1].startswith("proxy: code 200 is applied, but 240 is stored; ")


def test_check_names_two_options_with_one_code():
    ctl("set proxy on --code 201")
    ctl("set secret on")
    assert "proxy and secret are both requested under code 201\n" in ctl("check")[1]


def test_check_names_other_network_managers(root):
    root.write("/proc/7/comm", "NetworkManager\n")
    root.write("/proc/8/comm", "dhcpcd\n")
    up, down = "0x1003", "0x1002"
    for name, flags, index, managed in (
            ("eth0", up, 1, "true"),
            ("eth1", up, 2, "false"),
            ("eth2", down, 3, "true")):
        root.write(f"/sys/class/net/{name}/flags", flags)
        root.write(f"/sys/class/net/{name}/ifindex", str(index))
        root.write(f"/run/NetworkManager/devices/{index}", f"managed={managed}")
    assert ctl("check") == (
        1, "NetworkManager manages eth0 with a DHCP client of its own: choices have no effect there.\n"
           "dhcpcd is running: choices have no effect on the interfaces that it manages.\n")


def test_unreadable_registry_is_left_alone(root):
    root.write(REGISTRY, "no database")
    assert ctl("set proxy on")[0] == 1
    assert ctl("list")[0] == 1
    assert ctl("apply")[0] == 0
    assert ctl("check")[1].endswith("\nthe stored choices cannot be read\n")
    assert root.path(REGISTRY).read_text() == "no database"


def test_set_is_refused_while_the_program_runs(root):
    with subprocess.Popen(["tests/fakeclient"], env={"KIRO_DHCP_MGR_ROOT": root.directory, "FAKE_WINDOW": "1"},
                          stdout=subprocess.PIPE) as window:
        window.stdout.readline()
        refusal = ctl("set proxy on")
        window.kill()
    assert refusal[0] == 1
    assert not root.path(REGISTRY).exists()
