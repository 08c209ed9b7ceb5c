# SPDX-License-Identifier: Apache-2.0
"""What the documentation shows is what happens."""

import doctest
import re

from conftest import SOURCE

import qbobj


def test_the_page_about_python(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    page = (SOURCE / "docs/python.md").read_text()
    blocks = re.findall(r"^```python\n(.*?)^```", page, re.M | re.S)
    assert len(blocks) >= 6
    test = doctest.DocTestParser().get_doctest("".join(blocks), {}, "docs/python.md", None, 0)
    said = []
    result = doctest.DocTestRunner(verbose=False).run(test, out=said.append)
    assert result.failed == 0, "".join(said)
    assert result.attempted >= 20


def test_the_first_page(path, monkeypatch, capsys):
    monkeypatch.chdir(path.parent)
    with qbobj.open(path) as db:
        db.addUser(UserName="anna", Email="anna@example.com")
    (example,) = re.findall(r"^```python\n(.*?)^```", (SOURCE / "README.md").read_text(), re.M | re.S)
    exec(compile(example, "README.md", "exec"), {})
    assert capsys.readouterr().out == "anna anna@example.com\n"
