"""The built edit tool: golden cases, refusals, statuses, every byte of output, what happens to files."""

import fcntl
import os
import re
import signal
import subprocess
from pathlib import Path

import pytest

from trial import PATIENCE, SOURCE, run

TOOL = Path.cwd() / "dhclient/kiro-dhclient-edit"
NAME = "kiro-dhclient-edit: "
ADD = "--add-request", "ntp-servers"


@pytest.fixture
def conf(root):
    return root.write("/etc/dhcp/dhclient.conf", "request routers;\n")


def edit(*arguments):
    """The exit status and what the tool wrote to standard error."""
    process = run(TOOL, *arguments)
    assert not process.stdout
    return process.returncode, process.stderr.decode()


def golden_cases():
    text = (SOURCE / "tests/dhclient/cases.txt").read_text("latin-1").strip().replace("<CR>", "\r")  # byte by byte
    for case in text.split("\n\n== ")[1:]:
        title, *parts = re.split("^-- .*\n", case + "\n", flags=re.MULTILINE)
        old, commands, expected, notes = [part.replace("<END>\n", "") for part in [*parts, ""][:4]]
        yield pytest.param(old, commands, expected, notes, id=title.strip())


@pytest.mark.parametrize("old, commands, expected, notes", golden_cases())
def test_golden(root, conf, old, commands, expected, notes):
    root.write("/included.conf", "option inc code 190 = text; request inc, routers;")
    conf.write_bytes(old.encode("latin-1"))
    arguments = [word for command in commands.splitlines() for word in command.split(" ", 1)]
    status, errors = edit(*arguments)
    text = conf.read_bytes().decode("latin-1")
    assert (status, text, errors.replace(f"{NAME}note: ", "")) == (0, expected, notes), (
        f"\n-- OLD\n{old}-- COMMANDS\n{commands}-- EXPECTED\n{expected}{notes}-- GOT\n{text}{errors}")
    inode = conf.stat().st_ino
    assert edit(*arguments)[0] == 0 and conf.stat().st_ino == inode  # where nothing changes, nothing is written


@pytest.mark.parametrize("text, line, reason", [
    ("timeout 5;\n\nrequest routers,\n12;\n", 3, "an option's name expected"),
    ('\nsend host-name "x;\nrequest routers;\n', 2, "a string without its closing quote"),
    ('interface "e0" {\n timeout 3;\n', 2, '"}" expected'),
    ('interface "e0" {\n timeout 3 }\ntimeout 4;\n', 2, '";" expected'),
    ("if exists routers {\n timeout 3;", 2, '"}" expected'),
    ("timeout 3;\n}", 2, 'a "}" without its "{"'),
    ("timeout 3", 1, '";" expected'),
    ("request routers,\n nosuch, another;", 2, 'unknown option "nosuch"'),
    ("option foo code 200 = array of text; require foo;", 1, 'unknown option "foo"'),
    ('interface "e0" { option foo code 200 = text; } request foo;', 1, 'unknown option "foo"'),
    ("request unknown-255;", 1, 'unknown option "unknown-255"'),
    ('include "/broken.conf";\n', 1, 'in "/broken.conf", line 2: ";" expected'),
    ('include "/unknown.conf";', 1, 'in "/unknown.conf", line 2: unknown option "nosuch"'),
    ('include "/etc/dhcp/dhclient.conf";', 1, "/etc/dhcp/dhclient.conf: too many files included"),
])
def test_broken_file(root, conf, text, line, reason):
    root.write("/broken.conf", "timeout 5;\nrequest routers\ntimeout 6;\n")
    root.write("/unknown.conf", "timeout 5;\nrequest nosuch;\n")
    conf.write_text(text)
    assert edit("--add-request", "routers") == (1, f"{NAME}{conf}, line {line}: {reason}\n")
    assert conf.read_text() == text


@pytest.mark.parametrize("command, complaint", [
    *[(f"--add-request {name}", f'"{name}" is not an option name')
      for name in (" routers", "routers;request", "space", "unknown-228")],
    ("--add-request foo\x7f\nrä", '"foo??r??" is not an option name'),
    ("--add-request nosuch", 'cannot request "nosuch": neither the client nor the file knows such an option'),
    ("--add-new-option a.b 1 text", '"a.b" belongs to an option space other than DHCPv4\'s'),
    ("--del-new-option foo x", '"x" is not an option code from 1 to 254, in "foo x"'),
    *[(f"--add-new-option foo {code} text", f'"{code}" is not an option code from 1 to 254, in "foo {code} text"')
      for code in ("0", "255", "-1", "4294967496")],
    *[(f"--add-new-option foo 2 {type}", f'"{type}" is not an option type, in "foo 2 {type}"') for type in (
        "flag", "integer", "integer 64", "unsigned text", "domain-name compressed", "array ip-address", '"text',
        "{ text, boolean }", "{ ip-address integer 8 }", "{ array of text }", "{ encapsulate x, text }",
        "array of { array of boolean }", "array of { ip-address, text }", "{ " + "boolean, " * 32 + "boolean }")],
    ("--add-new-option foo 2 { encapsulate x }", '"{ encapsulate x }" needs an option space, which is not looked into'),
    ("--add-request", "--add-request needs an argument"),
    ("routers", 'unknown argument "routers", see --help'),
])
def test_wrong_command(conf, command, complaint):
    assert edit(*ADD, *command.split(" ", 1)) == (2, f"{NAME}{complaint}\n")
    assert conf.read_text() == "request routers;\n"


@pytest.mark.parametrize("type", [
    "text", "string", "ip6-address", "signed integer 16", "domain-name", "domain-list compressed",
    "{ boolean, array of UNSIGNED  integer 32, text }"])
def test_type(conf, type):
    conf.write_text("option foo code 200 = text;\n")
    assert edit("--add-new-option", f"foo 254 {type}") == (0, "")
    assert conf.read_text() == f"option foo code 254 = {' '.join(type.lower().split())};\n"


def test_help_and_version():
    for argument, beginning in ("--help", b"Usage: kiro-dhclient-edit ["), ("--version", b"kiro-dhclient-edit 0."):
        process = run(TOOL, argument, "--add-request", "x")
        assert process.returncode == 0 and not process.stderr and process.stdout.startswith(beginning)


def test_missing_file(conf):
    conf.unlink()
    assert edit("--del-request", "ntp-servers") == (0, "")
    conf.parent.rmdir()  # no lock was taken
    assert edit(*ADD) == (1, f'{NAME}cannot lock "{conf.parent}/.dhclient.conf.lock": No such file or directory\n')
    conf.parent.mkdir()
    assert edit(*ADD) == (0, "")
    assert conf.read_text() == "also request ntp-servers;\n"
    modes = {path.name: path.stat().st_mode & 0o7777 for path in conf.parent.iterdir()}
    assert modes == {"dhclient.conf": 0o644, ".dhclient.conf.lock": 0o600}


@pytest.mark.parametrize("make, reason", [
    (os.mkfifo, "Invalid argument"),
    (lambda path: path.symlink_to(path), "Too many levels of symbolic links"),
    (lambda path: path.write_bytes(bytes(2 ** 24 + 1)), "File too large"),
])
def test_unreadable_file(conf, make, reason):
    conf.unlink()
    make(conf)
    assert edit(*ADD) == (1, f'{NAME}cannot read "{conf}": {reason}\n')


@pytest.mark.parametrize("target", ["../elsewhere/real.conf", "/etc/elsewhere/real.conf"])
def test_link_mode_and_owner(root, conf, target):
    real = root.write("/etc/elsewhere/real.conf", "request routers;\n")
    if os.geteuid() == 0:
        os.chown(real, 12, 34)
    real.chmod(0o4640)  # a change of owner would clear the first bit
    before = real.stat()
    conf.unlink()
    conf.symlink_to(target)  # the absolute one is below the root
    assert edit(*ADD) == (0, "")
    assert conf.is_symlink() and real.read_text() == "request routers, ntp-servers;\n"
    after = real.stat()
    assert (after.st_mode, after.st_uid, after.st_gid) == (before.st_mode, before.st_uid, before.st_gid)


def test_waits_for_the_lock(root, conf):
    with root.write("/etc/dhcp/.dhclient.conf.lock", "").open() as lock:
        fcntl.flock(lock, fcntl.LOCK_SH)  # even that keeps it out
        tool = subprocess.Popen([TOOL, *ADD])
        with pytest.raises(subprocess.TimeoutExpired):
            tool.wait(0.3)
        conf.write_text("request subnet-mask;\n")  # what the other run did meanwhile
    assert tool.wait(PATIENCE) == 0
    assert conf.read_text() == "request subnet-mask, ntp-servers;\n"


def test_ended_while_writing(conf):
    old = "request routers;\n" + "# filler\n" * 5000
    conf.write_text(old)
    new = conf.parent / ".dhclient.conf.new"
    limited = "prlimit", "--fsize=16384", TOOL, *ADD
    failed = run(*limited, restore_signals=False)  # ignores the signal that the limit brings
    assert (failed.returncode, failed.stderr.decode()) == (1, f'{NAME}cannot write "{new}": File too large\n')
    assert not new.exists()
    assert run(*limited).returncode == -signal.SIGXFSZ
    assert conf.read_text() == old and new.exists()
    assert edit(*ADD) == (0, "")  # over what was left
    assert conf.read_text() == old.replace("routers", "routers, ntp-servers") and not new.exists()
