// What a backup job can read and write.
#include "accounts/accounts.h"
#include "backup/backup.h"
#include "frame/list.h"
#include "frame/query.h"
#include "frame/read_row.h"

namespace qb {
namespace {

// The first column puts the kinds in order, the second the names within a kind. Single homes have the same text in the
// second for each, so that they come as the database yields them: sorting 500 of them is left to whoever shows them.

Failure select_sources(CallContext *ctx, sqlite3 *db, Rows &rows, const char *rid_is)
{
    return select(
        ctx, db, rows,
        "SELECT * FROM (SELECT 1,S.name,'share',NULL,S.name,S.path,S.id,S.volume_id='media' FROM share S WHERE "
        "S.type='share' "
        "UNION SELECT 2,'*','home',NULL,'*',(SELECT '/'||V.lv_name||'/home'),0,0 FROM account_default A INNER JOIN "
        "_volume V ON V.id=A.home_volume_id "
        "UNION SELECT 3,'T.uname','home',NULL,T.uname,T.home,T.id,0 FROM (SELECT U.uname as uname,U.home as home,U.id "
        "as id FROM `$user` U WHERE U.is_privileged=0 AND U.uname<>'nobody' AND U.uname<>'guest' AND U.rid IS %sNULL "
        "AND U.id > 0 AND U.group_id<>IFNULL((SELECT id FROM `$group` G WHERE G.gname='guest'),(SELECT id FROM "
        "`$group` G WHERE G.gname='nogroup')) LIMIT 500) AS T "
        "UNION SELECT 4,V.lv_name,'volume',NULL,V.lv_name,'/'||V.lv_name,V.rowid,0 FROM _volume V WHERE "
        "V.lv_name!='USB' AND V.lv_name!='media' "
        "UNION SELECT 5,P.proto,'remote',NULL,P.proto,'',P.id,0 FROM backup_protocol P "
        "UNION SELECT 6,USB.id,'usb','BACKUP_'||USB.descr,'usb_port_'||USB.port,COALESCE( (SELECT US.mount_point FROM "
        "usb_storage US WHERE US.usbpath LIKE REPLACE(USB.port,'_',':')||'%%'),(SELECT US.mount_point FROM usb_storage "
        "US WHERE US.usbpath LIKE REPLACE(USB.alt_port,'_',':')||'%%'),''),USB.id,1 FROM usb_port USB "
        "UNION SELECT 7,'~timemachine~','timemachine',NULL,'~timemachine~','/c/.timemachine',0,0) "
        "ORDER BY 1,2 COLLATE NOCASE",
        rid_is);
}

Failure select_destinations(CallContext *ctx, sqlite3 *db, Rows &rows, const char *rid_is)
{
    return select(
        ctx, db, rows,
        "SELECT * FROM (SELECT 1,S.name,'share',NULL,S.name,S.path,S.id,S.volume_id='media' FROM share S WHERE "
        "S.type='share' "
        "UNION SELECT 2,T.uname,'home',NULL,T.uname,T.home,T.id,0 FROM ( SELECT U.uname as uname,U.home as home,U.id "
        "as id FROM `$user` U WHERE U.is_privileged=0 AND U.uname<>'nobody' AND U.uname<>'guest' AND U.rid IS %sNULL "
        "AND U.id > 0 AND U.group_id<>IFNULL((SELECT id FROM `$group` G WHERE G.gname='guest'),(SELECT id FROM "
        "`$group` G WHERE G.gname='nogroup')) LIMIT 500) AS T "
        "UNION SELECT 4,P.proto,'remote',NULL,P.proto,'',P.id,0 FROM backup_protocol P WHERE P.readonly=0 "
        "UNION SELECT 5,USB.id,'usb','BACKUP_'||USB.descr,'usb_port_'||USB.port,COALESCE( (SELECT US.mount_point FROM "
        "usb_storage US WHERE US.usbpath LIKE REPLACE(USB.port,'_',':')||'%%'),(SELECT US.mount_point FROM usb_storage "
        "US WHERE US.usbpath LIKE REPLACE(USB.alt_port,'_',':')||'%%'),''),USB.id,1 FROM usb_port USB) "
        "ORDER BY 1,2 COLLATE NOCASE",
        rid_is);
}

uint32_t read_targets(CallContext *ctx, const Rows &rows, BackupTarget **head)
{
    List<BackupTarget> list(head);
    for (int i = 0; i < rows.count; i++) {
        BackupTarget *target = list.append(ctx);
        TRY_MEMORY(ctx, "Failed to allocate object.");
        read_row(ctx, rows, i, skip, skip, empty(target->Type), empty(target->UsbSubType),
                 empty(target->ShareNameOrProtocol), empty(target->Path), target->Id, target->Ejectable);
    }
    TRY_MEMORY(ctx, "Failed to allocate object.");
    return 0;
}

}  // namespace

uint32_t x_qbobj_getBackupTargetCollection(CallContext *ctx, sqlite3 *db, BackupTargetCollection *targets)
{
    QB_ASSERT(targets);
    int32_t ads = 0;
    TRY(read_ads_mode(ctx, db, &ads));
    const char *rid_is = ads ? "NOT " : "";
    Rows sources;
    TRY(select_sources(ctx, db, sources, rid_is).or_report(ctx, "Failed DB Query for backup target. %s"));
    Rows destinations;
    TRY(select_destinations(ctx, db, destinations, rid_is).or_report(ctx, "Failed DB Query for backup target. %s"));
    BackupTargetCollection read{};
    TRY(read_targets(ctx, sources, &read.AvailableSourceTarget));
    TRY(read_targets(ctx, destinations, &read.AvailableDestinationTarget));
    List<BackupTarget>(&targets->AvailableSourceTarget).link(read.AvailableSourceTarget);
    List<BackupTarget>(&targets->AvailableDestinationTarget).link(read.AvailableDestinationTarget);
    return 0;
}

uint32_t x_qbobj_getBackupUSBSubType(CallContext *ctx, sqlite3 *db, const char *usbPortName, const char **subType)
{
    QB_ASSERT(subType);
    const char *read = nullptr;
    TRY(select_text(ctx, db, read,
                    "SELECT COALESCE((SELECT 'BACKUP_'||USB.descr FROM usb_port USB WHERE 'usb_port_'||USB.port=%Q),"
                    "(SELECT 'BACKUP_'||USB.descr FROM usb_port USB WHERE 'usb_port_'||USB.alt_port=%Q))",
                    usbPortName, usbPortName)
            .or_report(ctx, "Failed DB Query for usb_port. %s"));
    *subType = read;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
