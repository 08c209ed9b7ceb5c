// Reading shares: the lists, single shares, and the small questions about one.
#include <cstring>

#include "accounts/lookup.h"
#include "frame/list.h"
#include "frame/read_row.h"
#include "frame/set_list.h"
#include "shares/shares.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

uint32_t traced(CallContext *ctx, const char *worker, uint32_t rc)
{
    TRACE(ctx, "%s() rc=%d\n", worker, static_cast<int>(rc));
    return rc;
}

/// Appends the shares that a query yields.
template <class Query>
uint32_t collect(CallContext *ctx, sqlite3 *db, const char *worker, ShareCollection *shares, Query query)
{
    QB_ASSERT(shares);
    ShareSettings settings;
    TRY(read_share_settings(ctx, db, &settings));
    Rows rows;
    TRY(query(rows).or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s"));
    const uint32_t rc = append_shares(ctx, db, settings, rows, &shares->Share);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", worker, static_cast<int>(rc), rows.count);
    return rc;
}

/// The id of the share that a record names.
uint32_t require_named_share(CallContext *ctx, sqlite3 *db, const Share *share, int32_t *id)
{
    if (parse_resource_id(share->key, id) == 0 || parse_resource_id(share->ShareId, id) == 0) return 0;
    bool found = false;
    TRY(find_share(ctx, db, share->ShareName, &found, id));
    return found ? 0 : REPORT(ctx, 5, "Invalid ShareId=%s.", share->ShareId);
}

uint32_t read_share(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, Share *share)
{
    int32_t id = 0;
    TRY(require_named_share(ctx, db, share, &id));
    Share read{};
    TRY(require_share_by_id(ctx, db, settings, id, &read));
    read.next = share->next;
    *share = read;
    return 0;
}

uint32_t read_shares(CallContext *ctx, sqlite3 *db, Share *share)
{
    ShareSettings settings;
    TRY(read_share_settings(ctx, db, &settings));
    for (; share; share = share->next) TRY(read_share(ctx, db, settings, share));
    return 0;
}

/// The protocols of a share in brief, as its statement has them: null where one does not serve the share.
struct CommonProtocols {
    const char *words[4];
};

const char *joined(CallContext *ctx, const CommonProtocols &protocols)
{
    JoinedText<sizeof "cifs,afp,ftp,nfs"> text(",");
    for (const char *word : protocols.words)
        if (word) text.add("%s", word);
    return copy_text(ctx, text.text);
}

uint32_t fill_simple_share(CallContext *ctx, sqlite3 *db, const Rows &rows, int row, SimpleShare *share)
{
    CommonProtocols protocols{};
    const char *zfs_name = nullptr;
    read_row(ctx, rows, row, both(share->key, share->ShareId), zfs_name, share->ShareName, protocols.words[0],
             protocols.words[1], protocols.words[2], protocols.words[3]);
    share->CommonProtocolsCSV = joined(ctx, protocols);
    return read_used_by(ctx, db, zfs_name, &share->UsedBy);
}

uint32_t append_simple_shares(CallContext *ctx, sqlite3 *db, const Rows &rows, SimpleShare **head)
{
    List<SimpleShare> list(head);
    for (int i = 0; i < rows.count; i++) {
        SimpleShare *share = list.append(ctx);
        TRY_MEMORY(ctx);
        TRY(fill_simple_share(ctx, db, rows, i, share));
        TRY_MEMORY(ctx);
    }
    return 0;
}

uint32_t read_schedule_of(CallContext *ctx, sqlite3 *db, const char *share_name, Schedule *schedule)
{
    int32_t id = 0;
    bool found = false;
    TRY(find_share(ctx, db, share_name, &found, &id));
    if (!found) return REPORT(ctx, 6, "Share name (%s) may be invalid.", share_name);
    Schedule read{};
    TRY(read_snapshot_schedule(ctx, db, id, &found, &read));
    TRY_MEMORY(ctx);
    *schedule = read;
    return 0;
}

uint32_t read_processes(CallContext *ctx, sqlite3 *db, const char *zfs_name, Process **head)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT PS.pid,PS.blocking,STRFTIME('%%s',PS.ts) FROM `process_on_share` PS WHERE "
               "PS.share_id=(SELECT S.id FROM `share` S WHERE S.zfs_name=%Q)",
               zfs_name)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM process_on_share'. %s"));
    List<Process> list(head);
    for (int i = 0; i < rows.count; i++) {
        Process *process = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, process->ProcessId, process->Blocking, process->Timestamp);
    }
    return 0;
}

uint32_t read_used_by_on_volume(CallContext *ctx, sqlite3 *db, const char *volume, UsedBy **head)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT A.app_name,A.app_data FROM `$application_on_share` A WHERE zfs_name like %Q||'%%'", volume)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $application_on_share'. %s"));
    return append_used_by(ctx, rows, head);
}

}  // namespace

uint32_t require_share_by_id(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, int32_t share_id,
                             Share *share)
{
    Rows rows;
    TRY(select_share(ctx, db, share_id, &rows));
    if (rows.count == 0) return REPORT(ctx, 6, "None of row selected for resource_id=%d.", share_id);
    return share_load(ctx, db, settings, rows, 0, share);
}

uint32_t x_qbobj_getShareCollection(CallContext *ctx, sqlite3 *db, ShareCollection *shares)
{
    return collect(ctx, db, __func__, shares, [&](Rows &rows) {
        return select(ctx, db, rows, "%s WHERE S.type='share' ORDER BY S.name COLLATE NOCASE", kShareQuery);
    });
}

uint32_t x_qbobj_getShareAndZvolCollection(CallContext *ctx, sqlite3 *db, ShareCollection *shares)
{
    return collect(ctx, db, __func__, shares, [&](Rows &rows) {
        return select(ctx, db, rows, "%s WHERE S.type='share' OR S.type='zvol' ORDER BY S.name COLLATE NOCASE",
                      kShareQuery);
    });
}

uint32_t x_qbobj_getSubvolumeShareCollection(CallContext *ctx, sqlite3 *db, ShareCollection *shares)
{
    return collect(ctx, db, __func__, shares,
                   [&](Rows &rows) { return select(ctx, db, rows, "%s ORDER BY S.name COLLATE NOCASE", kShareQuery); });
}

uint32_t x_qbobj_queryShare(CallContext *ctx, sqlite3 *db, const char *volumeId, const char *namePattern,
                            const char *zfsName, ShareCollection *shares)
{
    QB_ASSERT(shares);
    JoinedText<512> where(" AND ");
    if (volumeId) where.add("S.volume_id=%Q", volumeId);
    if (namePattern) where.add("S.name LIKE %Q", namePattern);
    if (zfsName) where.add("S.zfs_name=%Q", zfsName);
    TRY_MEMORY(ctx);
    if (where.dropped)
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM share'. %s", "The filters are too long.");
    if (where.empty()) return 0;
    return collect(ctx, db, __func__, shares,
                   [&](Rows &rows) { return select(ctx, db, rows, "%s WHERE %s", kShareQuery, where.text); });
}

uint32_t x_qbobj_getShare(CallContext *ctx, sqlite3 *db, Share *share)
{
    QB_ASSERT(share);
    return traced(ctx, __func__, read_shares(ctx, db, share));
}

uint32_t x_qbobj_getSimpleShareCollection(CallContext *ctx, sqlite3 *db, SimpleShareCollection *shares)
{
    QB_ASSERT(shares);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.id,S.zfs_name,S.name,(SELECT 'cifs' FROM cifs_share_option CIFS WHERE CIFS.share_id=S.id AND "
               "CIFS.cifs_access<>'disabled' AND CIFS.available<>0),(SELECT 'afp' FROM afp_share_option AFP WHERE "
               "AFP.share_id=S.id AND AFP.afp_access<>'disabled' AND AFP.available<>0),(SELECT 'ftp' FROM "
               "ftp_share_option FTP WHERE FTP.share_id=S.id AND FTP.ftp_access<>'disabled' AND FTP.available<>0),"
               "(SELECT 'nfs' FROM nfs_share_option NFS WHERE NFS.share_id=S.id AND NFS.nfs_access<>'disabled' AND "
               "NFS.available<>0) FROM share S WHERE S.type='share' ORDER BY S.name COLLATE NOCASE")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s"));
    const uint32_t rc = append_simple_shares(ctx, db, rows, &shares->SimpleShare);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, static_cast<int>(rc), rows.count);
    return rc;
}

int32_t x_qbobj_getShareId(CallContext *ctx, sqlite3 *db, const char *shareName)
{
    bool found = false;
    int32_t id = 0;
    const Failure bad = find_name(ctx, db, NameCheck::share_name, shareName, found, id);
    return !bad.logged(ctx, "Failed DB Query for 'SELECT share'. %s\n") && found ? id : kNoId;
}

uint32_t x_qbobj_getUsedByOn(CallContext *ctx, sqlite3 *db, const char *name, UsedBy **usedby)
{
    QB_ASSERT(usedby);
    const bool dataset = name && strchr(name, '/');
    return traced(ctx, __func__,
                  dataset ? read_used_by(ctx, db, name, usedby) : read_used_by_on_volume(ctx, db, name, usedby));
}

uint32_t x_qbobj_getShareSnapshotSchedule(CallContext *ctx, sqlite3 *db, const char *shareName, Schedule *schedule)
{
    QB_ASSERT(schedule);
    return traced(ctx, __func__, read_schedule_of(ctx, db, shareName, schedule));
}

uint32_t x_qbobj_getShareProcess(CallContext *ctx, sqlite3 *db, const char *zfsName, Process **procs)
{
    if (!procs) return REPORT(ctx, 8, "procs cannot be NULL.");
    return traced(ctx, __func__, read_processes(ctx, db, zfsName, procs));
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
