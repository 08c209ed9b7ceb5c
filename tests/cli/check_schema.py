"""Checks the schemas that the program prints, and what it takes and gives against them.

check_schema.py SCHEMA OPENAPI LINES ANSWERS REFUSED: the two schemas, lines of "qbobj batch", what was answered to them,
and lines that were refused. Prints what it has counted as a JSON object; says on standard error what does not fit.
"""

import json
import sys

from jsonschema import Draft202012Validator

wrong = 0


def complain(what):
    global wrong
    wrong += 1
    print(what, file=sys.stderr)


def references(value):
    """Every $ref in a document."""
    if isinstance(value, dict):
        for name, part in value.items():
            if name == "$ref" and isinstance(part, str):
                yield part
            else:
                yield from references(part)
    elif isinstance(value, list):
        for part in value:
            yield from references(part)


def resolves(document, reference):
    at = document
    for step in reference.removeprefix("#/").split("/"):
        if not isinstance(at, dict) or step not in at:
            return False
        at = at[step]
    return True


def check_references(name, document):
    all_of_them = list(references(document))
    for reference in set(all_of_them):
        if not resolves(document, reference):
            complain(f"{name}: {reference} leads nowhere")
    return len(all_of_them)


def check_openapi(openapi):
    """The rules of OpenAPI 3.1 that hold for what is in the document."""
    if not openapi["openapi"].startswith("3.1."):
        complain("openapi: not 3.1")
    families = {tag["name"] for tag in openapi["tags"]}
    seen = set()
    for path, item in openapi["paths"].items():
        post = item["post"]
        if path != "/" + post["operationId"] or list(item) != ["post"]:
            complain(f"openapi: {path} is called {post['operationId']}")
        if not set(post["tags"]) <= families or not post["summary"]:
            complain(f"openapi: {path}: tags or summary")
        seen |= set(post["tags"])
        for code, response in post["responses"].items():
            if not response["description"]:
                complain(f"openapi: {path}: {code} says nothing")
        for body in [post.get("requestBody"), *post["responses"].values()]:
            if body:
                Draft202012Validator.check_schema(body["content"]["application/json"]["schema"])
    if seen != families:
        complain("openapi: families without operations")
    for schema in openapi["components"]["schemas"].values():
        Draft202012Validator.check_schema(schema)


def lines_of(path):
    with open(path, encoding="utf-8") as lines:
        return [json.loads(line) for line in lines]


def main():
    with open(sys.argv[1], encoding="utf-8") as text:
        schema = json.load(text)
    with open(sys.argv[2], encoding="utf-8") as text:
        openapi = json.load(text)
    Draft202012Validator.check_schema(schema)
    check_openapi(openapi)
    line_validator = Draft202012Validator(schema)

    def validator(document, reference):
        return Draft202012Validator({**document, "$ref": reference} if "$defs" not in document else
                                    {"$defs": document["$defs"], "$ref": reference})

    validators = {}

    def fits(name, value, what):
        if name not in validators:
            validators[name] = validator(schema, "#/$defs/" + name)
        for error in validators[name].iter_errors(value):
            complain(f"{what}: {error.json_path}: {error.message[:300]}")
            return

    answered = set()
    failed = 0
    lines, answers = lines_of(sys.argv[3]), lines_of(sys.argv[4])
    if len(lines) != len(answers):
        complain(f"{len(lines)} lines and {len(answers)} answers")
    for line, answer in zip(lines, answers):
        for error in line_validator.iter_errors(line):
            complain(f"{line}: {error.json_path}: {error.message[:300]}")
        if "error" in answer:
            failed += 1
            fits("error", answer["error"], line)
        else:
            answered.add(line["call"])
            fits(line["call"] + ".result", answer["result"], line)
    for line in lines_of(sys.argv[5]):
        if line_validator.is_valid(line):
            complain(f"fits the schema, and is refused: {line}")
    definitions = schema["$defs"]
    print(json.dumps({
        "types": sum("." not in name for name in definitions) - 1,
        "arguments": sum(name.endswith(".args") for name in definitions),
        "results": sum(name.endswith(".result") for name in definitions),
        "paths": len(openapi["paths"]),
        "components": len(openapi["components"]["schemas"]) - 1,
        "references": check_references("schema", schema) + check_references("openapi", openapi),
        "answered": sorted(answered),
        "failed": failed,
        "wrong": wrong,
    }))


main()
# SPDX-License-Identifier: Apache-2.0
