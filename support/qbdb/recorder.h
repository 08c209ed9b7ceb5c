// What a handle knows of the changes that its transactions make. Made when the first one that may write begins.
#pragma once

#include "journal.h"
#include "twins.h"

namespace qdb {

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

/// Whether each commit is a trial: it is taken back instead.
inline bool is_trial(const qbdb_private *internal)
{
    return internal->recorder && internal->recorder->armed && internal->recorder->discard;
}

/// Whether the present transaction's changes are recorded.
inline bool is_recording(const qbdb_private *internal)
{
    return internal->recorder && internal->recorder->session;
}

/// The transaction that is being recorded is about to be committed, or to be taken back as a trial. 0 or a result code.
int finish_recording(const Call &call, bool discard);

/// The transaction is over; nothing happens when it was not recorded.
void end_recording(qbdb_private *internal, bool kept);

void destroy_recorder(qbdb_private *internal);

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
