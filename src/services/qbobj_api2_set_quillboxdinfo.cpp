// Recording when the appliance's daemon started and stopped.
#include "frame/query.h"
#include "frame/set_list.h"
#include "services/services.h"

namespace qb {
namespace {

constexpr uint32_t kRefused = 8;

uint32_t update(CallContext *ctx, sqlite3 *db, const char *assignments)
{
    return execute(ctx, db, "UPDATE `$quillboxd` SET %s", assignments)
        .or_report(ctx, kRefused, "Fail 'UPDATE $quillboxd");
}

}  // namespace

uint32_t x_qbobj_setQuillboxdInfo(CallContext *ctx, sqlite3 *db, int32_t started, int32_t stopped, const char *version)
{
    SetList<512> set;
    if (started >= 0) set.add("started_on=%d", started);
    if (stopped >= 0) set.add("stopped_on=%d", stopped);
    if (version) set.add("version=%Q", version);
    TRY_MEMORY(ctx);
    if (set.dropped) return REPORT(ctx, kRefused, "Fail 'UPDATE $quillboxd");
    if (set.empty()) return 0;
    TRY(update(ctx, db, set.text));
    if (sqlite3_changes(db) > 0) return 0;
    TRY(execute(ctx, db, "INSERT INTO `$quillboxd` DEFAULT VALUES").or_report(ctx, kRefused, "%s"));
    return update(ctx, db, set.text);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
