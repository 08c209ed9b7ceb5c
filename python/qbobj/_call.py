# SPDX-License-Identifier: Apache-2.0
"""One call of an operation: its values, made of what the caller gave, and what came out."""

from __future__ import annotations

import collections
import copy
import ctypes
import warnings
from typing import Any

from . import _library
from ._errors import IgnoredFieldWarning, ReportedWarning
from ._library import text_at
from ._records import Arena, Check, Record, codecs, free_xml, is_several, number, records, refuse_unknown, xml_text
from ._tables import Argument, Operation, operations, python_name


def _results() -> dict[str, Any]:
    made: dict[str, Any] = {}
    for operation in operations.values():
        names = [name for name, _ in operation.results]
        if len(names) > 1:
            made[operation.name] = collections.namedtuple(f"{operation.name}_result", names, module="qbobj")
    return made


results = _results()
"""The named tuples of operations that return several values."""


class Call:
    """One call: its values, made of what the caller gave, and what came out."""

    def __init__(self, operation: Operation, args: tuple[Any, ...], kwargs: dict[str, Any]) -> None:
        self.operation = operation
        self.given: dict[str, Any] = {}
        self.named: dict[str, dict[str, Any]] = {}
        self.values = (_library.Value * max(1, len(operation.arguments)))()
        self.cells: dict[str, Any] = {}
        self.lists: set[str] = set()
        self.info = _library.ErrorInfo()
        self.returned = 0
        self.report = ""
        self.ignored: list[str] = []
        self._sort(args, kwargs)

    def _sort(self, args: tuple[Any, ...], kwargs: dict[str, Any]) -> None:
        """Tells arguments from fields of records."""
        operation, inputs = self.operation, self.operation.inputs
        name = operation.name
        if len(args) > len(inputs):
            raise TypeError(f"{name}() takes at most {len(inputs)} positional arguments, {len(args)} are given")
        for argument, value in zip(inputs, args):
            self.given[argument.name] = value
        by_name = {python_name(argument.name): argument.name for argument in inputs}
        for word, value in kwargs.items():
            if word in by_name:
                if by_name[word] in self.given:
                    raise TypeError(f"{name}(): {word} is given twice")
                self.given[by_name[word]] = value
            elif word in operation.fields:
                argument, field = operation.fields[word]
                self.named.setdefault(argument.name, {})[field.name] = value
            else:
                self._refuse(word, [*by_name, *operation.fields])
        for argument in inputs:
            omitted = argument.name not in self.given and argument.name not in self.named
            if omitted and argument.name not in operation.may_omit:
                raise TypeError(f"{name}(): the argument {python_name(argument.name)} is missing")

    def _refuse(self, word: str, known: list[str]) -> None:
        holders = [
            argument.name
            for argument in self.operation.inputs
            if argument.record and argument.type and any(field.name == word for field in argument.type.fields)
        ]
        if holders:
            owners = " and of ".join(holders)
            raise TypeError(f"{self.operation.name}(): {word} is a field of {owners}; give the record")
        raise refuse_unknown(f"{self.operation.name}()", word, known)

    # ---- Values

    def bind(self, arena: Arena) -> None:
        for index, argument in enumerate(self.operation.arguments):
            if argument.record:
                self.values[index].p = self._bind_record(arena, argument)
            elif argument.kind in ("list", "xml"):
                self._bind_head(arena, index, argument)
            else:
                self._bind_scalar(arena, index, argument)

    def _check(self, argument: Argument) -> Check:
        stores = self.operation.changes and not self.operation.name.startswith("delete")
        return Check(self.operation.name, stores, argument)

    def _bind_head(self, arena: Arena, index: int, argument: Argument) -> None:
        """A list head, or an XML node's pointer."""
        cell = ctypes.c_void_p()
        self.cells[argument.name] = cell
        given = self.given.get(argument.name)
        if given is not None and argument.type is not None:
            name = python_name(argument.name)
            cell.value = codecs[argument.type].write_list(arena, given, name, "", self._check(argument)) or None
        self.values[index].p = ctypes.addressof(cell)

    def _bind_scalar(self, arena: Arena, index: int, argument: Argument) -> None:
        value = self.given.get(argument.name)
        where = python_name(argument.name)
        slot = {"int32": "i", "uint64": "n"}.get(argument.kind, "s")
        bound: int | None = None
        if slot == "s":
            if value is None and argument.given and not argument.optional:
                raise TypeError(f"{where}: a text is needed, not None")
            bound = None if value is None else arena.text(value, where)
        elif argument.name in self.given:
            bound = number(value, slot, where)
        if argument.direction == "in":
            setattr(self.values[index], slot, bound if slot == "s" else bound or 0)
            return
        kind = {"i": ctypes.c_int32, "n": ctypes.c_uint64, "s": ctypes.c_void_p}[slot]
        cell: Any = kind() if bound is None else kind(bound)
        self.cells[argument.name] = cell
        self.values[index].p = ctypes.addressof(cell)

    def _bind_record(self, arena: Arena, argument: Argument) -> int | None:
        address = self._record_address(arena, argument)
        self.cells[argument.name] = address
        return address

    def _record_address(self, arena: Arena, argument: Argument) -> int | None:
        assert argument.type is not None
        codec, where = codecs[argument.type], python_name(argument.name)
        if not argument.given:
            return arena.block(bytes(argument.type.size))
        value, named = self.given.get(argument.name), self.named.get(argument.name)
        if named is not None:
            value = self._named_over(argument, value, named)
        if value is None:
            return self._nothing(arena, argument)
        check = self._check(argument)
        head = argument.type.head
        if head is not None and not isinstance(value, Record) and is_several(value):
            value = codec.record(**{head.name: list(value)})
        if argument.chain and not isinstance(value, codec.record) and is_several(value):
            self.lists.add(argument.name)
            address = codec.write_list(arena, value, where, "", check)
            if not address and not argument.optional:
                raise ValueError(f"{where}: the list is empty")
        else:
            address = codec.write(arena, value, where, "", check)
        unread = (name for name, field in (named or {}).items() if field and name in argument.ignores)
        self.ignored += sorted({*check.ignored, *unread})
        return address or None

    def _nothing(self, arena: Arena, argument: Argument) -> int | None:
        """No record: null where it may be, else one in which everything is absent, to be filled."""
        assert argument.type is not None
        given = argument.name in self.given
        filled = argument.returned and not given and not self.operation.changes
        if argument.optional and not filled:
            return None
        if given:
            raise TypeError(f"{python_name(argument.name)}: a record {argument.type.name} is needed, not None")
        return codecs[argument.type].absent(arena)

    def _named_over(self, argument: Argument, value: Any, named: dict[str, Any]) -> Record:
        """A record with the fields that were named laid over it."""
        assert argument.type is not None
        made = records[argument.type.name]
        if argument.name not in self.given:
            return made(**named)
        where = python_name(argument.name)
        if not isinstance(value, made):
            raise TypeError(f"{where}: the fields {', '.join(named)} need one record {argument.type.name} beside them")
        value = copy.copy(value)
        for name, field in named.items():
            setattr(value, name, field)
        return value

    # ---- The call

    def run(self, qbdb: ctypes.c_void_p, db: ctypes.c_void_p) -> None:
        self.returned = self.operation._call(
            qbdb, db, ctypes.addressof(self.values), ctypes.addressof(self.info)
        )

    def result(self) -> Any:
        """What comes back: nothing, one value, or a named tuple of several."""
        found: list[Any] = [self._output(argument) for argument in self.operation.outputs]
        returns = self.operation.returns
        if returns in ("id", "count"):
            found.append(ctypes.c_int32(self.returned).value)
        elif returns in ("answer", "truth"):
            found.append((self.returned == 0) == (returns == "answer"))
        if len(found) > 1:
            return results[self.operation.name](*found)
        return found[0] if found else None

    def _output(self, argument: Argument) -> Any:
        cell = self.cells[argument.name]
        if argument.kind in ("int32", "uint64"):
            return cell.value
        if argument.kind == "text":
            return text_at(cell.value)
        if argument.kind == "xml":
            return xml_text(cell.value) if cell.value else None
        assert argument.type is not None
        codec = codecs[argument.type]
        if argument.kind == "list":
            return codec.read_list(cell.value)
        if argument.name in self.lists:
            return codec.read_list(cell)
        return codec.read(cell) if cell else None

    def free(self) -> None:
        """Frees what the library leaves to its caller."""
        for argument in self.operation.arguments:
            if argument.kind == "xml":
                cell = self.cells.get(argument.name)
                if cell is not None and cell.value:
                    free_xml(cell.value)
                    cell.value = None

    def warn(self, callers: int) -> None:
        """Warns of what went unused, and of what was reported in spite of success."""
        name = self.operation.name
        if self.ignored:
            verb = "is" if len(self.ignored) == 1 else "are"
            text = f"{', '.join(self.ignored)} {verb} not used by {name}"
            warnings.warn(text, IgnoredFieldWarning, stacklevel=callers)
        if self.report:
            warnings.warn(f"{name}: {self.report}", ReportedWarning, stacklevel=callers)
