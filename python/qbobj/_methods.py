# SPDX-License-Identifier: Apache-2.0
"""The operations as methods, with signature and documentation."""

from __future__ import annotations

import inspect
from collections.abc import Callable
from typing import Any

from ._handle import Operations
from ._tables import Operation, operations, python_name


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


def add_methods() -> None:
    """Gives every handle and request the operations."""
    for operation in operations.values():
        setattr(Operations, operation.name, _method(operation))
