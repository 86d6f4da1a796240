"""What a definition may say, and the values received for its option, as kiro-dhcpctl shows them."""

import json
import os

import pytest

from trial import run

IGNORED = "Parse error, file ignored: {}\n"
FAILED = "DhcpOption: File parse failed for {}\n" + IGNORED


# What is shown of an option whose definition has these elements beside the necessary ones.
def show(root, elements="", **environment):
    root.define("foo", 200, elements)
    shown = run("ctl/kiro-dhcpctl", "show", "foo", "--json", env=os.environ | environment)
    assert shown.stderr == b""
    return json.loads(shown.stdout)


@pytest.mark.parametrize("elements, key, value", [
    ("<code>0x2A</code>", "standard_code", 42),
    ("<NAME LANG='en'>a&lt;b</NAME>", "title", "a<b"),
    ("<dhcp-class>always on</dhcp-class>", "class", "always-on"),
    ("<default>Disabled</default>", "requested", False),
    ("<linux-predefined>Yes</linux-predefined>", "predefined", True),
])
def test_accepted(root, elements, key, value):
    assert show(root, elements)[key] == value


@pytest.mark.parametrize("elements, complaint", [
    ("<code>42h</code>", "Bad <code> element: '42h'"),
    ("<linux-type>array of unsigned text</linux-type>", "Bad <linux-type> element: 'array of unsigned text'"),
    ("<Comment>x</Comment>", "Unrecognized element 'Comment'"),
])
def test_bad_element_is_reported_and_the_file_ignored(root, elements, complaint):
    path = root.define("foo", 200, elements)
    done = run("ctl/kiro-dhcpctl", "check")
    assert f"this definition cannot be used: {path}\n" in done.stdout.decode()
    assert done.stderr.decode() == f"{complaint}\n" + FAILED.format(path, path)


def test_faulty_files_are_reported_in_the_order_of_their_names(root):
    directory = "/usr/share/kiro-dhcp-mgr"
    deep = root.write(f"{directory}/B.XML", "<name>" * 200000)  # Qt's reader calls itself for each
    nameless = root.write(f"{directory}/c.xml", "<dhcp-option> <code>1</code> <linux-name>c</linux-name> "
                                                "<linux-predefined>yes</linux-predefined> </dhcp-option>")
    endless = root.path(f"{directory}/d.xml")
    endless.symlink_to("/dev/zero")
    assert run("ctl/kiro-dhcpctl", "list").stderr.decode() == (
        f"Error:  No code specified in {deep}\nError:  No <linux-name> specified in {deep}\n"
        f"Error:  No <linux-type> specified in {deep}\n" + FAILED.format(deep, deep) + IGNORED.format(nameless)
        + f"DhcpOption: File not readable for {endless}\n" + IGNORED.format(endless))


@pytest.mark.parametrize("locale, title", [
    ("de_AT.UTF-8", "German"),
    ("fr_FR.UTF-8", "American"),
])
def test_name_in_the_language_of_the_user(root, locale, title):
    names = "".join(f"<name lang='{language}'>{text}</name>" for language, text in (
        ("de", "German"), ("en_US", "American"), ("en", "English")))
    assert show(root, names, LC_ALL=locale)["title"] == title


@pytest.mark.parametrize("content, value", [
    ("\n # a=b\n\n no assignment\n  x=a=b \nx=2", "a=b "),
    ("x=\"quoted\"", "quoted"),
    ("x='äö €'\r\n", "äö €"),
])
def test_value(root, content, value):
    root.write("/var/lib/dhcp3/vars/eth0/foo", content)
    assert show(root)["value"] == value


def test_value_comes_from_the_first_file_that_can_be_opened(root):
    for file in "eth1/foo-bar", "eth0/foo_bar", "eth0/foo-bar":
        root.write(f"/var/lib/dhcp3/vars/{file}", f"x={file}")
        root.define("foo_bar", 200)
        shown = run("ctl/kiro-dhcpctl", "list").stdout.decode()
        assert shown == f"on\t200\tfoo_bar\t{file}\n"
