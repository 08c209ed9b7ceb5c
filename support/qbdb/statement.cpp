// The statement engine: formats become prepared statements with bound values, kept per connection.
//
// A format is taken apart once (format.h). A call then builds the statement's text (`?1`, `?2`, … for
// the values, everything else as text), looks it up among the connection's prepared statements and
// binds the values. When a format has nothing to splice its text never changes, and the plan points
// straight at its statement. What does not fit this scheme (a conversion that only SQLite's formatter
// knows, spliced text that leaves a quote open) goes through SQLite's formatter as it always did.
#include <apr_strings.h>

#include <charconv>
#include <cstring>

#include "assignments.h"
#include "format.h"
#include "growing.h"
#include "handle.h"

namespace qdb {
namespace {

constexpr uint32_t kPlanSlots = 2048;   // power of two
constexpr uint32_t kEntrySlots = 1024;  // power of two

}  // namespace

struct Entry {
    Entry *next_in_slot;
    Entry *newer;
    Entry *older;
    Entry **owner;  // the plan's pointer to this entry, or null
    sqlite3_stmt *stmt;
    uint64_t hash;
    uint32_t size;
    bool busy;
    char text[1];
};

namespace {

struct PlanSlot {
    const char *format;  // the caller's pointer, only compared
    Plan *plan;
    Entry *entry;  // its statement, when nothing is spliced
    bool busy;     // its plan is being used
};

/// One argument of a call, read from the argument list.
struct Value {
    int64_t number;    // of an unsigned 64-bit one its bits
    const char *text;  // null for a number
};

/// Text being put together; remembers that memory ran out.
struct Buffer {
    Growing<char, 1024> bytes;
    bool failed = false;

    void append(const char *text, size_t size)
    {
        char *room = failed ? nullptr : bytes.extend(size);
        if (room && size) memcpy(room, text, size);
        failed = !room;
    }
    /// Appends a number behind a character.
    void append(char c, uint32_t number)
    {
        char text[16] = {c};
        append(text, static_cast<size_t>(std::to_chars(text + 1, text + sizeof text, number).ptr - text));
    }
    char last() const { return bytes.count ? bytes.items[bytes.count - 1] : '\0'; }
};

uint64_t hash_of(const char *text, size_t size)
{
    uint64_t hash = 0x9E3779B97F4A7C15ull ^ size;
    for (; size >= 8; text += 8, size -= 8) {
        uint64_t word;
        memcpy(&word, text, 8);
        hash = (hash ^ word) * 0xFF51AFD7ED558CCDull;
        hash ^= hash >> 32;
    }
    uint64_t word = 0;
    memcpy(&word, text, size);
    hash = (hash ^ word) * 0xFF51AFD7ED558CCDull;
    return hash ^ (hash >> 29);
}

}  // namespace

struct StatementCache {
    PlanSlot plans[kPlanSlots];
    Entry *entries[kEntrySlots];
    Entry *newest;
    Entry *oldest;
    uint32_t bound;
    qbdb_cache_statistics statistics;
};

namespace {

void unlink(StatementCache *cache, Entry *entry)
{
    (entry->newer ? entry->newer->older : cache->newest) = entry->older;
    (entry->older ? entry->older->newer : cache->oldest) = entry->newer;
}

void put_first(StatementCache *cache, Entry *entry)
{
    entry->newer = nullptr;
    entry->older = cache->newest;
    (cache->newest ? cache->newest->newer : cache->oldest) = entry;
    cache->newest = entry;
}

void discard(StatementCache *cache, Entry *entry)
{
    unlink(cache, entry);
    Entry **at = &cache->entries[entry->hash & (kEntrySlots - 1)];
    while (*at != entry) at = &(*at)->next_in_slot;
    *at = entry->next_in_slot;
    if (entry->owner) *entry->owner = nullptr;
    sqlite3_finalize(entry->stmt);
    sqlite3_free(entry);
    cache->statistics.held--;
}

/// Drops the least recently used statements until at most `bound` are held. One in use stays.
void shrink(StatementCache *cache, uint32_t bound)
{
    for (Entry *entry = cache->oldest; entry && cache->statistics.held > bound;) {
        Entry *next = entry->newer;
        if (!entry->busy) {
            discard(cache, entry);
            cache->statistics.evictions++;
        }
        entry = next;
    }
}

void touch(StatementCache *cache, Entry *entry)
{
    if (cache->newest == entry) return;
    unlink(cache, entry);
    put_first(cache, entry);
}

/// Prepares a text and checks that it is one statement: blanks, comments and empty statements may stand
/// around it. A text without any statement prepares to null.
int prepare_text(const Call &call, const char *sql, size_t size, unsigned flags, sqlite3_stmt **stmt)
{
    *stmt = nullptr;
    for (const char *at = sql, *tail = nullptr; *at; at = tail) {
        sqlite3_stmt *next = nullptr;
        const int left = static_cast<int>(size - static_cast<size_t>(at - sql)) + 1;
        int rc = sqlite3_prepare_v3(call.db, at, left, flags, &next, &tail);
        if (rc == SQLITE_OK && !next) continue;
        if (rc == SQLITE_OK && !*stmt) {
            *stmt = next;
            continue;
        }
        rc = *stmt ? fail(call, SQLITE_ERROR, "more than one statement") : fail(call, rc, sqlite3_errmsg(call.db));
        sqlite3_finalize(next);
        sqlite3_finalize(*stmt);
        *stmt = nullptr;
        return rc;
    }
    return SQLITE_OK;
}

/// The cache's entry for a text, made when it is not there. Null without an error: use no cache.
int find_entry(const Call &call, StatementCache *cache, const char *sql, size_t size, Entry **found)
{
    *found = nullptr;
    const uint64_t hash = hash_of(sql, size);
    Entry **slot = &cache->entries[hash & (kEntrySlots - 1)];
    for (Entry *entry = *slot; entry; entry = entry->next_in_slot) {
        if (entry->hash != hash || entry->size != size || memcmp(entry->text, sql, size) != 0) continue;
        if (entry->busy) return SQLITE_OK;
        cache->statistics.hits++;
        touch(cache, entry);
        *found = entry;
        return SQLITE_OK;
    }
    if (cache->bound == 0) return SQLITE_OK;
    cache->statistics.misses++;
    sqlite3_stmt *stmt = nullptr;
    const int rc = prepare_text(call, sql, size, SQLITE_PREPARE_PERSISTENT, &stmt);
    if (rc) return rc;
    auto *entry = static_cast<Entry *>(sqlite3_malloc64(sizeof(Entry) + size));
    if (!entry) {
        sqlite3_finalize(stmt);
        return fail(call, SQLITE_NOMEM, "out of memory");
    }
    memset(entry, 0, sizeof *entry);
    memcpy(entry->text, sql, size);
    entry->text[size] = '\0';
    entry->size = static_cast<uint32_t>(size);
    entry->hash = hash;
    entry->stmt = stmt;
    shrink(cache, cache->bound - 1);
    entry->next_in_slot = *slot;
    *slot = entry;
    put_first(cache, entry);
    cache->statistics.held++;
    *found = entry;
    return SQLITE_OK;
}

PlanSlot *slot_of(StatementCache *cache, const char *format)
{
    const auto number = reinterpret_cast<uintptr_t>(format);
    return &cache->plans[((number >> 3) ^ (number >> 13)) & (kPlanSlots - 1)];
}

/// Puts a format's plan into its slot. The pointer finds it, the text proves it: a caller may use one
/// buffer twice. False when there is no memory.
bool fill(PlanSlot *slot, const char *format)
{
    if (slot->format == format && strcmp(slot->plan->format, format) == 0) return true;
    Plan *plan = make_plan(format);
    if (!plan) return false;
    if (slot->entry) slot->entry->owner = nullptr;
    sqlite3_free(slot->plan);
    *slot = {format, plan, nullptr, false};
    return true;
}

/// While a plan is used its slot stays as it is: preparing may call back into this library (a virtual
/// table reads its own tables when it is connected), and another format may share the slot.
struct SlotInUse {
    explicit SlotInUse(PlanSlot *s) : slot(s) { slot->busy = true; }
    SlotInUse(const SlotInUse &) = delete;
    SlotInUse &operator=(const SlotInUse &) = delete;
    ~SlotInUse() { slot->busy = false; }
    PlanSlot *slot;
};

int64_t read_number(Argument argument, va_list *args)
{
    switch (argument) {
        case Argument::int32:  // NOLINT(bugprone-branch-clone): each takes another type off the list
        case Argument::character: return va_arg(*args, int);
        case Argument::uint32: return va_arg(*args, unsigned);
        case Argument::uint64: return static_cast<int64_t>(va_arg(*args, unsigned long long));
        default: return va_arg(*args, long long);
    }
}

Value read_value(Argument argument, va_list *args)
{
    if (argument == Argument::text) return {0, va_arg(*args, const char *)};
    return {read_number(argument, args), nullptr};
}

bool is_wide(const Conversion &conversion, const Value &value)
{
    return conversion.argument == Argument::uint64 && value.number < 0;
}

/// Whether the value is bound in this call: not a number beyond SQLite's integers, nor a text that would end
/// the quotes around it, nor a missing one within quotes, for which the formatter has a word of its own.
bool is_bound(const Conversion &conversion, const Value &value)
{
    if (!conversion.bound || is_wide(conversion, value)) return false;
    if (!conversion.rest) return true;
    return value.text && (conversion.letter == 'q' || !strchr(value.text, '\''));
}

/// Appends the text of a value that is not bound. False when it would change what surrounds it.
bool splice(const Conversion &conversion, const Value &value, Buffer *out)
{
    char scratch[64];
    char *owned = nullptr;
    const char *text = scratch;
    if (is_wide(conversion, value))
        sqlite3_snprintf(sizeof scratch, scratch, "%llu", static_cast<sqlite3_uint64>(value.number));
    else if (conversion.letter == 's') text = value.text ? value.text : "";
    else if (conversion.letter == 'c') sqlite3_snprintf(sizeof scratch, scratch, "%c", static_cast<int>(value.number));
    else if (conversion.letter == 'q' || conversion.letter == 'Q')
        text = owned = sqlite3_mprintf(conversion.letter == 'q' ? "%q" : "%Q", value.text);
    else sqlite3_snprintf(sizeof scratch, scratch, "%lld", static_cast<sqlite3_int64>(value.number));
    if (!text) {
        out->failed = true;
        return true;
    }
    const size_t size = strlen(text);
    char previous = out->last();
    Lexical state = conversion.state;
    bool whole = size > 0 || conversion.letter != 'c';
    for (size_t i = 0; i < size && whole; i++) {
        const size_t plain = strcspn(text + i, "?:@#$");
        state = follow(state, &previous, text + i, plain);
        i += plain;
        if (i == size) break;
        if (state == Lexical::code && is_parameter(previous, text[i])) whole = false;
        state = follow(state, &previous, text + i, 1);
    }
    out->append(text, size);
    sqlite3_free(owned);
    return whole && state == conversion.state;
}

/// Whether spliced text and the text after it would make one token that neither of them is.
bool joins(const Conversion &conversion, char before, char after)
{
    if (conversion.state == Lexical::line_comment || conversion.state == Lexical::block_comment) return true;
    return conversion.state == Lexical::code && ((before == '-' && after == '-') || (before == '/' && after == '*') ||
                                                 (after == '$' && is_parameter(before, after)));
}

/// Whether a conversion stands for the assignments of an UPDATE, and nothing that could become part of them follows.
bool takes_assignments(const Conversion &conversion, const char *behind, bool last)
{
    static constexpr char kSet[] = " SET ";
    constexpr uint32_t kSize = sizeof kSet - 1;
    return conversion.letter == 's' && conversion.state == Lexical::code && conversion.literal >= kSize &&
           memcmp(behind - kSize, kSet, kSize) == 0 && (last || *behind == ' ' || *behind == ',');
}

/// Appends assignments with parameters for their values, which count on behind those of the format.
void append_assignments(const Assignments &assignments, uint32_t number, Buffer *out)
{
    for (uint32_t i = 0; i < assignments.count; i++) {
        const Assignment &each = assignments.items[i];
        if (i) out->append(",", 1);
        out->append(each.column, each.column_size);
        out->append('?', number + i + 1);
    }
}

/// Whether a text may be the SELECT that a statement begins with: values may follow, which would name columns by their
/// place where an order has begun.
bool is_query_head(const char *text)
{
    return text && sqlite3_strlike("SELECT %", text, 0) == 0 && sqlite3_strlike("% BY%", text, 0) != 0 &&
           !strpbrk(text, "\t\n\r");
}

/// Builds the statement's text; `assignments` are those whose values are bound. False when this call has to go through
/// SQLite's formatter.
bool build_text(const Plan *plan, const Value *values, Assignments *assignments, Buffer *out)
{
    const char *literal = plan->literals;
    uint32_t number = 0;
    uint32_t taken = 0;  // of the next literal, by the value before it
    for (uint32_t i = 0; i < plan->count; i++) {
        const Conversion &conversion = plan->conversions[i];
        const bool bound = is_bound(conversion, values[i]);
        out->append(literal + taken, conversion.literal - taken - (bound ? conversion.head : 0));
        literal += conversion.literal;
        number += conversion.bound;
        taken = bound ? conversion.rest : 0;
        if (bound) {
            out->append('?', number);
            continue;
        }
        const bool last = i + 1 == plan->count;
        const bool more = last ? plan->tail : plan->conversions[i + 1].literal;
        if (!assignments->count && (more || last) && takes_assignments(conversion, literal, !more) &&
            assignments->take(values[i].text)) {
            append_assignments(*assignments, plan->bound, out);
            continue;
        }
        if (i == 0 && plan->spliced_head && !is_query_head(values[i].text)) return false;
        if (!splice(conversion, values[i], out)) return false;
        if (more && joins(conversion, out->last(), *literal)) return false;
    }
    out->append(literal + taken, plan->tail - taken);
    return true;
}

/// Binds the whole quoted literal that a conversion stands in; `at` is where it stands in the literal text.
int bind_quoted(sqlite3_stmt *stmt, int number, const Conversion &conversion, const char *at, const char *text)
{
    const auto head = static_cast<int>(conversion.head) - 1;
    char *whole = sqlite3_mprintf("%.*s%s%.*s", head, at - head, text, static_cast<int>(conversion.rest) - 1, at);
    return whole ? sqlite3_bind_text(stmt, number, whole, -1, sqlite3_free) : SQLITE_NOMEM;
}

/// Binds a value that stands for itself.
int bind_value(Statement *statement, int number, const Conversion &conversion, const Value &value)
{
    if (conversion.argument != Argument::text) return sqlite3_bind_int64(statement->stmt, number, value.number);
    if (!value.text) return sqlite3_bind_null(statement->stmt, number);
    statement->holds_text = true;
    return sqlite3_bind_text(statement->stmt, number, value.text, -1, SQLITE_STATIC);
}

int bind_values(const Call &call, Statement *statement, const Plan *plan, const Value *values,
                const Assignments &assignments)
{
    const char *at = plan->literals;
    int number = 0;
    for (uint32_t i = 0; i < plan->count; i++) {
        const Conversion &conversion = plan->conversions[i];
        at += conversion.literal;
        number += conversion.bound;
        if (!is_bound(conversion, values[i])) continue;
        const int rc = conversion.rest ? bind_quoted(statement->stmt, number, conversion, at, values[i].text)
                                       : bind_value(statement, number, conversion, values[i]);
        if (rc != SQLITE_OK) return fail(call, rc, sqlite3_errmsg(call.db));
    }
    for (uint32_t i = 0; i < assignments.count; i++) {
        statement->holds_text = statement->holds_text || assignments.items[i].text;
        const int rc = bind(statement->stmt, static_cast<int>(plan->bound + i + 1), assignments.items[i]);
        if (rc != SQLITE_OK) return fail(call, rc, sqlite3_errmsg(call.db));
    }
    return SQLITE_OK;
}

/// Binds the values of a plan whose text never changes, as they come.
inline int bind_fixed(const Call &call, Statement *statement, const Plan *plan, va_list args)
{
    va_list values;
    va_copy(values, args);
    int rc = SQLITE_OK;
    for (uint32_t i = 0; i < plan->count; i++) {
        const Conversion &conversion = plan->conversions[i];
        rc = bind_value(statement, static_cast<int>(i + 1), conversion, read_value(conversion.argument, &values));
        if (rc != SQLITE_OK) break;
    }
    va_end(values);
    return rc == SQLITE_OK ? rc : fail(call, rc, sqlite3_errmsg(call.db));
}

/// The whole statement formatted by SQLite and prepared for this one call.
int prepare_plain(const Call &call, Statement *statement, const char *format, va_list args)
{
    char *sql = sqlite3_vmprintf(format, args);
    if (!sql) return fail(call, SQLITE_NOMEM, "out of memory");
    const int rc = prepare_text(call, sql, strlen(sql), 0, &statement->stmt);
    sqlite3_free(sql);
    return rc;
}

/// The statement for a plan that binds values, from the cache. `*found` stays null, without a failure, when
/// the call has to go through SQLite's formatter.
int find_statement(const Call &call, StatementCache *cache, PlanSlot *slot, const Value *values,
                   Assignments *assignments, Entry **found)
{
    const Plan *plan = slot->plan;
    bool fixed = plan->bound == plan->count;  // in this call
    for (uint32_t i = 0; fixed && i < plan->count; i++) fixed = is_bound(plan->conversions[i], values[i]);
    if (fixed && slot->entry && !slot->entry->busy) {
        *found = slot->entry;
        cache->statistics.hits++;
        touch(cache, *found);
        return SQLITE_OK;
    }
    Buffer text;
    if (!build_text(plan, values, assignments, &text)) return SQLITE_OK;
    const size_t size = text.bytes.count;
    text.append("", 1);  // it ends with a NUL
    if (text.failed) return fail(call, SQLITE_NOMEM, "out of memory");
    const int rc = find_entry(call, cache, text.bytes.items, size, found);
    if (rc == SQLITE_OK && *found && fixed && !(*found)->owner) {
        if (slot->entry) slot->entry->owner = nullptr;
        slot->entry = *found;
        (*found)->owner = &slot->entry;
    }
    return rc;
}

void use(Entry *entry, StatementCache *cache, Statement *statement)
{
    entry->busy = true;
    statement->stmt = entry->stmt;
    statement->cache = cache;
    statement->entry = entry;
}

/// The way of the calls whose text may be another each time, and of the first call of any format.
int prepare_built(const Call &call, StatementCache *cache, PlanSlot *slot, Statement *statement, const char *format,
                  va_list args)
{
    const SlotInUse in_use(slot);
    const Plan *plan = slot->plan;
    Value values[kMaxConversions];
    va_list again;
    va_copy(again, args);
    for (uint32_t i = 0; i < plan->count; i++) values[i] = read_value(plan->conversions[i].argument, &again);
    va_end(again);
    Entry *entry = nullptr;
    Assignments assignments;
    int rc = find_statement(call, cache, slot, values, &assignments, &entry);
    if (rc == SQLITE_ERROR && (plan->bound || assignments.count)) {
        // SQLite refuses a value in a few places (for a table's name, say): what it then says of the plain
        // text is what counts.
        if (call.text) *call.text = nullptr;
        rc = prepare_plain(call, statement, format, args);
        slot->plan->plain = rc == SQLITE_OK;
        return rc;
    }
    if (rc) return rc;
    if (!entry) return prepare_plain(call, statement, format, args);
    use(entry, cache, statement);
    return bind_values(call, statement, plan, values, assignments);
}

int prepare_cached(const Call &call, StatementCache *cache, Statement *statement, const char *format, va_list args)
{
    PlanSlot *slot = slot_of(cache, format);
    if (slot->busy) return prepare_plain(call, statement, format, args);
    if (!fill(slot, format)) return fail(call, SQLITE_NOMEM, "out of memory");
    const Plan *plan = slot->plan;
    if (plan->plain) return prepare_plain(call, statement, format, args);
    if (!plan->fixed || !slot->entry || slot->entry->busy)
        return prepare_built(call, cache, slot, statement, format, args);
    cache->statistics.hits++;
    touch(cache, slot->entry);
    use(slot->entry, cache, statement);
    return bind_fixed(call, statement, plan, args);
}

}  // namespace

int fail(const Call &call, int rc, const char *text)
{
    if (call.text) {
        const char *copy = text ? qdb::copy_text(pool_of(call.qbdb), text) : nullptr;
        *call.text = copy ? copy : "out of memory";
    }
    return rc & 0xFF;
}

/// Whether SQLite itself has given the transaction up, as it does without memory or when the disk fails:
/// what ran now would be stored at once and by itself.
static bool is_lost(const Call &call)
{
    const qbdb_private *internal = call.qbdb->internal;
    return (call.db == internal->begun || call.db == internal->begun_elsewhere) && sqlite3_get_autocommit(call.db);
}

int ask_hook_of(const Call &call, const char *sql)
{
    const qbdb_private *internal = call.qbdb->internal;
    const char *text = nullptr;
    const int rc = internal->statement_hook(internal->statement_context, sql, call.file, call.line, &text);
    return rc ? fail(call, rc, text ? text : "refused") : SQLITE_OK;
}

/// The same with a statement that is yet to be formatted.
static int ask_hook(const Call &call, const char *format, va_list args)
{
    va_list again;
    va_copy(again, args);
    char *sql = sqlite3_vmprintf(format, again);
    va_end(again);
    if (!sql) return fail(call, SQLITE_NOMEM, "out of memory");
    const int rc = ask_hook(call, sql);
    sqlite3_free(sql);
    return rc;
}

Statement::~Statement()
{
    if (!entry) {
        sqlite3_finalize(stmt);
        return;
    }
    sqlite3_reset(stmt);
    if (holds_text) sqlite3_clear_bindings(stmt);  // it may be the caller's
    entry->busy = false;
    shrink(cache, cache->bound);  // the bound may have been lowered in the meantime
}

int prepare(const Call &call, Statement *statement, const char *format, va_list args)
{
    if (call.text) *call.text = nullptr;
    if (!call.db) return fail(call, SQLITE_MISUSE, "no database connection");
    if (is_lost(call)) return fail(call, SQLITE_ABORT, "the transaction has been rolled back");
    call.qbdb->internal->refused = nullptr;
    if (call.qbdb->internal->statement_hook)
        if (const int rc = ask_hook(call, format, args)) return rc;
    // Only the handle's own connection is sure to be closed after its statements are finalised.
    StatementCache *cache = call.db == call.qbdb->internal->db ? call.qbdb->internal->cache : nullptr;
    return cache ? prepare_cached(call, cache, statement, format, args) : prepare_plain(call, statement, format, args);
}

int run(const Call &call, const char *sql)
{
    if (call.text) *call.text = nullptr;
    if (!call.db) return fail(call, SQLITE_MISUSE, "no database connection");
    if (is_lost(call)) return fail(call, SQLITE_ABORT, "the transaction has been rolled back");
    if (const int rc = ask_hook(call, sql)) return rc;
    const int rc = sqlite3_exec(call.db, sql, nullptr, nullptr, nullptr);
    return rc ? fail(call, rc, sqlite3_errmsg(call.db)) : SQLITE_OK;
}

StatementCache *create_cache(uint32_t bound)
{
    auto *cache = static_cast<StatementCache *>(sqlite3_malloc64(sizeof(StatementCache)));
    if (!cache) return nullptr;
    memset(cache, 0, sizeof *cache);
    cache->bound = bound ? bound : QBDB_DEFAULT_STATEMENTS;
    return cache;
}

void destroy_cache(StatementCache *cache)
{
    if (!cache) return;
    while (cache->newest) discard(cache, cache->newest);
    for (PlanSlot &slot : cache->plans) sqlite3_free(slot.plan);
    sqlite3_free(cache);
}

/// Drops all statements, but keeps as many as ever from now on.
void empty_cache(StatementCache *cache)
{
    shrink(cache, 0);
}

void set_cache_bound(StatementCache *cache, uint32_t bound)
{
    cache->bound = bound;
    shrink(cache, bound);
}

void read_cache_statistics(const StatementCache *cache, qbdb_cache_statistics *statistics)
{
    *statistics = cache->statistics;
}

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
