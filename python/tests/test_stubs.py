# SPDX-License-Identifier: Apache-2.0
"""The stub is what the tables say today, and the type checker agrees with it."""

import ast
import os
import subprocess
import sys

from conftest import PYTHON, SOURCE, run_python

import qbobj
from qbobj import _records, stubs

STUB = PYTHON / "qbobj/__init__.pyi"


def test_the_stub_is_current(tmp_path):
    if os.environ.get("QBOBJ_UPDATE_GOLDEN") == "1":
        stubs.main([str(STUB)])
    assert stubs.main([str(tmp_path / "out.pyi")]) == 0
    assert (tmp_path / "out.pyi").read_text() == STUB.read_text(), "QBOBJ_UPDATE_GOLDEN=1 writes it anew"


def test_it_is_written_by_one_command(tmp_path):
    outcome = subprocess.run(
        [sys.executable, "-m", "qbobj.stubs", tmp_path / "out.pyi"], cwd=PYTHON, capture_output=True, text=True
    )
    assert (outcome.returncode, outcome.stdout) == (0, "111 record types, 198 operations\n")
    assert stubs.main([]) == 2


def test_every_type_and_operation_has_a_stub():
    classes = {node.name: node for node in ast.parse(STUB.read_text()).body if isinstance(node, ast.ClassDef)}
    methods = {node.name for node in classes["Operations"].body if isinstance(node, ast.FunctionDef)}
    assert methods - {"operations"} == set(qbobj.operations)
    for name, made in _records.records.items():
        fields = [node.target.id for node in classes[name].body if isinstance(node, ast.AnnAssign)]
        assert fields == [field.name for field in made._type.fields]
    assert len(_records.records) == 110 + 1, "one type belongs to a single operation and is not in the table"


WRONG = """\
import qbobj

with qbobj.open("x") as db:
    db.addUser(UserNmae="anna")  # E
    db.addUser(UserName=5)  # E
    db.addUser(FullName="Anna")  # E
    db.truncateLog()  # E
    qbobj.User(Nothing=1)  # E
    db.getLog().entries[0].Nothing  # E
    db.getUser(UserId=1).UserName.lower()  # E
    text: str = db.getUID("anna")  # E
    users: list[qbobj.User] = db.addUser([qbobj.User(UserName="anna")])
    user: qbobj.User = db.addUser(UserName="anna")
    for each in db.getUserCollection():
        print(each.UserId + 1, each.UserQuota[0].HardMB + 1)
    entries, count, total = db.getLog(severity="warning")
    print(entries[0].LogId + count + total, db.hasBackupJob(5) and 1)
    first: qbobj.Share = db.getShareCollection()[0]
    print(db.getSnapshotCollection(from_=5).Snapshot, db.operations["addUser"].codes, users, user, first)
"""


def test_the_type_checker_agrees(tmp_path):
    (tmp_path / "wrong.py").write_text(WRONG)
    checked = [PYTHON / "qbobj", SOURCE / "examples/users.py", tmp_path / "wrong.py"]
    outcome = subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", "--cache-dir", tmp_path / "cache", "--no-error-summary", *checked],
        cwd=PYTHON,
        capture_output=True,
        text=True,
    )
    errors = [line for line in outcome.stdout.splitlines() if ": error: " in line]
    assert not outcome.stderr
    assert all("wrong.py:" in line for line in errors), "\n".join(errors)
    found = {int(line.split("wrong.py:")[1].split(":")[0]) for line in errors}
    assert found == {place for place, line in enumerate(WRONG.splitlines(), 1) if line.endswith("# E")}


def test_the_example_runs(tmp_path):
    example = (SOURCE / "examples/users.py").read_text()
    outcome = run_python(f"import sys; sys.argv = ['users.py', {str(tmp_path / 'x.db')!r}]\n{example}")
    assert outcome.returncode == 0, outcome.stderr
    assert "801: User (anna) already exists. (the user name is taken)" in outcome.stdout
    assert outcome.stdout.endswith("3 users in 2 groups\n")
