"""The shipped option definitions."""

from xml.etree import ElementTree

import pytest

from trial import SOURCE


@pytest.mark.parametrize("path", (SOURCE / "data/options").iterdir(), ids=lambda path: path.stem)
def test_definition_is_named_and_translated(path):
    definition = ElementTree.parse(path)
    assert path.name == f"{int(definition.findtext('code')):03}-{definition.findtext('linux-name')}.xml"
    for translated in "name", "description":
        assert {text.get("lang") for text in definition.findall(translated)} == {"en", "de", "fr", "es"}
