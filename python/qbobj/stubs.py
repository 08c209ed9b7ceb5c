# SPDX-License-Identifier: Apache-2.0
"""Writes the type stub of the package from the library's tables.

    python3 -m qbobj.stubs OUT
"""

from __future__ import annotations

import sys
from collections.abc import Iterator
from pathlib import Path

from ._methods import signature
from ._records import records
from ._tables import Operation, RecordType, operations, python_name

_HEAD = '''\
# SPDX-License-Identifier: Apache-2.0
# Made by "python3 -m qbobj.stubs" of the library's tables.
import os
from collections.abc import Iterable, Iterator, Mapping
from dataclasses import dataclass
from typing import Any, Final, Literal, NamedTuple, overload

import qbobj as _q

from ._errors import Error as Error
from ._errors import IgnoredFieldWarning as IgnoredFieldWarning
from ._errors import Locked as Locked
from ._errors import NotFound as NotFound
from ._errors import ReportedWarning as ReportedWarning
from ._handle import LogFunction as LogFunction
from ._tables import Argument as Argument
from ._tables import Field as Field
from ._tables import Operation as Operation
from ._tables import RecordType as RecordType

__version__: Final[str]
version: Final[str]
masked_password: Final[str]
codes: Final[Mapping[int, str]]
operations: Final[Mapping[str, Operation]]
types: Final[Mapping[str, RecordType]]

def open(
    path: str | bytes | os.PathLike[str] | os.PathLike[bytes],
    *,
    create: bool = ...,
    readonly: bool = ...,
    volume: str | None = ...,
    timeout: float = ...,
    caller: str | None = ...,
    log: LogFunction | None = ...,
    log_level: Literal[2, 4, 5] = ...,
) -> Handle: ...

class Record:
    __hash__ = None  # type: ignore[assignment]
'''

_TAIL = '''\

class Handle(Operations):
    @property
    def closed(self) -> bool: ...
    def close(self) -> None: ...
    def request(self) -> Request: ...
    def __enter__(self) -> Handle: ...
    def __exit__(self, *_: object) -> None: ...

class Request(Operations):
    def __enter__(self) -> Request: ...
    def __exit__(self, *_: object) -> None: ...
'''

_BUILTINS = ("int", "str", "bool", "list", "Iterable")


def _qualified(annotation: str) -> str:
    """An annotation inside a class whose fields may be called like types."""
    for name in records:
        annotation = annotation.replace(f"[{name}]", f"[_q.{name}]")
        if annotation.startswith(f"{name} "):
            annotation = f"_q.{annotation}"
    return annotation


def _record(type: RecordType) -> Iterator[str]:
    yield ""
    yield "@dataclass(eq=False, kw_only=True)"
    yield f"class {type.name}(Record):"
    for field in type.fields:
        if field.name in _BUILTINS:
            raise ValueError(f"{type.name}.{field.name}: the name hides a type of the stub")
        yield f"    {field.name}: {_qualified(field.annotation)} = ..."
    if type.head is not None and type.head.type is not None:
        element = f"_q.{type.head.type.name}"
        yield f"    def __iter__(self) -> Iterator[{element}]: ..."
        yield "    def __len__(self) -> int: ..."
        yield "    @overload"
        yield f"    def __getitem__(self, index: int) -> {element}: ..."
        yield "    @overload"
        yield f"    def __getitem__(self, index: slice) -> list[{element}]: ..."


def _result(operation: Operation) -> Iterator[str]:
    values = operation.results
    if len(values) > 1:
        yield ""
        yield f"class {operation.name}_result(NamedTuple):"
        for name, annotation in values:
            hides = "  # type: ignore[assignment]" if hasattr(tuple, name) else ""
            yield f"    {name}: {annotation}{hides}"


def _fields(operation: Operation) -> list[str]:
    """The fields that a call may name, without those that the operation does not use."""
    return [
        f"{name}: {field.annotation} = ..."
        for name, (argument, field) in operation.fields.items()
        if name not in argument.ignores
    ]


def _definition(operation: Operation, parameters: list[str], result: str, overloaded: bool) -> Iterator[str]:
    if overloaded:
        yield "    @overload"
    line = f"    def {operation.name}({', '.join(parameters)}) -> {result}: ..."
    if len(line) <= 120:
        yield line
        return
    yield f"    def {operation.name}("
    yield from (f"        {parameter}," for parameter in parameters)
    yield f"    ) -> {result}: ..."


def _method(operation: Operation) -> Iterator[str]:
    """A method, where it returns what it is given in up to three forms: one record, or its fields; several; None."""
    values = operation.results
    returned = [argument for argument in operation.outputs if argument.given and argument.chain]
    result = f"{operation.name}_result" if len(values) > 1 else values[0][1] if values else "None"
    if not returned:
        yield from _definition(operation, _parameters(operation, {}), result, False)
        return
    chain = returned[0]
    assert chain.type is not None
    name = chain.type.name
    yield from _definition(operation, _parameters(operation, {chain.name: name}), name, True)
    several = _parameters(operation, {chain.name: f"Iterable[{name}]"}, named=False, all_given=True)
    yield from _definition(operation, several, f"list[{name}]", True)
    if chain.optional:
        nothing = _parameters(operation, {chain.name: "None"}, named=False, all_given=True)
        yield from _definition(operation, nothing, "None", True)


def _parameters(
    operation: Operation, kinds: dict[str, str], named: bool = True, all_given: bool = False
) -> list[str]:
    known = signature(operation).parameters
    parameters = ["self"]
    fields = _fields(operation) if named else []
    for argument in operation.inputs:
        name = python_name(argument.name)
        by_fields = argument.record and bool(fields)
        omitted = argument.name in operation.may_omit or by_fields
        earlier_has_default = parameters[-1].endswith("= ...")
        default = " = ..." if (omitted and not all_given) or earlier_has_default else ""
        parameters.append(f"{name}: {kinds.get(argument.name, known[name].annotation)}{default}")
    return parameters + (["*", *fields] if fields else [])


def text() -> str:
    """The whole stub."""
    lines = [_HEAD.rstrip("\n")]
    for made in records.values():
        lines += _record(made._type)
    for operation in operations.values():
        lines += _result(operation)
    lines += ["", "class Operations:", "    @property", "    def operations(self) -> Mapping[str, Operation]: ..."]
    for operation in operations.values():
        lines += _method(operation)
    return "\n".join(lines) + "\n" + _TAIL


def main(arguments: list[str]) -> int:
    if len(arguments) != 1:
        print("usage: python3 -m qbobj.stubs OUT", file=sys.stderr)
        return 2
    Path(arguments[0]).write_text(text(), encoding="utf-8")
    print(f"{len(records)} record types, {len(operations)} operations")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
