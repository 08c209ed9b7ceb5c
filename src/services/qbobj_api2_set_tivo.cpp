// Writing the TiVo archiver's plan and the media access keys of the devices.
#include <cstring>

#include "frame/pool.h"
#include "frame/query.h"
#include "services/services.h"

namespace qb {

uint32_t x_qbobj_setTIVOSettings(CallContext *ctx, sqlite3 *db, TivoOptions *tivo)
{
    QB_ASSERT(tivo);
    TRY(execute(ctx, db, "DELETE FROM service_tivo").or_report(ctx, "Failed DB Delete for service_tivo update. %s"));
    if (!tivo->hour || !tivo->minute || !tivo->TIVOfolder || !tivo->days)
        return REPORT(ctx, 8, "Invalid TIVO settings!");
    return execute(ctx, db, "INSERT INTO service_tivo (hour,minute,path,days) VALUES(%Q,%Q,%Q,%Q)", tivo->hour,
                   tivo->minute, tivo->TIVOfolder, tivo->days)
        .or_report(ctx, "Failed DB Query for service_tivo update. %s");
}

uint32_t x_qbobj_setTIVOMak(CallContext *ctx, sqlite3 *db, TivoMak *mak)
{
    QB_ASSERT(mak);
    if (!mak->name) return REPORT(ctx, 8, "TivoMak name cannot be NULL");
    TRY(execute(ctx, db, "DELETE FROM tivo_mak WHERE name=%Q", mak->name)
            .or_report(ctx, "Failed DB Delete for tivo_mak update. %s"));
    if (strcmp(or_empty(mak->status), "true") != 0) return 0;
    if (!mak->key) return REPORT(ctx, 8, "TivoMak key cannot be NULL");
    return execute(ctx, db, "INSERT INTO tivo_mak (name,key) VALUES(%Q,%Q)", mak->name, mak->key)
        .or_report(ctx, "Failed DB Query for tivo_mak update. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
