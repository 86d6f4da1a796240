#!/usr/bin/python3 -B
"""Edits random configurations with mistakes, and holds the result against the real client: what it complains of and
requests on the wire. Usage, in the build directory: property.py [FILES [SEED]]; file n has the seed SEED + n."""

import multiprocessing
import random
import re
import shutil
import sys
import tempfile
from collections import Counter, namedtuple
from pathlib import Path

from realclient import RealClient, obstacle
from trial import SOURCE, run

WORKERS = 4  # the client mostly waits for the kernel
CONF = "etc/dhcp/dhclient.conf"
CODES = {"routers": [3], "ntp-servers": [42], "subnet-mask": [1], "netbios-scope": [47],
         "corp-a": [200, 201, 202], "corp-b": [210, 212], "new": [220]}  # that an option may have
Edit = namedtuple("Edit", "name code requested arguments")
TO_ANY_FILE = Edit("new", 220, True, ["--add-new-option", "new 220 text", "--add-request", "new"])  # changes it
SECTIONS = re.split(r"\n(?=\w)", (SOURCE / "tests/dhclient/grammar.txt").read_text())[1:]
GRAMMAR = {symbol: [line[2:].encode().decode("unicode_escape") for line in lines]
           for symbol, *lines in map(str.splitlines, SECTIONS)}


def expanded(choices, symbol):
    return re.sub("<(.+?)>", lambda inner: expanded(choices, inner[1]), choices.choice(GRAMMAR[symbol]))


def random_file(choices):
    text = expanded(choices, "file")
    place = choices.randrange(len(text) + 1)
    slip = choices.choice(';,"{}#x ')
    return choices.choice([text, text, text, text.rstrip(), text.replace("\n", "\r\n"),
                           text[:place] + text[place + 1:], text[:place] + slip + text[place:]])


def random_edit(choices, name):
    """A call as the program makes it."""
    codes = choices.sample(CODES[name], len(CODES[name]))
    requested = choices.random() < 0.6
    arguments = [word for code in codes[1:] for word in ("--del-new-option", f"{name} {code} text")]
    if arguments:
        arguments += ["--add-new-option" if requested else "--del-new-option", f"{name} {codes[0]} text"]
    arguments += ["--add-request" if requested else "--del-request", name]
    return Edit(name, codes[0], requested, arguments)


class Trial:
    """A random configuration, what is done to it, and what comes of that."""

    def __init__(self, seed, client, directory):
        choices = random.Random(seed)
        self.client = client
        self.conf = directory / "root" / CONF
        self.unchecked = directory / "without-client" / CONF
        self.conf.write_text(random_file(choices), newline="")
        self.edits = [TO_ANY_FILE] + [random_edit(choices, name) for name in choices.sample(list(CODES)[:-1], 2)]
        self.report = self.conf.read_text() + "\n"

    def call(self, edit, conf):
        tool = run("dhclient/kiro-dhclient-edit", *edit.arguments, env={"KIRO_DHCP_MGR_ROOT": conf.parents[2]})
        self.report += f"{edit.arguments}\n{tool.stderr.decode()}status {tool.returncode}\n"
        return tool.returncode

    def refuse(self):
        """Each edit that would change the file is refused with 1."""
        old = self.conf.read_bytes()
        for edit in self.edits:
            status = self.call(edit, self.conf)
            assert status == 1 or (status == 0 and edit != TO_ANY_FILE), "a file with a mistake is not refused"
            assert self.conf.read_bytes() == old, "refused, and changed"

    def edit(self):
        """Each edit is made, or refused with 2 where the client complains of what would come of it."""
        expected = self.client.requests(self.conf)
        assert len(expected) == 3, "the client sends nothing"
        for edit in self.edits:
            old = self.conf.read_bytes()
            shutil.copy(self.conf, self.unchecked)
            assert self.call(edit, self.unchecked) == 0, "an edit is not made where no client is"
            complaints = self.client.complaints(self.unchecked)
            assert self.call(edit, self.conf) == (2 if complaints else 0), f"the client says {complaints}"
            new = self.conf.read_bytes()
            assert new == (old if complaints else self.unchecked.read_bytes()), "not what the client was asked about"
            if not complaints:
                assert self.call(edit, self.conf) == 0 and self.conf.read_bytes() == new, "the same again changes it"
                # A slip may have declared it under yet another code.
                gone = {*CODES[edit.name], *map(int, re.findall(rf"(?i)option {edit.name} code\D+(\d+)", old.decode()))}
                wanted = {edit.code} if edit.requested else set()
                expected = {place: codes - gone | wanted for place, codes in expected.items()}
        requested = self.client.requests(self.conf)
        assert requested == expected, f"{requested}, not {expected}, of {self.conf.read_text()}"

    def carry_out(self):
        if self.client.complaints(self.conf) or re.search(r"\bunknown-\d", self.conf.read_text()):
            self.refuse()
            return "refused"
        self.edit()
        return "edited"


def start(top):
    """Each worker has a client in a namespace of its own."""
    global client, directory
    directory = Path(tempfile.mkdtemp(dir=top))
    client = RealClient(directory)
    for path in ("root/etc/dhcp", "root/sbin", "without-client/etc/dhcp"):
        (directory / path).mkdir(parents=True)
    shutil.copy(client.program, directory / "root/sbin/dhclient")


def attempt(seed):
    trial = Trial(seed, client, directory)
    try:
        return trial.carry_out(), trial.report
    except Exception as reason:
        return "wrong", f"{trial.report}seed {seed}: {reason}\n"


def main(files=300, seed=12000):
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
    sys.exit(main(*map(int, sys.argv[1:])))
