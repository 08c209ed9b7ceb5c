// Health of disks: their latest SMART counters and pool errors.
#include "frame/list.h"
#include "frame/read_row.h"
#include "storage/health.h"
#include "storage/volumes.h"

namespace qb {

uint32_t x_qbobj_getDiskHealthCollection(CallContext *ctx, sqlite3 *db, DiskHealthCollection *health)
{
    QB_ASSERT(health);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT D.disk_id,D.ata_errors,D.realloc_sect,D.realloc_event,D.spin_retry_cnt,D.ioedc,D.cmd_timeouts,"
               "D.pending_sect,D.uncorrectable_err,D.temp,D.start_stop_cnt,D.power_on_hrs,D.power_cycle_cnt,"
               "D.load_cycle_cnt,IFNULL(D.zpool_state,'UNKNOWN'),D.zpool_read_error_cnt,D.zpool_write_error_cnt, "
               "D.zpool_cksum_error_cnt,DI.controller,DI.channel FROM _disk_health D INNER JOIN `$disk_info` DI ON "
               "DI.id=D.disk_id")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _disk_health'. %s"));
    if (rows.count == 0) return REPORT(ctx, 6, "No data in _disk_healt table");
    DiskHealth *read = nullptr;
    List<DiskHealth> list(&read);
    for (int i = 0; i < rows.count; i++) {
        DiskHealth *disk = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, empty(disk->DiskId), disk->ATAErrors, disk->ReallocSect, disk->ReallocEvent,
                 disk->SpinRetryCnt, disk->IOEdc, disk->CmdTimeouts, disk->PendingSect, disk->UncorrectableErr,
                 disk->Temp, disk->StartStopCnt, disk->PowerOnHrs, disk->PowerCycleCnt, disk->LoadCycleCnt,
                 empty(disk->ZpoolState), disk->ZpoolReadErrorCnt, disk->ZpoolWriteErrorCnt, disk->ZpoolCksumErrorCnt,
                 disk->Controller, disk->Channel);
        disk->key = enclosure_key(ctx, disk->Controller);
    }
    TRY_MEMORY(ctx);
    List<DiskHealth>(&health->Health).link(read);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, 0, rows.count);
    return 0;
}

uint32_t x_qbobj_setDiskHealth(CallContext *ctx, sqlite3 *db, DiskHealth *health)
{
    for (const DiskHealth *disk = health; disk; disk = disk->next)
        TRY(execute(ctx, db,
                    "INSERT OR REPLACE INTO _disk_health(disk_id,ata_errors,realloc_sect,realloc_event,spin_retry_cnt,"
                    "ioedc,cmd_timeouts,pending_sect,uncorrectable_err,temp,start_stop_cnt,power_on_hrs,"
                    "power_cycle_cnt,load_cycle_cnt,zpool_state,zpool_read_error_cnt,zpool_write_error_cnt,"
                    "zpool_cksum_error_cnt) VALUES(%Q,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%Q,%d,%d,%d)",
                    disk->DiskId, disk->ATAErrors, disk->ReallocSect, disk->ReallocEvent, disk->SpinRetryCnt,
                    disk->IOEdc, disk->CmdTimeouts, disk->PendingSect, disk->UncorrectableErr, disk->Temp,
                    disk->StartStopCnt, disk->PowerOnHrs, disk->PowerCycleCnt, disk->LoadCycleCnt, disk->ZpoolState,
                    disk->ZpoolReadErrorCnt, disk->ZpoolWriteErrorCnt, disk->ZpoolCksumErrorCnt)
                .or_report(ctx, 8, "Fail 'INSERT INTO _disk_health'. %s"));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
