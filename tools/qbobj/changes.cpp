#include "changes.h"

#include "qbdb_journal.h"
#include "qbobj.h"
#include "table.h"

namespace qbcli {
namespace {

Json value_to_json(sqlite3_value *value)
{
    if (!value) return nullptr;
    const auto size = static_cast<size_t>(sqlite3_value_bytes(value));
    switch (sqlite3_value_type(value)) {
        case SQLITE_INTEGER: return sqlite3_value_int64(value);
        case SQLITE_FLOAT: return sqlite3_value_double(value);
        case SQLITE_TEXT: return std::string(reinterpret_cast<const char *>(sqlite3_value_text(value)), size);
        case SQLITE_BLOB: return "x'" + hexadecimal(sqlite3_value_blob(value), size) + "'";
        default: return nullptr;
    }
}

const char *word_for(int operation)
{
    if (operation == SQLITE_INSERT) return "added";
    return operation == SQLITE_DELETE ? "removed" : "changed";
}

struct Listing {
    Json list = Json::array();
    bool secrets;
};

std::string column_name(const qbdb_change &change, int i)
{
    return change.columns[i] ? change.columns[i] : "column " + std::to_string(i + 1);
}

Json shown(const Listing &listing, const qbdb_change &change, int i, sqlite3_value *value)
{
    Json json = value_to_json(value);
    const bool secret = change.columns[i] && qbdb_is_secret_column(change.table, change.columns[i]);
    if (!secret || listing.secrets || json.is_null() || json == "") return json;
    wipe(json);
    return masked_password;
}

Json key_of(const Listing &listing, const qbdb_change &change)
{
    Json key = Json::object();
    for (int i = 0; i < change.count; i++)
        if (change.key[i])
            key[column_name(change, i)] =
                shown(listing, change, i, change.before[i] ? change.before[i] : change.after[i]);
    return key;
}

void list_change(Listing &listing, const qbdb_change &change)
{
    const Json key = key_of(listing, change);
    for (int i = 0; i < change.count; i++) {
        if (change.operation == SQLITE_UPDATE && change.key[i]) continue;
        Json before = shown(listing, change, i, change.before[i]);
        Json after = shown(listing, change, i, change.after[i]);
        const bool same = change.operation == SQLITE_UPDATE ? !change.before[i] && !change.after[i]
                                                            : before.is_null() && after.is_null();
        if (same) continue;
        listing.list.push_back({{"table", change.table},
                                {"change", word_for(change.operation)},
                                {"key", key},
                                {"column", column_name(change, i)},
                                {"before", std::move(before)},
                                {"after", std::move(after)}});
    }
}

/// "user_id 5, share_id 7" for a table of people.
std::string key_text(const Json &key)
{
    std::string text;
    for (const auto &[name, value] : key.items())
        text += (text.empty() ? "" : ", ") + name + " " + (value.is_string() ? value.get<std::string>() : brief(value));
    return text;
}

}  // namespace

Json changes_to_json(const Database &database, const void *changes, int size, bool secrets)
{
    Listing listing{Json::array(), secrets};
    const auto list = [](void *context, const qbdb_change *change) {
        list_change(*static_cast<Listing *>(context), *change);
        return 0;
    };
    if (const int rc = qbdb_changes_read(database.handle(), database.connection(), changes, size, list, &listing))
        throw Failure(std::string("the changes cannot be read: ") + sqlite3_errstr(rc), Status::kFailed);
    return std::move(listing.list);
}

Watch::Watch(Database &database, bool trial) : database_(database)
{
    if (const int rc = qbdb_changes_begin(database.handle(), trial ? QBDB_CHANGES_DISCARD : 0))
        throw Failure(std::string("changes cannot be recorded: ") + sqlite3_errstr(rc), Status::kFailed);
    database.set_trial(trial);
}

Watch::~Watch()
{
    if (!open_) return;
    void *changes = nullptr;
    int size = 0;
    qbdb_changes_end(database_.handle(), &changes, &size);
    sqlite3_free(changes);
}

Json Watch::finish(bool secrets)
{
    const auto release = [](void *bytes) { sqlite3_free(bytes); };
    void *bytes = nullptr;
    int size = 0;
    open_ = false;
    const int rc = qbdb_changes_end(database_.handle(), &bytes, &size);
    const std::unique_ptr<void, decltype(release)> changes(bytes, release);
    if (rc) throw Failure(std::string("the changes could not be recorded: ") + sqlite3_errstr(rc), Status::kFailed);
    return changes_to_json(database_, changes.get(), size, secrets);
}

void print_change_table(const Json &changes, const std::string &title)
{
    if (changes.empty()) return print_text(title + ": nothing\n");
    Json rows = Json::array();
    for (const Json &change : changes) {
        rows.push_back({{"table", change["table"]},
                        {"row", key_text(change["key"])},
                        {"change", change["change"]},
                        {"column", change["column"]},
                        {"before", change["before"]},
                        {"after", change["after"]}});
    }
    print_text(title + ":\n" + lay_out(rows, terminal_width()));
}

void print_changes(const Json &outcome, const Json &changes, bool trial, const OutputOptions &options)
{
    if (!prints_json(options)) {
        print_outcome(outcome, options);
        return print_change_table(changes, trial ? "Would change" : "Changed");
    }
    Json both = Json::object();
    both["result"] = outcome.is_discarded() ? Json(nullptr) : outcome;
    both["changes"] = changes;
    print_json(both, options);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
