// Groups: workers, and what they have in common.
#pragma once

#include "frame/report.h"
#include "qbobj/accounts.h"

namespace qb {

int32_t x_qbobj_getGID(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id);
int32_t x_qbobj_getGroupName(CallContext *ctx, sqlite3 *db, int32_t id, const char **name);
int32_t x_qbobj_getPrimaryGID(CallContext *ctx, sqlite3 *db, const char *userName, int32_t *id);
int32_t x_qbobj_getPosixGID(CallContext *ctx, sqlite3 *db, const char *name);
int32_t x_qbobj_getPosixGIDbyGID(CallContext *ctx, sqlite3 *db, int32_t id);
int32_t x_qbobj_isMemberOfGroup(CallContext *ctx, sqlite3 *db, const char *userName, const char *groupName);
uint32_t x_qbobj_getGroupCollection(CallContext *ctx, sqlite3 *db, GroupCollection *groups, AccountQuery *query);
uint32_t x_qbobj_getGroup(CallContext *ctx, sqlite3 *db, Group *group);
uint32_t x_qbobj_getSystemGroup(CallContext *ctx, sqlite3 *db, SystemGroup *group);
uint32_t x_qbobj_addGroup(CallContext *ctx, sqlite3 *db, Group *group);
uint32_t x_qbobj_deleteGroup(CallContext *ctx, sqlite3 *db, Group *group);
uint32_t x_qbobj_modifyGroup(CallContext *ctx, sqlite3 *db, Group *group);

/// The id by which a record addresses its group.
template <class Record>
int32_t addressed_group(const Record *record)
{
    return record->resource_id < 1 ? record->GroupId : record->resource_id;
}

/// Checks the form of a name that a group is to get; not null.
uint32_t check_given_group_name(CallContext *ctx, const char *name);

/// Checks that a group has this id, be it a removed one.
uint32_t require_group(CallContext *ctx, sqlite3 *db, int32_t id);

/// A quota's limit as the statements take it: what does not fit is the highest that fits, never less.
int32_t limit_of(const Quota *quota);

/// Makes a user, addressed by id, a secondary member of a group.
uint32_t add_member(CallContext *ctx, sqlite3 *db, int32_t group_id, const User *member);

}  // namespace qb
