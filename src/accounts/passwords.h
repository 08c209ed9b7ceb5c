// Passwords, account defaults and directory security: workers.
#pragma once

#include "frame/report.h"
#include "qbobj/accounts.h"

namespace qb {

uint32_t x_qbobj_getAdminPassword(CallContext *ctx, sqlite3 *db, AdminPassword *admin);
uint32_t x_qbobj_setAdminPassword(CallContext *ctx, sqlite3 *db, AdminPassword *admin);
uint32_t x_qbobj_setUserPassword(CallContext *ctx, sqlite3 *db, UserPassword *pw);
uint32_t x_qbobj_setMyPassword(CallContext *ctx, sqlite3 *db, MyPassword *pw);

uint32_t x_qbobj_getAccountDefault(CallContext *ctx, sqlite3 *db, AccountDefault *def);
uint32_t x_qbobj_setAccountDefault(CallContext *ctx, sqlite3 *db, AccountDefault *def);

uint32_t x_qbobj_getSecurity(CallContext *ctx, sqlite3 *db, Security *security);
uint32_t x_qbobj_setSecurity(CallContext *ctx, sqlite3 *db, Security *security);
uint32_t x_qbobj_setSecurityIdmapBackend(CallContext *ctx, sqlite3 *db, const char *backend);
uint32_t x_qbobj_getSecurityAdsProgress(CallContext *ctx, sqlite3 *db, SecurityAdsProgress *progress);

}  // namespace qb
