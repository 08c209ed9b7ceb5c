// Owner, permissions and POSIX ACL of a share's folder. The path is asked for its attributes and never opened: whatever
// lies there, a pipe included, cannot hold the call up.
#include <acl/libacl.h>
#include <sys/acl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>

#include "accounts/lookup.h"
#include "frame/list.h"
#include "shares/share_details.h"
#include "shares/words.h"

namespace qb {
namespace {

struct FreeAcl {
    void operator()(void *object) const { acl_free(object); }
};
using Acl = std::unique_ptr<std::remove_pointer_t<acl_t>, FreeAcl>;
using Qualifier = std::unique_ptr<id_t, FreeAcl>;

/// Name of the user with an id: as stored, else as the directory has it, else the number itself.
uint32_t read_user_name(CallContext *ctx, sqlite3 *db, int32_t id, const char **name)
{
    TRY(select_text(ctx, db, *name, "SELECT U.uname FROM `$user` U WHERE U.id=%d", id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM user'. %s"));
    if (!*name && (qbdb_util_get_domain_uname_by_uid(ctx->qbdb, db, id, name) != 0 || !*name))
        *name = name_of_unknown_id(ctx, id);
    return 0;
}

/// Name of the group with an id, as read_user_name.
uint32_t read_group_name(CallContext *ctx, sqlite3 *db, int32_t id, const char **name)
{
    TRY(select_text(ctx, db, *name, "SELECT G.gname FROM `$group` G WHERE G.id=%d", id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM group'. %s"));
    if (!*name && (qbdb_util_get_domain_gname_by_gid(ctx->qbdb, db, id, name) != 0 || !*name))
        *name = name_of_unknown_id(ctx, id);
    return 0;
}

uint32_t read_owner(CallContext *ctx, sqlite3 *db, int32_t id, SystemUser **user)
{
    *user = allocate<SystemUser>(ctx);
    TRY_MEMORY(ctx, "Failed to allocate SystemUser.");
    (*user)->resource_id = id;
    (*user)->UserId = id;
    (*user)->_PosixId = posix_uid_of(ctx, db, id);
    return read_user_name(ctx, db, id, &(*user)->UserName);
}

uint32_t read_owning_group(CallContext *ctx, sqlite3 *db, int32_t id, SystemGroup **group)
{
    *group = allocate<SystemGroup>(ctx);
    TRY_MEMORY(ctx);
    (*group)->resource_id = id;
    (*group)->GroupId = id;
    (*group)->_PosixId = posix_gid_of(ctx, db, id);
    return read_group_name(ctx, db, id, &(*group)->GroupName);
}

/// One of the two lists of a path, and what is logged when it cannot be had or read to its end.
struct Kind {
    acl_type_t type;
    const char *not_had;
    const char *not_read;
};
constexpr Kind kKinds[] = {
    {ACL_TYPE_ACCESS, "Cannot get access ACL from %s. errno=%d\n",
     "Error reading access acl entry from %s. errno=%d\n"},
    {ACL_TYPE_DEFAULT, "Cannot get default ACL from %s. errno=%d\n",
     "Error reading default acl entry from %s. errno=%d\n"},
};

/// Takes tag, permissions and, of a named user or group, its id. False with errno set when libacl refuses.
bool take_entry(acl_entry_t entry, PosixAcl *taken)
{
    acl_tag_t tag = 0;
    acl_permset_t permissions = nullptr;
    if (acl_get_tag_type(entry, &tag) != 0 || acl_get_permset(entry, &permissions) != 0) return false;
    taken->Tag = tag;
    for (const acl_perm_t bit : {ACL_READ, ACL_WRITE, ACL_EXECUTE})
        if (acl_get_perm(permissions, bit) == 1) taken->Perm |= static_cast<int32_t>(bit);
    if (tag != ACL_USER && tag != ACL_GROUP) return true;
    const Qualifier id(static_cast<id_t *>(acl_get_qualifier(entry)));
    if (!id) return false;
    taken->Id = static_cast<int32_t>(*id);
    return true;
}

uint32_t append_entry(CallContext *ctx, sqlite3 *db, const PosixAcl &taken, List<PosixAcl> *list)
{
    PosixAcl *acl = list->append(ctx);
    TRY_MEMORY(ctx);
    *acl = taken;
    if (acl->Tag == ACL_USER) return read_user_name(ctx, db, acl->Id, &acl->Name);
    if (acl->Tag == ACL_GROUP) return read_group_name(ctx, db, acl->Id, &acl->Name);
    return 0;
}

/// Appends the entries of one list. What cannot be read is logged and ends it: `*more` tells whether to go on.
uint32_t read_entries(CallContext *ctx, sqlite3 *db, const char *path, const Kind &kind, List<PosixAcl> *list,
                      bool *more)
{
    *more = false;
    const Acl acl(acl_get_file(path, kind.type));
    if (!acl) {
        LOG_FAILURE(ctx, kind.not_had, path, errno);
        return 0;
    }
    acl_entry_t entry = nullptr;
    int got = acl_get_entry(acl.get(), ACL_FIRST_ENTRY, &entry);
    for (; got == 1; got = acl_get_entry(acl.get(), ACL_NEXT_ENTRY, &entry)) {
        PosixAcl taken{};
        taken.Type = static_cast<int32_t>(kind.type);
        if (!take_entry(entry, &taken)) break;
        TRY(append_entry(ctx, db, taken, list));
    }
    *more = got == 0;
    if (!*more) LOG_FAILURE(ctx, kind.not_read, path, errno);
    return 0;
}

uint32_t read_acls(CallContext *ctx, sqlite3 *db, const char *path, PosixAcl **head)
{
    List<PosixAcl> list(head);
    bool more = true;
    for (const Kind &kind : kKinds)
        if (more) TRY(read_entries(ctx, db, path, kind, &list, &more));
    return 0;
}

}  // namespace

uint32_t read_folder(CallContext *ctx, sqlite3 *db, const char *path, const StoredOwner &stored, FileStat *stat)
{
    struct stat folder {};
    const bool there = path && *path == '/' && ::stat(path, &folder) == 0;
    StoredOwner owner = stored;
    if (there) {
        owner = {static_cast<int32_t>(folder.st_uid), 0, static_cast<int32_t>(folder.st_gid), 0};
        const auto mode = static_cast<int32_t>(folder.st_mode);
        stat->UserAccess = word_of_bits(mode >> 6 & 7);
        stat->GroupAccess = word_of_bits(mode >> 3 & 7);
        stat->EveryoneAccess = word_of_bits(mode & 7);
        stat->_PosixMode = mode & 07777;
    }
    if (!owner.user_void) TRY(read_owner(ctx, db, owner.user, &stat->User));
    if (!owner.group_void) TRY(read_owning_group(ctx, db, owner.group, &stat->Group));
    return there ? read_acls(ctx, db, path, &stat->Acls) : 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
