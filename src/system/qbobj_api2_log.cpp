// The system log: reading with filters page by page, adding, deleting, truncating.
#include <strings.h>
#include <time.h>

#include <cstring>

#include "frame/list.h"
#include "frame/read_row.h"
#include "frame/related.h"
#include "frame/set_list.h"
#include "system/workers.h"
#include "validate/validate.h"

namespace qb {
namespace {

constexpr size_t kPartSize = 256;  // of one condition of the filter

/// A word as it is compared: by its first `length` characters, or whole when that is 0.
struct Word {
    const char *word;
    size_t length;
    const char *condition;
};

bool matches(const Word &word, const char *text)
{
    return (word.length ? strncasecmp(text, word.word, word.length) : strcasecmp(text, word.word)) == 0;
}

template <size_t N>
const Word *find(const Word (&words)[N], const char *text)
{
    for (const Word &word : words)
        if (matches(word, text)) return &word;
    return nullptr;
}

// Reading matches info, notice, alert and emerg whole, but warn, err and crit by their beginning.
constexpr Word kLeastSeverities[] = {
    {"info", 0, "severity IN ('info','notice','warning','err','crit','alert','emerg')"},
    {"notice", 0, "severity IN ('notice','warning','err','crit','alert','emerg')"},
    {"warn", 4, "severity IN ('warning','err','crit','alert','emerg')"},
    {"err", 3, "severity IN ('err','crit','alert','emerg')"},
    {"crit", 4, "severity IN ('crit','alert','emerg')"},
    {"alert", 0, "severity IN ('alert','emerg')"},
    {"emerg", 0, "severity IN ('emerg')"},
};

// Adding stores the table's word: "emerg" becomes "emerge", which no least severity selects.
constexpr Word kSeverities[] = {
    {"debug", 5, nullptr}, {"info", 4, nullptr}, {"notice", 0, nullptr}, {"warning", 4, nullptr},
    {"err", 3, nullptr},   {"crit", 4, nullptr}, {"alert", 5, nullptr},  {"emerge", 5, nullptr},
};

constexpr Word kCategories[] = {
    {"misc", 0, nullptr},  {"system", 0, nullptr},   {"disk", 0, nullptr},   {"volume", 0, nullptr},
    {"share", 0, nullptr}, {"account", 0, nullptr},  {"backup", 0, nullptr}, {"mbackup", 0, nullptr},
    {"apps", 0, nullptr},  {"snapshot", 0, nullptr},
};

enum class Purpose { reading, deleting };

/// The conditions of a query, joined by AND.
struct Filter {
    CallContext *ctx;
    JoinedText<6 * kPartSize> conditions;
    bool too_long = false;

    explicit Filter(CallContext *context) : ctx(context), conditions(" AND ") {}
    const char *where() const { return conditions.empty() ? "" : "WHERE "; }

    template <class... Args>
    void add(Sql<Args...> format, Args... args)
    {
        JoinedText<kPartSize> part("");
        if (part.add(format, args...)) conditions.add("%s", +part.text);
        too_long = too_long || part.dropped;
    }

    /// A condition is never cut: it would select other entries.
    Failure fits() const
    {
        return too_long ? Failure{SQLITE_TOOBIG, "A condition is longer than 255 bytes."} : Failure{};
    }
};

/// Adds a list of words that the caller has quoted. Any other text would become part of the statement.
uint32_t add_list(Filter *filter, const char *field, Sql<const char *> condition, const char *list)
{
    if (!is_set(list)) return 0;
    if (check_literal_list(list))
        return REPORT(filter->ctx, 8, "Invalid %s (%s). Not a list of quoted words.", field, list);
    filter->add(condition, list);
    return 0;
}

uint32_t build_filter(Filter *filter, const LogQuery *query, Purpose purpose)
{
    if (!query) return 0;
    const int32_t from = query->timestamp_min;
    const int32_t to = query->timestamp_max;
    if (from && to) filter->add("%d<tstamp AND tstamp<%d", from, to);
    else if (from) filter->add("%d<tstamp", from);
    else if (to) filter->add("tstamp<%d", to);
    if (query->severity)
        if (const Word *least = find(kLeastSeverities, query->severity)) filter->add("%s", least->condition);
    const bool reading = purpose == Purpose::reading;
    if (reading) TRY(add_list(filter, "severity_in", "severity IN (%s)", query->severity_in));
    TRY(add_list(filter, "category_in", "category IN (%s)", query->category_in));
    if (reading && is_set(query->msg_tag)) filter->add("msg_tag=%Q", query->msg_tag);
    return 0;
}

void build_page(char (&page)[32], const LogQuery *query)
{
    page[0] = '\0';
    if (!query || !query->limit) return;
    if (query->offset) sqlite3_snprintf(sizeof page, page, "LIMIT %d,%d", query->offset, query->limit);
    else sqlite3_snprintf(sizeof page, page, "LIMIT %d", query->limit);
}

uint32_t append_entries(CallContext *ctx, const Rows &rows, LogEntry **head)
{
    List<LogEntry> list(head);
    for (int i = 0; i < rows.count; i++) {
        LogEntry *entry = list.append(ctx);
        TRY_MEMORY(ctx, "Failed to allocate object.");
        read_row(ctx, rows, i, entry->LogId, entry->TimeStamp, entry->Severity, entry->Category, entry->MessageTag,
                 entry->MessageArgsXml);
    }
    TRY_MEMORY(ctx, "Failed to allocate object.");
    return 0;
}

/// Counts what the filter selects, and all. Without a filter both are one statement, which runs twice only for those
/// who watch.
uint32_t count_entries(CallContext *ctx, sqlite3 *db, const Filter &filter, int32_t *matching, int32_t *all)
{
    const bool differ = !filter.conditions.empty() || statements_are_watched(ctx);
    Failure bad;
    if (differ)
        bad = select_int32(ctx, db, *matching, "SELECT COUNT(*) FROM `$log` L %s%s", filter.where(),
                           filter.conditions.text);
    if (!bad) bad = select_int32(ctx, db, *all, "SELECT COUNT(*) FROM `$log` L");
    if (!differ) *matching = *all;
    return bad.or_report(ctx, "Failed DB Query for 'SELECT $log'. %s");
}

/// The numbers of the entries of a page, both of them included.
struct Numbers {
    int64_t first = 0;
    int64_t last = 0;
};

/// Tells which numbers a page has, if those of the log follow each other without a gap.
bool find_numbers(CallContext *ctx, sqlite3 *db, const LogQuery *query, int32_t all, Numbers *page)
{
    Rows ends;
    if (!try_select(ctx, db, ends, "SELECT (SELECT MIN(L.id) FROM `$log` L),(SELECT MAX(L.id) FROM `$log` L)") ||
        ends.count != 1)
        return false;
    const int64_t least = ends.int64(0, 0);
    const int64_t most = ends.int64(0, 1);
    if (all < 1 || static_cast<uint64_t>(most) - static_cast<uint64_t>(least) != static_cast<uint64_t>(all) - 1)
        return false;
    const int32_t behind = query->limit - 1;
    if (query->order)
        return !__builtin_sub_overflow(most, query->offset, &page->last) &&
               !__builtin_sub_overflow(page->last, behind, &page->first);
    return !__builtin_add_overflow(least, query->offset, &page->first) &&
           !__builtin_add_overflow(page->first, behind, &page->last);
}

const char *direction(const LogQuery *query)
{
    return query && query->order ? "DESC" : "ASC";
}

/// Reads a page by the numbers of its entries, without a walk over those before it. False when these are not known, or
/// when that failed, which nobody has to know.
bool read_by_number(CallContext *ctx, sqlite3 *db, const Filter &filter, const LogQuery *query, int32_t all, Rows &rows)
{
    const bool skips = query && query->limit > 0 && query->offset > 0;
    Numbers page;
    return skips && filter.conditions.empty() && !statements_are_watched(ctx) &&
           find_numbers(ctx, db, query, all, &page) &&
           try_select(ctx, db, rows,
                      "SELECT L.id,L.tstamp,L.severity,L.category,L.msg_tag,L.msg_args_xml FROM `$log` L WHERE "
                      "L.id BETWEEN %lld AND %lld ORDER BY L.id %s",
                      page.first, page.last, direction(query));
}

uint32_t read_log(CallContext *ctx, sqlite3 *db, const LogQuery *query, LogEntry **entries, int32_t *count,
                  int32_t *total, Rows &rows)
{
    Filter filter(ctx);
    TRY(build_filter(&filter, query, Purpose::reading));
    TRY(filter.fits().or_report(ctx, "Failed DB Query for 'SELECT $log'. %s"));
    char page[32];
    build_page(page, query);

    int32_t matching = 0;
    int32_t all = 0;
    TRY(count_entries(ctx, db, filter, &matching, &all));
    if (!read_by_number(ctx, db, filter, query, all, rows))
        TRY(select(ctx, db, rows,
                   "SELECT L.id,L.tstamp,L.severity,L.category,L.msg_tag,L.msg_args_xml FROM `$log` L %s%s "
                   "ORDER BY L.id %s %s",
                   filter.where(), filter.conditions.text, direction(query), +page)
                .or_report(ctx, "Failed DB Query for 'SELECT $log'. %s"));

    LogEntry *read = nullptr;
    TRY(append_entries(ctx, rows, &read));
    List<LogEntry>(entries).link(read);
    *count = matching;
    *total = all;
    return 0;
}

}  // namespace

uint32_t x_qbobj_getLog(CallContext *ctx, sqlite3 *db, LogQuery *query, LogEntry **entries, int32_t *count,
                        int32_t *total)
{
    QB_ASSERT(entries);
    QB_ASSERT(count);
    QB_ASSERT(total);
    Rows rows;
    const uint32_t rc = read_log(ctx, db, query, entries, count, total, rows);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, static_cast<int>(rc), rows.count);
    return rc;
}

uint32_t x_qbobj_deleteLog(CallContext *ctx, sqlite3 *db, LogQuery *query)
{
    Filter filter(ctx);
    TRY(build_filter(&filter, query, Purpose::deleting));
    TRY(filter.fits().or_report(ctx, "Failed DB Query for 'DELETE $log'. %s"));
    return execute(ctx, db, "DELETE FROM `$log` %s%s", filter.where(), filter.conditions.text)
        .or_report(ctx, "Failed DB Query for 'DELETE $log'. %s");
}

uint32_t x_qbobj_truncateLog(CallContext *ctx, sqlite3 *db, int32_t keep)
{
    // OFFSET counts from 0, so this is the time of the first entry beyond those to keep. It stays with all of its
    // second.
    return execute(ctx, db,
                   "DELETE FROM `$log` WHERE tstamp < (SELECT tstamp FROM `$log` ORDER BY tstamp DESC LIMIT 1 "
                   "OFFSET %d)",
                   keep)
        .or_report(ctx, "Failed DB Query for 'DELETE $log'. %s");
}

uint32_t x_qbobj_addLog(CallContext *ctx, sqlite3 *db, int32_t time, const char *severity, const char *category,
                        const char *msgTag, const char *argsXml)
{
    const Word *level = find(kSeverities, severity ? severity : "info");
    if (!level) return REPORT(ctx, 8, "Specified Severity (%s) is invalid.", severity);
    const Word *kind = find(kCategories, category ? category : "misc");
    if (!kind) return REPORT(ctx, 8, "Specified Category (%s) is invalid.", category);
    static constexpr char kTagPrefix[] = "LOGMSG_";
    if (msgTag && strncmp(msgTag, kTagPrefix, sizeof kTagPrefix - 1) != 0)
        return REPORT(ctx, 8, "MessageTag (%s) should beging with 'LOGMSG_'", msgTag);
    if (time < 1) time = static_cast<int32_t>(::time(nullptr));
    return execute(ctx, db, "INSERT INTO `$log`(tstamp,severity,category,msg_tag,msg_args_xml)VALUES(%d,%Q,%Q,%Q,%Q)",
                   time, level->word, kind->word, msgTag ? msgTag : "LOGMSG_UNKNOWN", argsXml)
        .or_report(ctx, "Failed DB Query for 'INSERT INTO $log'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
