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

struct Recorder {
    sqlite3_stmt *version = nullptr;    // asks whether others have written since
    int64_t seen = -1;                  // its last answer
    bool journal = false;               // the database keeps a journal
    sqlite3_session *keeper = nullptr;  // records nothing; see begin_recording
    sqlite3_session *session = nullptr;
    Twins twins;
    int failure = SQLITE_OK;  // of what happened inside the session's questions
    int lost = SQLITE_OK;     // why what was committed could not be collected
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
