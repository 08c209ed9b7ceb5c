// Calls that a support library may have or not. They are weak references: one that is missing when the libraries
// are loaded is null, and nothing else comes of it.
#pragma once

#include "qbdb.h"
#include "qbdb_journal.h"

#pragma weak qbdb_sql_begin_read
#pragma weak qbdb_statements_watched
#pragma weak qbdb_journal_wants
#pragma weak qbdb_journal_call
// SPDX-License-Identifier: Apache-2.0
