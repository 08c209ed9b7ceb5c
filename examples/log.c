/* Adds an entry to the system log of a fresh appliance database and reads the log back. */
#include <qbdb.h>
#include <qbobj.h>
#include <stdio.h>

/* Says why a call failed. One that did not get as far as its work, the database being locked, has no message. */
static int failed(uint32_t code, const ErrorInfo *err)
{
    if (code != 0) fprintf(stderr, "%u %s\n", code, err->message ? err->message : "");
    return code != 0;
}

int main(int argc, char **argv)
{
    qbdb_t *qbdb;
    sqlite3 *db;
    char why[256];
    ErrorInfo err;

    if (argc != 2) {
        fprintf(stderr, "usage: log FILE\n");
        return 2;
    }
    if (qbdb_open(argv[1], QBDB_OPEN_CREATE, NULL, &qbdb, &db, why, sizeof why) != 0) {
        fprintf(stderr, "%s\n", why);
        return 1;
    }

    int failures = failed(
        qbobj_addLog(qbdb, db, 0, QBLOG_SEVERITY_NOTICE, QBLOG_CATEGORY_SYSTEM, "LOGMSG_HELLO", NULL, &err), &err);

    LogEntry *entries = NULL;
    int32_t count = 0, total = 0;
    failures += failed(qbobj_getLog(qbdb, db, NULL, &entries, &count, &total, &err), &err);
    for (LogEntry *entry = entries; entry; entry = entry->next)
        printf("%d %s %s %s\n", entry->LogId, entry->Severity, entry->Category, entry->MessageTag);

    qbdb_close(qbdb); /* everything that was returned goes away with the handle's pool */
    return failures == 0 && total == 1 ? 0 : 1;
}
/* SPDX-License-Identifier: Apache-2.0 */
