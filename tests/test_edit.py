"""The built edit tool: golden cases, refusals, statuses, what happens to files."""

import fcntl
import os
import re
import shutil
import signal
import subprocess
import time
from pathlib import Path

import pytest

from realclient import INSTALLED
from trial import CONFIGURATION, PATIENCE, SOURCE, eventually, run

TOOL = Path.cwd() / "dhclient/kiro-dhclient-edit"
NAME = "kiro-dhclient-edit: "
CLIENT = "/sbin/dhclient"
ADD = "--add-request", "ntp-servers"
OLD = "request routers;\n"
NEW = "request routers, ntp-servers;\n"


@pytest.fixture
def conf(root):
    return root.write(CONFIGURATION, OLD)


# A copy, for which the machine's AppArmor profile does not hold.
@pytest.fixture
def client(root):
    root.path("/sbin").mkdir()
    shutil.copy(INSTALLED, root.path(CLIENT))


# The exit status and what the tool wrote to standard error.
def edit(*arguments):
    process = run(TOOL, *arguments)
    return process.returncode, process.stderr.decode()


def golden_cases():
    text = (SOURCE / "tests/dhclient/cases.txt").read_text().replace("<CR>", "\r")
    for case in text.split("\n\n== ")[1:]:
        title, old, commands, expected, *notes = re.split("\n-- .*\n", case.strip("\n"))
        yield pytest.param(old + "\n", commands, expected + "\n", *notes or [""], id=title)


@pytest.mark.parametrize("old, commands, expected, notes", golden_cases())
def test_golden(conf, client, old, commands, expected, notes):
    conf.write_text(old, newline="")
    arguments = [word for command in commands.splitlines() for word in command.split(" ", 1)]
    status, errors = edit(*arguments)
    with conf.open(newline="") as file:
        assert file.read() == expected
    assert (status, errors.replace(f"{NAME}note: ", "").strip()) == (0, notes)
    inode = conf.stat().st_ino
    assert edit(*arguments)[0] == 0
    assert conf.stat().st_ino == inode, "written, although nothing changes"


@pytest.mark.parametrize("text, line, reason", [
    ("timeout 3;\nrequest unknown-200;", 2, '"unknown-200" in a list: write the option\'s name'),
])
def test_file_without_structure_is_refused(conf, text, line, reason):
    conf.write_text(text)
    assert edit(*ADD) == (1, f"{NAME}{conf}, line {line}: {reason}\n")
    assert conf.read_text() == text


def test_file_with_a_mistake_is_refused_in_the_client_s_words(conf, client):
    mistake = "timeout 5;\nprepend domain-name-servers 127.0.0.1 10.0.0.1;\nrequest routers;\n"
    conf.write_text(mistake)
    refusal = 1, f"{NAME}{conf}, line 2: semicolon expected.\n"
    assert edit(*ADD) == refusal
    assert edit("--dry-run", *ADD) == refusal
    assert edit()[0] == 1
    assert conf.read_text() == mistake


@pytest.mark.parametrize("script, reason", [
    ("while :; do echo x; done", "did not end"),
    ("kill -SEGV $$", "crashed"),
])
def test_client_that_fails_refuses_the_edit_in_time(root, conf, script, reason):
    root.program(CLIENT, script)
    start = time.monotonic()
    assert edit(*ADD) == (1, f"{NAME}{conf}: dhclient {reason}\n")
    assert time.monotonic() - start < 2  # for so long the window waits


def test_client_has_no_environment_and_can_only_read(root, conf):
    path = root.path("/said")
    root.program(CLIENT, f"exec 2>{path}; export -p >&2; : </dev/tcp/127.0.0.1/9; (echo forked >&2)")
    assert edit(*ADD)[0] == 0
    said = path.read_text()
    assert set(re.findall(r"declare -x (\w+)", said)) <= {"OLDPWD", "PWD", "SHLVL"}
    assert "socket: Operation not permitted" in said
    assert "fork: Operation not permitted" in said


def test_without_a_client_the_edit_is_made_and_noted(root, conf):
    assert edit(*ADD) == (0, f"{NAME}note: dhclient could not check the edit: it did not open the file, and said: "
                             f'cannot run "{root.path(CLIENT)}": No such file or directory\n')
    assert conf.read_text() == NEW
    assert edit()[0] == 2


@pytest.mark.parametrize("command, argument, complaint", [
    ("--add-request", "foo\x7f\nrä", '"foo??r??" is not an option name'),
    ("--add-new-option", "a.b 1 text", '"a.b" belongs to an option space other than DHCPv4\'s'),
    ("--add-new-option", "foo 255 text", '"255" is not an option code from 1 to 254, in "foo 255 text"'),
    ("--frob", "routers", 'unknown argument "--frob", see --help'),
])
def test_wrong_command(conf, command, argument, complaint):
    assert edit(*ADD, command, argument) == (2, f"{NAME}{complaint}\n")
    assert conf.read_text() == OLD


def test_missing_file_is_made(conf, client):
    conf.unlink()
    assert edit("--del-request", "ntp-servers") == (0, "")
    assert not conf.exists()
    conf.with_name(".dhclient.conf.new").write_text("of a killed run")
    assert edit(*ADD) == (0, "")
    assert conf.read_text() == "also request ntp-servers;\n"
    assert conf.stat().st_mode & 0o7777 == 0o644


def test_file_that_is_too_large_is_not_cut(conf):
    conf.write_bytes(bytes(2 ** 20 + 1))
    assert edit(*ADD) == (1, f'{NAME}cannot read "{conf}": File too large\n')


def test_link_mode_and_owner_are_kept(root, conf, client):
    real = root.write("/etc/elsewhere/real.conf", OLD)
    if os.geteuid() == 0:
        os.chown(real, 0, 34)
    real.chmod(0o4640)  # a change of owner would clear the first bit
    before = real.stat()
    conf.unlink()
    conf.symlink_to("../elsewhere/link")
    root.path("/etc/elsewhere/link").symlink_to("/etc/elsewhere/real.conf")  # below the root
    assert edit(*ADD) == (0, "")
    assert conf.is_symlink()
    assert real.read_text() == NEW
    after = real.stat()
    assert (after.st_mode, after.st_uid, after.st_gid) == (before.st_mode, before.st_uid, before.st_gid)


def test_waits_for_the_lock_and_outlives_its_caller(root, conf, client):
    with root.write("/etc/dhcp/.dhclient.conf.lock", "").open() as lock:
        fcntl.flock(lock, fcntl.LOCK_SH)  # even that keeps it out
        tool = subprocess.Popen([TOOL, *ADD])
        with pytest.raises(subprocess.TimeoutExpired):
            tool.wait(0.3)
        tool.kill()
        assert tool.wait(PATIENCE) == -signal.SIGKILL
        conf.write_text("request subnet-mask;\n")  # what the other run did meanwhile
    eventually(lambda: conf.read_text() == "request subnet-mask, ntp-servers;\n", "the edit")


def test_full_disk_loses_nothing(conf, client):
    conf.write_text(OLD + "# filler\n" * 5000)
    new = conf.parent / ".dhclient.conf.new"
    failed = run("prlimit", "--fsize=16384", TOOL, *ADD, restore_signals=False)  # ignores the limit's signal
    assert (failed.returncode, failed.stderr.decode()) == (1, f'{NAME}cannot write "{new}": File too large\n')
    assert not new.exists()
    assert conf.read_text().startswith(OLD)


# Where AppArmor confines the client it reads only what its profile allows, also while an edit is asked about.
def test_installed_client_under_its_own_path():
    script = f"""mount -t tmpfs tmpfs /etc/dhcp && echo 'request routers;' >{CONFIGURATION} &&
        {TOOL} --add-request ntp-servers && ! {TOOL} --add-request nosuch && cat {CONFIGURATION}"""
    done = run("unshare", "--mount", "sh", "-c", script, env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin"})
    if b"unshare" in done.stderr:
        pytest.skip(done.stderr.decode())
    assert done.stdout.decode() == NEW
    assert b"no option named nosuch" in done.stderr
    profiles = Path("/sys/kernel/security/apparmor/profiles")
    if not profiles.exists() or "dhclient" not in profiles.read_text():
        pytest.skip("made and checked, but AppArmor does not confine the client here")
