#include "frame/together.h"

#include <cstring>
#include <new>
#include <numeric>

#include "frame/set_wise.h"

namespace qb {

Together::Together(CallContext *ctx, sqlite3 *db, const char *table, const Rows &list)
    : ctx_(ctx), db_(db), table_(table), outer_(ctx->together), changes_(sqlite3_total_changes(db))
{
    ctx->together = this;
    if (statements_are_watched(ctx) || !IdRange(list).is_most_of(ctx, db, table)) return;
    ids_.reset(new (std::nothrow) int32_t[static_cast<size_t>(list.count)]);
    if (!ids_) return;
    for (int i = 0; i < list.count; i++) ids_[static_cast<size_t>(i)] = list.int32(i, 0);
    std::sort(ids_.get(), ids_.get() + list.count);
    count_ = static_cast<int>(std::unique(ids_.get(), ids_.get() + list.count) - ids_.get());
}

Together::~Together()
{
    ctx_->together = outer_;
    while (head_) delete std::exchange(head_, head_->next);
}

/// The place of an id among those of the list; -1 when it is none of them.
int Together::place_of(int32_t id)
{
    const int32_t *ids = ids_.get();
    if (ids[last_place_] != id) {
        const auto place = static_cast<int>(std::lower_bound(ids, ids + count_, id) - ids);
        if (place == count_ || ids[place] != id) return -1;
        last_place_ = place;
    }
    return last_place_;
}

bool Together::Known::is_of(const Question &question) const
{
    if (format != question.format) return false;
    return word && question.word ? strcmp(word.get(), question.word) == 0 : !word == !question.word;
}

/// What is known of a statement. The records ask the same in the same order, so that it mostly stands behind the one
/// that was asked before. Null without memory, and for a new statement when there are many already: a text that differs
/// from record to record is not asked for twice.
Together::Known *Together::know(const Question &question)
{
    if (latest_ && latest_->next && latest_->next->is_of(question)) return latest_ = latest_->next;
    for (Known *known = head_; known; known = known->next)
        if (known->is_of(question)) return latest_ = known;
    return known_ == kMost ? nullptr : begin(question);
}

/// Makes a place for a new statement, behind the one that was asked before.
Together::Known *Together::begin(const Question &question)
{
    std::unique_ptr<Known> known(new (std::nothrow) Known);
    if (!known) return nullptr;
    known->format = question.format;
    if (question.word) {
        const size_t size = strlen(question.word) + 1;
        known->word.reset(new (std::nothrow) char[size]);
        if (!known->word) return nullptr;
        memcpy(known->word.get(), question.word, size);
    }
    Known *&link = latest_ ? latest_->next : head_;
    known->next = link;
    link = known.release();
    known_++;
    return latest_ = link;
}

/// Runs a statement for all records. False when it has to run for each, which is nobody's error.
bool Together::read(Known *known, const Question &question)
{
    const SetWise all = set_wise(question.format, table_);
    if (!all.format) return false;
    const char *why = nullptr;
    Rows &rows = known->rows;
    const auto run = [&](auto... words) {
        return qbdb_sql_get_table_mprintf(ctx_->qbdb, db_, &why, question.file, question.line, &rows.table, &rows.count,
                                          &rows.columns, all.format, ids_[0], ids_[static_cast<size_t>(count_) - 1],
                                          words...);
    };
    if ((question.takes_word ? run(question.word) : run()) != 0 || !index(known)) return false;
    return all.sort_by == SetWise::kInOrder || sort(known, all.sort_by);
}

/// Notes which rows are whose.
bool Together::index(Known *known) const
{
    Rows &rows = known->rows;
    known->of.reset(new (std::nothrow) RowRange[static_cast<size_t>(count_)]);
    if (!known->of) return false;
    int row = 0;
    for (int place = 0; place < count_; place++) {
        const int32_t id = ids_[static_cast<size_t>(place)];
        while (row < rows.count && rows.int32(row, 0) < id) row++;
        const int first = row;
        while (row < rows.count && rows.int32(row, 0) == id) row++;
        known->of[static_cast<size_t>(place)] = {first, row};
    }
    rows.keys = 1;
    return true;
}

/// Sorts the rows of each record by a text, as the collation NOCASE does. Rows that are equal to it stay as they came,
/// as they do in the database's own sorting.
bool Together::sort(Known *known, int column) const
{
    const Rows &rows = known->rows;
    const auto count = static_cast<size_t>(rows.count);
    const auto width = static_cast<size_t>(rows.columns);
    std::unique_ptr<int[]> order(new (std::nothrow) int[count]);
    std::unique_ptr<char *[]> sorted(new (std::nothrow) char *[count * width]);
    if (!order || !sorted) return false;
    std::iota(order.get(), order.get() + count, 0);
    const auto before = [&](int a, int b) {
        const char *left = rows.cell(a, column);
        const char *right = rows.cell(b, column);
        return right && (!left || sqlite3_stricmp(left, right) < 0);
    };
    for (int place = 0; place < count_; place++) {
        const RowRange &range = known->of[static_cast<size_t>(place)];
        std::stable_sort(order.get() + range.first, order.get() + range.last, before);
    }
    char **first = rows.table + width;  // behind the names of the columns
    for (size_t i = 0; i < count; i++)
        std::copy_n(first + static_cast<size_t>(order[i]) * width, width, sorted.get() + i * width);
    std::copy_n(sorted.get(), count * width, first);
    return true;
}

bool Together::answer(sqlite3 *db, Rows &rows, const Question &question)
{
    const int place = holds(db) ? place_of(question.id) : -1;
    if (place < 0) return outer_ && outer_->answer(db, rows, question);
    Known *known = know(question);
    if (!known) return false;
    if (++known->asked == 2 && !read(known, question)) known->forget();
    if (!known->of) return false;
    const RowRange range = known->of[static_cast<size_t>(place)];
    if (!range.empty()) rows.borrow(known->rows, range.first, range.last - range.first);
    return true;
}

bool Together::recall(sqlite3 *db, const char *&value, const Question &question)
{
    Known *known = holds(db) ? know(question) : nullptr;
    if (!known || known->asked == 0 || known->last_id != question.id) return false;
    value = known->last;
    return true;
}

void Together::remember(sqlite3 *db, const char *value, const Question &question)
{
    Known *known = holds(db) ? know(question) : nullptr;
    if (!known) return;
    known->asked = 1;
    known->last = value;
    known->last_id = question.id;
}

bool answer(Together *together, sqlite3 *db, Rows &rows, const Question &question)
{
    return together->answer(db, rows, question);
}

bool recall(Together *together, sqlite3 *db, const char *&value, const Question &question)
{
    return together->recall(db, value, question);
}

void remember(Together *together, sqlite3 *db, const char *value, const Question &question)
{
    together->remember(db, value, question);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
