// Which words the text fields of the records may hold. A family adds its fields here; a misspelt one does not compile.
#include <cstring>

#include "frame/records.h"

namespace {

/// What a backup job can read or write.
constexpr const char *kBackupSides[] = {"share", "home", "volume", "remote", "usb", "timemachine", nullptr};
/// Rights on a share, a file or a folder.
constexpr const char *kAccess[] = {"ReadWrite", "ReadOnly", "Disabled", nullptr};
constexpr const char *kFtpModes[] = {"anonymous", "user", nullptr};
constexpr const char *kIdmapBackends[] = {"tdb", "rid", nullptr};
constexpr const char *kLeastSeverities[] = {"info", "notice",   "warning", "warn",  "err",  "error",
                                            "crit", "critical", "alert",   "emerg", nullptr};
constexpr const char *kMapTypes[] = {"uname", nullptr};
constexpr const char *kSecurity[] = {"user", "ads", nullptr};
constexpr const char *kShareTypes[] = {"share", "zvol", "replicate", nullptr};
constexpr const char *kSync[] = {"standard", "always", "disabled", nullptr};
constexpr const char *kUpsMibs[] = {
    "auto",    "mge",     "apcc",     "netvision",  "pw",   "aphel_genesisII", "aphel_revelation",
    "raritan", "baytech", "cpqpower", "cyberpower", nullptr};
constexpr const char *kUpsTypes[] = {"local", "remote", "snmp", nullptr};

/// The name of a text field that the type has.
template <class T>
consteval const char *name_of(const char *T::*, const char *name)
{
    return name;
}

#define WORDS(T, FIELD, LIST)                \
    {                                        \
#T, name_of(&T::FIELD, #FIELD), LIST \
    }
/// The four rights that a protocol gives on what is created.
#define CREATION_RIGHTS(T)                                                                 \
    WORDS(T, FileCreateGroupRights, kAccess), WORDS(T, FileCreateEveryoneRights, kAccess), \
        WORDS(T, FolderCreateGroupRights, kAccess), WORDS(T, FolderCreateEveryoneRights, kAccess)

constexpr struct {
    const char *type;
    const char *field;
    const char *const *words;
} kWords[] = {
    // ---- accounts
    WORDS(Security, Security, kSecurity),
    WORDS(Security, idmapBackend, kIdmapBackends),
    WORDS(SmbUserNameMap, Type, kMapTypes),
    // ---- backup
    WORDS(BackupJob_SourceOrDestination, Type, kBackupSides),
    // ---- services
    WORDS(FtpOptions, AuthMode, kFtpModes),
    // ---- shares
    WORDS(Share, ShareType, kShareTypes),
    WORDS(Share, Sync, kSync),
    WORDS(FileStat, UserAccess, kAccess),
    WORDS(FileStat, GroupAccess, kAccess),
    WORDS(FileStat, EveryoneAccess, kAccess),
    WORDS(HostAcl, Access, kAccess),
    WORDS(UserAcl, Access, kAccess),
    WORDS(GroupAcl, Access, kAccess),
    WORDS(CifsShareOption, DefaultAccess, kAccess),
    CREATION_RIGHTS(CifsShareOption),
    WORDS(AfpShareOption, DefaultAccess, kAccess),
    CREATION_RIGHTS(AfpShareOption),
    WORDS(FtpShareOption, DefaultAccess, kAccess),
    CREATION_RIGHTS(FtpShareOption),
    WORDS(NfsShareOption, DefaultAccess, kAccess),
    WORDS(RsyncShareOption, DefaultAccess, kAccess),
    WORDS(HttpShareOption, DefaultAccess, kAccess),
    // ---- system
    WORDS(LogQuery, severity, kLeastSeverities),
    WORDS(UpsConfig, SnmpMibs, kUpsMibs),
    WORDS(UpsConfig, Type, kUpsTypes),
};

}  // namespace

const char *const *qbobj_field_words(const QbobjField *type, const QbobjField *field)
{
    for (const auto &row : kWords)
        if (strcmp(row.type, type->name) == 0 && strcmp(row.field, field->name) == 0) return row.words;
    return nullptr;
}
// SPDX-License-Identifier: Apache-2.0
