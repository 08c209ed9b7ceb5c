# SPDX-License-Identifier: Apache-2.0
"""Handles, requests, threads, processes."""

import ctypes
import gc
import logging
import os
import sqlite3
import threading
import weakref

import pytest
from conftest import execute

import qbobj
from qbobj import _call, _handle, _library, _records


def test_a_handle_is_closed_once_or_twice(path):
    with qbobj.open(path) as db:
        assert not db.closed
        assert repr(db) == f"<qbobj handle of {str(path)!r}>"
    assert db.closed
    db.close()
    db.close()
    assert repr(db).endswith(", closed>")
    assert not os.path.exists(f"{path}-wal"), "nothing holds the database"


def test_a_closed_handle_refuses(path):
    db = qbobj.open(path)
    request = db.request()
    db.close()
    for use in (db.getLog, lambda: db.addLog(0), db.__enter__, request.__enter__):
        with pytest.raises(ValueError, match="the handle is closed"):
            use()


def test_a_forgotten_handle_is_closed(path):
    db = qbobj.open(path)
    seen = weakref.ref(db)
    db.addLog(0)
    del db
    gc.collect()
    assert seen() is None
    assert not os.path.exists(f"{path}-wal")


def test_an_exception_closes_the_handle(path):
    with pytest.raises(KeyError), qbobj.open(path) as db:
        raise KeyError
    assert db.closed


def test_records_survive_their_pool(db):
    db.addUser(UserName="anna", Email="anna@example.com")
    with db.request() as r:
        users = r.getUserCollection()
    for _ in range(20):
        db.getDictionary()
    db.close()
    assert users[0].Email == "anna@example.com"


def test_a_request_keeps_one_pool(db):
    head = _library.HandleHead.from_address(db._qbdb.value)
    assert head.request_pool is None
    with db.request() as r:
        pool = head.request_pool
        assert pool is not None
        r.addLog(0)
        db.addLog(0)
        assert head.request_pool == pool
        assert r.operations is db.operations
        with pytest.raises(RuntimeError, match="a request of this handle is open already"), db.request():
            pass
        with pytest.raises(qbobj.NotFound):
            r.getServiceEntry("nothing")
        assert r.getLog().total == 2
    assert head.request_pool is None
    with pytest.raises(ValueError, match="the request is not open"):
        r.getLog()
    with r:
        assert r.getLog().total == 2
    db.getLog()
    assert head.request_pool is None


def test_a_handle_may_be_closed_in_a_request(path):
    with qbobj.open(path) as db, db.request() as r:
        r.addLog(0)
        db.close()
        with pytest.raises(ValueError):
            r.getLog()


def test_memory_does_not_grow(db):
    def resident():
        with open("/proc/self/statm") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")

    db.addUser([qbobj.User(UserName=f"user{i}") for i in range(50)])
    for _ in range(20):
        db.getUserCollection()
    before = resident()
    for _ in range(200):
        db.getUserCollection()
    for _ in range(2000):
        db.getDictionary()  # its tree is not in the pool
    assert resident() - before < 8_000_000


def test_nothing_is_left_of_what_was_given(db, monkeypatch):
    """There may be passwords in it."""
    blocks = []

    class Watched(_records.Arena):
        def block(self, content):
            address = super().block(content)
            blocks.append(self._blocks[-1])
            return address

    monkeypatch.setattr(_handle, "Arena", Watched)
    db.addUser(UserName="anna", Password="wonderland")
    with pytest.raises(OverflowError):
        db.addUser(UserName="bert", Password="wonderland", UserQuota=[qbobj.Quota(HardMB=-1)])
    assert len(blocks) >= 5
    assert not any(block.raw.strip(b"\0") for block in blocks)


def test_threads_share_a_handle(db):
    """Calls of several threads run one after the other; none sees another's answer."""
    for i in range(8):
        db.addUser(UserName=f"user{i}")
    wrong = []

    def work(i):
        for _ in range(50):
            if db.getUID(f"user{i}") != 100 + i or db.getUser(UserId=100 + i).UserName != f"user{i}":
                wrong.append(i)

    run_all([threading.Thread(target=work, args=(i,)) for i in range(8)])
    assert wrong == []


def test_threads_with_handles_of_their_own(path):
    def work(i):
        with qbobj.open(path, timeout=60) as db:
            for k in range(10):
                db.addLog(i * 100 + k)

    run_all([threading.Thread(target=work, args=(i,)) for i in range(6)])
    with qbobj.open(path) as db:
        assert db.getLog().total == 60


def run_all(threads):
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
        assert not thread.is_alive()


def test_other_threads_run_while_a_call_waits(path):
    """A call that waits for a lock leaves the interpreter to others."""
    other = sqlite3.connect(path, isolation_level=None, check_same_thread=False)
    other.execute("BEGIN IMMEDIATE")
    timer = threading.Timer(0.2, lambda: other.execute("ROLLBACK"))
    with qbobj.open(path, timeout=30) as db:
        timer.start()
        db.addLog(0)
        assert db.getLog().total == 1
    timer.join()
    other.close()


def test_a_child_process_leaves_the_handle_alone(db, path):
    db.addLog(0)
    child = os.fork()
    if child == 0:
        _library.library.qbdb_close = lambda _: os._exit(3)
        try:
            db.getLog()
        except RuntimeError as error:
            db.close()
            os._exit(0 if "another process" in str(error) else 1)
        os._exit(2)
    assert os.waitpid(child, 0)[1] == 0
    db.addLog(0)
    assert db.getLog().total == 2


def test_the_journal_says_who_called(path):
    with qbobj.open(path, caller="anna") as db:
        assert _library.library.qbdb_journal_on(db._qbdb, db._db, ctypes.c_uint64(0), ctypes.c_uint64(0)) == 0
        db.addLog(0)
    assert execute(path, "SELECT operation, who FROM _journal")[0][-1] == ("qbobj_addLog", "anna")


# ---- The log


def test_the_log_goes_where_it_is_told(path):
    lines = []
    with qbobj.open(path, log=lambda *line: lines.append(line), log_level=5) as db:
        db.addUser(UserName="anna", Password="wonderland")
        with pytest.raises(qbobj.Error):
            db.addUser(UserName="anna")
    texts = [text for _, _, _, text in lines]
    assert ">>>> qbobj_addUser()" in texts
    assert any("UserName = anna" in text for text in texts)
    assert not any("wonderland" in text for text in texts), "no secret is logged"
    assert any(level == 2 and "already exists" in text for _, _, level, text in lines)
    assert all(file.endswith((".cpp", ".h")) and line > 0 for file, line, _, _ in lines)


def test_without_a_receiver_it_goes_to_the_logger(path, caplog):
    caplog.set_level(logging.DEBUG, "qbobj")
    with qbobj.open(path, log_level=4) as db:
        db.addLog(0)
        with pytest.raises(qbobj.Error):
            db.addLog(0, "loud")
    assert any(">>>> qbobj_addLog()" in record.getMessage() for record in caplog.records)
    assert not any("loud" in record.getMessage() for record in caplog.records), "it is raised, not logged as well"


def test_a_receiver_cannot_call_back(path):
    """A call inside a call would take the outer one's memory away."""
    caught = []

    def log(*_):
        for use in (db.getLog, db.close):
            try:
                use()
            except RuntimeError as error:
                caught.append(str(error))

    with qbobj.open(path, log=log, log_level=4) as db:
        db.addLog(0)
        assert db.getLog().total == 1
    assert caught and set(caught) == {"the handle is in use: a call runs"}


def test_nothing_takes_the_pool_away_while_it_is_read(db, monkeypatch):
    """Finalizers and signal handlers run wherever the interpreter is."""
    read, caught = _call.Call.result, []

    def result(call):
        request = db.request()
        for use in (db.getLog, db.close, request.__enter__, request.__exit__):
            with pytest.raises(RuntimeError, match="in use"):
                use()
            caught.append(use)
        return read(call)

    monkeypatch.setattr(_call.Call, "result", result)
    assert db.getLog().total == 0
    assert len(caught) == 4
