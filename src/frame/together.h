// What hangs on the records of a list, read for all of them at once while each reader asks for one record.
//
//     Together together(ctx, db, "share", rows);       // the list's rows, with ids of `share` in their first column
//     for (…) TRY(share_load(ctx, db, …));             // select(ctx, db, rows, "… WHERE share_id=%d", id) as ever
//
// A reader holds one statement, about one record, and does not know of this. The second record for which a statement
// is asked makes it run for all of them (set_wise.h), and the rows of each are handed out from memory, the same rows in
// the same order. When that fails it is nobody's error: the statement then runs record by record as it would have, and
// the list breaks off where it always did, with the same words. It does so, too, for statements of another kind, when
// somebody watches the statements, when the list has few of the table's records, and once something has been written.
// What all of them hold is memory of its own, which goes with the Together.
//
// A list may be read within another one, such as members within groups: what is asked of none of its own records goes
// to the outer one. An id that is in both lists may be answered by either, because the answer depends on the number
// alone.
//
// The order of the rows is that of the index that finds a record's rows, and such an index there has to be: without one
// SQLite would make one for the whole list, in an order of its own. A test of each list looks at the plans.
#pragma once

#include <memory>

#include "frame/related.h"

namespace qb {

class Together {
public:
    Together(CallContext *ctx, sqlite3 *db, const char *table, const Rows &list);
    Together(const Together &) = delete;
    Together &operator=(const Together &) = delete;
    ~Together();

    /// The rows that a statement gives for a record. False when it has to run.
    bool answer(sqlite3 *db, Rows &rows, const Question &question);

    /// The text that a statement gave the last time, if it was asked for the same id. False when it has to run.
    bool recall(sqlite3 *db, const char *&value, const Question &question);
    void remember(sqlite3 *db, const char *value, const Question &question);

private:
    /// What is known of a statement with the text that it takes.
    struct Known {
        const char *format = nullptr;  // the caller's pointer, only compared
        std::unique_ptr<char[]> word;
        Known *next = nullptr;
        int asked = 0;
        Rows rows;                       // of all records
        std::unique_ptr<RowRange[]> of;  // each record's rows, in the order of ids_
        const char *last = nullptr;      // of a statement that gives a text
        int32_t last_id = 0;

        bool is_of(const Question &question) const;
        void forget()
        {
            rows.release();
            of.reset();
        }
    };
    static constexpr int kMost = 64;  // statements of which something is known

    bool holds(sqlite3 *db) const { return db == db_ && count_ > 0 && sqlite3_total_changes(db) == changes_; }
    int place_of(int32_t id);
    Known *know(const Question &question);
    Known *begin(const Question &question);
    bool read(Known *known, const Question &question);
    bool index(Known *known) const;
    bool sort(Known *known, int column) const;

    CallContext *ctx_;
    sqlite3 *db_;
    const char *table_;
    Together *outer_;
    int changes_;
    std::unique_ptr<int32_t[]> ids_;  // ascending, each once
    int count_ = 0;                   // 0 when every statement has to run
    int last_place_ = 0;
    Known *head_ = nullptr;
    Known *latest_ = nullptr;
    int known_ = 0;
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
