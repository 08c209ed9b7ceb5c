// What the account workers share with each other and with other families.
#pragma once

#include <cstddef>

#include "frame/report.h"
#include "qbobj/accounts.h"

namespace qb {

/// Highest and lowest id of a local user or group.
inline constexpr int32_t kLowestId = 100;
inline constexpr int32_t kHighestId = 32767;
/// The administrator: user `admin` and the group of the same name.
inline constexpr int32_t kAdminId = 98;
/// Primary group of a user that names none.
inline constexpr int32_t kDefaultGroupId = 99;
/// How many users may have a Time Machine allowance.
inline constexpr int32_t kMostTimeMachineUsers = 16;
/// What is reported of a look-up that failed: a database that does not answer has not said that there is no
/// such row.
inline constexpr char kLookUpFailed[] = "Look-up failed.";
/// A name pattern of this many bytes is too long for a list.
inline constexpr size_t kPatternLimit = 257;

/// The clause that cuts a list to a page: it holds two numbers of the longest kind.
using PageClause = char[32];

/// Writes the page clause that a query asks for; a query without a limit leaves it alone.
void build_page(const AccountQuery *query, PageClause &clause);

/// Reads whether the CIFS service runs in directory mode (1) or not (0).
uint32_t read_ads_mode(CallContext *ctx, sqlite3 *db, int32_t *ads);

/// Reads whether directory users are looked up live instead of being synchronised (not 0).
uint32_t read_no_sync_ads(CallContext *ctx, sqlite3 *db, int32_t *no_sync);

/// Appends a user's per-share quotas to a list.
uint32_t read_user_quotas(CallContext *ctx, sqlite3 *db, int32_t user_id, Quota **head);

/// Appends a group's per-share quotas to a list.
uint32_t read_group_quotas(CallContext *ctx, sqlite3 *db, int32_t group_id, Quota **head);

/// Reads the login shell that goes with a shell access: the one rule for all operations.
/// 0 or a SQLite code; `shell` is a static text.
int login_shell(CallContext *ctx, sqlite3 *db, int32_t user_id, int32_t shell_access, const char **shell);

/// Writes the login shell anew after a user's shell access or keys changed. Non-zero when it failed, or
/// for an id below 100 other than the administrator's.
uint32_t refresh_shell(CallContext *ctx, sqlite3 *db, int32_t user_id);

}  // namespace qb
