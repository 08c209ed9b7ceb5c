// The library's tables as JSON Schema (2020-12): what may be given to an operation and what comes back.
#pragma once

#include <string>

#include "json_text.h"
#include "qbobj.h"

namespace qbcli {

inline constexpr const char *kJsonSchemaDialect = "https://json-schema.org/draft/2020-12/schema";

/// Writes schemas that refer to each other's.
class SchemaWriter {
public:
    /// @param types Where the schemas of the types stand: "#/$defs/".
    explicit SchemaWriter(std::string types) : types_(std::move(types)) {}

    /// A record; of a bare list the array.
    Json type(const QbobjField *type) const;
    /// What a call is given, as an object with a member for each argument.
    Json arguments(const QbobjOperation &operation) const;
    /// The same in every form in which the command line takes it: fields beside arguments, and the list alone.
    Json any_arguments(const QbobjOperation &operation) const;
    /// What a call prints; null of an operation that prints nothing.
    Json result(const QbobjOperation &operation) const;
    /// A call's failure as a JSON object.
    static Json failure();

private:
    Json reference(const QbobjField *type) const;
    Json field(const QbobjField *type, const QbobjField *field) const;
    Json argument(const QbobjOperation &operation, const QbobjArgument &argument) const;
    Json output(const QbobjOperation &operation, const QbobjArgument &argument) const;

    std::string types_;
};

/// One schema that a line of `qbobj batch` fits, with those of all types, arguments and results.
Json json_schema();
/// An OpenAPI 3.1 description with a path for each operation.
Json openapi();

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
