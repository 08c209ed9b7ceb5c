#include "arguments.h"

#include <algorithm>
#include <cctype>

#include "failure.h"

namespace qbcli {
namespace {

/// The name in front of "=", when the word is a pair; a path with a "=" in it is not.
std::optional<std::string_view> pair_name(std::string_view word)
{
    const size_t sign = word.find('=');
    if (sign == std::string_view::npos || sign == 0) return std::nullopt;
    const std::string_view name = word.substr(0, sign);
    const auto belongs = [](unsigned char c) { return std::isalnum(c) || c == '_' || c == '.'; };
    if (std::isdigit(static_cast<unsigned char>(name[0])) || !std::all_of(name.begin(), name.end(), belongs))
        return std::nullopt;
    return name;
}

constexpr std::string_view kNull = "null";

bool is_json(std::string_view text)
{
    return text.starts_with('{') || text.starts_with('[');
}

bool is_elsewhere(std::string_view text)
{
    return text.starts_with('@') || text == "-";
}

std::vector<std::string> split(std::string_view name)
{
    std::vector<std::string> parts(1);
    for (const char c : name) {
        if (c == '.') parts.emplace_back();
        else parts.back() += c;
    }
    return parts;
}

bool knows(const QbobjField *type, const std::string &name)
{
    return find_field(type, name) || (has_key_word(type) && name == kKeyWord);
}

bool takes_array(const QbobjArgument &argument)
{
    return is_input(argument) && argument.type &&
           (argument.chain || argument.kind == QBOBJ_KIND_LIST || is_bare_list(argument.type));
}

/// Puts what is named over what a document says, field by field.
void lay_over(Json &base, Json &named, const std::string &where)
{
    if (base.is_array() && base.size() == 1 && named.is_object()) return lay_over(base.front(), named, where);
    if (base.is_array() && base.size() > 1 && named.is_object())
        throw Failure(where, "which of the document's " + std::to_string(base.size()) + " elements is meant?");
    if (!base.is_object() || !named.is_object()) {
        base = std::move(named);
        return;
    }
    for (auto &[name, value] : named.get_ref<Json::object_t &>()) {
        if (base.contains(name)) lay_over(base[name], value, std::string(where).append(".").append(name));
        else base[name] = std::move(value);
    }
}

/// A member of a record, or of the one record of a list.
Json &member(Json &value, const std::string &name)
{
    return value.is_array() ? value.front()[name] : value[name];
}

char number_kind(const QbobjArgument &argument)
{
    return argument.kind == QBOBJ_KIND_UINT64 ? 'n' : 'i';
}

}  // namespace

std::string short_name(const QbobjOperation &operation)
{
    static constexpr std::string_view kPrefix = "qbobj_";
    const std::string_view name = operation.name;
    return std::string(name.starts_with(kPrefix) ? name.substr(kPrefix.size()) : name);
}

bool is_input(const QbobjArgument &argument)
{
    return argument.direction != QBOBJ_OUT;
}

bool is_scalar(const QbobjArgument &argument)
{
    return argument.kind == QBOBJ_KIND_INT32 || argument.kind == QBOBJ_KIND_UINT64 ||
           argument.kind == QBOBJ_KIND_STRING;
}

void refuse_empty_change(const QbobjOperation &operation)
{
    if (!operation.changes) return;
    bool any = false;
    bool nullable = true;
    for (size_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        if (!is_input(argument)) continue;
        if (is_scalar(argument) && !argument.optional) return;
        any = true;
        nullable = nullable && argument.optional;
    }
    if (!any) return;
    throw Failure("it changes the database, and nothing is given: \"qbobj describe " + short_name(operation) +
                  "\" shows the arguments" + (nullable ? "; null says that nothing is meant" : ""));
}

Arguments::~Arguments()
{
    for (std::optional<Json> &value : given_)
        if (value) wipe(*value);
}

/// Whether a lone "null" stands for all arguments: not where a text or number is needed, which it may be.
bool Arguments::means_nothing(const std::vector<std::string> &words) const
{
    if (words.size() != 1 || words[0] != kNull) return false;
    const auto *end = operation_.arguments + operation_.count;
    return std::none_of(operation_.arguments, end, [](const QbobjArgument &argument) {
        return is_input(argument) && is_scalar(argument) && !argument.optional;
    });
}

void Arguments::take(const std::vector<std::string> &words)
{
    if (means_nothing(words)) {
        for (size_t i = 0; i < operation_.count; i++)
            if (is_input(operation_.arguments[i])) given_[i] = nullptr;
        return;
    }
    std::vector<std::string> bare;
    for (const std::string &word : words) {
        if (is_json(word)) take_document(parse_json(word, "the JSON argument"), true);
        else if (is_elsewhere(word)) take_document(document_from(word), false);
        else if (const auto name = pair_name(word)) take_pair(*name, std::string_view(word).substr(name->size() + 1));
        else bare.push_back(word);
    }
    for (size_t i = 0; i < operation_.count; i++) {
        if (given_[i] && named_[i]) lay_over(*given_[i], *named_[i], operation_.arguments[i].name);
        else if (named_[i]) given_[i] = std::move(named_[i]);
        named_[i].reset();
    }
    for (const std::string &text : bare) take_bare(text);
    judge();
}

void Arguments::lay_under(size_t argument, Json record)
{
    std::optional<Json> &given = given_[argument];
    if (given) lay_over(record, *given, operation_.arguments[argument].name);
    given = std::move(record);
    judge();
}

void Arguments::judge() const
{
    for (size_t i = 0; i < operation_.count; i++)
        if (given_[i]) checks_.judge(operation_.arguments[i], *given_[i]);
}

/// JSON from "@file", or from standard input for "-" and "@-".
Json Arguments::document_from(std::string_view source)
{
    const bool file = source != "-" && source != "@-";
    const std::string origin = file ? std::string(source.substr(1)) : "standard input";
    return parse_json(file ? read_file(origin) : input_.document(), origin);
}

void Arguments::take_pair(std::string_view name, std::string_view value)
{
    const Target target = resolve(split(name), std::string(name));
    Json given = value_from_text(target, value);
    // A structure may have come from a file.
    check(target, given, is_elsewhere(value) && given.is_structured() ? Origin::kDocument : Origin::kTyped);
    set(named_, target, std::move(given));
}

/// An object names fields as pairs do; an array is the list that the operation takes.
void Arguments::take_document(Json document, bool visible)
{
    Values own;
    const auto take = [&](const Target &target, const QbobjField *type, Json &value) {
        if (visible && type) refuse_visible_secrets(type, value, target.label);
        if (visible && target.field && qbobj_is_secret(target.type, target.field) && !value.is_null() &&
            value != masked_password)
            refuse_visible_secret(target.label);
        set(own, target, std::move(value));
    };
    if (Json *records = collected(document)) document = Json(std::move(*records));
    if (document.is_object()) {
        for (auto &[name, value] : document.get_ref<Json::object_t &>()) {
            const Target target = resolve({name}, name);
            take(target, target.type_of_value(operation_), value);
        }
    } else {
        const size_t list = the_list(document);
        take({list, {}, nullptr, nullptr, false, operation_.arguments[list].name}, operation_.arguments[list].type,
             document);
    }
    for (size_t i = 0; i < operation_.count; i++) {
        if (!own[i]) continue;
        checks_.see(operation_.arguments[i], *own[i], visible ? Origin::kTyped : Origin::kDocument);
        join(given_[i], *own[i], operation_.arguments[i].name);
    }
}

/// The records of a collection as reading prints it, {"User": […], "Entries": 2}, for an operation that takes such
/// records; null for anything else.
Json *Arguments::collected(Json &document) const
{
    if (!document.is_object()) return nullptr;
    for (size_t i = 0; i < operation_.count; i++) {
        const QbobjArgument &argument = operation_.arguments[i];
        if (!takes_array(argument) || knows(argument.type, argument.type->name)) continue;
        const auto records = document.find(argument.type->name);
        if (records != document.end() && records->is_array()) return &*records;
    }
    return nullptr;
}

/// The argument that a bare array is for.
size_t Arguments::the_list(const Json &document) const
{
    if (!document.is_array()) throw Failure("a JSON object or a JSON array is needed");
    std::vector<size_t> lists;
    for (size_t i = 0; i < operation_.count; i++)
        if (takes_array(operation_.arguments[i])) lists.push_back(i);
    if (lists.empty()) throw Failure("a JSON object is needed: " + short_name(operation_) + " takes no list");
    const auto name = [&](size_t i) { return std::string(operation_.arguments[lists[i]].name); };
    if (lists.size() > 1) throw Failure("which list is meant? Write " + name(0) + "=[…] or " + name(1) + "=[…]");
    return lists[0];
}

/// Adds what one document says to what others said.
void Arguments::join(std::optional<Json> &given, Json &more, const std::string &label)
{
    if (!given) {
        given = std::move(more);
        return;
    }
    if (!given->is_object() || !more.is_object()) throw Failure(label, "is given twice");
    for (auto &[name, value] : more.get_ref<Json::object_t &>()) {
        if (given->contains(name)) throw Failure(name, "is given twice");
        (*given)[name] = std::move(value);
    }
}

void Arguments::take_bare(const std::string &text)
{
    for (size_t i = 0; i < operation_.count; i++) {
        const QbobjArgument &argument = operation_.arguments[i];
        if (!is_input(argument) || !is_scalar(argument) || given_[i]) continue;
        const Target target{i, {}, nullptr, nullptr, false, argument.name};
        Json value = value_from_text(target, text);
        check(target, value, Origin::kTyped);
        return set(given_, target, std::move(value));
    }
    throw Failure("nothing is left that could take the bare value \"" + text + "\"; write Field=value");
}

/// An argument's own name goes before the names of fields in records; those must be unique.
Arguments::Target Arguments::resolve(const std::vector<std::string> &names, const std::string &label) const
{
    Target target{0, names, nullptr, nullptr, false, label};
    std::vector<size_t> holders;
    for (size_t i = 0; i < operation_.count; i++) {
        const QbobjArgument &argument = operation_.arguments[i];
        if (!is_input(argument)) continue;
        if (names[0] == argument.name) {
            target.argument = i;
            target.path.erase(target.path.begin());
            descend(target, argument.type);
            return target;
        }
        if (argument.type && knows(argument.type, names[0])) holders.push_back(i);
    }
    if (holders.empty()) refuse_unknown(names[0]);
    if (holders.size() > 1) {
        const auto candidate = [&](size_t i) { return operation_.arguments[holders[i]].name + ("." + label); };
        throw Failure(label, "is it " + candidate(0) + " or " + candidate(1) + "?");
    }
    target.argument = holders[0];
    descend(target, operation_.arguments[holders[0]].type);
    return target;
}

/// Follows the target's path from an argument's type to the field at its end.
void Arguments::descend(Target &target, const QbobjField *type) const
{
    for (const std::string &name : target.path) {
        if (!type) throw Failure(target.label, "there is nothing inside to be named " + name);
        target.type = type;
        target.field = find_field(type, name);
        target.key_word = !target.field && knows(type, name);
        if (!target.field && !target.key_word)
            throw Failure(target.label,
                          std::string(type->name) + " has no field " + name + did_you_mean(name, field_names(type)));
        type = target.field ? target.field->subtype : nullptr;
    }
}

void Arguments::refuse_unknown(const std::string &name) const
{
    Names names;
    for (size_t i = 0; i < operation_.count; i++) {
        const QbobjArgument &argument = operation_.arguments[i];
        if (!is_input(argument)) continue;
        names.emplace_back(argument.name);
        if (argument.type)
            for (const std::string_view field : field_names(argument.type)) names.push_back(field);
    }
    if (names.empty()) throw Failure(short_name(operation_) + " takes no arguments, but " + name + " is given");
    throw Failure("there is no field " + name + did_you_mean(name, names));
}

Json Arguments::value_from_text(const Target &target, std::string_view text)
{
    const QbobjArgument &argument = operation_.arguments[target.argument];
    if (const QbobjField *type = target.type_of_value(operation_)) return structure_from_text(target, type, text);
    const bool argument_itself = target.path.empty();
    if (argument_itself && argument.kind != QBOBJ_KIND_STRING)
        return number_from_text(number_kind(argument), text, target.label);
    if (target.field && is_number(target.field)) return number_from_text(target.field->kind, text, target.label);
    if (target.field && qbobj_is_secret(target.type, target.field) && text != masked_password) {
        if (text != "-") refuse_visible_secret(target.label);
        secrets_.push_back(target);
        return "";
    }
    check_text(text, target.label);
    return std::string(text);
}

/// A record or a list: JSON text, or where it is to be read from.
Json Arguments::structure_from_text(const Target &target, const QbobjField *type, std::string_view text)
{
    if (is_elsewhere(text)) return document_from(text);
    if (text == kNull) return nullptr;
    if (!is_json(text)) {
        const bool list = is_list(type) || is_bare_list(type);
        throw Failure(target.label, std::string(list ? "a list" : "a record") + " is written as JSON, " + target.label +
                                        (list ? "='[{…}]'" : "='{…}'") + ", or read from @FILE");
    }
    Json value = parse_json(text, target.label);
    refuse_visible_secrets(type, value, target.label);
    return value;
}

/// The table of the record or list that a target's value is; null for a number or a text.
const QbobjField *Arguments::Target::type_of_value(const QbobjOperation &operation) const
{
    if (path.empty()) return operation.arguments[argument].type;
    return field ? field->subtype : nullptr;
}

/// Has a value seen in its place.
void Arguments::check(const Target &target, const Json &value, Origin origin)
{
    Json whole = value;
    for (auto name = target.path.rbegin(); name != target.path.rend(); name++) whole = Json{{*name, std::move(whole)}};
    checks_.see(operation_.arguments[target.argument], whole, origin);
    wipe(whole);
}

void Arguments::set(Values &values, const Target &target, Json value)
{
    const auto refuse_second = [&] { throw Failure(target.label, "is given twice"); };
    std::optional<Json> &given = values[target.argument];
    if (target.path.empty()) {
        if (given) refuse_second();
        given = std::move(value);
        return;
    }
    if (!given) given = Json::object();
    Json *record = &*given;
    for (size_t i = 0; i < target.path.size(); i++) {
        if (!record->is_object()) refuse_second();
        const bool last = i + 1 == target.path.size();
        if (last && record->contains(target.path[i])) refuse_second();
        if (!last && !record->contains(target.path[i])) (*record)[target.path[i]] = Json::object();
        record = &(*record)[target.path[i]];
    }
    *record = std::move(value);
}

void Arguments::ask_for_secrets()
{
    for (const Target &target : secrets_) {
        // A password that is already in force needs no second look; one that is to be set does.
        const bool confirmed = operation_.changes && !target.path.back().starts_with("Old");
        const PrivateText secret = input_.secret(target.label, confirmed);
        check_text(secret, target.label);
        at(*given_[target.argument], target) = std::string_view(secret);
    }
}

/// The place of a target in what was given for its argument.
Json &Arguments::at(Json &value, const Target &target)
{
    Json *place = &value;
    for (const std::string &name : target.path) place = &member(*place, name);
    return *place;
}

std::vector<std::string> Arguments::wanted_secrets() const
{
    std::vector<std::string> labels;
    for (const Target &target : secrets_) labels.push_back(target.label);
    return labels;
}

std::optional<Json> Arguments::marked(size_t argument) const
{
    std::optional<Json> value = given_[argument];
    for (size_t i = 0; i < secrets_.size(); i++)
        if (secrets_[i].argument == argument) at(*value, secrets_[i]) = mark_of_secret(i + 1);
    return value;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
