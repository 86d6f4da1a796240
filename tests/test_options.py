"""The shipped option definitions, held against the program's own reader, the edit tool and the client."""

import tempfile
from collections import namedtuple
from pathlib import Path
from xml.etree import ElementTree

import pytest

from realclient import RealClient, obstacle
from trial import SOURCE, run

Option = namedtuple("Option", "path name code type predefined")


def shipped_options():
    for path in sorted((SOURCE / "data/options").iterdir()):
        element = ElementTree.parse(path).findtext
        yield Option(path, element("linux-name"), int(element("code")), element("linux-type"),
                     element("linux-predefined") == "Yes")


OPTIONS = list(shipped_options())


@pytest.fixture(scope="module")
def client():
    if obstacle():
        pytest.skip(obstacle())
    with tempfile.TemporaryDirectory() as directory:
        yield RealClient(Path(directory))


@pytest.mark.parametrize("option", OPTIONS, ids=lambda option: option.name)
def test_definition_is_named_and_translated(option):
    assert option.path.name == f"{option.code:03}-{option.name}.xml"
    for translated in "name", "description":
        texts = ElementTree.parse(option.path).findall(translated)
        assert {text.get("lang") for text in texts} == {"en", "de", "fr", "es"}


def test_codes_on_the_wire(root, client):
    conf = root.write("/etc/dhcp/dhclient.conf", "request;\n")
    arguments = []
    for option in OPTIONS:
        if not option.predefined:
            arguments += ["--add-new-option", f"{option.name} {option.code} {option.type}"]
        arguments += ["--add-request", option.name]
    assert run("dhclient/kiro-dhclient-edit", *arguments).returncode == 0
    assert client.complaints(conf) == []
    assert client.requests(conf)["eth0"] == {option.code for option in OPTIONS}
