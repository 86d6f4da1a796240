"""What the tests of the built programs share. They run in the build directory, as a user or as root."""

import subprocess
import time
from collections import namedtuple
from pathlib import Path
from xml.etree import ElementTree

SOURCE = Path(__file__).resolve().parent.parent
PATIENCE = 60  # s that a busy machine may take for anything

Option = namedtuple("Option", "name code type predefined example requested")


def shipped_options():
    for path in sorted((SOURCE / "data/options").glob("*.xml")):
        element = ElementTree.parse(path).findtext
        yield Option(element("linux-name"), int(element("code")), element("linux-type"),
                     element("linux-predefined") == "Yes", element("example"), element("default") == "Yes")


class Root:
    """A root directory of the test's own, below which the programs find every fixed path."""

    def __init__(self, directory):
        self.directory = directory

    def path(self, fixed):
        return Path(self.directory + fixed)

    def write(self, fixed, text):
        path = self.path(fixed)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path


def run(*command, **settings):
    """The process that ran; what it wrote is bytes, and at the end of both streams."""
    return subprocess.run(command, capture_output=True, timeout=PATIENCE, **settings)


def eventually(condition):
    """Waits, for as long as a busy machine may need, until the condition holds."""
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.01)
