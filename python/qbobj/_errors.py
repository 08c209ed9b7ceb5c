# SPDX-License-Identifier: Apache-2.0
"""What a failed call raises."""

from __future__ import annotations

from ._tables import codes


class Error(Exception):
    """An operation failed; the database is as it was before."""

    def __init__(
        self,
        operation: str,
        code: int,
        message: str,
        file: str | None = None,
        line: int | None = None,
        meaning: str | None = None,
    ) -> None:
        super().__init__(operation, code, message, file, line, meaning)
        self.operation = operation
        """Name of the operation, "open" when a database could not be opened."""
        self.code = code
        """The library's code; SQLite's where the call did not get as far as its work; -1 for an operation without."""
        self.message = message
        """What went wrong."""
        self.file = file
        """The library's source file that reported it, if one did."""
        self.line = line
        """The line in that file."""
        self.meaning = codes.get(code) if meaning is None else meaning
        """What the code means; None for -1."""

    def __str__(self) -> str:
        return f"{self.operation}: {self.code} {self.message}"


class NotFound(Error):
    """Nothing was found, or nothing changed."""


class Locked(Error):
    """Another process or handle kept the database locked for longer than the timeout; nothing was tried."""


class ReportedWarning(UserWarning):
    """An operation succeeded and reported something all the same."""


class IgnoredFieldWarning(UserWarning):
    """A field was given that the operation does not use."""
