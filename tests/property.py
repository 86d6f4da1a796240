#!/usr/bin/python3 -B
"""Edits random configurations of the kind that people write as the program does, and reads from the wire what the real
client requests before and after. Runs in the build directory.

Usage: property.py [FILES [SEED]]; file number n has the seed SEED + n. A single file is always shown."""

import multiprocessing
import random
import re
import sys
import tempfile
from collections import Counter, defaultdict, namedtuple
from pathlib import Path

from realclient import INTERFACES, RealClient, obstacle
from trial import Option, SOURCE, run, shipped_options

WORKERS = 8  # the client mostly waits for the kernel
Edit = namedtuple("Edit", "name code requested arguments")  # a call as the program makes it, with the code in the end


def grammar():
    """What the file says of itself becomes symbols that stand for nothing. Trial knows those that are missing there."""
    text = (SOURCE / "tests/dhclient/grammar.txt").read_text()
    sections = (section.splitlines() for section in re.split(r"\n(?=\S)", text))
    return {symbol: [line[2:].encode().decode("unicode_escape") for line in lines] for symbol, *lines in sections}


GRAMMAR = grammar()
OPTIONS = list(shipped_options())


class Trial:
    """A random configuration, what is done to it, and what comes of that."""

    def __init__(self, seed, directory):
        self.random = random.Random(seed)
        self.choice = self.random.choice
        self.directory = directory
        usable = [option for option in OPTIONS if option.type in GRAMMAR]
        self.predefined = self.random.sample([option for option in usable if option.predefined], 10)
        self.custom = self.random.sample([option for option in usable if not option.predefined], 3)
        self.custom.append(Option("corp-proxy", 200, "text", False, "x", False))  # of no definition
        self.declared = []  # so far
        self.codes = defaultdict(set)  # that definitions, declarations and edits give a name
        self.codes.update({option.name: {option.code} for option in OPTIONS if option.predefined})
        self.included = {}  # texts by path
        self.untouchable = []  # statements and comments, perhaps of an included file
        self.text = self.expanded("file")
        if self.chance(3):
            self.text = self.text[:self.random.randrange(len(self.text) + 1)]
        if self.chance(8):
            self.text = self.text.replace("\n", "\r\n")
        self.edits = [self.edit() for _ in range(self.random.randint(1, 4))]
        self.done = []  # edits
        self.noted = set()  # options with a note
        self.counts = Counter()
        self.report = ""

    def chance(self, percent):
        return self.random.randrange(100) < percent

    def expanded(self, symbol):
        if symbol == "name":
            symbol = "dotted" if self.chance(3) else "numbered" if self.chance(3) else "option"
        if symbol in ("option", "custom"):
            known = self.declared if self.declared and self.chance(35) else self.predefined
            self.last = self.choice(self.custom if symbol == "custom" else known)
            return self.last.name[0] + self.last.name[1:].upper() if self.chance(6) else self.last.name
        if symbol == "number":
            return str(self.choice(self.predefined + self.custom).code)
        if symbol == "code":
            self.declared.append(self.last)
            code = self.last.code if self.chance(75) else self.random.randrange(200, 250)
            self.codes[self.last.name].add(code)
            return str(code)
        if symbol == "type":
            return self.last.type
        if symbol == "included":
            path = f"{self.directory}/included-{len(self.included)}"
            self.included[path] = ""  # taken, should it include others
            if len(self.included) < 4:
                self.included[path] = self.expanded("statements")
            return path
        text = self.choice(GRAMMAR[self.last.type if symbol == "value" else symbol])
        text = re.sub("<(.+?)>", lambda inner: self.expanded(inner[1]), text)
        if symbol in ("setting", "keyword", "comment", "top"):
            self.untouchable.append(text)
        return text

    def edit(self):
        option = self.choice(self.choice((self.custom, self.predefined)))
        code = option.code
        requested = self.chance(60)
        calls = []
        if not option.predefined:
            code, applied = self.random.choices((code, self.random.randrange(150, 250)), (3, 1), k=2)
            calls += [("--del-new-option", former) for former in (option.code, applied) if former != code]
            calls.append(("--add-new-option" if requested else "--del-new-option", code))
            self.codes[option.name] |= {number for _, number in calls}
        arguments = [word for command, number in calls for word in (command, f"{option.name} {number} {option.type}")]
        arguments += ["--add-request" if requested else "--del-request", option.name]
        return Edit(option.name, code, requested, arguments)

    def carry_out(self, client):
        conf = self.directory / "etc/dhcp/dhclient.conf"

        def file():  # the text, and what changes when it is written again
            return conf.read_bytes(), conf.stat().st_ino

        def call(edit):
            tool = run("dhclient/kiro-dhclient-edit", *edit.arguments, env={"KIRO_DHCP_MGR_ROOT": self.directory})
            if b": note: " in tool.stderr:
                self.noted.add(edit.name)
            self.report += f"{edit.arguments}\n{tool.stderr.decode()}status {tool.returncode}\n"
            return tool.returncode

        for path, text in {conf: self.text, **self.included}.items():
            Path(path).write_bytes(text.encode())
            self.report += f"=== {path}\n{text}\n"
        complaints, self.before = client.run(conf)
        self.is_sound = not complaints
        self.repairs = set(re.findall("no option named ([^ \n]+)", complaints))  # which declared take effect
        self.report += f"{complaints}\n=== COMMANDS\n"
        old = file()
        for edit in self.edits:
            previous = file()
            status = call(edit)
            if status == 0:
                self.done.append(edit)
                edited = file()
                assert call(edit) == 0 and file() == edited, "the same again is refused, or writes again"
            else:
                assert status in (1, 2) and file() == previous, "refused in a wrong way"
                assert not self.is_sound, "a sound file is refused"
        text = file()[0].decode()
        complaints, self.after = client.run(conf) if file() != old else ("", self.before)
        self.report += f"=== NEW\n{text}\n{complaints}\n"
        # Debian 13's client ends with a segmentation fault over some lists of names by number.
        if len(self.after) < len(self.before) and "unknown-" in text:
            complaints, self.after = "", self.before
            self.done.clear()
        for statement in self.untouchable:
            assert statement in text or statement not in self.text, "changes " + statement
        assert not (self.is_sound and complaints), "the client complains of the edited file"
        self.counts.update(sound=self.is_sound, changed=file() != old, noted=bool(self.noted))

    def compare(self, interface):
        """What the client requests on one interface before and after."""
        old = set(self.before.get(interface, ()))
        now = set(self.after.get(interface, ()))
        done = {edit.name: edit for edit in self.done}  # the last one of each option
        # How many names a code has; the wire does not show which of them is requested.
        owners = Counter(code for codes in self.codes.values() for code in codes)
        touched = set().union(*(self.codes[name] for name in done))
        excused = set().union(*(self.codes[name] for name in self.noted))
        wanted = {edit.code for edit in done.values() if edit.requested}
        expected = wanted | old - touched
        self.report += f"EXPECTED {interface}: {sorted(expected)}\nGOT      {interface}: {sorted(now)}\n"
        differing = {code for code in expected ^ now if code in expected or owners[code] < 2 or code not in touched}
        lost = differing & old - touched
        for name in done.keys() - {edit.name for edit in self.done if not edit.requested}:
            own = {code for code in self.codes[name] if owners[code] == 1}
            if own & old and not own & now and owners[done[name].code] == 1:
                lost |= own
        # Lists that the client dropped for an unknown name take effect when it is declared.
        assert not lost or self.repairs & done.keys(), f"{interface} no longer requests {lost}"
        wrong = differing - excused - lost
        assert not (self.is_sound and wrong), f"{interface} is wrong in {wrong}, and no note says why"


def start(top):
    """Each worker has a client in a namespace of its own."""
    global client
    client = RealClient(Path(tempfile.mkdtemp(dir=top)))
    (client.directory / "etc/dhcp").mkdir(parents=True)
    # The tool looks below its root for what the client includes by the same absolute path.
    below = Path(f"{client.directory}{client.directory}")
    below.parent.mkdir(parents=True)
    below.symlink_to(client.directory)


def attempt(seed):
    trial = Trial(seed, client.directory)
    try:
        trial.carry_out(client)
        for interface in INTERFACES:
            trial.compare(interface)
    except Exception as reason:
        trial.counts["wrong"] = 1
        trial.report += f"seed {seed}: {reason}\n"
    return trial.counts, trial.report


def main(files="400", seed="12000"):
    files, seed = int(files), int(seed)
    if obstacle():
        print("Skipped:", obstacle())
        return 77
    counts = Counter()
    with tempfile.TemporaryDirectory() as top, multiprocessing.Pool(min(WORKERS, files), start, [top]) as workers:
        for result, report in workers.imap(attempt, range(seed, seed + files)):
            counts += result
            if files == 1 or (result["wrong"] and counts["wrong"] <= 10):
                print("\n======", report, sep="\n", flush=True)
    print(f"{files} files:", *(f"{counts[what]} {what}" for what in ("sound", "changed", "noted", "wrong")))
    # Too few sound files would prove nothing.
    return counts["wrong"] > 0 or files >= 100 and min(counts["sound"], counts["changed"]) <= files / 2


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
