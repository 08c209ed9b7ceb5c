// What a handle knows of the changes that its transactions make. Made when the first one that may write begins.
#pragma once

#include "handle.h"
#include "qbdb_journal.h"

namespace qdb {

/// A changeset; released with it.
struct Changeset {
    void *bytes = nullptr;
    int size = 0;

    Changeset() = default;
    Changeset(const Changeset &) = delete;
    Changeset &operator=(const Changeset &) = delete;
    ~Changeset() { sqlite3_free(bytes); }

    /// Adds another one behind it. 0 or a result code: then it is as it was.
    int append(const Changeset &more);
    void swap(Changeset &other);
    void clear();
};

/// Tables without a declared key, which sessions pass over. A private database in memory holds a twin of each one that
/// the transaction writes to, with the row number for a key; a session there records what the table became.
struct Twins {
    sqlite3 *source = nullptr;  // the connection that is recorded
    sqlite3 *db = nullptr;
    sqlite3_session *session = nullptr;

    Twins() = default;
    Twins(const Twins &) = delete;
    Twins &operator=(const Twins &) = delete;
    ~Twins() { clear(); }

    bool has(const char *table) const;
    /// Copies a table as it is before its first change.
    int add(const char *table);
    /// Brings the twins up to date and says what changed.
    int finish(Changeset *changes);
    void clear();

private:
    int open();
    int copy_rows(const char *table, bool later);
};

/// What the present transaction is called in the journal, and the statements that keep it.
struct Journal {
    char *who = nullptr;
    char *operation = nullptr;
    char *arguments = nullptr;
    int64_t undoes = 0;
    sqlite3_stmt *state = nullptr;
    sqlite3_stmt *insert = nullptr;
    sqlite3_stmt *advance = nullptr;
    sqlite3_stmt *oldest = nullptr;
    sqlite3_stmt *remove = nullptr;

    void forget_call();
    void destroy();
};

/// Finds out whether the database keeps a journal. 0 or a result code.
int look_for_journal(Recorder *recorder, sqlite3 *db);

/// Keeps the transaction's changes as a call. 0 or a result code.
int keep_call(Recorder *recorder, sqlite3 *db);

/// Whether a table is the journal's own.
bool belongs_to_journal(const char *table);

/// What identifies a journal's content after a call: of what did so before, and of the call.
int64_t mark_after(const qbdb_journal_entry &entry);

/// Stores a call as it is and brings the state up to date. 0 or a result code.
int store_call(Journal *journal, sqlite3 *db, const qbdb_journal_entry &entry, const qbdb_journal_state &state);

/// Whether a table has a declared key. 0 or a result code.
int look_for_key(sqlite3 *db, const char *table, bool *found);

/// Appends the name of a row: "$user id=100".
void append_row(sqlite3_str *text, const qbdb_change &change);

/// Rows that stand in the way of a change, for people.
struct Obstacles {
    static constexpr int kNamed = 10;  // of more the number is told
    sqlite3_str *text = sqlite3_str_new(nullptr);
    int count = 0;

    Obstacles() = default;
    Obstacles(const Obstacles &) = delete;
    Obstacles &operator=(const Obstacles &) = delete;
    ~Obstacles() { sqlite3_free(sqlite3_str_finish(text)); }

    /// Notes a row; `call` changed it later, 0 for somebody who is not in the journal.
    void note(const qbdb_change &change, int64_t call);
    /// Writes what was noted behind a beginning.
    void tell(const char *beginning, char *words, size_t size) const;
};

/// Applies a changeset inside the open transaction. What does not fit is noted, and then the transaction has to be
/// rolled back. 0 or a result code.
int apply_changes(qbdb_t *qbdb, sqlite3 *db, const Changeset &changes, Obstacles *obstacles);

/// The recorder of a handle, made when there is none; null without memory.
Recorder *recorder_of(qbdb_private *internal);

struct Recorder {
    sqlite3_stmt *version = nullptr;  // asks whether others have written since
    int64_t seen = -1;                // its last answer
    bool look = true;                 // ask again, whoever has written
    bool journal = false;             // the database keeps a journal
    Journal calls;
    sqlite3_session *keeper = nullptr;  // records nothing; see begin_recording
    sqlite3_session *session = nullptr;
    Twins twins;
    int failure = SQLITE_OK;  // of what happened inside the session's questions
    int lost = SQLITE_OK;     // why what was committed could not be collected
    bool replaying = false;   // the transaction is a call of another journal
    bool armed = false;
    bool discard = false;
    Changeset pending;    // of the present transaction
    Changeset collected;  // of those before it
};

/// A transaction that may write has begun on the handle's connection. 0 or a result code: it must not go on.
int begin_recording(const Call &call);

/// The transaction is about to be committed. `*discard` says that it is to be taken back instead. 0 or a result code.
int finish_recording(const Call &call, bool *discard);

/// The transaction is over.
void end_recording(qbdb_private *internal, bool kept);

/// Whether each commit is a trial.
bool is_trial(const qbdb_private *internal);

void destroy_recorder(qbdb_private *internal);

}  // namespace qdb
