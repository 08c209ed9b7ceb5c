# SPDX-License-Identifier: Apache-2.0
"""Real databases for the tests, and what they look like inside."""

import contextlib
import os
import shutil
import sqlite3
import subprocess
import sys
from pathlib import Path

import pytest

import qbobj

PYTHON = Path(__file__).resolve().parents[1]
SOURCE = PYTHON.parent


@pytest.fixture(scope="session")
def fresh(tmp_path_factory):
    name = tmp_path_factory.mktemp("fresh") / "appliance.db"
    qbobj.open(name, create=True, volume="tank").close()
    return name


@pytest.fixture
def path(tmp_path, fresh):
    """A fresh database with one volume, closed."""
    return Path(shutil.copy(fresh, tmp_path))


@pytest.fixture
def db(path):
    with qbobj.open(path, timeout=0.2) as handle:
        yield handle


def content(path):
    """Everything that is in a database, as SQL."""
    with contextlib.closing(sqlite3.connect(path)) as connection:
        return list(connection.iterdump())


def execute(path, *statements):
    """Changes a database behind the library's back."""
    with contextlib.closing(sqlite3.connect(path, isolation_level=None)) as connection:
        return [connection.execute(statement).fetchall() for statement in statements]


@pytest.fixture
def unchanged(path):
    """A block that must leave the database as it is."""

    @contextlib.contextmanager
    def block():
        before = content(path)
        yield
        assert content(path) == before

    return block


def run_python(code, **environment):
    """Runs a program of its own that knows the package."""
    return subprocess.run(
        [sys.executable, "-c", code],
        env={**os.environ, "PYTHONPATH": str(PYTHON), **environment},
        capture_output=True,
        text=True,
        timeout=60,
    )
