import tempfile

import pytest

from trial import Root


@pytest.fixture
def root(monkeypatch):
    with tempfile.TemporaryDirectory() as directory:
        monkeypatch.setenv("KIRO_DHCP_MGR_ROOT", directory + "/")
        yield Root(directory)
