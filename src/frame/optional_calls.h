// Calls that a support library may have or not. They are weak references: one that is missing when the libraries
// are loaded is null, and nothing else comes of it.
#pragma once

#include "qbdb.h"
#include "qbdb_journal.h"

extern "C" decltype(qbdb_sql_begin_read) qbdb_sql_begin_read __attribute__((weak));
extern "C" decltype(qbdb_statements_watched) qbdb_statements_watched __attribute__((weak));
extern "C" decltype(qbdb_journal_wants) qbdb_journal_wants __attribute__((weak));
extern "C" decltype(qbdb_journal_call) qbdb_journal_call __attribute__((weak));
