// The list of volumes.
#include "frame/list.h"
#include "frame/read_row.h"
#include "storage/volumes.h"

namespace qb {

uint32_t x_qbobj_getVolumeCollection(CallContext *ctx, sqlite3 *db, VolumeCollection *volumes)
{
    QB_ASSERT(volumes);
    const char *mode = nullptr;
    TRY(select_text(ctx, db, mode, "SELECT IFNULL(raid_mode, 'SWELL') FROM system_config")
            .or_report(ctx, "Failed DB Query for 'SELECT system_config'. %s"));
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT V.id,V.lv_name,IFNULL(V.raid_type,'SWELL'),V.blk_total,V.blk_free,V.blk_size,V.volume_health,"
               "V.sent_resilver_event,V.sent_scan_end,V.keyfile,V.balance_status,V.disk_test_status FROM _volume V "
               "WHERE V.lv_name<>'USB' ORDER BY V.lv_name COLLATE NOCASE")
            .or_report(ctx, "Failed DB Query for 'SELECT _volume'. %s"));
    volumes->SystemRaidMode = mode ? mode : "SWELL";
    List<Volume> list(&volumes->Volume);
    for (int i = 0; i < rows.count; i++) {
        Volume *volume = list.append(ctx);
        TRY_MEMORY(ctx);
        uint64_t total = 0;
        uint64_t free = 0;
        read_row(ctx, rows, i, empty(volume->VolumeId), empty(volume->VolumeName), empty(volume->RaidType), total, free,
                 volume->BlockSize, empty(volume->VolumeHealth), volume->SentResilverEvent, volume->SentScanEnd,
                 empty(volume->KeyFile), volume->BalanceStatus, volume->DisktestStatus);
        volume->key = volume->VolumeId;
        volume->BlockTotal = static_cast<int64_t>(total);
        volume->BlockFree = static_cast<int64_t>(free);
    }
    TRY_MEMORY(ctx);
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
