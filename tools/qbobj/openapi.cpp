// The OpenAPI description: what a server that offers the operations over HTTP would offer.
#include "arguments.h"
#include "describe.h"
#include "json_schema.h"

namespace qbcli {
namespace {

constexpr const char *kSchemas = "#/components/schemas/";

Json json_content(Json schema)
{
    return {{"application/json", {{"schema", std::move(schema)}}}};
}

/// A line for each code that an operation fails with.
std::string failure_words(const QbobjOperation &operation)
{
    std::string text = "The call failed, and the database is as it was.";
    for (const uint32_t code : codes_of(operation)) {
        const char *meaning = qbobj_code_meaning(code);
        text += "\n- " + std::to_string(code) + ": " + (meaning ? meaning : "the message says why");
    }
    return text;
}

Json path_item(const QbobjOperation &operation, const SchemaWriter &writer)
{
    const char *meaning = qbobj_operation_meaning(&operation);
    const char *returned = qbobj_result_meaning(&operation);
    Json arguments = writer.arguments(operation);
    const bool needed = arguments.contains("required");
    const bool any = !arguments["properties"].empty();
    Json post = {{"operationId", short_name(operation)},
                 {"tags", Json::array({operation.family})},
                 {"summary", operation.summary}};
    if (meaning) post["description"] = meaning;
    if (any) post["requestBody"] = {{"required", needed}, {"content", json_content(std::move(arguments))}};
    post["responses"] = {
        {"200", {{"description", returned ? returned : "Done."}, {"content", json_content(writer.result(operation))}}},
        {"default",
         {{"description", failure_words(operation)},
          {"content", json_content({{"$ref", std::string(kSchemas) + "error"}})}}}};
    post["x-codes"] = codes_of(operation);
    post["x-changes"] = operation.changes != 0;
    return {{"post", std::move(post)}};
}

Json tags()
{
    Json all = Json::array();
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        const Json tag = {{"name", row->family}};
        if (std::find(all.begin(), all.end(), tag) == all.end()) all.push_back(tag);
    }
    return all;
}

}  // namespace

Json openapi()
{
    const SchemaWriter writer(kSchemas);
    Json schemas = Json::object();
    for (const QbobjField *type : all_types()) schemas[type->name] = writer.type(type);
    schemas["error"] = SchemaWriter::failure();
    Json paths = Json::object();
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        paths["/" + short_name(*row)] = path_item(*row, writer);
    return {{"openapi", "3.1.0"},
            {"info",
             {{"title", "qbobj"},
              {"version", qbobj_version()},
              {"description",
               "The operations that read and change the configuration of the appliance, each as a POST with its "
               "arguments as a JSON object. Unsigned 64-bit numbers are exact."}}},
            {"jsonSchemaDialect", kJsonSchemaDialect},
            {"tags", tags()},
            {"paths", std::move(paths)},
            {"components", {{"schemas", std::move(schemas)}}}};
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
