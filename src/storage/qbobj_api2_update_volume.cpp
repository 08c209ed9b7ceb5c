// Refreshing a volume's figures.
#include "frame/query.h"
#include "storage/volumes.h"

namespace qb {

// A caller without a volume is told so in the error record alone.
uint32_t x_qbobj_updateVolume(CallContext *ctx, sqlite3 *db, Volume *volume)
{
    if (!volume) {
        REPORT(ctx, 8, "volume is null. caller should specify volume.");
        return 0;
    }
    return execute(ctx, db,
                   "UPDATE _volume SET blk_total=%lld,blk_free=%lld,blk_size=%d,volume_health=%Q,"
                   "sent_resilver_event=%d,sent_scan_end=%d,keyfile=%Q,balance_status=%d,disk_test_status=%d WHERE "
                   "id=%Q",
                   static_cast<long long>(volume->BlockTotal), static_cast<long long>(volume->BlockFree),
                   volume->BlockSize, volume->VolumeHealth, volume->SentResilverEvent, volume->SentScanEnd,
                   volume->KeyFile, volume->BalanceStatus, volume->DisktestStatus, volume->VolumeId)
        .or_report(ctx, "Failed DB Query for 'UPDATE _volume'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
