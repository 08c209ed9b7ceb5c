// A long-running process does not grow: a million mixed calls with a request pool that is emptied for each.
#include <libxml/tree.h>
#include <malloc.h>

#include <fstream>

#include "stress/stress.h"

namespace {

using stress::Directory;
using stress::Handle;
using stress::Random;

/// Bytes of the process that are in memory.
double resident()
{
    std::ifstream statm("/proc/self/statm");
    long size = 0;
    long pages = 0;
    statm >> size >> pages;
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/// Calls of all kinds, reads for the most part; the database does not grow by them.
uint32_t call(Handle &handle, Random &random)
{
    qbdb_t *qbdb = handle.qbdb;
    sqlite3 *db = handle.db;
    ErrorInfo *err = &handle.err;
    const auto id = static_cast<int32_t>(100 + random.below(20));
    const std::string name = "user" + std::to_string(id);
    int32_t number = 0;
    const char *text = nullptr;
    switch (random.below(40)) {
        case 0: return qbobj_addLog(qbdb, db, 0, "info", "disk", "LOGMSG_DISK_ADDED", "<a>1</a>", err);
        case 1: return qbobj_truncateLog(qbdb, db, 50, err);
        case 2: return setServiceEntry(qbdb, db, "ANTIVIRUS", random.below(2) ? "1" : "0", err);
        case 3: {
            User user{};
            user.UserId = id;
            user.Email = "somebody@example.com";
            return qbobj_modifyUser(qbdb, db, &user, err);
        }
        case 4: {
            User user{};
            user.UserId = id;
            return qbobj_getUser(qbdb, db, &user, err);
        }
        case 5: {
            AccountQuery query{};
            query.limit = 5;
            UserCollection users{};
            return qbobj_getUserCollection(qbdb, db, &users, &query, 0, err);
        }
        case 6: {
            GroupCollection groups{};
            return qbobj_getGroupCollection(qbdb, db, &groups, nullptr, err);
        }
        case 7: {
            LogQuery query{};
            query.limit = 10;
            LogEntry *entries = nullptr;
            int32_t total = 0;
            return qbobj_getLog(qbdb, db, &query, &entries, &number, &total, err);
        }
        case 8: {  // refused: the message lives in the pool, too
            User user{};
            user.UserName = name.c_str();
            return qbobj_addUser(qbdb, db, &user, err) == 801 ? 0 : 1;
        }
        case 9: {
            NetworkInterfaceCollection all{};
            return qbobj_getNetworkInterfaceCollection(qbdb, db, &all, err);
        }
        case 10: {
            xmlNode *dictionary = nullptr;
            const uint32_t rc = qbobj_getDictionary(qbdb, db, "de-de", &dictionary, err);
            xmlFreeNode(dictionary);
            return rc;
        }
        case 11: {
            ProtocolCollection all{};
            return qbobj_getProtocolCollection(qbdb, db, &all, err);
        }
        case 12: return qbobj_setProtocolEnable(qbdb, db, "smartnetwork", static_cast<int32_t>(random.below(2)), err);
        case 13: {
            Share share{};
            share.ShareName = "media";
            return qbobj_getShare(qbdb, db, &share, err);
        }
        case 14: {
            ShareCollection shares{};
            return qbobj_getShareCollection(qbdb, db, &shares, err);
        }
        case 15: {
            BackupTargetCollection targets{};
            return qbobj_getBackupTargetCollection(qbdb, db, &targets, err);
        }
        case 16: {  // copies a table and drops the copy
            BackupJobCollection jobs{};
            if (const uint32_t rc = qbobj_getBackupJobCollection(qbdb, db, &jobs, err)) return rc;
            jobs.BackupJob->Option->MiscOption++;
            return qbobj_modifyBackupJob(qbdb, db, jobs.BackupJob, err);
        }
        default: break;
    }
    switch (random.below(5)) {
        case 0: return qbobj_getUID(qbdb, db, name.c_str(), &number, err);
        case 1: return qbobj_getUserName(qbdb, db, id, &text, err);
        case 2: return getServiceEntry(qbdb, db, "LANGUAGE", &text, err);
        case 3: return qbobj_getGID(qbdb, db, "users", &number, err);
        default: return qbobj_isMemberOfGroup(qbdb, db, name.c_str(), "users", err);
    }
}

TEST(Memory, MillionCallsDoNotGrowTheProcess)
{
    const long calls = stress::amount("QBOBJ_CALLS", 1000000, 100000);
    const long warm_up = calls / 10;
    const Directory directory;
    Handle handle(directory.file("long.db"), QBDB_OPEN_CREATE, "tank");
    ASSERT_EQ(handle.rc, 0) << handle.why;
    for (int i = 100; i < 120; i++) {
        const std::string name = "user" + std::to_string(i);
        User user{};
        user.UserName = name.c_str();
        ASSERT_EQ(qbobj_addUser(handle.qbdb, handle.db, &user, &handle.err), 0u) << handle.err.message;
    }

    NfsShareOption nfs{};
    nfs.DefaultAccess = "ReadOnly";
    Share share{};
    share.ShareName = "media";
    share.VolumeId = "tank";
    share.Nfs = &nfs;
    ASSERT_EQ(qbobj_addShare(handle.qbdb, handle.db, &share, &handle.err), 0u) << handle.err.message;
    ASSERT_EQ(handle.run("INSERT INTO backup (name,src_type,src_share_proto,dst_type,dst_share_proto) VALUES "
                         "('job','share','a','remote','cifs')"),
              "");

    Random random(1);
    double before = 0;
    double heap_before = 0;
    const auto since = stress::Clock::now();
    for (long i = 0; i < calls; i++) {
        if (i == warm_up) {
            before = resident();
            heap_before = static_cast<double>(mallinfo2().uordblks);
        }
        ASSERT_EQ(qbdb_request_begin(handle.qbdb), 0);
        ASSERT_EQ(call(handle, random), 0u)
            << "call " << i << ": " << (handle.err.message ? handle.err.message : "no message");
    }
    const double after = resident();
    const double heap_after = static_cast<double>(mallinfo2().uordblks);
    printf(
        "%ld calls in %.1f s: resident %.0f KiB after %ld calls, %.0f KiB at the end (%+.2f %%); heap in use %.0f KiB "
        "and %.0f KiB\n",
        calls, stress::seconds_since(since), before / 1024, warm_up, after / 1024, (after / before - 1) * 100,
        heap_before / 1024, heap_after / 1024);
    if (stress::kSanitizer) {
        printf("%s keeps freed memory for a while: the growth is not judged\n", stress::kSanitizer);
        return;
    }
    EXPECT_LT(after, before * 1.01);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
