# SPDX-License-Identifier: Apache-2.0
"""Records in Python."""

import copy
import dataclasses
import pickle

import pytest

import qbobj


def test_what_is_not_given_is_absent():
    share = qbobj.Share()
    assert share.ShareName is None and share.QuotaMB is None and share.Cifs is None
    assert share.VisibleSnapshot == 0 and share.UserQuota == []
    assert share.UserQuota is not qbobj.Share().UserQuota


def test_fields_by_keyword_only():
    user = qbobj.User(UserName="anna", UserQuota=[qbobj.Quota(ShareId="tank/media", HardMB=10)])
    assert user.UserName == "anna"
    assert user.UserQuota[0].HardMB == 10
    with pytest.raises(TypeError):
        qbobj.User("anna")


def test_an_unknown_field_is_named():
    with pytest.raises(TypeError, match="^User has no field 'UserNmae'. Did you mean 'UserName'\\?$"):
        qbobj.User(UserNmae="anna")
    with pytest.raises(TypeError, match="^Quota has no field 'zzz'$"):
        qbobj.Quota(zzz=1)
    with pytest.raises(AttributeError):
        qbobj.User().UserNmae = "anna"


def test_repr_shows_what_is_given_and_no_secret():
    user = qbobj.User(UserName="anna", Password="wonderland", SysHash="$6$abc", UserQuota=[qbobj.Quota(HardMB=1)])
    masked = qbobj.masked_password
    assert repr(user) == (
        f"User(UserName='anna', Password={masked!r}, SysHash={masked!r}, UserQuota=[Quota(HardMB=1)])"
    )
    assert repr(qbobj.User()) == "User()"
    assert repr(qbobj.User(Password="")) == "User(Password='')"
    assert repr(qbobj.Share(QuotaMB=0)) == "Share(QuotaMB=0)"
    job = qbobj.BackupJob(Source=qbobj.BackupJob_SourceOrDestination(Password="wonderland"))
    assert "wonderland" not in repr(job) and "wonderland" not in repr([job])


def test_no_secret_of_any_type_is_shown():
    secrets = [(type, field) for type in qbobj.types.values() for field in type.fields if field.secret]
    assert len(secrets) >= 19
    for type, field in secrets:
        assert "wonderland" not in repr(getattr(qbobj, type.name)(**{field.name: "wonderland"}))


def test_records_are_compared_by_value():
    one, other = qbobj.User(UserName="anna", UserQuota=[qbobj.Quota(HardMB=1)]), qbobj.User(UserName="anna")
    assert one != other
    other.UserQuota.append(qbobj.Quota(HardMB=1))
    assert one == other
    assert qbobj.SystemUser() != qbobj.SystemGroup()
    assert qbobj.Quota() != "Quota()"
    with pytest.raises(TypeError):
        hash(one)


def test_records_are_dataclasses():
    user = qbobj.User(UserName="anna", UserQuota=[qbobj.Quota(HardMB=1)])
    assert dataclasses.is_dataclass(user)
    assert dataclasses.replace(user, Email="a@example.com").Email == "a@example.com"
    assert user.Email is None
    assert dataclasses.asdict(user)["UserQuota"][0]["HardMB"] == 1
    password = next(field for field in dataclasses.fields(user) if field.name == "Password")
    assert password.metadata["field"].secret
    with pytest.raises(TypeError, match="no field 'Mail'"):
        dataclasses.replace(user, Mail="")


def test_copies_and_pickles():
    user = qbobj.User(UserName="anna", UserQuota=[qbobj.Quota(HardMB=1)])
    for twin in (copy.deepcopy(user), pickle.loads(pickle.dumps(user))):
        assert twin == user and twin is not user and twin.UserQuota[0] is not user.UserQuota[0]


def test_a_collection_is_read_like_its_list():
    users = qbobj.UserCollection(User=[qbobj.User(UserName="anna"), qbobj.User(UserName="bert")], Entries=2)
    assert [user.UserName for user in users] == ["anna", "bert"]
    assert len(users) == 2 and users[-1].UserName == "bert" and users[:1] == users.User[:1]
    assert not qbobj.UserCollection()
    assert qbobj.FileStat(), "what holds a list among other things is none"


def test_documentation_tells_the_meanings():
    assert "What one user or group may use of one share." in qbobj.Quota.__doc__
    assert "HardMB: int\n    Limit in MB" in qbobj.Quota.__doc__
    words = next(field for field in qbobj.types["FtpOptions"].fields if field.name == "AuthMode").words
    assert f"Words: {', '.join(words)}." in qbobj.FtpOptions.__doc__
