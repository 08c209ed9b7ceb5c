// The type-name table, the clear functions, which fields are secret, the exported constants.
#include <cstring>

#include "frame/records.h"

namespace {

using namespace qb;

#define QB_TYPE_ROW(T) {#T, of_##T::table},
constexpr QbobjType kTypes[] = {QBOBJ_FOR_EACH_TYPE(QB_TYPE_ROW){nullptr, nullptr}};
#undef QB_TYPE_ROW
static_assert(sizeof kTypes / sizeof *kTypes == 110 + 1);

/// Fields that hold a password, a hash of one, or a key.
constexpr struct {
    const char *type;
    const char *field;
} kSecrets[] = {
    {"AdminPassword", "Password"},
    {"AdminPassword", "Answer"},
    {"BackupJob_SourceOrDestination", "Password"},
    {"Coffer", "UserPassword"},
    {"DaapOptions", "password"},
    {"Initiator", "ChapSecret"},
    {"LunGroup", "ChapSecret"},
    {"MyPassword", "OldPassword"},
    {"MyPassword", "NewPassword"},
    {"ReplicateOptions", "Password"},
    {"Security", "passWord"},
    {"Timemachine", "Password"},
    {"TivoMak", "key"},
    {"UpsConfig", "RemotePassword"},
    {"User", "Password"},
    {"User", "SmbHash"},
    {"User", "SysHash"},
    {"UserPassword", "Password"},
    {"UserPasswordAcl", "Password"},
};

uint32_t clear(void *record, size_t size)
{
    if (!record) return 0xFFFFFFFF;
    memset(record, 0, size);
    return 0;
}

}  // namespace

#define QB_DEFINE_CLEAR(T) \
    uint32_t qbobj_clear_##T(T *record) { return clear(record, sizeof(T)); }
QBOBJ_FOR_EACH_TYPE(QB_DEFINE_CLEAR)
#undef QB_DEFINE_CLEAR

const QbobjType *qbobj_types(void)
{
    return kTypes;
}

const QbobjField *qbobj_find_type(const char *name)
{
    if (!name) return nullptr;
    for (const QbobjType *type = kTypes; type->name; type++)
        if (strcmp(type->name, name) == 0) return type->fields;
    return nullptr;
}

int qbobj_is_secret(const QbobjField *type, const QbobjField *field)
{
    for (const auto &secret : kSecrets)
        if (strcmp(secret.type, type->name) == 0 && strcmp(secret.field, field->name) == 0) return 1;
    return 0;
}

extern "C" {

const char *const QBLOG_CATEGORY_SNAPSHOT = "snapshot";
const char *const QBLOG_CATEGORY_MBACKUP = "mbackup";
const char *const QBLOG_CATEGORY_BACKUP = "backup";
const char *const QBLOG_CATEGORY_ACCOUNT = "account";
const char *const QBLOG_CATEGORY_SHARE = "share";
const char *const QBLOG_CATEGORY_VOLUME = "volume";
const char *const QBLOG_CATEGORY_DISK = "disk";
const char *const QBLOG_CATEGORY_SYSTEM = "system";
const char *const QBLOG_CATEGORY_MISC = "misc";

// The trailing e is the established word on the wire.
const char *const QBLOG_SEVERITY_EMERG = "emerge";
const char *const QBLOG_SEVERITY_ALERT = "alert";
const char *const QBLOG_SEVERITY_CRIT = "crit";
const char *const QBLOG_SEVERITY_ERR = "err";
const char *const QBLOG_SEVERITY_WARNING = "warning";
const char *const QBLOG_SEVERITY_NOTICE = "notice";
const char *const QBLOG_SEVERITY_INFO = "info";
const char *const QBLOG_SEVERITY_DEBUG = "debug";

const char *const masked_password = "●●●●●●●●";

}  // extern "C"
// SPDX-License-Identifier: Apache-2.0
