// The database schema, embedded at build time from schema/*.sql.
#pragma once

namespace qdb {

/// One schema file.
struct SchemaFile {
    const char *name;
    const char *sql;
};

/// The files in the order in which they run, ended by a row whose name is null.
extern const SchemaFile kSchemaFiles[];

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
