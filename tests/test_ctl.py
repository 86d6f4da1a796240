"""kiro-dhcpctl, with the real edit tool, below a root of the test's own."""

import json
import os
import pty
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
    for program, place in (("app/kiro-dhcp-mgr", "/usr/bin"), ("dhclient/kiro-dhclient-edit", "/usr/sbin")):
        link = root.path(f"{place}/{Path(program).name}")
        link.parent.mkdir(parents=True, exist_ok=True)
        link.symlink_to(Path.cwd() / program)


def ctl(*arguments):
    done = run("ctl/kiro-dhcpctl", *arguments)
    return done.returncode, done.stdout.decode()


def test_choice_is_stored_and_applied(root):
    assert ctl("set", "proxy", "on", "--code", "240") == (0, "proxy: on, code 240 (changed)\n")
    assert ctl("check")[0] == 1
    assert ctl("apply") == (0, "")
    assert ctl("check") == (0, "")
    assert root.path(CONFIGURATION).read_text() == "option proxy code 240 = text;\nrequest routers, proxy;\n"


def test_equal_choice_writes_nothing(root):
    ctl("set", "proxy", "on")
    before = root.path(REGISTRY).stat().st_mtime_ns
    assert ctl("set", "proxy", "on") == (0, "proxy: on, code 200 (unchanged)\n")
    assert root.path(REGISTRY).stat().st_mtime_ns == before


def test_standard_code_removes_the_stored_one():
    ctl("set", "proxy", "on", "--code", "240")
    assert ctl("set", "proxy", "on") == (0, "proxy: on, code 240 (unchanged)\n")
    assert ctl("set", "proxy", "on", "--code", "200") == (0, "proxy: on, code 200 (changed)\n")
    assert ctl("set", "proxy", "off", "--code", "standard") == (0, "proxy: off, code 200 (changed)\n")


@pytest.mark.parametrize("command", [
    "set proxi on", "set proxy yes", "set proxy on --code 255", "set proxy on --code 0", "set ntp-servers on --code 43",
    "set routers off", "set mtu off", "set host-name on", "show proxi", "list --code 3", "frobnicate"])
def test_wrong_usage_is_refused_and_stores_nothing(root, command):
    done = run("ctl/kiro-dhcpctl", *command.split())
    assert done.returncode == 2
    assert len(done.stderr.splitlines()) == 1
    assert not root.path(REGISTRY).exists()


def test_unknown_name_offers_the_nearest():
    assert b"nearest are: proxy" in run("ctl/kiro-dhcpctl", "set", "proxi", "on").stderr


def test_list_in_a_pipe(root):
    root.write("/var/lib/dhcp3/vars/eth0/proxy", "new_proxy='\x1b[2Jx'\n")
    assert ctl("list") == (0, "on\t3\trouters\tN/A\non\t12\thost-name\tN/A\noff\t26\tmtu\tN/A\n"
                              "off\t42\tntp-servers\tN/A\noff\t200\tproxy\t\\u001b[2Jx\n")


def test_list_on_a_terminal_is_cut_to_its_width(root):
    root.write("/var/lib/dhcp3/vars/eth0/proxy", f"new_proxy='{'x' * 200}'\n")
    terminal, side = pty.openpty()
    subprocess.run(["sh", "-c", "stty cols 40; ctl/kiro-dhcpctl list"], stdin=side, stdout=side, check=True)
    lines = os.read(terminal, 65536).decode().splitlines()
    assert lines[-1] == "off 200 proxy       " + "x" * 20


def test_list_as_json(root):
    root.write("/var/lib/dhcp3/vars/eth0/secret", "new_secret='a'\n")
    _, text = ctl("list", "--all", "--json")
    options = {option["name"]: option for option in json.loads(text)}
    assert options["secret"] == {"name": "secret", "title": "Title of secret", "code": 201, "standard_code": 201,
                                 "requested": False, "class": "normal", "predefined": False, "value": "a"}
    assert options["mtu"]["value"] is None


def test_check_names_a_choice_that_is_not_applied(root):
    ctl("set", "ntp-servers", "on")
    status, lines = ctl("check")
    assert status == 1
    assert lines.startswith("ntp-servers: on, but ")


def test_check_names_a_code_that_was_edited_back_and_left_behind(root):
    root.write(CONFIGURATION, "option proxy code 200 = text;\nrequest routers, proxy;\n")
    ctl("set", "proxy", "on", "--code", "240")
    assert ctl("check")[1].startswith("proxy: code 200 is applied, but 240 is stored; ")


def test_check_names_two_options_with_one_code():
    ctl("set", "proxy", "on", "--code", "201")
    ctl("set", "secret", "on")
    assert "proxy and secret are both requested under code 201\n" in ctl("check")[1]


def test_check_names_a_definition_that_cannot_be_used(root):
    path = root.write("/usr/share/kiro-dhcp-mgr/bad.xml", "<dhcp-option/>")
    assert ctl("check") == (1, f"this definition cannot be used: {path}\n")


def test_unreadable_registry_is_left_alone(root):
    root.write(REGISTRY, "no database")
    assert ctl("set", "proxy", "on") == (1, "")
    assert ctl("check") == (1, "the stored choices cannot be read\n")
    assert root.path(REGISTRY).read_text() == "no database"


def test_set_is_refused_while_the_program_runs(root):
    with subprocess.Popen(["tests/fakeclient"], env={"KIRO_DHCP_MGR_ROOT": root.directory, "FAKE_WINDOW": "1"},
                          stdout=subprocess.PIPE) as window:
        window.stdout.readline()
        assert ctl("set", "proxy", "on") == (1, "")
        window.kill()
    assert not root.path(REGISTRY).exists()


def test_apply_names_a_choice_that_the_client_would_not_accept(root):
    root.write(CONFIGURATION, "request routers\n")
    status, lines = ctl("apply")
    assert status == 1
    assert f"{root.path(CONFIGURATION)}" in lines
