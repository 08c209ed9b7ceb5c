#include "checks.h"

#include <strings.h>

#include <algorithm>
#include <sstream>

#include "arguments.h"
#include "failure.h"
#include "records.h"

namespace qbcli {
namespace {

/// Whether a dotted name stands in a row's list of names.
bool lists(const char *names, const std::string &path)
{
    std::istringstream stream(names ? names : "");
    for (std::string name; stream >> name;)
        if (name == path) return true;
    return false;
}

/// Whether a value says anything: null, 0 and nothing are what a field holds that was not given.
bool says_something(const Json &value)
{
    if (value.is_number()) return value != 0;
    if (value.is_string()) return !value.get_ref<const std::string &>().empty();
    return !value.empty();
}

/// A record that was read carries the database's key; the settings, of which there is one record each, need none.
bool was_read(const QbobjField *type, const Json &record)
{
    if (!is_list(type)) return true;
    const auto given = [&](const char *name) { return record.contains(name) && says_something(record[name]); };
    return given("resource_id") || (has_key_word(type) && given(kKeyWord));
}

void refuse_other_words(const char *const *words, const std::string &text, const std::string &where)
{
    Names names;
    std::string list;
    for (; *words; words++) {
        if (strcasecmp(*words, text.c_str()) == 0) return;
        names.emplace_back(*words);
        list += (list.empty() ? "" : ", ") + std::string(*words);
    }
    throw Failure(where, brief(text) + " is none of its words (" + list + ")" + did_you_mean(text, names));
}

}  // namespace

/// Where a value stands: by names only ("UserQuota.HardMB"), and as messages say it ("UserQuota[1].HardMB").
struct Checks::Place {
    std::string path;
    std::string label;

    Place member(const std::string &name) const
    {
        return {path.empty() ? name : path + "." + name, label.empty() ? name : label + "." + name};
    }
    Place element(size_t i) const { return {path, label + "[" + std::to_string(i) + "]"}; }

    /// Visits the fields of a record or of every record of a list; where `visit` says so, those inside, too. What is
    /// of the wrong kind is passed over: it is refused when records are made.
    template <class Visit>
    void walk(const QbobjField *type, const Json &value, Visit visit) const
    {
        if (value.is_array() && is_bare_list(type)) return member(type[1].name).walk(type[1].subtype, value, visit);
        if (value.is_array())
            for (size_t i = 0; i < value.size(); i++) element(i).walk(type, value[i], visit);
        if (!value.is_object()) return;
        for (const auto &[name, part] : value.items()) {
            const QbobjField *field = find_field(type, name);
            const Place place = member(name);
            if (visit(type, field, part, place) && field && field->kind == 'o') place.walk(field->subtype, part, visit);
        }
    }
};

void Checks::see(const QbobjArgument &argument, const Json &value, Origin origin)
{
    if (!argument.type) {
        anything_used_ = true;
        return;
    }
    const bool bare = value.is_array() && is_bare_list(argument.type);
    const QbobjField *type = bare ? argument.type[1].subtype : argument.type;
    const Place place{bare ? argument.type[1].name : "", ""};
    const auto silent = [&](const Json &record) {
        return origin == Origin::kDocument && record.is_object() && was_read(type, record);
    };
    if (!value.is_array()) return note(argument, type, value, place, silent(value));
    for (const Json &record : value) note(argument, type, record, place, silent(record));
}

/// @param silent The ignored fields are not the caller's words.
void Checks::note(const QbobjArgument &argument, const QbobjField *type, const Json &record, const Place &place,
                  bool silent)
{
    place.walk(type, record, [&](const QbobjField *, const QbobjField *, const Json &part, const Place &at) {
        if (!lists(argument.ignores, at.path)) {
            anything_used_ = anything_used_ || !part.is_null();
            return true;
        }
        const bool known = std::find(ignored_.begin(), ignored_.end(), at.path) != ignored_.end();
        if (!silent && !known && says_something(part)) ignored_.push_back(at.path);
        return false;
    });
}

void Checks::judge(const QbobjArgument &argument, const Json &value) const
{
    if (!argument.type) return;
    const Place top{"", value.is_array() && !is_bare_list(argument.type) ? argument.name : ""};
    top.walk(argument.type, value,
             [&](const QbobjField *type, const QbobjField *field, const Json &part, const Place &at) {
                 if (!field || field->kind != 's' || !part.is_string()) return !lists(argument.ignores, at.path);
                 const auto &text = part.get_ref<const std::string &>();
                 if (const char *const *words = qbobj_field_words(type, field); words && !text.empty())
                     refuse_other_words(words, text, at.label);
                 const bool harmless = !stores() || lists(argument.keeps, at.path) || lists(argument.ignores, at.path);
                 if (text == masked_password && qbobj_is_secret(type, field) && !harmless)
                     throw Failure(at.label,
                                   "the dots stand for a stored secret, which " + short_name(operation_) +
                                       " cannot look up: give the secret itself, or null (--with-secrets reads it)");
                 return false;
             });
}

bool Checks::stores() const
{
    return operation_.changes && !short_name(operation_).starts_with("delete");
}

void Checks::refuse_useless() const
{
    if (operation_.changes && !ignored_.empty() && !anything_used_) throw Failure(warning());
}

std::string Checks::warning() const
{
    if (ignored_.empty()) return "";
    std::string names;
    for (const std::string &name : ignored_) names += (names.empty() ? "" : ", ") + name;
    return names + (ignored_.size() == 1 ? " is not " : " are not ") + (stores() ? "stored by " : "used by ") +
           short_name(operation_);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
