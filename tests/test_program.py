"""The built program as a process: applies without a window, displays, one instance."""

import os
import select
import signal
import sqlite3
import subprocess
import time

import pytest

from trial import PATIENCE, REGISTRY

TOOL = "/usr/sbin/kiro-dhclient-edit"
CLIENT = "/usr/sbin/dhclient"
START = "dhclient '-1'"  # the client's, after everything else
ADD_FOO = "kiro-dhclient-edit '--add-new-option' 'foo 200 text' '--add-request' 'foo'"
AS_ROOT = pytest.mark.skipif(os.geteuid() != 0, reason="for root only")
NO_DISPLAY = "Cannot open the display: could not connect to display :4711\n"


# Installs a tool and a client that only record their calls, a definition, and an administrator's registry.
@pytest.fixture(autouse=True)
def registry(root):
    root.record(TOOL)
    root.record(CLIENT)
    root.define("foo", 200)
    connection = sqlite3.connect(root.write(REGISTRY, ""), isolation_level=None)
    connection.execute("CREATE TABLE entry(key PRIMARY KEY, type, value)")
    return connection


# Starts the program with little in its environment but what is given.
def start(*arguments, **environment):
    environment = {"PATH": "/usr/bin:/bin", "KIRO_DHCP_MGR_ROOT": os.environ["KIRO_DHCP_MGR_ROOT"],
                   "XDG_RUNTIME_DIR": os.path.abspath("tests/runtime"), **environment}
    return subprocess.Popen(["app/kiro-dhcp-mgr", *arguments], env=environment, stderr=subprocess.PIPE, text=True)


# The exit status and what it wrote to standard error.
def outcome(program):
    errors = program.communicate(timeout=PATIENCE)[1]
    return program.returncode, errors


@pytest.mark.parametrize("elements, code, requested, arguments", [
    ("", None, None, "'--add-new-option' 'foo 200 text' '--add-request' 'foo'"),
    ("", "255", None, "'--del-new-option' 'foo 200 text' '--add-new-option' 'foo 255 text' '--add-request' 'foo'"),
    ("<default>No</default>", None, None, "'--del-new-option' 'foo 200 text' '--del-request' 'foo'"),
    ("<linux-predefined>Yes</linux-predefined>", "211", "1", "'--add-request' 'foo'"),
    ("<dhcp-class>Always-On</dhcp-class>", None, "0", "'--add-new-option' 'foo 200 text' '--add-request' 'foo'"),
])
def test_apply_calls_the_tool_with(root, registry, elements, code, requested, arguments):
    root.define("foo", 200, elements)
    registry.execute("INSERT INTO entry VALUES('root/DHCP/Code_foo', 7, ?)", [code or "no number"])
    if requested:
        registry.execute("INSERT INTO entry VALUES('root/DHCP/Req_foo', 10, ?)", [requested])
    assert outcome(start("--apply")) == (0, "")
    assert root.calls(2) == [START, f"kiro-dhclient-edit {arguments}"]


def test_update_needs_no_display_and_stores_defaults(root, registry):
    display = {"DISPLAY": ":4711", "QT_QPA_PLATFORM": "xcb"}
    assert outcome(start("--show-all", "-style", "--update", **display)) == (0, "")
    assert root.calls(2) == [START, ADD_FOO]
    assert registry.execute("SELECT * FROM entry").fetchall() == [("root/DHCP/Req_foo", 10, "1")]


@pytest.mark.parametrize("arguments, environment, complaint", [
    ("--Apply --apply=yes -apply -platform vnc", {"DISPLAY": ":4711"}, NO_DISPLAY),
    pytest.param("", {"DISPLAY": ":4711", "QT_QPA_PLATFORM": "vnc"}, NO_DISPLAY, marks=AS_ROOT),
    ("--apply", {"KIRO_DHCP_MGR_ROOT": "/none"}, "Cannot read config directory /none/usr/share/kiro-dhcp-mgr\n"),
])
def test_start_refused(root, registry, arguments, environment, complaint):
    assert outcome(start(*arguments.split(), **environment)) == (1, complaint)
    assert root.calls(0) == []
    assert registry.execute("SELECT * FROM entry").fetchall() == []


def test_slow_tool_is_left_to_finish(root):
    root.program(TOOL, "kill -HUP $PPID; sleep 3; echo finished >>$KIRO_DHCP_MGR_ROOT/record.log")
    begin = time.monotonic()
    assert outcome(start("--apply")) == (0, "")
    assert time.monotonic() - begin > 1.9
    assert root.calls(2) == [START, "finished"]


def test_errors_that_nobody_reads(root):
    root.define("bad", "x")
    program = start("--apply")
    program.stderr.close()
    assert program.wait(PATIENCE) == 0
    assert root.calls(2) == [START, ADD_FOO]


@pytest.fixture
def window(request):
    program = start(QT_QPA_PLATFORM="offscreen", QT_LOGGING_RULES="qt.widgets.painting=true")
    request.addfinalizer(program.kill)
    assert select.select([program.stderr], [], [], PATIENCE)[0], "no window is drawn"
    return program


def test_second_start_is_refused_until_the_first_has_ended(root, window):
    for _ in range(20):  # leases
        window.send_signal(signal.SIGHUP)
        time.sleep(0.01)
    assert outcome(start("--apply")) == (3, f"kiro-dhcp-mgr is already running (process {window.pid})\n")
    assert root.calls(0) == []
    window.kill()  # whatever it leaves must not stop the next one
    window.wait()
    assert outcome(start("--apply")) == (0, "")


def test_locked_registry_is_waited_for(root, registry):
    registry.execute("BEGIN EXCLUSIVE")
    registry.execute("INSERT INTO entry VALUES('root/DHCP/Req_foo', 10, '0')")
    program = start("--apply")
    with pytest.raises(subprocess.TimeoutExpired):
        program.wait(11)  # longer than a window would wait
    registry.execute("COMMIT")
    assert outcome(program) == (0, "")
    assert root.calls(2)[1].endswith("'--del-request' 'foo'")
