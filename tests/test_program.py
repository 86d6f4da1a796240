"""The built program as a process: run modes, displays, single instance, signals, exit statuses."""

import os
import select
import shutil
import signal
import sqlite3
import subprocess

import pytest

from trial import PATIENCE, eventually

TOOL = "/usr/sbin/kiro-dhclient-edit"
CLIENT = "/usr/sbin/dhclient"
RECORDER = '#!/bin/sh\ntest $# -gt 0 || exit 0\n{}\nIFS="|"; echo "${{0##*/}}|$*" >>$KIRO_DHCP_MGR_ROOT/recorded\n'
DEFINITIONS = "/usr/share/kiro-dhcp-mgr"
REGISTRY = "/var/lib/vorkan/registry.db"
CUSTOM = "<code>200</code><linux-name>{0}</linux-name><name>Name of {0}</name><linux-type>text</linux-type>"
PREDEFINED = "<linux-name>bar</linux-name><linux-predefined>yes</linux-predefined>"
IGNORED = "Parse error, file ignored: FILE\n"
NO_DISPLAY = "Cannot open the display: could not connect to display :4711"
AS_ROOT = pytest.mark.skipif(os.geteuid() != 0, reason="for root only")
FAILED = "DhcpOption: File parse failed for FILE\n" + IGNORED


@pytest.fixture(autouse=True)
def registry(root):
    """Installs a tool and a client that only record their calls, one definition, and an administrator's registry."""
    check = "test $DBUS_SESSION_BUS_ADDRESS = disabled: || exit; kill -HUP $PPID"
    root.write(TOOL, RECORDER.format(check)).chmod(0o755)
    root.write(CLIENT, RECORDER.format("")).chmod(0o755)
    root.write("/recorded", "")
    define(root, "foo.xml", CUSTOM.format("foo"))
    connection = sqlite3.connect(root.write(REGISTRY, ""), isolation_level=None)
    connection.execute("CREATE TABLE entry(key PRIMARY KEY, type, value)")
    connection.execute("INSERT INTO entry VALUES('root/DHCP/Code_zero', 7, '0')")
    return connection


def define(root, file_name, elements):
    root.write(f"{DEFINITIONS}/{file_name}", f"<dhcp-option>\n{elements}\n</dhcp-option>")


def recorded(root, count=0):
    """The calls, once they are that many, sorted: a tool that is slow comes last."""
    notes = root.path("/recorded")
    eventually(lambda: notes.read_text().count("\n") >= count)
    return sorted(notes.read_text().splitlines())


def start(*arguments, program="app/kiro-dhcp-mgr", user=None, **environment):
    """Starts the program with nothing in its environment but what is given."""
    environment = {"PATH": "/usr/bin:/bin", "KIRO_DHCP_MGR_ROOT": os.environ["KIRO_DHCP_MGR_ROOT"], **environment}
    return subprocess.Popen([program, *arguments], env=environment, user=user, stderr=subprocess.PIPE, text=True)


def outcome(program):
    """The exit status and what it wrote to standard error."""
    errors = program.communicate(timeout=PATIENCE)[1]
    return program.returncode, errors


def test_update_without_display(root, registry):
    display = {"DISPLAY": ":4711", "QT_QPA_PLATFORM": "xcb", "QT_QPA_PLATFORMTHEME": "gtk3", "QT_STYLE_OVERRIDE": "x"}
    assert outcome(start("--show-all", "-style", "--update", **display)) == (0, "")
    assert recorded(root, 2) == ["dhclient|-1", "kiro-dhclient-edit|--add-new-option|foo 200 text|--add-request|foo"]
    assert ("root/DHCP/Req_foo", 10, "1") in registry.execute("SELECT * FROM entry")


@pytest.mark.parametrize("arguments, environment, complaint", [
    ("--Apply --apply=yes -apply -platform vnc", {"DISPLAY": ":4711"}, NO_DISPLAY),
    pytest.param("", {"DISPLAY": ":4711", "QT_QPA_PLATFORM": "vnc"}, NO_DISPLAY, marks=AS_ROOT),
    ("--apply", {"KIRO_DHCP_MGR_ROOT": "/none"}, "Cannot read config directory /none/usr/share/kiro-dhcp-mgr"),
])
def test_start_refused(root, registry, arguments, environment, complaint):
    assert outcome(start(*arguments.split(), **environment)) == (1, f"{complaint}\n")
    assert not recorded(root) and registry.execute("SELECT count(*) FROM entry").fetchone() == (1,)


def test_faulty_definitions(root):
    """They are reported in the order of their names, whose case does not matter."""
    expected = ""
    for name, elements, report in (
        ("a.txt", "", ""),
        ("b.xml/inner", "", "DhcpOption: File not readable for FILE\n" + IGNORED),
        ("C.XML", "<code>x</code>", "Bad <code> element: 'x'\nError:  No code specified in FILE\n"
         "Error:  No <linux-name> specified in FILE\nError:  No <linux-type> specified in FILE\n" + FAILED),
        ("d.xml", "<code>0</code>" + PREDEFINED, "Error:  No code specified in FILE\n" + FAILED),
        ("e.xml", "<code>1</code><name lang='fr'>bar</name>" + PREDEFINED, IGNORED),
        ("f.xml", CUSTOM.format("bar") + "<name>", FAILED),
        ("g.xml", CUSTOM.format("zero"), IGNORED),
        ("h.xml", CUSTOM.format("foo"), "Error: linux-name repeated: 'foo'\n"),
    ):
        define(root, name, elements)
        expected += report.replace("FILE", str(root.path(f"{DEFINITIONS}/{name}")).removesuffix("/inner"))
    assert outcome(start("--apply")) == (0, expected)


def test_definition_that_leads_to_a_pipe_does_not_stop_the_start(root):
    os.mkfifo(root.path("/pipe"))
    link = root.path(f"{DEFINITIONS}/link.xml")
    link.symlink_to("../../../pipe")
    assert outcome(start("--apply")) == (0, f"DhcpOption: File not readable for {link}\n"
                                            f"Parse error, file ignored: {link}\n")


def test_errors_that_nobody_reads(root):
    define(root, "bad.xml", "<code>x</code>")
    program = start("--apply")
    program.stderr.close()
    assert program.wait(PATIENCE) == 0
    assert len(recorded(root, 2)) == 2


def test_single_instance(root, request):
    first = start(QT_QPA_PLATFORM="offscreen", QT_LOGGING_RULES="qt.widgets.painting=true")
    request.addfinalizer(first.kill)
    assert select.select([first.stderr], [], [], PATIENCE)[0]  # it draws its window
    first.send_signal(signal.SIGHUP)
    assert outcome(start("--apply")) == (3, f"kiro-dhcp-mgr is already running (process {first.pid})\n")
    assert not recorded(root)
    if os.geteuid() == 0:  # another user's start, for whom the registry cannot be written
        root.path("").chmod(0o755)
        define(root, "late.xml", CUSTOM.format("late"))
        root.path(CLIENT).unlink()  # it could not record either
        complaint = f"Cannot write registry {root.path(REGISTRY)}: attempt to write a readonly database\n"
        program = shutil.copy("app/kiro-dhcp-mgr", root.path(""))  # the build may be below /root
        assert outcome(start("--apply", program=program, user=65534)) == (0, complaint)
    assert first.poll() is None
    first.kill()  # whatever it leaves must not stop the next one
    first.wait()
    assert outcome(start("--apply")) == (0, "")


def test_locked_registry(root, registry):
    """Choices are waited for that are locked for longer than a window would wait."""
    root.write(TOOL, RECORDER.format("sleep 3; echo done >&2"))  # which is slow, and left to finish
    registry.execute("BEGIN EXCLUSIVE")
    registry.execute("INSERT INTO entry VALUES('root/DHCP/Req_foo', 10, '0')")
    program = start("--apply")
    with pytest.raises(subprocess.TimeoutExpired):
        program.wait(11)
    registry.execute("COMMIT")
    assert outcome(program) == (0, "")
    assert recorded(root, 2)[1].endswith("--del-request|foo")


@pytest.mark.parametrize("spoil, reason", [
    (lambda registry: registry.write_text("#" * 2000), "file is not a database"),
    (lambda registry: (shutil.rmtree(registry.parent), registry.parent.write_text("")), "Not a directory"),
])
def test_unreadable_registry(root, spoil, reason):
    """Defaults must not take the place of choices that can't be read."""
    path = root.path(REGISTRY)
    spoil(path)
    complaint = f"Cannot read registry {path}: {reason}; the stored choices are unknown, and nothing is stored\n"
    assert outcome(start("--apply")) == (0, complaint)
    assert not recorded(root)
