# SPDX-License-Identifier: Apache-2.0
"""The appliance's configuration database from Python.

    >>> import qbobj
    >>> with qbobj.open("appliance.db") as db:
    ...     db.addUser(UserName="anna", GroupName="family", Password="secret")

Operations are methods of a handle, records are classes of this module: both are made of the library's own tables when
the module is imported. `qbobj.operations` and `qbobj.types` describe them; `help(qbobj.User)` tells what fields mean.
"""

from . import _methods, _records
from ._call import results
from ._errors import Error, IgnoredFieldWarning, Locked, NotFound, ReportedWarning
from ._handle import Handle, LogFunction, Operations, Request, open
from ._library import version
from ._records import Record
from ._tables import Argument, Field, Operation, RecordType, codes, masked_password, operations, types

__version__ = version

for _error in (Error, NotFound, Locked, ReportedWarning, IgnoredFieldWarning):
    _error.__module__ = __name__

_methods.add_methods()
globals().update(_records.records)
globals().update({result.__name__: result for result in results.values()})

__all__ = [
    "Argument",
    "Error",
    "Field",
    "Handle",
    "IgnoredFieldWarning",
    "Locked",
    "LogFunction",
    "NotFound",
    "Operation",
    "Operations",
    "Record",
    "RecordType",
    "ReportedWarning",
    "Request",
    "codes",
    "masked_password",
    "open",
    "operations",
    "types",
    "version",
    *_records.records,
]
