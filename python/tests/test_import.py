# SPDX-License-Identifier: Apache-2.0
"""What happens without the library, with an old one, and with a newer one."""

import os
import shutil
import subprocess

import pytest
from conftest import SOURCE, run_python

from qbobj import _library

NAME = _library.library._name
LIBRARY = os.path.realpath(NAME) if os.sep in NAME else f"-l:{NAME}"


def fake(tmp_path, code, *flags):
    source, library = tmp_path / "fake.c", tmp_path / "fake.so"
    source.write_text(code)
    subprocess.run([shutil.which("cc"), "-shared", "-fPIC", "-o", library, source, *flags], check=True)
    return str(library)


def import_error(library):
    outcome = run_python("import qbobj", QBOBJ_LIBRARY=library)
    assert outcome.returncode == 1
    last = outcome.stderr.splitlines()[-1]
    assert last.startswith("ImportError: ")
    return last


def test_no_library(tmp_path):
    message = import_error(str(tmp_path / "none.so"))
    assert "libqbobj.so.1 cannot be loaded" in message
    assert "none.so" in message and "QBOBJ_LIBRARY" in message
    assert str(tmp_path / "libqbobj.so.1") in import_error(str(tmp_path)), "a directory is one that holds it"


def test_another_library(tmp_path):
    message = import_error(fake(tmp_path, "int nothing;"))
    assert "does not tell its version: it is no libqbobj.so.1, or too old" in message


@pytest.mark.parametrize(
    ("version", "message"),
    [
        ("0.9.3", "is version 0.9.3, which is too old: 1.0 or newer is needed"),
        ("2.0.0", "is version 2.0.0: this package is made for versions 1.x"),
        ("1.0.0", "has no function qbobj_types: it is too old"),
    ],
)
def test_a_library_of_another_version(tmp_path, version, message):
    code = f'const char *qbobj_version(void) {{ return "{version}"; }}'
    assert message in import_error(fake(tmp_path, code))


GROWN = """
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <qbobj.h>
#define MORE 40
#define STEP(row) (sizeof(row) + MORE)

static struct { const QbobjField *from, *to; } known[256];

static const QbobjField *grown_fields(const QbobjField *from)
{
    int i = 0, count = 1;
    if (!from) return NULL;
    for (; known[i].from; i++) if (known[i].from == from) return known[i].to;
    while (from[count++].kind != '.') continue;
    char *to = malloc(count * STEP(QbobjField));
    memset(to, 0xFF, count * STEP(QbobjField));
    known[i].from = from;
    known[i].to = (void *)to;
    for (int k = 0; k < count; k++) {
        memcpy(to + k * STEP(QbobjField), from + k, sizeof(QbobjField));
        ((QbobjField *)(to + k * STEP(QbobjField)))->subtype = grown_fields(from[k].subtype);
    }
    return (void *)to;
}

const QbobjType *grown_types(void)
{
    int count = 0;
    const QbobjType *from = qbobj_types();
    while (from[count++].name) continue;
    char *to = calloc(count, STEP(QbobjType));
    for (int i = 0; i < count; i++) {
        QbobjType row = {from[i].name, grown_fields(from[i].fields)};
        memcpy(to + i * STEP(QbobjType), &row, sizeof row);
    }
    return (void *)to;
}

const QbobjOperation *grown_operations(void)
{
    int count = 0;
    const size_t step = STEP(QbobjOperation) + QBOBJ_MAX_ARGUMENTS * MORE;
    const QbobjOperation *from = qbobj_operations();
    while (from[count++].name) continue;
    char *to = malloc(count * step);
    memset(to, 0xFF, count * step);
    for (int i = 0; i < count; i++) {
        char *row = to + i * step, *at = row + offsetof(QbobjOperation, arguments);
        memcpy(row, from + i, offsetof(QbobjOperation, arguments));
        for (int k = 0; k < QBOBJ_MAX_ARGUMENTS; k++, at += STEP(QbobjArgument)) {
            memcpy(at, &from[i].arguments[k], sizeof(QbobjArgument));
            ((QbobjArgument *)at)->type = grown_fields(from[i].arguments[k].type);
        }
        memcpy(at, &from[i].call, sizeof from[i].call);
    }
    return (void *)to;
}

uint32_t grown_row_size(const char *row)
{
    const uint32_t known = qbobj_row_size(row);
    if (strcmp(row, "QbobjCode") == 0) return known;
    return known + MORE + (strcmp(row, "QbobjOperation") ? 0 : QBOBJ_MAX_ARGUMENTS * MORE);
}
"""

USE_GROWN = """
import ctypes
load = ctypes.CDLL
class Grown(load):
    # A library in which three functions are others.
    def __getitem__(self, name):
        if name in ("qbobj_types", "qbobj_operations", "qbobj_row_size"):
            return grown[name.replace("qbobj", "grown")]
        return super().__getitem__(name)
grown = load({fake!r})
ctypes.CDLL = Grown
import qbobj
ctypes.CDLL = load
assert qbobj._library.FIELD_SIZE == 80, qbobj._library.FIELD_SIZE
assert len(qbobj.types) == 110 and len(qbobj.operations) == 198
with qbobj.open({path!r}) as db:
    db.addShare(ShareName="x", VolumeId="tank")
    db.addUser(UserName="anna", UserQuota=[qbobj.Quota(ShareId="tank/x", HardMB=5)], Password="x")
    print(db.getUserCollection())
    print(db.getSnapshotCollection(None, None, 0, 0, 0, None, 0, 0, 0))
"""


def test_a_newer_library_with_longer_rows(tmp_path, path):
    flags = subprocess.run(["pkg-config", "--cflags", "apr-1"], capture_output=True, text=True, check=True).stdout
    library = fake(tmp_path, GROWN, f"-I{SOURCE}/include", *flags.split(), LIBRARY)
    directory = os.path.dirname(LIBRARY)
    outcome = run_python(USE_GROWN.format(fake=library, path=str(path)), LD_LIBRARY_PATH=directory)
    assert outcome.returncode == 0, outcome.stderr
    assert "UserName='anna'" in outcome.stdout
    assert "SnapshotCollection()" in outcome.stdout
