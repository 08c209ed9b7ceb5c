// The operation table: one row per exported operation. Front ends, tests, fuzzers and bindings walk it.
#include <cstring>

#include "frame/operation.h"

namespace {

using namespace qb;

constexpr QbobjOperation kOperations[] = {
    // ---- system log
    QB_OPERATION(getLog, "system log", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the entries that match a query, page by page, and counts the matching and all entries.",
                 in("query").or_null(), out("entries"), out("count"), out("total")),
    QB_OPERATION(deleteLog, "system log", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Deletes the entries that match a query's times, least severity and categories.", in("query").or_null()),
    QB_OPERATION(truncateLog, "system log", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Cuts the log down to its newest entries.", in("keep")),
    QB_OPERATION(addLog, "system log", kChanges, QBOBJ_RETURNS_CODE, "5 8", "Adds an entry.", in("time"),
                 in("severity").or_null(), in("category").or_null(), in("msgTag").or_null(), in("argsXml").or_null()),

    // ---- passwords, account defaults, security
    QB_OPERATION(getAdminPassword, "passwords", kReads, QBOBJ_RETURNS_CODE, "5",
                 "Reads the administrator's recovery settings and shell access.", out("admin")),
    QB_OPERATION(setAdminPassword, "passwords", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Sets the administrator's recovery settings, shell access and password; root gets the same.",
                 in("admin")),
    QB_OPERATION(setUserPassword, "passwords", kChanges, QBOBJ_RETURNS_CODE, "5 8", "Sets a user's password.",
                 in("pw")),
    QB_OPERATION(setMyPassword, "passwords", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Changes a user's password after checking the old one.", in("pw")),
    QB_OPERATION(getAccountDefault, "account defaults", kReads, QBOBJ_RETURNS_CODE, "5",
                 "Reads the defaults for new accounts.", out("def")),
    QB_OPERATION(setAccountDefault, "account defaults", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Writes the defaults for new accounts.", in("def")),
    QB_OPERATION(getSecurity, "security", kReads, QBOBJ_RETURNS_CODE, "5", "Reads the directory settings.",
                 out("security")),
    QB_OPERATION(setSecurity, "security", kChanges, QBOBJ_RETURNS_CODE, "5 8 819 820 833",
                 "Writes the directory settings.", in("security")),
    QB_OPERATION(setSecurityIdmapBackend, "security", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Sets how directory ids become POSIX ids: tdb or rid.", in("backend")),
    QB_OPERATION(getSecurityAdsProgress, "security", kReads, QBOBJ_RETURNS_CODE, "5",
                 "Reads how far the import of directory accounts is.", out("progress")),

    // ---- SSH public keys
    QB_OPERATION(addSshPublicKey, "SSH public keys", kChanges, QBOBJ_RETURNS_CODE, "2 5 802 836 837 842",
                 "Adds a user's SSH public key.", inout("key")),
    QB_OPERATION(deleteSshPublicKey, "SSH public keys", kChanges, QBOBJ_RETURNS_CODE, "5 838",
                 "Removes an SSH public key.", in("key")),
    QB_OPERATION(setSshPublicKeyById, "SSH public keys", kChanges, QBOBJ_RETURNS_CODE, "2 5 838",
                 "Changes the title and the use of an SSH public key.", in("key")),
    QB_OPERATION(getSshPublicKeyById, "SSH public keys", kReads, QBOBJ_RETURNS_CODE, "5 838",
                 "Reads an SSH public key.", in("id"), out("key")),
    QB_OPERATION(getSshPublicKeyTiedRootKeyById, "SSH public keys", kReads, QBOBJ_RETURNS_CODE, "5 838",
                 "Reads root's twin of an SSH public key of the administrator.", in("id"), out("key")),
    QB_OPERATION(getSshPublicKeyCollection, "SSH public keys", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the SSH public keys of all users but root.", out("keys")),

    {},
};

}  // namespace

const QbobjOperation *qbobj_operations(void)
{
    return kOperations;
}

const QbobjOperation *qbobj_find_operation(const char *name)
{
    static constexpr char kPrefix[] = "qbobj_";
    constexpr size_t kPrefixLength = sizeof kPrefix - 1;
    if (!name) return nullptr;
    if (strncmp(name, kPrefix, kPrefixLength) == 0) name += kPrefixLength;
    for (const QbobjOperation *row = kOperations; row->name; row++)
        if (strcmp(row->name + kPrefixLength, name) == 0) return row;
    return nullptr;
}
