# SPDX-License-Identifier: Apache-2.0
"""The shared library: where it is found, the calls into it, and the layout of its tables' rows."""

from __future__ import annotations

import ctypes
import os
import sysconfig
from collections.abc import Iterator
from ctypes import CFUNCTYPE, POINTER, c_char, c_char_p, c_int, c_int32, c_int64, c_size_t, c_uint32, c_uint64, c_void_p
from pathlib import Path
from typing import Any

SONAME = "libqbobj.so.1"
VARIABLE = "QBOBJ_LIBRARY"
NEEDED = (1, 0)
"""Version of the library from which on this package works; the next major version is another interface."""

CallFunction = CFUNCTYPE(c_uint32, c_void_p, c_void_p, c_void_p, c_void_p)
LogHook = CFUNCTYPE(None, c_void_p, c_char_p, c_uint32, c_uint32, c_uint32, c_char_p)
RollbackHook = CFUNCTYPE(None, c_void_p)


class FieldRow(ctypes.Structure):
    _fields_ = [
        ("kind", c_char),
        ("name", c_char_p),
        ("position", c_uint32),
        ("subtype", c_void_p),
        ("flags", c_uint32),
    ]


class TypeRow(ctypes.Structure):
    _fields_ = [("name", c_char_p), ("fields", c_void_p)]


class CodeRow(ctypes.Structure):
    _fields_ = [("code", c_uint32), ("meaning", c_char_p)]


class TraitsRow(ctypes.Structure):
    _fields_ = [
        ("unit", c_char_p),
        ("default", c_char_p),
        ("pattern", c_int32),
        ("ranged", c_int32),
        ("minimum", c_int64),
        ("maximum", c_int64),
        ("besides", c_int32),
        ("besides_minimum", c_int64),
        ("besides_maximum", c_int64),
    ]


class ArgumentRow(ctypes.Structure):
    _fields_ = [
        ("name", c_char_p),
        ("kind", c_int),
        ("direction", c_int),
        ("type", c_void_p),
        ("optional", c_int),
        ("chain", c_int),
        ("words", c_void_p),
        ("ignores", c_char_p),
        ("keeps", c_char_p),
    ]


class OperationRow(ctypes.Structure):
    """A row up to its arguments: these, and the address of the call after them, are found by the rows' sizes."""

    _fields_ = [
        ("name", c_char_p),
        ("family", c_char_p),
        ("summary", c_char_p),
        ("codes", c_char_p),
        ("returns", c_int),
        ("changes", c_int),
        ("count", c_uint32),
    ]


MAX_ARGUMENTS = 10
ARGUMENTS_POSITION = ctypes.sizeof(OperationRow)


class ErrorInfo(ctypes.Structure):
    _fields_ = [("code", c_uint32), ("file", c_char_p), ("line", c_uint32), ("message", c_char_p)]


class Value(ctypes.Union):
    """The value of one argument in a call."""

    _fields_ = [("i", c_int32), ("n", c_uint64), ("s", c_void_p), ("p", c_void_p)]


class HandleHead(ctypes.Structure):
    """The part of a handle that is its caller's."""

    _fields_ = [("log_level", c_uint32), ("pool", c_void_p), ("request_pool", c_void_p)]


class XmlNode(ctypes.Structure):
    _fields_ = [
        ("private", c_void_p),
        ("type", c_int),
        ("name", c_void_p),
        ("children", c_void_p),
        ("last", c_void_p),
        ("parent", c_void_p),
        ("next", c_void_p),
        ("prev", c_void_p),
        ("doc", c_void_p),
    ]


_FUNCTIONS: dict[str, tuple[Any, list[Any]]] = {
    "qbobj_types": (c_void_p, []),
    "qbobj_operations": (c_void_p, []),
    "qbobj_codes": (c_void_p, []),
    "qbobj_is_secret": (c_int, [c_void_p, c_void_p]),
    "qbobj_field_words": (c_void_p, [c_void_p, c_void_p]),
    "qbobj_type_meaning": (c_char_p, [c_void_p]),
    "qbobj_field_meaning": (c_char_p, [c_void_p, c_void_p]),
    "qbobj_operation_meaning": (c_char_p, [c_void_p]),
    "qbobj_argument_meaning": (c_char_p, [c_void_p, c_void_p]),
    "qbobj_result_meaning": (c_char_p, [c_void_p]),
    "qbobj_field_traits": (POINTER(TraitsRow), [c_void_p, c_void_p]),
    "qbobj_argument_traits": (POINTER(TraitsRow), [c_void_p, c_void_p]),
    "qbobj_argument_field_traits": (POINTER(TraitsRow), [c_void_p, c_void_p, c_char_p]),
    "qbobj_argument_addresses": (c_char_p, [c_void_p, c_void_p]),
    "qbobj_field_direction": (c_int, [c_void_p, c_void_p]),
    "qbdb_open": (
        c_int,
        [c_char_p, c_uint32, c_void_p, POINTER(c_void_p), POINTER(c_void_p), c_char_p, c_size_t],
    ),
    "qbdb_close": (None, [c_void_p]),
    "qbdb_request_begin": (c_int, [c_void_p]),
    "qbdb_request_end": (None, [c_void_p]),
    "qbdb_set_timeout": (None, [c_void_p, c_uint32]),
    "qbdb_set_caller": (c_int, [c_void_p, c_void_p]),
    "qbdb_set_log_hook": (None, [c_void_p, LogHook, c_void_p]),
    "sqlite3_errstr": (c_char_p, [c_int]),
    "sqlite3_errcode": (c_int, [c_void_p]),
    "sqlite3_rollback_hook": (c_void_p, [c_void_p, RollbackHook, c_void_p]),
    "xmlBufferCreate": (c_void_p, []),
    "xmlBufferFree": (None, [c_void_p]),
    "xmlBufferContent": (c_char_p, [c_void_p]),
    "xmlNodeDump": (c_int, [c_void_p, c_void_p, c_void_p, c_int, c_int]),
    "xmlDocGetRootElement": (c_void_p, [c_void_p]),
    "xmlFreeDoc": (None, [c_void_p]),
    "xmlUnlinkNode": (None, [c_void_p]),
    "xmlFreeNode": (None, [c_void_p]),
}


def _places() -> Iterator[str]:
    named = os.environ.get(VARIABLE)
    if named:  # whoever names a library means no other
        yield os.path.join(named, SONAME) if os.path.isdir(named) else named
        return
    package = Path(__file__).resolve().parent
    if package.parent.name in ("dist-packages", "site-packages"):
        # An installation that was moved finds its own library before the system's.
        lib = package.parents[2]
        for directory in (lib, lib / str(sysconfig.get_config_var("MULTIARCH")), lib.with_name("lib64")):
            if (directory / SONAME).exists():
                yield str(directory / SONAME)
    yield SONAME


def _load() -> ctypes.CDLL:
    reason = None
    for place in _places():
        try:
            return ctypes.CDLL(place)
        except OSError as error:
            reason = reason or error
    raise ImportError(
        f"{SONAME} cannot be loaded ({reason}). Install the library, or name it or its directory in {VARIABLE}"
    ) from None


def _check_version(library: ctypes.CDLL) -> str:
    try:
        function = library.qbobj_version
    except AttributeError:
        raise ImportError(f"{library._name} does not tell its version: it is no {SONAME}, or too old") from None
    function.restype = c_char_p
    text: str = function().decode()
    found = tuple(int(part) for part in text.split(".")[:2])
    wanted = ".".join(map(str, NEEDED))
    if found < NEEDED:
        raise ImportError(f"{library._name} is version {text}, which is too old: {wanted} or newer is needed")
    if found[0] != NEEDED[0]:
        raise ImportError(f"{library._name} is version {text}: this package is made for versions {NEEDED[0]}.x")
    return text


def _declare(library: ctypes.CDLL) -> None:
    for name, (result, arguments) in _FUNCTIONS.items():
        try:
            function = library[name]
        except AttributeError:
            raise ImportError(f"{library._name} has no function {name}: it is too old") from None
        function.restype = result
        function.argtypes = arguments
        setattr(library, name, function)


def _row_size(row: type[ctypes.Structure], name: bytes) -> int:
    """Rows of a newer library may be longer than those that are known here."""
    known = ctypes.sizeof(row)
    try:
        function = library.qbobj_row_size
    except AttributeError:
        return known
    function.restype = c_uint32
    function.argtypes = [c_char_p]
    return max(known, int(function(name)))


library = _load()
version = _check_version(library)
_declare(library)

FIELD_SIZE = _row_size(FieldRow, b"QbobjField")
TYPE_SIZE = _row_size(TypeRow, b"QbobjType")
CODE_SIZE = _row_size(CodeRow, b"QbobjCode")
ARGUMENT_SIZE = _row_size(ArgumentRow, b"QbobjArgument")
CALL_POSITION = ARGUMENTS_POSITION + MAX_ARGUMENTS * ARGUMENT_SIZE
OPERATION_SIZE = max(CALL_POSITION + ctypes.sizeof(c_void_p), _row_size(OperationRow, b"QbobjOperation"))


def text_at(address: int | None) -> str | None:
    """The text at an address, None for null. What is no UTF-8 survives as lone surrogates."""
    return ctypes.string_at(address).decode("utf-8", "surrogateescape") if address else None


def plain(text: bytes | None) -> str:
    """A text of the tables."""
    return text.decode() if text else ""


def words_at(address: int | None) -> tuple[str, ...]:
    """The words of a list that null ends."""
    words: list[str] = []
    while address:
        word = c_char_p.from_address(address).value
        if word is None:
            break
        words.append(word.decode())
        address += ctypes.sizeof(c_void_p)
    return tuple(words)


def rows(row: Any, address: int, size: int) -> Iterator[tuple[int, Any]]:
    """Addresses and rows of a table, as long as the caller reads on."""
    while True:
        yield address, row.from_address(address)
        address += size
