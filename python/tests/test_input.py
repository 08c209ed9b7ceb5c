# SPDX-License-Identifier: Apache-2.0
"""Whatever a caller gives, the process lives, and what is wrong is named."""

import pytest

import qbobj

USER = qbobj.User


@pytest.mark.parametrize(
    ("call", "error", "message"),
    [
        # Kinds and ranges
        (lambda db: db.addUser(UserName=5), TypeError, "user.UserName: a text is needed, not int"),
        (lambda db: db.addUser(UserName=b"anna"), TypeError, "user.UserName: a text is needed, not bytes"),
        (lambda db: db.addUser(UserName="a\0b"), ValueError, "user.UserName: the text holds a NUL character"),
        (lambda db: db.addUser(UserName="\ud800"), ValueError, "user.UserName: the text cannot be written as UTF-8"),
        (lambda db: db.addUser(UserName="a", UserId="5"), TypeError, "user.UserId: a whole number is needed, not str"),
        (
            lambda db: db.addUser(UserName="a", UserId=1.0),
            TypeError,
            "user.UserId: a whole number is needed, not float",
        ),
        (
            lambda db: db.addUser(UserName="a", UserId=None),
            TypeError,
            "user.UserId: a whole number is needed, not None",
        ),
        (lambda db: db.addUser(UserId=2**31), OverflowError, "user.UserId: 2147483648 is not between -2147483648 and"),
        (
            lambda db: db.addUser([USER(UserName="a"), USER(UserQuota=[qbobj.Quota(), qbobj.Quota(HardMB=-1)])]),
            OverflowError,
            "user[1].UserQuota[1].HardMB: -1 is not between 0 and 18446744073709551615",
        ),
        (lambda db: db.truncateLog(2**31), OverflowError, "keep: 2147483648 is not between"),
        (lambda db: db.truncateLog("5"), TypeError, "keep: a whole number is needed, not str"),
        (lambda db: db.truncateLog(None), TypeError, "keep: a whole number is needed, not NoneType"),
        (lambda db: db.getServiceEntry(None), TypeError, "key: a text is needed, not None"),
        (lambda db: db.getServiceEntry(5), TypeError, "key: a text is needed, not int"),
        (lambda db: db.modifyZvol("a", "b", "c", -1, 0), OverflowError, "sizeKB: -1 is not between 0 and"),
        # Records and lists
        (lambda db: db.addUser("anna"), TypeError, "user: a record User is needed, not str"),
        (lambda db: db.addUser(5), TypeError, "user: a record User is needed, not int"),
        (lambda db: db.addUser({"UserName": "anna"}), TypeError, "user: a record User is needed, not dict"),
        (
            lambda db: db.addUser([USER(UserName="a"), None]),
            TypeError,
            "user[1]: a record User is needed, not NoneType",
        ),
        (lambda db: db.addUser(qbobj.Group()), TypeError, "user: a record User is needed, not Group"),
        (lambda db: db.getUser(None), TypeError, "user: a record User is needed, not None"),
        (lambda db: db.getUser([USER()]), TypeError, "user: a record User is needed, not list"),
        (lambda db: db.getShare([]), ValueError, "share: the list is empty"),
        (
            lambda db: db.addUser(UserQuota=qbobj.Quota()),
            TypeError,
            "user.UserQuota: a list of Quota is needed, not Quota",
        ),
        (lambda db: db.addUser(UserQuota="x"), TypeError, "user.UserQuota: a list of Quota is needed, not str"),
        (lambda db: db.addUser(UserQuota=[USER()]), TypeError, "user.UserQuota[0]: a record Quota is needed, not User"),
        (lambda db: db.addShare(Cifs=[]), TypeError, "share.Cifs: a record CifsShareOption is needed, not list"),
        (
            lambda db: db.setProtocolCollection("ftp"),
            TypeError,
            "collection: a record ProtocolCollection is needed, not str",
        ),
        (
            lambda db: db.setProtocolCollection([5]),
            TypeError,
            "collection.Protocol[0]: a record Protocol is needed, not",
        ),
        # Names
        (lambda db: db.addUser(UserNmae="a"), TypeError, "addUser() has no field 'UserNmae'. Did you mean 'UserName'?"),
        (
            lambda db: db.addUser(USER(), USER()),
            TypeError,
            "addUser() takes at most 1 positional arguments, 2 are given",
        ),
        (lambda db: db.addUser(USER(), user=USER()), TypeError, "addUser(): user is given twice"),
        (
            lambda db: db.addUser([USER()], Email="x"),
            TypeError,
            "user: the fields Email need one record User beside them",
        ),
        (lambda db: db.addUser(), TypeError, "addUser(): the argument user is missing"),
        (lambda db: db.deleteLog(), TypeError, "deleteLog(): the argument query is missing"),
        (lambda db: db.truncateLog(), TypeError, "truncateLog(): the argument keep is missing"),
        (lambda db: db.setServiceEntry(val="x"), TypeError, "setServiceEntry(): the argument key is missing"),
        (lambda db: db.getDiskByDiskDiff(Controller=1), TypeError, "Controller is a field of diff and of disk"),
        # What the tables say of values
        (
            lambda db: db.setProtocolCollection(ftp("loud")),
            ValueError,
            "FtpOptions.AuthMode: 'loud' is none of its words",
        ),
        (
            lambda db: db.addUser(UserName="a", Password=qbobj.masked_password),
            ValueError,
            "user.Password: the dots stand for a stored secret",
        ),
    ],
)
def test_what_is_wrong_is_named(db, unchanged, call, error, message):
    with unchanged(), pytest.raises(error) as caught:
        call(db)
    assert message in str(caught.value)


def ftp(mode):
    return [qbobj.Protocol(key="ftp", FtpOptions=qbobj.FtpOptions(AuthMode=mode))]


def test_numbers_of_other_kinds():
    class Index:
        def __index__(self):
            return 7

    from qbobj import _records

    assert _records.number(True, "i", "") == 1
    assert _records.number(Index(), "i", "") == 7


WRONG = [object(), b"x", 1.5, 2**70, -(2**70), "a\0b", "\ud800", [5], [[]], {}, {1: 2}, lambda: 0, USER, qbobj.Host()]


@pytest.mark.parametrize("operation", qbobj.operations.values(), ids=lambda operation: operation.name)
def test_no_operation_ends_the_process(db, unchanged, operation):
    """Every argument of every operation gets what it cannot be, and then as little as there is."""
    method = getattr(db, operation.name)
    with unchanged():
        for place in range(len(operation.inputs)):
            for wrong in WRONG:
                arguments = [least(argument) for argument in operation.inputs]
                arguments[place] = wrong
                with pytest.raises((TypeError, ValueError, OverflowError)):
                    method(*arguments)


@pytest.mark.filterwarnings("ignore::qbobj.ReportedWarning")
@pytest.mark.parametrize("operation", qbobj.operations.values(), ids=lambda operation: operation.name)
def test_operations_take_empty_records(db, operation):
    try:
        getattr(db, operation.name)(*map(least, operation.inputs))
    except qbobj.Error as error:
        assert error.operation == operation.name
        assert error.message


def least(argument):
    if argument.type is not None:
        return getattr(qbobj, argument.type.name)()
    if argument.optional:
        return None
    return "" if argument.kind == "text" else 0
