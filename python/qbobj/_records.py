# SPDX-License-Identifier: Apache-2.0
"""Record classes, one a type of the tables, and their way into the library's memory and back."""

from __future__ import annotations

import ctypes
import dataclasses
import difflib
import inspect
import operator
import struct
from collections.abc import Callable, Iterable, Iterator, Mapping
from typing import Any, ClassVar

from ._library import XmlNode, library
from ._tables import NUMBER_SIZES, NUMBERS, Argument, Field, RecordType, all_types, masked_password

_POINTER = "Q" if ctypes.sizeof(ctypes.c_void_p) == 8 else "I"
_FORMATS = {"i": "i", "u": "I", "l": "q", "n": "Q", "s": _POINTER, "o": _POINTER}


def refuse_unknown(owner: str, name: str, names: Iterable[str]) -> TypeError:
    """What is raised for a name that nobody knows, with the one that may have been meant."""
    near = difflib.get_close_matches(name, list(names), 1)
    return TypeError(f"{owner} has no field {name!r}" + (f". Did you mean {near[0]!r}?" if near else ""))


class Record:
    """A record of the library: fields by name, compared by value, made of keyword arguments.

    What is not given is absent: None for a text, a record, an optional number, 0 for any other number, an empty list.
    """

    __slots__ = ()
    _type: ClassVar[RecordType]
    _codec: ClassVar[Codec]
    _values: ClassVar[Callable[[Any], tuple[Any, ...]]]
    __dataclass_fields__: ClassVar[dict[str, dataclasses.Field[Any]]]

    def __init__(self, **fields: Any) -> None:
        for name, default in self._codec.defaults:
            setattr(self, name, fields.pop(name) if name in fields else [] if default is list else default)
        for name in fields:
            raise refuse_unknown(self._type.name, name, self._codec.names)

    def __repr__(self) -> str:
        shown = []
        for field in self._type.fields:
            value = getattr(self, field.name)
            if value in (None, []) or (value == 0 and field.number and not field.optional):
                continue
            text = repr(masked_password) if field.secret and value else repr(value)
            shown.append(f"{field.name}={text}")
        return f"{self._type.name}({', '.join(shown)})"

    def __eq__(self, other: object) -> bool:
        if other.__class__ is not self.__class__:
            return NotImplemented
        return self.__class__._values(self) == self.__class__._values(other)

    __hash__ = None  # type: ignore[assignment]


RecordClass = type[Record]


class Sequence(Record):
    """A record that stands for a list: it is iterated over and indexed like that."""

    __slots__ = ()
    _head: ClassVar[str]

    def __iter__(self) -> Iterator[Any]:
        return iter(getattr(self, self._head))

    def __len__(self) -> int:
        return len(getattr(self, self._head))

    def __getitem__(self, index: Any) -> Any:
        return getattr(self, self._head)[index]


def is_several(value: Any) -> bool:
    """Whether a value is a list of records, as far as one sees from outside."""
    return isinstance(value, Iterable) and not isinstance(value, (str, bytes, Mapping))


class Arena:
    """The memory of one call's records and texts. It is overwritten in the end: there may be passwords in it."""

    def __init__(self) -> None:
        self._blocks: list[Any] = []
        self.secrets: list[str] = []

    def block(self, content: bytes) -> int:
        """Copies bytes, a NUL behind them, and tells where to."""
        memory = ctypes.create_string_buffer(content)
        self._blocks.append(memory)
        return ctypes.addressof(memory)

    def text(self, value: Any, where: str) -> int:
        if not isinstance(value, str):
            raise TypeError(f"{where}: a text is needed, not {type(value).__name__}")
        if "\0" in value:
            raise ValueError(f"{where}: the text holds a NUL character")
        try:
            return self.block(value.encode("utf-8", "surrogateescape"))
        except UnicodeEncodeError as error:
            raise ValueError(f"{where}: the text cannot be written as UTF-8 ({error.reason})") from None

    def wipe(self) -> None:
        for memory in self._blocks:
            ctypes.memset(memory, 0, ctypes.sizeof(memory))
        self._blocks.clear()


def number(value: Any, kind: str, where: str) -> int:
    """A whole number that fits a field."""
    try:
        whole = operator.index(value)
    except TypeError:
        raise TypeError(f"{where}: a whole number is needed, not {type(value).__name__}") from None
    low, high = NUMBERS[kind]
    if not low <= whole <= high:
        raise OverflowError(f"{where}: {whole} is not between {low} and {high}")
    return whole


class Check:
    """What an operation makes of the fields of one of its arguments."""

    def __init__(self, operation: str, stores: bool, argument: Argument) -> None:
        self.operation = operation
        self.stores = stores
        self.argument = argument
        self.ignored: list[str] = []
        self._read = False

    def begin(self, record: Record) -> None:
        """Begins a record. One that was read from the database may come back whole, ignored fields included."""
        read = getattr(record, "resource_id", 0) or getattr(record, "key", None)
        self._read = bool(read) or not record._type.is_list

    def text(self, field: Field, value: str, path: str, where: str) -> None:
        """Refuses a text that is none of its field's words, and the mask where it would be stored as the secret."""
        ignored = path in self.argument.ignores
        if field.words and value and value.lower() not in (word.lower() for word in field.words):
            near = difflib.get_close_matches(value, field.words, 1)
            hint = f". Did you mean {near[0]!r}?" if near else ""
            raise ValueError(f"{where}: {value!r} is none of its words ({', '.join(field.words)}){hint}")
        if value == masked_password and field.secret and self.stores and not ignored:
            if path not in self.argument.keeps:
                raise ValueError(
                    f"{where}: the dots stand for a stored secret, which {self.operation} cannot look up; "
                    "give the secret itself, or None"
                )

    def note(self, path: str, value: Any) -> None:
        """Takes note of a field that is given and ignored."""
        if value and not self._read and path in self.argument.ignores and path not in self.ignored:
            self.ignored.append(path)


class Codec:
    """Packs and unpacks the records of one type."""

    def __init__(self, type: RecordType) -> None:
        self.type = type
        self.names = tuple(field.name for field in type.fields)
        self.defaults = [(field.name, _default(field)) for field in type.fields]
        slots: list[tuple[int, int, str]] = []  # position, size, format
        pointer = ctypes.sizeof(ctypes.c_void_p)
        if type.is_list:
            slots.append((0, pointer, _POINTER))
        for field in type.fields:
            size = NUMBER_SIZES.get(field.kind, pointer)
            if field.indicator is not None:
                slots.append((field.indicator, 4, "i"))
            slots.append((field.position, size, _FORMATS[field.kind]))
        slots.sort()
        layout, end = "=", 0
        for position, size, letter in slots:
            layout += f"{position - end}x{letter}"
            end = position + size
        self.struct = struct.Struct(f"{layout}{type.size - end}x")
        index = {position: i for i, (position, _, _) in enumerate(slots)}
        self.count = len(slots)
        self.fields = [
            (field, index[field.position], None if field.indicator is None else index[field.indicator])
            for field in type.fields
        ]
        self.readers = [
            (field.name, slot, indicator, _how(field), field.type)
            for field, slot, indicator in self.fields
        ]
        self.record: RecordClass = Record

    # ---- Out of the library's memory

    def read(self, address: int) -> Record:
        return self.unpack(address)[0]

    def read_list(self, address: int | None) -> list[Record]:
        records = []
        while address:
            record, address = self.unpack(address)
            records.append(record)
        return records

    def unpack(self, address: int) -> tuple[Record, int]:
        """A record, and the address of the next one."""
        values = self.struct.unpack(ctypes.string_at(address, self.type.size))
        record = self.record.__new__(self.record)
        for name, slot, indicator, how, subtype in self.readers:
            value: Any = values[slot]
            if how == "text":
                value = ctypes.string_at(value).decode("utf-8", "surrogateescape") if value else None
            elif how == "number":
                if indicator is not None and values[indicator]:
                    value = None
            elif subtype is not None:
                codec = codecs[subtype]
                value = codec.read_list(value) if how == "list" else codec.read(value) if value else None
            setattr(record, name, value)
        return record, values[0] if self.type.is_list else 0

    # ---- Into memory that the library reads

    def write(self, arena: Arena, record: Any, where: str, path: str, check: Check) -> int:
        return arena.block(self.struct.pack(*self.slots(arena, record, where, path, check)))

    def write_list(self, arena: Arena, records: Any, where: str, path: str, check: Check) -> int:
        if not is_several(records):
            raise TypeError(f"{where}: a list of {self.type.name} is needed, not {type(records).__name__}")
        prepared = [self.slots(arena, record, f"{where}[{i}]", path, check) for i, record in enumerate(records)]
        address = 0
        for slots in reversed(prepared):
            slots[0] = address  # the link word
            address = arena.block(self.struct.pack(*slots))
        return address

    def slots(self, arena: Arena, record: Any, where: str, path: str, check: Check) -> list[int]:
        if not isinstance(record, self.record):
            raise TypeError(f"{where}: a record {self.type.name} is needed, not {type(record).__name__}")
        if not path:
            check.begin(record)
        slots = [0] * self.count
        for field, slot, indicator in self.fields:
            value = getattr(record, field.name)
            label = f"{where}.{field.name}"
            own = f"{path}.{field.name}" if path else field.name
            check.note(own, value)
            if value is None:
                if indicator is not None:
                    slots[indicator] = 1
                elif field.number:
                    raise TypeError(f"{label}: a whole number is needed, not None")
            elif field.number:
                slots[slot] = number(value, field.kind, label)
            elif field.type is not None:
                codec = codecs[field.type]
                write = codec.write_list if field.type.is_list else codec.write
                slots[slot] = write(arena, value, label, own, check)
            else:
                slots[slot] = arena.text(value, label)
                check.text(field, value, own, label)
                if field.secret:
                    arena.secrets.append(value)
        return slots

    def absent(self, arena: Arena) -> int:
        """A record in which everything is absent."""
        slots = [0] * self.count
        for _, _, indicator in self.fields:
            if indicator is not None:
                slots[indicator] = 1
        return arena.block(self.struct.pack(*slots))


codecs: dict[RecordType, Codec] = {}


def _how(field: Field) -> str:
    if field.type is not None:
        return "list" if field.type.is_list else "record"
    return "number" if field.number else "text"


def _default(field: Field) -> Any:
    if field.type is not None and field.type.is_list:
        return list
    return 0 if field.number and not field.optional else None


def _documentation(type: RecordType) -> str:
    lines = [type.meaning, ""]
    for field in type.fields:
        words = f" Words: {', '.join(field.words)}." if field.words else ""
        lines.append(f"{field.name}: {field.annotation}\n    {field.meaning}{words}")
    return "\n".join(lines)


def _signature(type: RecordType) -> inspect.Signature:
    return inspect.Signature(
        [
            inspect.Parameter(
                field.name,
                inspect.Parameter.KEYWORD_ONLY,
                annotation=field.annotation,
                default=[] if _default(field) is list else _default(field),
            )
            for field in type.fields
        ]
    )


def _make(type: RecordType) -> RecordClass:
    codec = codecs[type] = Codec(type)
    fields: list[Any] = []
    for field in type.fields:
        default = _default(field)
        metadata = {"field": field}
        given = (
            dataclasses.field(default_factory=list, metadata=metadata)
            if default is list
            else dataclasses.field(default=default, metadata=metadata)
        )
        fields.append((field.name, field.annotation, given))
    made: Any = dataclasses.make_dataclass(
        type.name,
        fields,
        bases=(Record if type.head is None else Sequence,),
        namespace={"__doc__": _documentation(type), "__module__": "qbobj", "__signature__": _signature(type)},
        init=False,
        repr=False,
        eq=False,
        kw_only=True,
        slots=True,
    )
    made._type = type
    made._codec = codec
    made._values = operator.attrgetter(*codec.names) if codec.names else lambda record: ()
    made.__module__ = "qbobj"
    if type.head is not None:
        made._head = type.head.name
    codec.record = made
    return codec.record


records: dict[str, RecordClass] = {type.name: _make(type) for type in all_types()}
"""The classes by name."""


def xml_text(node: int) -> str:
    """An XML node as text."""
    buffer = library.xmlBufferCreate()
    if not buffer:
        raise MemoryError
    try:
        library.xmlNodeDump(buffer, XmlNode.from_address(node).doc, node, 0, 1)
        text: bytes = library.xmlBufferContent(buffer)
        return text.decode("utf-8", "surrogateescape")
    finally:
        library.xmlBufferFree(buffer)


def free_xml(node: int) -> None:
    document = XmlNode.from_address(node).doc
    if document and library.xmlDocGetRootElement(document) == node:
        library.xmlFreeDoc(document)
        return
    library.xmlUnlinkNode(node)
    library.xmlFreeNode(node)
