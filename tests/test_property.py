"""Edits random configurations and compares what the real client complains of and requests on the wire."""

import os
import shutil
import tempfile
from pathlib import Path

import pytest
from hypothesis import HealthCheck, given, settings, strategies as st

from realclient import RealClient, obstacle
from trial import CONFIGURATION, run

# How many; beyond 300 they differ from run to run.
FILES = int(os.environ.get("FILES", 100))
CODES = {"ntp-servers": [42], "subnet-mask": [1], "corp-a": [200, 201], "new": [220]}  # that an option may have
ADD_NEW = ["--add-new-option", "new 220 text", "--add-request", "new"]  # changes any file

STATEMENTS = st.sampled_from([
    'timeout 60;',
    'supersede domain-name "a;b}";',
    'prepend domain-name-servers 127.0.0.1, 192.0.2.1;',
    'if option host-name = "x}" { timeout 5; } else { append domain-name "\\"{"; }',
    '# request routers; "open\n',
    'option space corp;\noption corp.proxy code 1 = text;',
    'pseudo "p" "wlan0" { timeout 3; }',
    'option corp-a code 200 = text; supersede corp-a "x;}";',
    'option CORP-A code\n\t201 = unsigned integer 8;',
    'option corp-b code 210 = text; request corp-b, routers;',
    'alias { interface "eth0"; fixed-address 192.0.2.9; }',
    'lease {\n interface "eth0"; fixed-address 192.0.2.5;\n option host-name "a;}"; expire epoch 1;\n}',
])
MISTAKES = st.sampled_from([
    'supersede interface-mtu "x";',
    'prepend domain-name-servers 127.0.0.1 192.0.2.1;',
    'supersede domain-name example.com;',
    'frobnicate 5;',
    'timeout 5',
    'request routers ntp-servers;',
    'also request no-such-option;',
    'request unknown-12;',
    'option corp-a code 200 = nonsense;',
    'supersede domain-name "x;',
    '}',
    'interface "eth0" {',
])
NAMES = st.sampled_from(["subnet-mask", "routers", "NTP-servers", "ntp-servers", "dhcp6.name-servers", "corp-a"])
KEYWORDS = st.sampled_from(["request ", "ReQuest\n", "also request ", "require ", "also require "])
SEPARATORS = st.sampled_from([", ", ",", " ,\n    ", ", # not; \"this}\n"])
ENDS = st.sampled_from(["\n", " ", " # words, more;\n", "\n\n"])


@st.composite
def request_lists(draw):
    names = draw(st.lists(NAMES, max_size=4))
    return draw(KEYWORDS) + draw(SEPARATORS).join(names) + ";"


@st.composite
def blocks(draw):
    content = draw(st.lists(request_lists() | st.just("timeout 3;"), max_size=3))
    return draw(st.sampled_from(["interface \"eth0\" {", "Interface\n\"wlan0\"\n{ "])) + "\n".join(content) + "}"


@st.composite
def files(draw):
    statements = draw(st.lists(request_lists() | request_lists() | STATEMENTS | blocks(), min_size=1, max_size=7))
    if draw(st.booleans()):
        statements.insert(draw(st.integers(0, len(statements))), draw(MISTAKES))
    text = "".join(statement + draw(ENDS) for statement in statements)
    return draw(st.sampled_from([text, text, text.rstrip(), text.replace("\n", "\r\n")]))


# A name, its code, whether it is to be requested, and a call for that as the program makes it.
@st.composite
def edits(draw):
    name = draw(st.sampled_from(list(CODES)))
    code, *others = draw(st.permutations(CODES[name]))
    requested = draw(st.booleans())
    arguments = [word for other in others for word in ("--del-new-option", f"{name} {other} text")]
    if name in ("corp-a", "new"):
        arguments += ["--add-new-option" if requested else "--del-new-option", f"{name} {code} text"]
    return name, code, requested, arguments + ["--add-request" if requested else "--del-request", name]


@pytest.fixture(scope="module")
def client():
    if obstacle():
        pytest.skip(obstacle())
    with tempfile.TemporaryDirectory() as directory:
        yield RealClient(Path(directory))


# A file that the tool edits, in a root with the client.
@pytest.fixture(scope="module")
def conf(client):
    root = client.program.parent / "root"
    for directory in "etc/dhcp", "sbin":
        (root / directory).mkdir(parents=True)
    shutil.copy(client.program, root / "sbin/dhclient")
    return Path(f"{root}{CONFIGURATION}")


def call(conf, arguments):
    tool = run("dhclient/kiro-dhclient-edit", *arguments, env={"KIRO_DHCP_MGR_ROOT": conf.parents[2]})
    return tool.returncode


@settings(max_examples=FILES, derandomize=FILES <= 300, deadline=None, suppress_health_check=list(HealthCheck))
@given(text=files(), edit=edits())
def test_edit_has_the_effect_on_the_wire_that_was_asked_for(client, conf, text, edit):
    name, code, is_requested, arguments = edit
    conf.write_text(text, newline="")
    old = conf.read_bytes()
    if client.complaints(conf) or "unknown-" in text:
        assert call(conf, ADD_NEW) == 1
        assert conf.read_bytes() == old
        return
    expected = client.requests(conf)
    status = call(conf, arguments)
    if status == 2:  # because the client would complain of the result, which is made where no client is
        client_of_root = conf.parents[2] / "sbin/dhclient"
        away = client_of_root.rename(client_of_root.with_name("away"))
        assert call(conf, arguments) == 0
        away.rename(client_of_root)
        assert client.complaints(conf), "refused without a reason"
        return
    assert status == 0
    assert client.complaints(conf) == []
    wanted = {code} if is_requested else set()
    assert client.requests(conf) == {place: codes - set(CODES[name]) | wanted for place, codes in expected.items()}
    new = conf.read_bytes()
    assert call(conf, arguments) == 0
    assert conf.read_bytes() == new
