# SPDX-License-Identifier: Apache-2.0
"""Databases: opening them, calling operations on them."""

from __future__ import annotations

import contextlib
import ctypes
import logging
import os
import threading
import weakref
from collections.abc import Callable, Iterator, Mapping
from typing import Any, Literal

from . import _library, _tables
from ._call import Call
from ._errors import Error, Locked, NotFound
from ._library import library
from ._records import Arena, number
from ._tables import Operation, all_types, masked_password

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
        caller: str | None,
        log: LogFunction | None,
        log_level: int,
    ) -> None:
        name = os.fsencode(path)
        if b"\0" in name:
            raise ValueError("path: the file name holds a NUL character")
        if log is not None and not callable(log):
            raise TypeError(f"log: a function is needed, not {type(log).__name__}")
        if not isinstance(timeout, (int, float)):
            raise TypeError(f"timeout: seconds are needed, not {type(timeout).__name__}")
        milliseconds = number(round(timeout * 1000), "u", "timeout in milliseconds")
        level = number(log_level, "u", "log_level")
        arena = Arena()
        volume_name = None if volume is None else arena.text(volume, "volume")
        caller_name = None if caller is None else arena.text(caller, "caller")
        qbdb, self._db = ctypes.c_void_p(), ctypes.c_void_p()
        why = ctypes.create_string_buffer(512)
        code = library.qbdb_open(
            name, mode, volume_name, ctypes.byref(qbdb), ctypes.byref(self._db), why, ctypes.sizeof(why)
        )
        if code:
            meaning = _sqlite_text(code)
            raise Error("open", code, why.value.decode("utf-8", "replace") or meaning, meaning=meaning)
        self._qbdb = qbdb
        self._path = os.fsdecode(name)
        self._owner = os.getpid()
        self._lock = threading.RLock()
        self._running = False
        self._requested: Request | None = None
        self._watch = _Watch(log or _log_line, level)
        self._finalizer = weakref.finalize(self, _close, qbdb, self._owner, self._watch)
        head = _library.HandleHead.from_address(qbdb.value or 0)
        head.log_level = max(level, _FAILURE_LEVEL)
        library.qbdb_set_timeout(qbdb, milliseconds)
        library.qbdb_set_log_hook(qbdb, self._watch.log_hook, None)
        library.sqlite3_rollback_hook(self._db, self._watch.rollback_hook, None)
        if caller_name is not None and library.qbdb_set_caller(qbdb, caller_name):
            raise MemoryError

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
            if self._running:
                raise RuntimeError("the handle is in use: a call runs")
            self._requested = None
            if not self.closed and os.getpid() == self._owner:
                library.qbdb_request_end(self._qbdb)

    def _begin_pool(self) -> None:
        if library.qbdb_request_begin(self._qbdb):
            raise MemoryError("no memory for a request")

    @contextlib.contextmanager
    def _in_use(self) -> Iterator[None]:
        """Until what came back is read, no log function, finalizer or signal handler may empty the pool by a call."""
        self._running = True
        try:
            yield
        finally:
            self._running = False

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

    def _call(
        self, operation: Operation, args: tuple[Any, ...], kwargs: dict[str, Any], callers: int = 3
    ) -> Any:
        """Makes a call; `callers` functions up stands the line that is warned of."""
        call = Call(operation, args, kwargs)
        with self._lock:
            self._check()
            arena = Arena()
            try:
                call.bind(arena)
                with self._in_use(), self._pool():
                    self._run(call, arena)
                    result = call.result()
            finally:
                call.free()
                arena.wipe()
        call.warn(callers + 1)
        return result

    def _run(self, call: Call, arena: Arena) -> None:
        watch = self._watch
        watch.begin()
        watch.secrets = arena.secrets
        call.run(self._qbdb, self._db)
        self._judge(call, watch)

    def _judge(self, call: Call, watch: _Watch) -> None:
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
        if library.sqlite3_errcode(self._db) & 0xFF == code:
            if code == _NO_MEMORY:
                raise MemoryError
            meaning = _sqlite_text(code)
            raise (Locked if code == _BUSY else Error)(name, code, meaning, meaning=meaning)
        meaning = _tables.codes.get(code, "the operation failed and does not say why")
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
        return self._handle._call(operation, args, kwargs, 4)


def open(
    path: str | bytes | os.PathLike[str] | os.PathLike[bytes],
    *,
    create: bool = False,
    readonly: bool = False,
    volume: str | None = None,
    timeout: float = 5.0,
    caller: str | None = None,
    log: LogFunction | None = None,
    log_level: Literal[2, 4, 5] = 2,
) -> Handle:
    """Opens a database.

    create makes a fresh one, with a first volume if one is named; readonly opens one that is only read.
    timeout is how many seconds a call waits for another that writes. caller is who the journal says made the changes.
    log receives the library's log lines up to
    log_level (2 errors, 4 calls, 5 records as well); without it they go to the logger "qbobj".
    """
    if create and readonly:
        raise ValueError("create and readonly exclude each other")
    if volume is not None and not create:
        raise ValueError("volume: only a database that is created gets a first volume")
    mode = _CREATE if create else _READONLY if readonly else _EXISTING
    return Handle(path, mode, volume, timeout, caller, log, log_level)
