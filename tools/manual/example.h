// A call of an operation as a program and as a command: what the examples of the manual show.
#pragma once

#include <string>

#include "json_text.h"
#include "pages.h"
#include "qbobj.h"

namespace manual {

/// A C function that makes the call and says what came out: a part of the program that "qbobj --emit c" prints.
/// @param arguments As the command line takes them in JSON.
std::string c_example(const QbobjOperation &operation, const qbcli::Json &arguments);

/// The whole program.
std::string c_program(const QbobjOperation &operation, const qbcli::Json &arguments);

/// The same as a line for a shell.
std::string shell_example(const QbobjOperation &operation, const qbcli::Json &arguments);

}  // namespace manual
// SPDX-License-Identifier: Apache-2.0
