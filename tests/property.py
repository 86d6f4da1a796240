#!/usr/bin/python3 -B
"""Edits random configurations of the kind that people write, mistakes included, as the program does, and holds the
result against the real client: what it complains of, and what it requests on the wire. Runs in the build directory.

Usage: property.py [FILES [SEED]]; file number n has the seed SEED + n. A single file is always shown."""

import multiprocessing
import random
import re
import shutil
import sys
import tempfile
from collections import Counter, namedtuple
from pathlib import Path

from realclient import INSTALLED, INTERFACES, RealClient, obstacle
from trial import SOURCE, run

WORKERS = 4  # the client mostly waits for the kernel
CONF = "etc/dhcp/dhclient.conf"
# The codes of an option, of which the last stands in no file: an edit to it changes any file.
CODES = {"routers": [3], "ntp-servers": [42], "subnet-mask": [1], "netbios-scope": [47],
         "corp-a": [200, 201, 202], "corp-b": [210, 212], "corp-new": [220, 222]}
Edit = namedtuple("Edit", "name code requested arguments")


def grammar():
    text = (SOURCE / "tests/dhclient/grammar.txt").read_text()
    sections = [section.splitlines() for section in re.split(r"\n(?=\S)", text)[2:]]
    return {symbol: [line[2:].encode().decode("unicode_escape") for line in lines] for symbol, *lines in sections}


GRAMMAR = grammar()


def expanded(choices, symbol):
    return re.sub("<(.+?)>", lambda inner: expanded(choices, inner[1]), choices.choice(GRAMMAR[symbol]))


def random_file(choices):
    text = expanded(choices, "file")
    place = choices.randrange(len(text) + 1)
    kind = choices.randrange(8)
    if kind == 0:  # a slip of the pen
        text = text[:place] + text[place + 1:]
    elif kind == 1:
        text = text[:place] + choices.choice(';,"{}#x ') + text[place:]
    elif kind == 2:
        text = text.replace("\n", "\r\n")
    elif kind == 3:
        text = text.rstrip()
    return text


def random_edit(choices, name):
    """A call as the program makes it."""
    code = choices.choice(CODES[name])
    requested = choices.random() < 0.6
    arguments = []
    if len(CODES[name]) > 1:
        declaration = "--add-new-option" if requested else "--del-new-option"
        others = [other for other in CODES[name] if other != code]
        arguments += [word for other in others for word in ("--del-new-option", f"{name} {other} text")]
        arguments += [declaration, f"{name} {code} text"]
    arguments += ["--add-request" if requested else "--del-request", name]
    return Edit(name, code, requested, arguments)


class Trial:
    """A random configuration, what is done to it, and what comes of that."""

    def __init__(self, seed, client):
        choices = random.Random(seed)
        self.client = client
        self.conf = client.directory / "root" / CONF
        self.unchecked = client.directory / "without-client" / CONF
        self.conf.write_text(random_file(choices), newline="")
        always = Edit("corp-new", 220, True, ["--add-new-option", "corp-new 220 text", "--add-request", "corp-new"])
        self.edits = [always] + [random_edit(choices, name) for name in choices.sample(list(CODES), 2)]
        self.report = f"{self.conf.read_text()}\n=== COMMANDS\n"

    def call(self, edit, conf):
        tool = run("dhclient/kiro-dhclient-edit", *edit.arguments, env={"KIRO_DHCP_MGR_ROOT": conf.parents[2]})
        self.report += f"{edit.arguments}\n{tool.stderr.decode()}status {tool.returncode}\n"
        return tool.returncode

    def refused(self):
        """Mistakes in the file: each edit that would change it is refused with 1."""
        old = self.conf.read_bytes()
        for number, edit in enumerate(self.edits):
            status = self.call(edit, self.conf)
            assert status == 1 or (number > 0 and status == 0), "a file with a mistake is not refused"
            assert self.conf.read_bytes() == old, "refused, and changed"

    def edited(self):
        """No mistake: each edit is made, or refused with 2 where the client complains of what would come of it."""
        expected = {interface: set(codes) for interface, codes in self.client.requests(self.conf).items()}
        for edit in self.edits:
            old = self.conf.read_bytes()
            shutil.copy(self.conf, self.unchecked)
            assert self.call(edit, self.unchecked) == 0, "an edit is not made where no client is"
            complaints = self.client.complaints(self.unchecked)
            assert self.call(edit, self.conf) == (2 if complaints else 0), f"the client says {complaints}"
            new = self.conf.read_bytes()
            assert new == (old if complaints else self.unchecked.read_bytes()), "another file than was checked"
            assert complaints or self.call(edit, self.conf) == 0 and self.conf.read_bytes() == new, "the same again"
            for codes in expected.values() if not complaints else ():
                codes.difference_update(CODES[edit.name])
                codes.update([edit.code] if edit.requested else [])
        self.report += f"=== NEW\n{self.conf.read_text()}\n"
        requested = {interface: set(codes) for interface, codes in self.client.requests(self.conf).items()}
        assert requested.keys() == set(INTERFACES) and requested == expected, f"{requested}, not {expected}"

    def carry_out(self):
        complaints = self.client.complaints(self.conf)
        self.report += f"=== CLIENT\n{complaints}\n"
        lists = re.findall(r"\bre(?:quest|quire)\b[^;]*", re.sub("#.*", "", self.conf.read_text()), re.IGNORECASE)
        if complaints or any("unknown-" in names for names in lists):
            self.refused()
            return "refused"
        self.edited()
        return "edited"


def start(top):
    """Each worker has a client in a namespace of its own."""
    global client
    client = RealClient(Path(tempfile.mkdtemp(dir=top)))
    for root in ("root", "without-client"):
        (client.directory / root / CONF).parent.mkdir(parents=True)
    (client.directory / "root/sbin").mkdir()
    (client.directory / "root/sbin/dhclient").symlink_to(INSTALLED)


def attempt(seed):
    trial = Trial(seed, client)
    try:
        return trial.carry_out(), trial.report
    except Exception as reason:
        return "wrong", f"{trial.report}seed {seed}: {reason}\n"


def main(files="300", seed="12000"):
    files, seed = int(files), int(seed)
    if obstacle():
        print("Skipped:", obstacle())
        return 77
    counts = Counter()
    with tempfile.TemporaryDirectory() as top, multiprocessing.Pool(min(WORKERS, files), start, [top]) as workers:
        for result, report in workers.imap(attempt, range(seed, seed + files)):
            counts[result] += 1
            if files == 1 or (result == "wrong" and counts["wrong"] <= 10):
                print("\n======", report, sep="\n", flush=True)
    print(f"{files} files:", *(f"{counts[what]} {what}" for what in ("edited", "refused", "wrong")))
    # Too few of either kind would prove nothing.
    return counts["wrong"] > 0 or files >= 100 and min(counts["edited"], counts["refused"]) <= files / 4


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
