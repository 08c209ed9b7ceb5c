# SPDX-License-Identifier: Apache-2.0
"""Databases: opening them, calling operations on them."""

from __future__ import annotations

import collections
import contextlib
import copy
import ctypes
import functools
import inspect
import logging
import os
import threading
import warnings
import weakref
from collections.abc import Callable, Iterator, Mapping
from typing import Any, Literal

from . import _library, _tables
from ._errors import Error, IgnoredFieldWarning, Locked, NotFound, ReportedWarning
from ._library import library, text_at
from ._records import Arena, Check, Record, codecs, free_xml, number, records, refuse_unknown, xml_text
from ._tables import Argument, Operation, all_types, masked_password, python_name

LogFunction = Callable[[str, int, int, str], object]
"""Receives source file, line, level (2 errors, 4 calls, 5 records) and text of each log line."""

_CREATE, _EXISTING, _READONLY = 1, 0, 2
_MINUS_ONE = 0xFFFFFFFF
_BUSY, _NO_MEMORY = 5, 7
_FAILURE_LEVEL = 2
_SHORTEST_HIDDEN = 4
"""Anything shorter is part of ordinary words."""

logger = logging.getLogger("qbobj")

_secret_names = frozenset(field.name for type in all_types() for field in type.fields if field.secret)


def _redacted(text: str, secrets: list[str]) -> str:
    """A message or a dump's line "   s Password = value" without the secrets of the call."""
    name, sign, value = text.strip().partition(" = ")
    if sign and name.startswith("s ") and name[2:] in _secret_names:
        return text if value in ("", "(null)") else text.replace(value, masked_password)
    for secret in secrets:
        if len(secret) >= _SHORTEST_HIDDEN:
            text = text.replace(secret, masked_password)
    return text


def _log_line(file: str, line: int, level: int, text: str) -> None:
    logger.log(logging.WARNING if level <= _FAILURE_LEVEL else logging.DEBUG, "%s:%d: %s", file, line, text)


class _Watch:
    """What the library says while a call runs. Hooks refer to this and not to the handle, which would live on by it."""

    def __init__(self, log: LogFunction, level: int) -> None:
        self.log = log
        self.level = level
        self.failure = ""
        self.rolled_back = False
        self.secrets: list[str] = []
        self.log_hook = _library.LogHook(self._line)
        self.rollback_hook = _library.RollbackHook(self._rolled_back)

    def begin(self) -> None:
        self.failure = ""
        self.rolled_back = False
        self.secrets = []

    def _rolled_back(self, _: object) -> None:
        self.rolled_back = True

    def _line(self, _: object, file: bytes, line: int, level: int, flag: int, text: bytes) -> None:
        shown = _redacted(text.decode("utf-8", "surrogateescape").rstrip("\n"), self.secrets)
        if level <= _FAILURE_LEVEL:
            self.failure = shown
        reported = flag != 0  # the caller gets it as an exception
        if level <= self.level and not (reported and self.log is _log_line):
            self.log(file.decode(), line, level, shown)


def _close(qbdb: ctypes.c_void_p, owner: int, watch: _Watch) -> None:
    # A child process must not touch the connection of its parent.
    if os.getpid() == owner:
        library.qbdb_close(qbdb)


class Operations:
    """The operations as methods; `qbobj.operations` describes them."""

    def _call(self, operation: Operation, args: tuple[Any, ...], kwargs: dict[str, Any]) -> Any:
        raise NotImplementedError

    @property
    def operations(self) -> Mapping[str, Operation]:
        """The operations by name."""
        return _tables.operations


class Handle(Operations):
    """An open database. Threads may share it, their calls run one after the other."""

    def __init__(
        self,
        path: str | bytes | os.PathLike[str] | os.PathLike[bytes],
        mode: int,
        volume: str | None,
        timeout: float,
        log: LogFunction | None,
        log_level: int,
    ) -> None:
        name = os.fsencode(path)
        if b"\0" in name:
            raise ValueError("path: the file name holds a NUL character")
        if volume is not None and "\0" in volume:
            raise ValueError("volume: the text holds a NUL character")
        milliseconds = number(round(timeout * 1000), "u", "timeout in milliseconds")
        qbdb, self._db = ctypes.c_void_p(), ctypes.c_void_p()
        why = ctypes.create_string_buffer(512)
        volume_name = None if volume is None else volume.encode("utf-8", "surrogateescape")
        code = library.qbdb_open(
            name, mode, volume_name, ctypes.byref(qbdb), ctypes.byref(self._db), why, ctypes.sizeof(why)
        )
        if code:
            raise Error("open", code, why.value.decode("utf-8", "replace") or _sqlite_text(code))
        self._qbdb = qbdb
        self._path = os.fsdecode(name)
        self._owner = os.getpid()
        self._lock = threading.RLock()
        self._running = False
        self._requested: Request | None = None
        self._watch = _Watch(log or _log_line, log_level)
        head = _library.HandleHead.from_address(qbdb.value or 0)
        head.log_level = max(log_level, _FAILURE_LEVEL)
        library.qbdb_set_timeout(qbdb, milliseconds)
        library.qbdb_set_log_hook(qbdb, self._watch.log_hook, None)
        library.sqlite3_rollback_hook(self._db, self._watch.rollback_hook, None)
        self._finalizer = weakref.finalize(self, _close, qbdb, self._owner, self._watch)

    # ---- Life

    @property
    def closed(self) -> bool:
        """Whether the handle was closed."""
        return not self._finalizer.alive

    def close(self) -> None:
        """Closes the database. Closing it again does nothing; records that were read stay as they are."""
        with self._lock:
            if self._running:
                raise RuntimeError("the handle is in use: a call runs")
            self._requested = None
            self._finalizer()

    def __enter__(self) -> Handle:
        self._check()
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __repr__(self) -> str:
        return f"<qbobj handle of {self._path!r}{', closed' if self.closed else ''}>"

    def _check(self) -> None:
        if self.closed:
            raise ValueError("the handle is closed")
        if os.getpid() != self._owner:
            raise RuntimeError("the handle belongs to another process: open the database anew after a fork")
        if self._running:
            raise RuntimeError("the handle is in use: a call runs")

    # ---- Requests

    def request(self) -> Request:
        """Opens a request: its calls share one pool of memory, which goes away with the request, not with each call."""
        return Request(self)

    def _begin_request(self, request: Request) -> None:
        with self._lock:
            self._check()
            if self._requested is not None:
                raise RuntimeError("a request of this handle is open already")
            self._begin_pool()
            self._requested = request

    def _end_request(self) -> None:
        with self._lock:
            self._requested = None
            if not self.closed and os.getpid() == self._owner:
                library.qbdb_request_end(self._qbdb)

    def _begin_pool(self) -> None:
        if library.qbdb_request_begin(self._qbdb):
            raise MemoryError("no memory for a request")

    @contextlib.contextmanager
    def _pool(self) -> Iterator[None]:
        """The pool of one call: that of the open request, else one of its own."""
        if self._requested is not None:
            yield
            return
        self._begin_pool()
        try:
            yield
        finally:
            library.qbdb_request_end(self._qbdb)

    # ---- Calls

    def _call(self, operation: Operation, args: tuple[Any, ...], kwargs: dict[str, Any]) -> Any:
        call = _Call(operation, args, kwargs)
        with self._lock:
            self._check()
            arena = Arena()
            try:
                call.bind(arena)
                with self._pool():
                    self._run(call, arena)
                    result = call.result()
            finally:
                call.free()
                arena.wipe()
        call.warn()
        return result

    def _run(self, call: _Call, arena: Arena) -> None:
        watch = self._watch
        watch.begin()
        watch.secrets = arena.secrets
        self._running = True
        try:
            call.run(self._qbdb, self._db)
        finally:
            self._running = False
        self._judge(call, watch)

    def _judge(self, call: _Call, watch: _Watch) -> None:
        """Raises what the call failed with."""
        operation, code, info = call.operation, call.returned, call.info
        name, message = operation.name, _redacted(_message(info), watch.secrets)
        failed = code == _MINUS_ONE
        if operation.returns == "code":
            failed = code != 0
        elif operation.returns == "truth":
            failed = code == 0 and bool(watch.failure)
        if not failed:
            if code == 0 and operation.changes and watch.rolled_back:
                raise Error(name, code, "the change could not be stored; the database is as it was")
            call.report = f"{info.code} {message}" if info.code else ""
            return
        if info.code:
            kind = NotFound if info.code == 6 else Error
            raise kind(name, info.code, message, info.file.decode() if info.file else None, info.line)
        if operation.returns == "code":
            self._raise_without_report(name, code, watch)
        if operation.returns in ("found", "id") and not watch.failure:
            raise NotFound(name, -1, "not found")
        raise Error(name, -1, watch.failure or "there is no answer")

    def _raise_without_report(self, name: str, code: int, watch: _Watch) -> None:
        """The error record is empty: the code is the database's own when that is what it said last."""
        said = library.sqlite3_errcode(self._db) & 0xFF == code
        if said and code == _BUSY:
            raise Locked(name, code, "the database is locked by another")
        if said and code == _NO_MEMORY:
            raise MemoryError
        meaning = _tables.codes.get(code, _sqlite_text(code) if said else "the operation failed and does not say why")
        kind = NotFound if code == 6 else Error
        raise kind(name, code, f"{meaning} ({watch.failure})" if watch.failure else meaning)


def _message(info: _library.ErrorInfo) -> str:
    text: bytes | None = info.message
    return text.decode("utf-8", "surrogateescape") if text else ""


def _sqlite_text(code: int) -> str:
    text: bytes = library.sqlite3_errstr(code)
    return text.decode()


class Request(Operations):
    """Calls that share one pool of memory: `with db.request() as r: …`."""

    def __init__(self, handle: Handle) -> None:
        self._handle = handle
        self._open = False

    def __enter__(self) -> Request:
        self._handle._begin_request(self)
        self._open = True
        return self

    def __exit__(self, *_: object) -> None:
        self._open = False
        self._handle._end_request()

    def _call(self, operation: Operation, args: tuple[Any, ...], kwargs: dict[str, Any]) -> Any:
        if not self._open:
            raise ValueError("the request is not open: its calls stand in a with block")
        return self._handle._call(operation, args, kwargs)


class _Call:
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
            raise TypeError(f"{self.operation.name}(): {word} is a field of {' and of '.join(holders)}; give the record")
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
        if not isinstance(value, Record) and head is not None:
            value = codec.record(**{head.name: _listed(value, where)})
        if argument.chain and not isinstance(value, Record):
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

    def warn(self) -> None:
        """Warns of what went unused, and of what was reported in spite of success."""
        name = self.operation.name
        if self.ignored:
            verb = "is" if len(self.ignored) == 1 else "are"
            warnings.warn(f"{', '.join(self.ignored)} {verb} not used by {name}", IgnoredFieldWarning, stacklevel=4)
        if self.report:
            warnings.warn(f"{name}: {self.report}", ReportedWarning, stacklevel=4)


def _listed(value: Any, where: str) -> list[Any]:
    if isinstance(value, (str, bytes)) or not hasattr(value, "__iter__"):
        raise TypeError(f"{where}: a record or a list is needed, not {type(value).__name__}")
    return list(value)


# ---- Methods

results: dict[str, Any] = {}
"""The named tuples of operations that return several values."""


def _result_annotation(operation: Operation) -> str:
    names = operation.results
    if len(names) > 1:
        return f"{operation.name}_result"
    kind = names[0][1] if names else "None"
    chains = [argument for argument in operation.outputs if argument.given and argument.chain]
    return f"{kind} | list[{chains[0].type.name}]" if chains and chains[0].type else kind


def signature(operation: Operation) -> inspect.Signature:
    """The signature of an operation's method; fields of its records may be named as well."""
    parameters = [inspect.Parameter("self", inspect.Parameter.POSITIONAL_ONLY)]
    for argument in operation.inputs:
        default: Any = inspect.Parameter.empty
        if argument.name in operation.may_omit:
            default = 0 if argument.kind in ("int32", "uint64") else None
        parameters.append(
            inspect.Parameter(
                python_name(argument.name),
                inspect.Parameter.POSITIONAL_OR_KEYWORD,
                default=default,
                annotation=argument.annotation,
            )
        )
    if operation.fields:
        parameters.append(inspect.Parameter("fields", inspect.Parameter.VAR_KEYWORD))
    return inspect.Signature(parameters, return_annotation=_result_annotation(operation))


def _documentation(operation: Operation) -> str:
    lines = [operation.summary, "", operation.meaning, ""]
    for argument in operation.arguments:
        words = f" Words: {', '.join(argument.words)}." if argument.words else ""
        ignores = f" Not used: {', '.join(sorted(argument.ignores))}." if argument.ignores else ""
        direction = {"in": "", "out": " (returned)", "inout": " (given and returned)"}[argument.direction]
        lines.append(f"{python_name(argument.name)}{direction}: {argument.meaning}{words}{ignores}")
    lines.append(f"The library returns: {operation.result_meaning}")
    return "\n".join(lines)


def _method(operation: Operation) -> Callable[..., Any]:
    def method(self: Operations, /, *args: Any, **kwargs: Any) -> Any:
        return self._call(operation, args, kwargs)

    method.__name__ = operation.name
    method.__qualname__ = f"Operations.{operation.name}"
    method.__module__ = "qbobj"
    method.__doc__ = _documentation(operation)
    setattr(method, "__signature__", signature(operation))
    return method


def _add_methods() -> None:
    for operation in _tables.operations.values():
        setattr(Operations, operation.name, _method(operation))
        values = operation.results
        if len(values) > 1:
            name = f"{operation.name}_result"
            results[operation.name] = collections.namedtuple(
                name, [value for value, _ in values], module="qbobj"
            )


_add_methods()


def open(
    path: str | bytes | os.PathLike[str] | os.PathLike[bytes],
    *,
    create: bool = False,
    readonly: bool = False,
    volume: str | None = None,
    timeout: float = 5.0,
    log: LogFunction | None = None,
    log_level: Literal[2, 4, 5] = 2,
) -> Handle:
    """Opens a database.

    create makes a fresh one, with a first volume if one is named; readonly opens one that is only read.
    timeout is how many seconds a call waits for another that writes. log receives the library's log lines up to
    log_level (2 errors, 4 calls, 5 records as well); without it they go to the logger "qbobj".
    """
    if create and readonly:
        raise ValueError("create and readonly exclude each other")
    if volume is not None and not create:
        raise ValueError("volume: only a database that is created gets a first volume")
    mode = _CREATE if create else _READONLY if readonly else _EXISTING
    return Handle(path, mode, volume, timeout, log, log_level)
