# SPDX-License-Identifier: Apache-2.0
"""Calls against real databases: what they write, what they return, how they fail."""

import ctypes
import os
import pickle
import sqlite3
import xml.etree.ElementTree

import pytest
from conftest import SOURCE, content, execute

import qbobj
from qbobj import _library

RIGHTS = dict(
    FileCreateGroupRights="ReadWrite",
    FileCreateEveryoneRights="ReadOnly",
    FolderCreateGroupRights="ReadWrite",
    FolderCreateEveryoneRights="ReadOnly",
)


# ---- Users, groups


def test_a_user_s_life(db, path):
    assert db.addGroup(GroupName="family") == qbobj.Group(resource_id=100, GroupName="family")
    anna = db.addUser(UserName="anna", GroupName="family", Email="anna@example.com", Password="wonderland")
    assert (anna.UserId, anna.resource_id, anna.HomeDirectory) == (100, 100, "/home/anna")

    read = db.getUser(UserId=100)
    assert (read.UserName, read.GroupName, read.Email) == ("anna", "family", "anna@example.com")
    assert read.Password == qbobj.masked_password

    changed = db.modifyUser(read, Email="o'brien@example.com")
    assert changed.Email == "o'brien@example.com"
    assert read.Email == "anna@example.com", "the caller's record is not touched"
    users = db.getUserCollection()
    assert (users.Entries, users.TotalEntries, len(users)) == (1, 1, 1)
    assert users[0].Email == "o'brien@example.com" and users[0].GroupName == "family"

    assert db.deleteUser(UserId=100).UserName == "anna"
    assert len(db.getUserCollection()) == 0


def test_the_password_is_stored_and_the_mask_keeps_it(db, unchanged):
    db.addUser(UserName="anna", Email="anna@example.com", Password="wonderland")
    with unchanged():
        db.modifyUser(db.getUser(UserId=100))
    db.setMyPassword(UserName="anna", OldPassword="wonderland", NewPassword="looking glass")
    with pytest.raises(qbobj.Error):
        db.setMyPassword(UserName="anna", OldPassword="wonderland", NewPassword="other")


def test_several_users_at_once(db):
    made = db.addUser([qbobj.User(UserName="anna"), qbobj.User(UserName="bert")])
    assert [user.UserId for user in made] == [100, 101]
    assert [user.UserName for user in db.getUserCollection(order=-1)] == ["bert", "anna"]
    page = db.getUserCollection(qbobj.AccountQuery(limit=1, offset=1))
    assert ([user.UserName for user in page], page.TotalEntries) == (["bert"], 2)
    assert [user.UserName for user in db.deleteUser(iter(made[:1]))] == ["anna"]
    assert [user.UserName for user in db.deleteUser(db.getUserCollection())] == ["bert"]
    assert db.addUser(None) is None


def test_lists_inside_records(db):
    db.addUser([qbobj.User(UserName="anna"), qbobj.User(UserName="bert")])
    db.addShare(ShareName="media", VolumeId="tank")
    member = [qbobj.User(resource_id=100, UserId=100), qbobj.User(resource_id=101, UserId=101)]
    quota = [qbobj.Quota(ShareId="tank/media", HardMB=500)]
    db.addGroup(GroupName="choir", SecondaryMember=member, GroupQuota=quota)
    choir = db.getGroupCollection()[0]
    assert [user.UserName for user in choir.SecondaryMember] == ["anna", "bert"]
    assert [(one.ShareId, one.HardMB) for one in choir.GroupQuota] == [("tank/media", 500)]
    assert db.isMemberOfGroup("anna", "choir") is True
    choir.SecondaryMember.pop()
    db.modifyGroup(choir)
    assert db.isMemberOfGroup("bert", "choir") is False
    db.deleteGroup(GroupId=choir.GroupId)
    assert [group.GroupName for group in db.getGroupCollection()] == ["users"]


def test_quotas_of_a_user(db):
    db.addShare(ShareName="media", VolumeId="tank")
    db.addUser(UserName="anna", UserQuota=[qbobj.Quota(ShareId="tank/media", HardMB=2**40)])
    user = db.getUserCollection()[0]
    assert [quota.HardMB for quota in user.UserQuota] == [2147483647]
    user.UserQuota[0].HardMB = 7
    db.modifyUser(user)
    assert [quota.HardMB for quota in db.getUserCollection()[0].UserQuota] == [7]


# ---- Shares, jobs, settings


def test_a_share_s_life(db):
    db.addUser(UserName="anna")
    cifs = qbobj.CifsShareOption(
        DefaultAccess="Disabled",
        UserAcl=[qbobj.UserAcl(User=[qbobj.SystemUser(resource_id=100)], Access="ReadWrite")],
        **RIGHTS,
    )
    nfs = qbobj.NfsShareOption(
        DefaultAccess="ReadOnly", HostAcl=[qbobj.HostAcl(Host=[qbobj.Host(HostName="192.168.1")], Access="ReadWrite")]
    )
    made = db.addShare(ShareName="media", VolumeId="tank", Comment="Filme für alle", QuotaMB=100, Cifs=cifs, Nfs=nfs)
    assert made.ShareId == made.key == "1"
    share = db.getShare(ShareName="media")
    assert share.Comment == "Filme für alle"
    assert share.key == share.ShareId
    assert [acl.User[0].UserName for acl in share.Cifs.UserAcl] == ["anna"]
    assert share.Cifs.EnableOplocks is not None
    assert [(acl.Host[0].HostName, acl.Access) for acl in share.Nfs.HostAcl] == [("192.168.1.0/24", "ReadWrite")]
    assert db.getShareAccess("media", "anna") == "ReadWrite"
    assert db.getShareId("media") == int(share.ShareId)

    same = db.modifyShare(share)
    assert same.Nfs.Changed == 0
    db.modifyShare(ShareId=share.ShareId, Comment="films")
    assert db.getShareCollection()[0].Comment == "films"
    db.deleteShare(ShareId=share.ShareId)
    assert db.getShareCollection() == qbobj.ShareCollection()


def test_backup_jobs(db):
    db.addShare(ShareName="media", VolumeId="tank")
    end = qbobj.BackupJob_SourceOrDestination
    job = db.addBackupJob(
        JobName="nightly",
        Source=end(Type="share", ShareNameOrProtocol="media", Path="/"),
        Destination=end(Type="remote", ShareNameOrProtocol="rsync", Path="host/x", Login="anna", Password="secret"),
        Schedule=qbobj.BackupJob_Schedule(Enabled=1, Frequency=24, DayOfWeek="Mon"),
        Option=qbobj.BackupJob_Option(),
    )
    assert db.hasBackupJob(job.JobId) is True
    assert db.hasBackupJob(job.JobId + 1) is False
    read = db.getBackupJob(JobId=job.JobId)
    assert (read.JobName, read.Source.Path, read.Destination.Login) == ("nightly", "/", "anna")
    read.JobName = "weekly"
    db.modifyBackupJob(read)
    assert [job.JobName for job in db.getBackupJobCollection()] == ["weekly"]
    db.setBackupButtonJobCollection([qbobj.BackupButtonJob(JobId=job.JobId)])
    assert [button.JobName for button in db.getBackupButtonJobCollection()] == ["weekly"]
    db.deleteBackupJob(JobId=job.JobId)
    assert len(db.getBackupJobCollection()) == 0


def test_settings_are_read_and_written_back(db, path):
    before = content(path)
    ftp = db.getProtocol("ftp")
    assert isinstance(db.setProtocolCollection(ftp), qbobj.ProtocolCollection)
    assert content(path) == before
    ftp[0].FtpOptions.Port = 2121
    assert db.setProtocolCollection(ftp.Protocol)[0].Changed == 1
    assert db.getProtocol("ftp")[0].FtpOptions.Port == 2121


# ---- What comes back


def test_values_lists_and_tuples(db):
    assert db.addLog(0, "warning", "disk", "LOGMSG_HOT", "<disk>sda</disk>") is None
    db.addLog(time=5)
    log = db.getLog()
    entries, count, total = log
    assert (len(log.entries), count, total) == (2, 2, 2)
    assert log.entries is entries and isinstance(entries, list)
    assert db.getLog(severity="warning").entries[0].MessageTag == "LOGMSG_HOT"
    db.addUser(UserName="anna")
    assert db.getUID("anna") == 100
    assert db.getUserName(100) == "anna"
    assert db.getSmbUserNameMapCount("anna", "uname") == 0
    assert db.getUserHomeFolderTotalConsumedInByte() == 0
    assert db.getQuillboxdInfo()._fields == ("started", "stopped", "version")


def test_xml_comes_as_text(db):
    root = xml.etree.ElementTree.fromstring(db.getDictionary())
    assert root.tag == "Dictionary" and len(root.findall(".//item")) > 10
    for _ in range(50):
        db.getDictionary()


def test_texts_are_utf_8_and_survive_when_they_are_not(db):
    db.setRegistryEntry("greeting", "Grüße 🐘 €")
    assert db.getRegistryEntry("greeting") == "Grüße 🐘 €"
    db.setRegistryEntry("bytes", os.fsdecode(b"caf\xe9"))
    assert db.getRegistryEntry("bytes") == "caf\udce9"
    assert db.getServiceEntry("LANGUAGE") == "en-us"


def test_python_s_own_words_get_an_underscore(db):
    assert len(db.getSnapshotCollection(from_=0, to=2**31 - 1)) == 0
    defaults = db.getAccountDefault()
    db.setAccountDefault(def_=defaults)
    assert db.getAccountDefault() == defaults


# ---- Failures


def test_a_refusal_tells_code_message_and_place(db, unchanged):
    db.addUser(UserName="anna")
    with unchanged(), pytest.raises(qbobj.Error) as caught:
        db.addUser([qbobj.User(UserName="bert"), qbobj.User(UserName="anna")])
    error = caught.value
    assert (error.operation, error.code, error.message) == ("addUser", 801, "User (anna) already exists.")
    assert error.meaning == "the user name is taken"
    assert str(error) == "addUser: 801 User (anna) already exists."
    source = next(SOURCE.glob(f"src/*/{error.file}")).read_text().splitlines()
    assert "801" in source[error.line - 1]
    assert not isinstance(error, qbobj.NotFound)


def test_what_is_not_found(db, unchanged):
    with unchanged():
        with pytest.raises(qbobj.NotFound, match="^getServiceEntry: 6 ") as caught:
            db.getServiceEntry("nothing")
        assert caught.value.code == 6
        for call in (db.getUID, db.getShareId, db.getPosixUIDGID):
            with pytest.raises(qbobj.NotFound, match="not found$") as caught:
                call("no-such-name")
            assert (caught.value.code, caught.value.meaning, caught.value.file) == (-1, None, None)


def test_a_locked_database(db, path, unchanged):
    other = sqlite3.connect(path, isolation_level=None)
    try:
        other.execute("BEGIN IMMEDIATE")
        with pytest.raises(qbobj.Locked) as caught:
            db.addLog(0)
        assert (caught.value.code, caught.value.meaning) == (5, "database is locked")
        assert isinstance(caught.value, qbobj.Error)
        assert db.getLog().total == 0, "what only reads waits for no-such-user"
    finally:
        other.execute("ROLLBACK")
        other.close()
    db.addLog(0)


def test_a_change_that_cannot_be_stored(db, unchanged):
    """An operation's success does not depend on the commit, the caller's does."""

    @ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_uint32, ctypes.c_void_p)
    def fail_commit(_, sql, *rest):
        return 10 if sql == b"COMMIT" else 0

    with unchanged():
        _library.library.qbdb_set_statement_hook(db._qbdb, fail_commit, None)
        with pytest.raises(qbobj.Error, match="^addLog: 0 the change could not be stored; the database is as it was$"):
            db.addLog(0)
        _library.library.qbdb_set_statement_hook(db._qbdb, None, None)
    db.addLog(0)
    assert db.getLog().total == 1


def test_a_broken_database(db, path):
    execute(path, 'DROP TABLE "$log"')
    with pytest.raises(qbobj.Error) as caught:
        db.getLog()
    assert caught.value.code == 5 and "no such table" in caught.value.message
    assert caught.value.meaning == "a database statement failed"


def test_a_broken_database_is_no_answer(db, path):
    """What has no error record fails by what the library logs."""
    tables = [name for (name,) in execute(path, "SELECT name FROM sqlite_master WHERE type='table'")[0]]
    for table in tables:
        if "user" in table or "backup" in table:
            execute(path, "PRAGMA legacy_alter_table=ON", f'ALTER TABLE "{table}" RENAME TO "x{table}"')
    for call in (lambda: db.hasBackupJob(1), lambda: db.getUID("anna"), lambda: db.isMemberOfGroup("anna", "users")):
        with pytest.raises(qbobj.Error) as caught:
            call()
        assert not isinstance(caught.value, qbobj.NotFound)


def test_a_read_only_database(path, unchanged):
    with unchanged(), qbobj.open(path, readonly=True) as db:
        assert db.getLog().total == 0
        with pytest.raises(qbobj.Error):
            db.addLog(0)


def test_errors_can_be_sent_between_processes():
    error = pickle.loads(pickle.dumps(qbobj.Error("addUser", 801, "taken", "a.cpp", 5)))
    assert (error.code, error.line, str(error)) == (801, 5, "addUser: 801 taken")


def test_secrets_are_in_no_message(db):
    with pytest.raises(qbobj.Error) as caught:
        db.addUser(UserName="wonderland", GroupName="wonderland", Password="wonderland")
    assert "wonderland" not in str(caught.value)
    assert qbobj.masked_password in str(caught.value)


def test_a_report_in_spite_of_success_is_a_warning(db, unchanged):
    with unchanged(), pytest.warns(qbobj.ReportedWarning, match="^updateVolume: 8 ") as caught:
        assert db.updateVolume(None) is None
    assert caught[0].filename == __file__


def test_a_field_that_is_not_used_is_a_warning(db):
    with pytest.warns(qbobj.IgnoredFieldWarning, match="^FullName is not used by addUser$") as caught:
        db.addUser(UserName="anna", FullName="Anna")
    assert caught[0].filename == __file__
    with db.request() as request, pytest.warns(qbobj.IgnoredFieldWarning) as caught:
        request.addUser(UserName="zoe", FullName="Zoe")
    assert caught[0].filename == __file__
    with pytest.warns(qbobj.IgnoredFieldWarning, match="^FullName, IsDomainMember are not used by addUser$"):
        db.addUser([qbobj.User(UserName="bert", FullName="Bert", IsDomainMember=1)])
    read = db.getUser(UserId=100)
    read.FullName = "Anna"
    db.modifyUser(read)  # what was read may come back whole
    with pytest.warns(qbobj.IgnoredFieldWarning, match="^FullName is not used by modifyUser$"):
        db.modifyUser(read, FullName="Anna B.")


# ---- Opening


def test_opening_fails_with_the_reason(tmp_path, path):
    with pytest.raises(qbobj.Error, match="^open: 14 ") as caught:
        qbobj.open(tmp_path / "none.db")
    assert (caught.value.code, caught.value.meaning) == (14, "unable to open database file")
    (tmp_path / "other.db").write_bytes(b"not a database" * 100)
    with pytest.raises(qbobj.Error, match="^open: 26 "):
        qbobj.open(tmp_path / "other.db")
    with pytest.raises(qbobj.Error, match="^open: "):
        qbobj.open(path, create=True)
    assert not (tmp_path / "none.db").exists()


def test_file_names_of_every_kind(tmp_path):
    for name in (str(tmp_path / "a.db"), os.fsencode(tmp_path / "b.db"), tmp_path / os.fsdecode(b"\xff.db")):
        with qbobj.open(name, create=True) as db:
            db.addLog(0)
        assert os.path.exists(name)


@pytest.mark.parametrize(
    ("arguments", "error", "message"),
    [
        (dict(path=5), TypeError, "int"),
        (dict(path="a\0b"), ValueError, "path: the file name holds a NUL"),
        (dict(path="x", create=True, readonly=True), ValueError, "exclude each other"),
        (dict(path="x", volume="tank"), ValueError, "volume: only a database that is created"),
        (dict(path="x", create=True, volume="a\0"), ValueError, "volume: the text holds a NUL"),
        (dict(path="x", create=True, volume=5), TypeError, "volume: a text is needed, not int"),
        (dict(path="x", caller=b"me"), TypeError, "caller: a text is needed, not bytes"),
        (dict(path="x", log="file"), TypeError, "log: a function is needed, not str"),
        (dict(path="x", log_level="2"), TypeError, "log_level: a whole number is needed"),
        (dict(path="x", timeout="5"), TypeError, "timeout: seconds are needed, not str"),
        (dict(path="x", timeout=float("nan")), ValueError, "NaN"),
        (dict(path="x", timeout=-1), OverflowError, "timeout"),
        (dict(path="x", timeout=2**40), OverflowError, "timeout"),
    ],
)
def test_wrong_words_to_open(arguments, error, message, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(error, match=message):
        qbobj.open(**arguments)
    assert list(tmp_path.iterdir()) == []
