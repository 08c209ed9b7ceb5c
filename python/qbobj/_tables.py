# SPDX-License-Identifier: Apache-2.0
"""What the library's tables say: record types with their fields, operations with their arguments, codes."""

from __future__ import annotations

import ctypes
import functools
import keyword
from collections.abc import Iterable, Mapping
from types import MappingProxyType
from typing import Any, Final, NamedTuple

from . import _library
from ._library import library, plain, rows, words_at

NUMBERS: Final = {"i": (-(2**31), 2**31 - 1), "u": (0, 2**32 - 1), "l": (-(2**63), 2**63 - 1), "n": (0, 2**64 - 1)}
"""Kinds of numbers and their ranges."""
NUMBER_SIZES: Final = {"i": 4, "u": 4, "l": 8, "n": 8}

_POINTER: Final = ctypes.sizeof(ctypes.c_void_p)
_TYPE_LIST, _TYPE_KEY_WORD = 1, 8
_FIELD_HEAD, _FIELD_OPTIONAL = 1, 2
_KINDS: Final = ("int32", "uint64", "text", "record", "list", "xml")
_DIRECTIONS: Final = ("in", "out", "inout")
_RETURNS: Final = ("code", "found", "id", "count", "answer", "truth")


def python_name(name: str) -> str:
    """A name of the tables as Python can write it."""
    return name + "_" if keyword.iskeyword(name) else name


class Traits(NamedTuple):
    """What is known of a number or a text."""

    unit: str | None = None
    """What the number measures."""
    default: str | None = None
    """What stands for an absent value."""
    pattern: bool = False
    """Whether the text is a pattern of SQL's LIKE."""
    minimum: int | None = None
    maximum: int | None = None
    besides: tuple[int, int] | None = None
    """Numbers beside the range that stand for something else: for none, for one that is chosen."""

    def allows(self, number: int) -> bool:
        """Whether a number is in the range, or beside it."""
        if self.besides is not None and self.besides[0] <= number <= self.besides[1]:
            return True
        return self.minimum is None or self.maximum is None or self.minimum <= number <= self.maximum


def _traits(address: Any) -> Traits:
    row: _library.TraitsRow = address.contents
    return Traits(
        unit=None if row.unit is None else plain(row.unit),
        default=None if row.default is None else plain(row.default),
        pattern=bool(row.pattern),
        minimum=row.minimum if row.ranged else None,
        maximum=row.maximum if row.ranged else None,
        besides=(row.besides_minimum, row.besides_maximum) if row.besides else None,
    )


class Field:
    """A field of a record type."""

    def __init__(self, owner: RecordType, address: int, row: _library.FieldRow | None) -> None:
        self._owner = owner
        self._address = address
        self.key_word = row is None
        """Whether it is the key word, which names an element of a list."""
        self.name = "key" if row is None else plain(row.name)
        self.kind: str = "s" if row is None else row.kind.decode()
        """'i' int32, 'u' uint32, 'l' int64, 'n' uint64, 's' text, 'o' record or list."""
        self.position: int = _POINTER if row is None else row.position
        flags = 0 if row is None else row.flags
        self.head = bool(flags & _FIELD_HEAD)
        self.optional = bool(flags & _FIELD_OPTIONAL)
        """Whether it may be absent."""
        self.type: RecordType | None = record_type(row.subtype) if row is not None and row.subtype else None
        """The type of the record or of the list's elements."""
        own = (owner._address, address)
        self.secret: bool = row is not None and bool(library.qbobj_is_secret(*own))
        """Whether it holds a password, a hash of one, or a key."""
        self.words = () if row is None else words_at(library.qbobj_field_words(*own))
        """The words that a text may be; none for any text."""

    @property
    def number(self) -> bool:
        return self.kind in NUMBERS

    @property
    def indicator(self) -> int | None:
        """Where the null indicator of an optional number stands: right before it, in a slot of its size."""
        return self.position - NUMBER_SIZES[self.kind] if self.number and self.optional else None

    @property
    def meaning(self) -> str:
        """What the field holds."""
        if self.key_word:
            return "Key word of the record."
        return plain(library.qbobj_field_meaning(self._owner._address, self._address))

    @property
    def traits(self) -> Traits:
        """Its unit, range and the like."""
        return Traits() if self.key_word else _traits(library.qbobj_field_traits(self._owner._address, self._address))

    @property
    def direction(self) -> str:
        """in for a field that nothing returns, out for one that nothing looks at, else inout."""
        if self.key_word:
            return "inout"
        return _DIRECTIONS[library.qbobj_field_direction(self._owner._address, self._address)]

    @property
    def annotation(self) -> str:
        """The field's type in Python."""
        if self.type is not None:
            return f"list[{self.type.name}]" if self.type.is_list else f"{self.type.name} | None"
        if self.number:
            return "int | None" if self.optional else "int"
        return "str | None"

    def __repr__(self) -> str:
        return f"<field {self._owner.name}.{self.name}: {self.annotation}>"


class RecordType:
    """A record type."""

    def __init__(self, address: int) -> None:
        header = _library.FieldRow.from_address(address)
        self._address = address
        self.name = plain(header.name)
        self.size: int = header.position
        self.is_list = bool(header.flags & _TYPE_LIST)
        """Whether its records are elements of lists."""
        self._has_key_word = bool(header.flags & _TYPE_KEY_WORD)
        self.fields: tuple[Field, ...] = ()

    def _read_fields(self) -> None:
        fields = [Field(self, 0, None)] if self._has_key_word else []
        for address, row in rows(_library.FieldRow, self._address + _library.FIELD_SIZE, _library.FIELD_SIZE):
            if row.kind == b".":
                break
            fields.append(Field(self, address, row))
        self.fields = tuple(fields)

    @property
    def head(self) -> Field | None:
        """The field with the elements, for a type that stands for a list."""
        heads = [field for field in self.fields if field.head]
        return heads[0] if len(heads) == 1 and self.name.endswith("Collection") else None

    @property
    def meaning(self) -> str:
        """What a record stands for."""
        return plain(library.qbobj_type_meaning(self._address))

    def __repr__(self) -> str:
        return f"<record type {self.name}>"


_types: dict[int, RecordType] = {}


def record_type(address: int) -> RecordType:
    """The type whose field table lies at an address."""
    found = _types.get(address)
    if found is None:
        found = _types[address] = RecordType(address)
        found._read_fields()
    return found


class Argument:
    """An argument of an operation."""

    def __init__(self, operation: Operation, address: int) -> None:
        row = _library.ArgumentRow.from_address(address)
        self._operation = operation
        self._address = address
        self.name = plain(row.name)
        self.kind = _KINDS[row.kind]
        """int32, uint64, text, record, list or xml."""
        self.direction = _DIRECTIONS[row.direction]
        """in, out or inout."""
        self.type: RecordType | None = record_type(row.type) if row.type else None
        self.optional = bool(row.optional)
        """Whether it may be None."""
        self.chain = bool(row.chain)
        """Whether several records may be given."""
        self.words = words_at(row.words)
        """Words that a text may be; the operation judges others."""
        self.ignores = frozenset(plain(row.ignores).split())
        """Fields that the operation does not use."""
        self.keeps = frozenset(plain(row.keeps).split())
        """Secret fields in which the mask leaves the stored value as it is."""

    @property
    def given(self) -> bool:
        """Whether the caller gives it."""
        return self.direction != "out"

    @property
    def returned(self) -> bool:
        """Whether the operation returns it."""
        return self.direction != "in"

    @property
    def record(self) -> bool:
        return self.kind == "record"

    @property
    def meaning(self) -> str:
        """What the argument is for."""
        return plain(library.qbobj_argument_meaning(self._operation._address, self._address))

    @property
    def traits(self) -> Traits:
        """Unit, range and the like of a number or a text."""
        return _traits(library.qbobj_argument_traits(self._operation._address, self._address))

    def traits_of(self, field: str) -> Traits:
        """What holds of a field in this operation only; that of a record inside with a dot: Cifs.RecycleSizeLimit."""
        return _traits(
            library.qbobj_argument_field_traits(self._operation._address, self._address, field.encode("utf-8"))
        )

    @property
    def addresses(self) -> tuple[str, ...]:
        """The fields that say which record is meant, in the order in which they are looked at."""
        return tuple(plain(library.qbobj_argument_addresses(self._operation._address, self._address)).split())

    @property
    def annotation(self) -> str:
        """Its type in Python where it is given."""
        if self.type is None:
            return ("str" if self.kind == "text" else "int") + (" | None" if self.optional else "")
        name = self.type.name
        if self.kind == "list":
            return f"Iterable[{name}]"
        kinds = [name]
        if self.type.head is not None and self.type.head.type is not None:
            kinds.append(f"Iterable[{self.type.head.type.name}]")
        if self.chain:
            kinds.append(f"Iterable[{name}]")
        return " | ".join(kinds + (["None"] if self.optional else []))

    @property
    def result_annotation(self) -> str:
        """Its type in Python where it is returned."""
        if self.kind in ("int32", "uint64"):
            return "int"
        if self.type is None:
            return "str | None"
        return f"list[{self.type.name}]" if self.kind == "list" else self.type.name

    def __repr__(self) -> str:
        return f"<{self.direction} argument {self._operation.name}({self.name}: {self.kind})>"


class Operation:
    """An operation of the library."""

    def __init__(self, address: int) -> None:
        row = _library.OperationRow.from_address(address)
        self._address = address
        self.symbol = plain(row.name)
        """The function's name in the library."""
        self.name = self.symbol.removeprefix("qbobj_")
        self.family = plain(row.family)
        self.summary = plain(row.summary)
        self.codes = tuple(int(code) for code in plain(row.codes).split())
        """The codes with which it can fail."""
        self.returns = _RETURNS[row.returns]
        """What the returned value means: code, found, id, count, answer or truth."""
        self.changes = bool(row.changes)
        """Whether it changes the database."""
        first = address + _library.ARGUMENTS_POSITION
        self.arguments = tuple(Argument(self, first + i * _library.ARGUMENT_SIZE) for i in range(row.count))
        self._call = _library.CallFunction(ctypes.c_void_p.from_address(address + _library.CALL_POSITION).value or 0)

    @property
    def meaning(self) -> str:
        """What the operation does."""
        return plain(library.qbobj_operation_meaning(self._address))

    @property
    def result_meaning(self) -> str:
        """What the library's function returns."""
        return plain(library.qbobj_result_meaning(self._address))

    @functools.cached_property
    def inputs(self) -> tuple[Argument, ...]:
        return tuple(argument for argument in self.arguments if argument.given)

    @functools.cached_property
    def outputs(self) -> tuple[Argument, ...]:
        return tuple(argument for argument in self.arguments if argument.returned)

    @functools.cached_property
    def may_omit(self) -> frozenset[str]:
        """Names of arguments that a call may leave out: what may be None; the numbers behind that, and the records, of
        an operation that only reads. No change is made by a call without any argument."""
        names: set[str] = set()
        optional_before = False
        inputs = self.inputs
        for argument in inputs:
            number = argument.kind in ("int32", "uint64")
            if self.changes:
                omitted = argument.optional
            else:
                omitted = argument.optional or argument.record or (number and optional_before)
            optional_before = optional_before or argument.optional
            if omitted:
                names.add(argument.name)
            else:
                names.clear()  # Python has no parameter with a default before one without
        if self.changes and len(names) == len(inputs):
            names.clear()
        return frozenset(names)

    @functools.cached_property
    def fields(self) -> Mapping[str, tuple[Argument, Field]]:
        """The fields of given records that a call can name by themselves."""
        taken = {argument.name for argument in self.inputs}
        found: dict[str, list[tuple[Argument, Field]]] = {}
        for argument in self.inputs:
            if argument.record and argument.type is not None:
                for field in argument.type.fields:
                    found.setdefault(field.name, []).append((argument, field))
        return {name: places[0] for name, places in found.items() if len(places) == 1 and name not in taken}

    @property
    def results(self) -> list[tuple[str, str]]:
        """Names and types of what a call returns, more than one as a named tuple."""
        values = [(python_name(out.name), self._result_annotation(out)) for out in self.outputs]
        if self.returns in ("id", "count"):
            values.append(("result", "int"))
        if self.returns in ("answer", "truth"):
            values.append(("result", "bool"))
        return values

    @staticmethod
    def _result_annotation(out: Argument) -> str:
        record_that_may_be_null = out.record and out.given and out.optional
        return out.result_annotation + (" | None" if record_that_may_be_null else "")

    def __repr__(self) -> str:
        return f"<operation {self.name}: {self.summary}>"


def _read_types() -> dict[str, RecordType]:
    named: dict[str, RecordType] = {}
    for _, row in rows(_library.TypeRow, library.qbobj_types(), _library.TYPE_SIZE):
        if row.name is None:
            return named
        named[plain(row.name)] = record_type(row.fields)
    return named


def _read_operations() -> dict[str, Operation]:
    named: dict[str, Operation] = {}
    for address, row in rows(_library.OperationRow, library.qbobj_operations(), _library.OPERATION_SIZE):
        if row.name is None:
            return named
        operation = Operation(address)
        named[operation.name] = operation
    return named


def _read_codes() -> dict[int, str]:
    named: dict[int, str] = {}
    for _, row in rows(_library.CodeRow, library.qbobj_codes(), _library.CODE_SIZE):
        if row.code == 0:
            return named
        named[row.code] = plain(row.meaning)
    return named


types: Mapping[str, RecordType] = MappingProxyType(_read_types())
operations: Mapping[str, Operation] = MappingProxyType(_read_operations())
codes: Mapping[int, str] = MappingProxyType(_read_codes())
masked_password: Final = plain(ctypes.c_char_p.in_dll(library, "masked_password").value)


def all_types() -> Iterable[RecordType]:
    """The named types, and those that only an operation has."""
    return list(_types.values())
