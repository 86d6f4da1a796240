"""What the tests of the built programs share. They run in the build directory, as a user or as root."""

import shutil
import subprocess
import time
from pathlib import Path
from subprocess import PIPE

SOURCE = Path(__file__).resolve().parent.parent
PATIENCE = 60  # s that a busy machine may take for anything
REGISTRY = "/var/lib/vorkan/registry.db"
CONFIGURATION = "/etc/dhcp/dhclient.conf"


# A root directory of the test's own, below which the programs find every fixed path.
class Root:
    def __init__(self, directory):
        self.directory = directory

    def path(self, fixed):
        return Path(self.directory + fixed)

    def write(self, fixed, text):
        path = self.path(fixed)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def program(self, fixed, script):
        path = self.write(fixed, f"#!/bin/bash\n{script}\n")
        path.chmod(0o755)
        return path

    def define(self, name, code, elements=""):
        return self.write(f"/usr/share/kiro-dhcp-mgr/{name}.xml", f"""<dhcp-option>
            <code>{code}</code> <linux-name>{name}</linux-name> <linux-type>text</linux-type>
            <name>Title of {name}</name> {elements}
            </dhcp-option>""")

    # Lets a program that only records how it was called take the place of one.
    def record(self, fixed):
        shutil.copy(SOURCE / "scripts/record-call", self.program(fixed, ""))

    # What was recorded, a line per call, once that many have come; in no order, since they may run at once.
    def calls(self, count):
        log = self.path("/record.log")
        log.touch()
        eventually(lambda: log.read_text().count("\n") >= count, f"{count} recorded calls")
        return sorted(log.read_text().splitlines())


# The process that ran; what it wrote is bytes, and at the end of both streams.
def run(*command, **settings):
    return subprocess.run(command, **{"stdout": PIPE, "stderr": PIPE, "timeout": PATIENCE, **settings})


# Waits until the condition holds; what is awaited is named if it does not come.
def eventually(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, f"did not come: {what}"
        time.sleep(0.01)
