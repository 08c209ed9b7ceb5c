// Shares: workers, and the loader that fills a share, for the workers of this family and of others.
#pragma once

#include "frame/query.h"
#include "frame/worker.h"
#include "qbobj.h"

namespace qb {

Worker<qbobj_getShareCollection> x_qbobj_getShareCollection;
Worker<qbobj_getShareAndZvolCollection> x_qbobj_getShareAndZvolCollection;
Worker<qbobj_getSubvolumeShareCollection> x_qbobj_getSubvolumeShareCollection;
Worker<qbobj_getSimpleShareCollection> x_qbobj_getSimpleShareCollection;
Worker<qbobj_getAccessibleShareCollection> x_qbobj_getAccessibleShareCollection;
Worker<qbobj_getShare> x_qbobj_getShare;
Worker<qbobj_queryShare> x_qbobj_queryShare;
Worker<qbobj_getShareId, int32_t> x_qbobj_getShareId;
Worker<qbobj_getShareAccess> x_qbobj_getShareAccess;
Worker<qbobj_getPathAccess> x_qbobj_getPathAccess;
Worker<qbobj_getUsedByOn> x_qbobj_getUsedByOn;
Worker<qbobj_getShareSnapshotSchedule> x_qbobj_getShareSnapshotSchedule;
Worker<qbobj_getShareProcess> x_qbobj_getShareProcess;
Worker<qbobj_addShare> x_qbobj_addShare;
Worker<qbobj_addShareProcess> x_qbobj_addShareProcess;
Worker<qbobj_addShareUsedBy> x_qbobj_addShareUsedBy;
Worker<qbobj_modifyShare> x_qbobj_modifyShare;
Worker<qbobj_modifyShareVisibleSnapFolder> x_qbobj_modifyShareVisibleSnapFolder;
Worker<qbobj_modifyShareUsedBy> x_qbobj_modifyShareUsedBy;
Worker<qbobj_modifyShareUsedByExclusive> x_qbobj_modifyShareUsedByExclusive;
Worker<qbobj_modifyZvol> x_qbobj_modifyZvol;
Worker<qbobj_modifyShareSnapshotSchedule> x_qbobj_modifyShareSnapshotSchedule;
Worker<qbobj_deleteShareProcess> x_qbobj_deleteShareProcess;
Worker<qbobj_deleteShare> x_qbobj_deleteShare;
Worker<qbobj_deleteZvol> x_qbobj_deleteZvol;
Worker<qbobj_deleteShareOnVolume> x_qbobj_deleteShareOnVolume;
Worker<qbobj_deleteShareUsedBy> x_qbobj_deleteShareUsedBy;
Worker<qbobj_preMigrateShare> x_qbobj_preMigrateShare;
Worker<qbobj_postMigrateShare> x_qbobj_postMigrateShare;
Worker<qbobj_copyShare> x_qbobj_copyShare;

/// Settings of the appliance that decide what is reported of a share; read once a call.
struct ShareSettings {
    int32_t ftp_anonymous = 0;  // the FTP service knows no users: its user and group lists are left out
    int32_t ads = 0;            // directory mode: the lists name domain accounts
};

/// Reads the settings. When the FTP setting cannot be read, that is logged and anonymous access counts as off.
uint32_t read_share_settings(CallContext *ctx, sqlite3 *db, ShareSettings *settings);

/// Looks a share up by name; code 5 when the database does not answer.
uint32_t find_share(CallContext *ctx, sqlite3 *db, const char *name, bool *found, int32_t *id);

/// What share_load takes its rows from; a WHERE clause and an ORDER BY clause may follow.
extern const char *const kShareQuery;

/// Reads the row of one share; no row when there is no such share.
uint32_t select_share(CallContext *ctx, sqlite3 *db, int32_t share_id, Rows *rows);

/// Fills a zeroed share from a row of kShareQuery, with everything that belongs to it. On a failure the record holds
/// what was read so far.
uint32_t share_load(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, const Rows &rows, int row,
                    Share *share);

/// Fills a zeroed share by its id; code 6 when there is none.
uint32_t require_share_by_id(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, int32_t share_id,
                             Share *share);

/// Appends the shares of a result of kShareQuery; on a failure those read so far stay.
uint32_t append_shares(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, const Rows &rows, Share **head);

/// Reads a share's snapshot schedule; `schedule` is left alone when it has none.
uint32_t read_snapshot_schedule(CallContext *ctx, sqlite3 *db, int32_t share_id, bool *found, Schedule *schedule);

/// Appends the applications that use a data set.
uint32_t read_used_by(CallContext *ctx, sqlite3 *db, const char *zfs_name, UsedBy **head);

/// Appends the applications of a result with the columns app_name and app_data.
uint32_t append_used_by(CallContext *ctx, const Rows &rows, UsedBy **head);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
