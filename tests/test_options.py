"""The shipped option definitions, held against the program's own reader, the edit tool and the client."""

import re
import shutil
import tempfile
from pathlib import Path
from xml.etree import ElementTree

import pytest

from realclient import RealClient, obstacle
from trial import SOURCE, run, shipped_options

DEFINITIONS = SOURCE / "data/options"
OPTIONS = list(shipped_options())


@pytest.fixture(scope="module")
def client():
    if obstacle():
        pytest.skip(obstacle())
    with tempfile.TemporaryDirectory() as directory:
        yield RealClient(Path(directory))


def test_definitions(root):
    for path, option in zip(sorted(DEFINITIONS.iterdir()), OPTIONS):
        assert path.name == f"{option.code:03}-{option.name}.xml"
        for translated in ("name", "description"):
            texts = ElementTree.parse(path).findall(translated)
            assert {text.get("lang") for text in texts} == {"en", "de", "fr", "es"}, path.name
    assert len({option.code for option in OPTIONS}) == len(OPTIONS)
    # What Debian's dhclient.conf requests, no more and no less.
    requested = {option.name for option in OPTIONS if option.requested}
    assert requested == set("""subnet-mask broadcast-address time-offset routers domain-name domain-name-servers
        domain-search host-name netbios-name-servers netbios-scope interface-mtu rfc3442-classless-static-routes
        ntp-servers""".split())
    shutil.copytree(DEFINITIONS, root.path("/usr/share/kiro-dhcp-mgr"))
    program = run("app/kiro-dhcp-mgr", "--apply")
    assert (program.returncode, program.stderr) == (0, b"")


def literal(option):
    """The example as a person reads it, written as the client's configuration wants it."""
    value = option.example
    if option.type.startswith("array"):
        return value.replace(" ", ", ")
    if option.type == "domain-list":
        value = value.replace(" ", '", "')
    is_data = option.type == "string" and re.fullmatch("[0-9a-f]{1,2}(:[0-9a-f]{1,2})+", value)
    return f'"{value}"' if option.type in ("text", "string", "domain-list") and not is_data else value


def test_codes_on_the_wire(root, client):
    """The edit tool declares and requests each option. The client takes the result, and the examples, and sends the
    codes."""
    conf = root.write("/etc/dhcp/dhclient.conf", "request;\n")
    arguments = []
    for option in OPTIONS:
        if not option.predefined:
            arguments += ["--add-new-option", f"{option.name} {option.code} {option.type}"]
        arguments += ["--add-request", option.name]
    assert run("dhclient/kiro-dhclient-edit", *arguments).returncode == 0
    with conf.open("a") as file:
        for option in OPTIONS:
            if "{" not in option.type:  # a record
                file.write(f"supersede {option.name} {literal(option)};\n")
    assert client.complaints(conf) == []
    assert client.requests(conf)["eth0"] == {option.code for option in OPTIONS}
