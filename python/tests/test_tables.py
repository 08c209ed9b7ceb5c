# SPDX-License-Identifier: Apache-2.0
"""Every operation and type of the library is there, and every record goes into its memory and back."""

import ctypes
import dataclasses
import inspect
import re

import pytest
from conftest import SOURCE

import qbobj
from qbobj import _library, _records, _tables


def declared_types():
    text = (SOURCE / "include/qbobj/types.h").read_text()
    listed = text[text.index("#define QBOBJ_FOR_EACH_TYPE") : text.index("#define QBOBJ_DECLARE_TYPE")]
    return re.findall(r"    X\((\w+)\)", listed)


def declared_operations():
    rows = "".join(file.read_text() for file in sorted((SOURCE / "src/api").glob("rows_*.h")))
    return re.findall(r"^ +QB_(?:LEGACY_)?OPERATION\(\s*(\w+),", rows, re.M)


def test_every_operation_has_a_method():
    assert len(declared_operations()) == 193 + 5
    assert sorted(qbobj.operations) == sorted(declared_operations())
    for operation in qbobj.operations.values():
        method = getattr(qbobj.Operations, operation.name)
        assert method.__name__ == operation.name
        assert operation.summary in method.__doc__
        assert all(argument.meaning in method.__doc__ for argument in operation.arguments)
        assert all(argument.meaning for argument in operation.arguments)


def test_every_type_has_a_class():
    assert len(declared_types()) == 110
    assert list(qbobj.types) == declared_types()
    for name, type in qbobj.types.items():
        made = getattr(qbobj, name)
        assert issubclass(made, qbobj.Record)
        assert [field.name for field in dataclasses.fields(made)] == [field.name for field in type.fields]
        assert type.meaning and type.meaning in made.__doc__
        assert all(field.meaning for field in type.fields), name


def field(type, name):
    return next(field for field in qbobj.types[type].fields if field.name == name)


def test_traits_are_those_of_the_tables():
    assert field("AccountDefault", "DiskQuotaWarn").traits == _tables.Traits(unit="per cent", minimum=1, maximum=99)
    port = field("HttpsOptions", "Port").traits
    assert (port.minimum, port.maximum, port.besides) == (1024, 65535, (0, 0))
    assert [number for number in (-1, 0, 1, 1023, 1024, 65535, 65536) if port.allows(number)] == [0, 1024, 65535]
    assert field("User", "UserName").traits == _tables.Traits()
    assert field("User", "UserName").traits.allows(-1)
    assert field("AccountQuery", "name_like").traits.pattern
    assert field("Share", "key").traits == _tables.Traits()
    assert [field("User", name).direction for name in ("UserName", "HomeDirectory", "SysHash")] == ["inout", "out", "in"]
    operations = qbobj.operations
    assert operations["addLog"].arguments[1].traits.default == "info"
    assert operations["getUser"].arguments[0].addresses == ("resource_id", "UserId", "UserName")
    assert operations["addLog"].arguments[0].addresses == ()
    share = operations["addShare"].arguments[0]
    assert share.traits_of("Cifs.RecycleSizeLimit").default == "25000"
    assert share.traits_of("Nothing") == _tables.Traits()


def test_no_name_hides_another():
    own = {name for name in vars(qbobj.Handle) if not name.startswith("__")}
    assert not own & set(qbobj.operations)
    assert len(set(qbobj.__all__)) == len(qbobj.__all__)
    assert all(hasattr(qbobj, name) for name in qbobj.__all__)
    for type in _tables.all_types():
        assert all(field.name.isidentifier() for field in type.fields)


def test_codes_are_those_of_the_header():
    text = (SOURCE / "include/qbobj/codes.h").read_text()
    assert {int(code): meaning for code, meaning in re.findall(r"    X\((\d+), \"(.*)\"\)", text)} == qbobj.codes
    for operation in qbobj.operations.values():
        assert set(operation.codes) <= set(qbobj.codes), operation.name


def test_signatures_show_the_arguments():
    assert str(inspect.signature(qbobj.Handle.getLog)) == (
        "(self, /, query: 'LogQuery | None' = None, **fields) -> 'getLog_result'"
    )
    assert str(inspect.signature(qbobj.Handle.setServiceEntry)) == (
        "(self, /, key: 'str', val: 'str | None' = None) -> 'None'"
    )
    # "from" is a word of Python.
    assert "from_" in inspect.signature(qbobj.Handle.getSnapshotCollection).parameters


def sample(type, depth=0):
    """A record in which every field holds something else."""
    values = {}
    for place, field in enumerate(type.fields):
        if field.type is not None:
            inner = sample(field.type, depth + 1)
            values[field.name] = [inner, getattr(qbobj, field.type.name)(), inner] if field.type.is_list else inner
        elif field.number:
            low, high = _tables.NUMBERS[field.kind]
            values[field.name] = (low, high, place + 1)[place % 3]
        else:
            values[field.name] = field.words[-1] if field.words else f"{field.name} {depth} äöü €"
    return _records.records[type.name](**values)


def through_memory(record):
    arena = _records.Arena()
    argument = next(iter(qbobj.operations["addUser"].arguments))
    address = record._codec.write(arena, record, "", "", _records.Check("", False, argument))
    return record._codec.read(address)


@pytest.mark.parametrize("type", _tables.all_types(), ids=lambda type: type.name)
def test_records_survive_the_library_s_memory(type):
    made = _records.records[type.name]
    assert made._codec.struct.size == type.size
    full = sample(type)
    assert through_memory(full) == full
    assert through_memory(made()) == made()


def test_an_absent_number_is_not_0():
    share = through_memory(qbobj.Share(QuotaMB=0))
    assert share.QuotaMB == 0
    assert share.ReserveMB is None


def test_longer_rows_of_a_newer_library_are_stepped_over(monkeypatch):
    """A table whose rows carry more than is known reads the same."""
    quota = qbobj.types["Quota"]
    known, more = ctypes.sizeof(_library.FieldRow), 24
    count = len(quota.fields) + 2
    grown = ctypes.create_string_buffer(count * (known + more))
    for i in range(count):
        row = ctypes.string_at(quota._address + i * known, known)
        ctypes.memmove(ctypes.addressof(grown) + i * (known + more), row + b"\xff" * more, known + more)
    monkeypatch.setattr(_library, "FIELD_SIZE", known + more)
    read = _tables.RecordType(ctypes.addressof(grown))
    read._read_fields()
    assert [(f.name, f.kind, f.position) for f in read.fields] == [(f.name, f.kind, f.position) for f in quota.fields]


def test_version_is_written_once():
    text = (SOURCE / "CMakeLists.txt").read_text()
    assert qbobj.__version__ == re.search(r"project\(qbobj VERSION ([0-9.]+)", text).group(1)
