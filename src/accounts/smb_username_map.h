// The SMB user-name map: workers, and what changing users needs of them.
#pragma once

#include "frame/report.h"
#include "qbobj/accounts.h"

namespace qb {

uint32_t x_qbobj_getSmbUserNameMapCollection(CallContext *ctx, sqlite3 *db, SmbUserNameMapCollection *maps);
int32_t x_qbobj_getSmbUserNameMapCount(CallContext *ctx, sqlite3 *db, const char *unixUserName, const char *type);
uint32_t x_qbobj_addSmbUserNameMap(CallContext *ctx, sqlite3 *db, SmbUserNameMap *map);
uint32_t x_qbobj_deleteSmbUserNameMap(CallContext *ctx, sqlite3 *db, const char *unixUserName);
uint32_t x_qbobj_setSmbUserNameMapUnixUserNameForAll(CallContext *ctx, sqlite3 *db, const char *oldUnixName,
                                                     const char *newUnixName);
uint32_t x_qbobj_setSmbUserNameMapSmbUserName(CallContext *ctx, sqlite3 *db, SmbUserNameMap *map);

/// Gives a user an alias, next to any that it has.
uint32_t add_alias(CallContext *ctx, sqlite3 *db, const char *user_name, const char *alias);

/// Changes a user's alias, or gives it one when it has none.
uint32_t set_alias(CallContext *ctx, sqlite3 *db, const char *user_name, const char *alias);

}  // namespace qb
