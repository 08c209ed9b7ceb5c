// iSCSI: LUN groups, initiators, LUNs, and which initiators a group admits. Bookkeeping in four tables that know each
// other by name only: what hangs on a deleted group or initiator stays until it is deleted itself.
#include "frame/list.h"
#include "frame/query.h"
#include "frame/read_row.h"
#include "storage/iscsi.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

void read_item(CallContext *ctx, const Rows &rows, int row, LunGroup *group)
{
    read_row(ctx, rows, row, both(group->key, group->Name), group->Target, group->AnyInitiator, group->ChapAuth,
             group->ChapSecret);
}

void read_item(CallContext *ctx, const Rows &rows, int row, Initiator *initiator)
{
    read_row(ctx, rows, row, both(initiator->key, initiator->Name), initiator->ChapAuth, initiator->ChapSecret);
}

void read_item(CallContext *ctx, const Rows &rows, int row, Lun *lun)
{
    read_row(ctx, rows, row, both(lun->key, lun->Name), lun->LunGroup, lun->LunN);
}

/// Appends an element for each row to the list at *head, or none.
template <class T, class Read>
uint32_t append_items(CallContext *ctx, const Rows &rows, T **head, Read read)
{
    T *items = nullptr;
    List<T> list(&items);
    for (int i = 0; i < rows.count; i++) {
        T *item = list.append(ctx);
        TRY_MEMORY(ctx);
        read(i, item);
    }
    TRY_MEMORY(ctx);
    List<T>(head).link(items);
    return 0;
}

template <class T>
uint32_t append_items(CallContext *ctx, const Rows &rows, T **head)
{
    return append_items(ctx, rows, head, [&](int row, T *item) { read_item(ctx, rows, row, item); });
}

/// Fills the caller's record from the first row; the link is the caller's.
template <class T>
uint32_t fill_item(CallContext *ctx, const Rows &rows, T *item)
{
    T read{};
    read_item(ctx, rows, 0, &read);
    TRY_MEMORY(ctx);
    read.next = item->next;
    *item = read;
    return 0;
}

uint32_t require_group_name(CallContext *ctx, const char *name)
{
    return name ? 0 : REPORT(ctx, 8, "LUN Group Name cannot be NULL.");
}

uint32_t require_initiator_name(CallContext *ctx, const char *name)
{
    return name ? 0 : REPORT(ctx, 8, "iSCSI Initiator Name cannot be NULL.");
}

/// The row id under a name, -1 when there is none.
int32_t row_id(CallContext *ctx, sqlite3 *db, NameCheck table, const char *name)
{
    int32_t id = -1;
    bool found = false;
    if (find_name(ctx, db, table, name, found, id).logged(ctx, "Failed to look up an id. %s\n")) return -1;
    return found ? id : -1;
}

}  // namespace

// ---- LUN groups

uint32_t x_qbobj_getLunGroupCollection(CallContext *ctx, sqlite3 *db, LunGroupCollection *groups)
{
    QB_ASSERT(groups);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT L.name,L.target,L.all_hosts,L.chap_auth,L.chap_secret FROM `$iscsi_lun_group` L "
               "ORDER BY L.name COLLATE NOCASE")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM `$iscsi_lun_group`'. %s"));
    return append_items(ctx, rows, &groups->LunGroup);
}

uint32_t x_qbobj_getLunGroup(CallContext *ctx, sqlite3 *db, LunGroup *group)
{
    QB_ASSERT(group);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT L.name,L.target,L.all_hosts,L.chap_auth,L.chap_secret FROM `$iscsi_lun_group` L "
               "WHERE L.name=%Q",
               group->Name)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM `$iscsi_lun_group`'. %s"));
    if (rows.count == 0)
        return REPORT(ctx, 6, "None of row selected from `$iscsi_lun_group` for resource_id=%s.", group->Name);
    return fill_item(ctx, rows, group);
}

int32_t x_qbobj_getLunGroupId(CallContext *ctx, sqlite3 *db, const char *name)
{
    return row_id(ctx, db, NameCheck::lun_group, name);
}

uint32_t x_qbobj_addLunGroup(CallContext *ctx, sqlite3 *db, LunGroup *group)
{
    if (!group) return REPORT(ctx, 8, "LUN Group cannot be NULL.");
    return execute(ctx, db,
                   "INSERT INTO `$iscsi_lun_group` (name,target,all_hosts,chap_auth,chap_secret) "
                   "VALUES (%Q,%Q,%d,%d,%Q)",
                   group->Name, group->Target, group->AnyInitiator, group->ChapAuth, group->ChapSecret)
        .or_report(ctx, "Failed DB Query for 'INSERT INTO `$iscsi_lun_group`'. %s");
}

uint32_t x_qbobj_modifyLunGroup(CallContext *ctx, sqlite3 *db, LunGroup *group)
{
    if (!group) return REPORT(ctx, 8, "LUN Group cannot be NULL.");
    // Who writes back what a front end showed has not seen the secret.
    const Failure bad =
        is_password_mask(group->ChapSecret)
            ? execute(ctx, db, "UPDATE `$iscsi_lun_group` SET target=%Q,all_hosts=%d,chap_auth=%d WHERE name=%Q",
                      group->Target, group->AnyInitiator, group->ChapAuth, group->Name)
            : execute(ctx, db,
                      "UPDATE `$iscsi_lun_group` SET target=%Q,all_hosts=%d,chap_auth=%d,chap_secret=%Q WHERE name=%Q",
                      group->Target, group->AnyInitiator, group->ChapAuth, group->ChapSecret, group->Name);
    return bad.or_report(ctx, "Failed DB Query for 'UPDATE `$iscsi_lun_group`'. %s");
}

uint32_t x_qbobj_deleteLunGroup(CallContext *ctx, sqlite3 *db, const char *name)
{
    TRY(require_group_name(ctx, name));
    return execute(ctx, db, "DELETE FROM `$iscsi_lun_group` WHERE name=%Q", name)
        .or_report(ctx, "Failed DB Query for 'DELETE LunGroup'. %s");
}

// ---- Initiators

uint32_t x_qbobj_getInitiatorCollection(CallContext *ctx, sqlite3 *db, InitiatorCollection *initiators)
{
    QB_ASSERT(initiators);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT I.name,I.chap_auth,I.chap_secret FROM `$iscsi_initiator` I ORDER BY I.name COLLATE NOCASE")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM `$iscsi_initiator`'. %s"));
    return append_items(ctx, rows, &initiators->Initiator);
}

uint32_t x_qbobj_getInitiator(CallContext *ctx, sqlite3 *db, Initiator *initiator)
{
    QB_ASSERT(initiator);
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT I.name,I.chap_auth,I.chap_secret FROM `$iscsi_initiator` I WHERE I.name=%Q",
               initiator->Name)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM `$iscsi_initiator`'. %s"));
    if (rows.count == 0)
        return REPORT(ctx, 6, "None of row selected from `$iscsi_initiator` for resource_id=%s.", initiator->Name);
    return fill_item(ctx, rows, initiator);
}

int32_t x_qbobj_getInitiatorId(CallContext *ctx, sqlite3 *db, const char *name)
{
    if (qbobj_validate_sharename(name, nullptr) == 0) return row_id(ctx, db, NameCheck::initiator, name);
    LOG_FAILURE(ctx, "Initiator name '%s' is invalid.", name);
    return -1;
}

uint32_t x_qbobj_addInitiator(CallContext *ctx, sqlite3 *db, Initiator *initiator)
{
    if (!initiator) return REPORT(ctx, 8, "iSCSI Initiator cannot be NULL.");
    return execute(ctx, db, "INSERT INTO `$iscsi_initiator` (name,chap_auth,chap_secret) VALUES (%Q,%d,%Q)",
                   initiator->Name, initiator->ChapAuth, initiator->ChapSecret)
        .or_report(ctx, "Failed DB Query for 'INSERT INTO `$iscsi_initiator`'. %s");
}

uint32_t x_qbobj_modifyInitiator(CallContext *ctx, sqlite3 *db, Initiator *initiator)
{
    if (!initiator) return REPORT(ctx, 8, "iSCSI Initiator cannot be NULL.");
    const Failure bad =
        is_password_mask(initiator->ChapSecret)
            ? execute(ctx, db, "UPDATE `$iscsi_initiator` SET chap_auth=%d WHERE name=%Q", initiator->ChapAuth,
                      initiator->Name)
            : execute(ctx, db, "UPDATE `$iscsi_initiator` SET chap_auth=%d,chap_secret=%Q WHERE name=%Q",
                      initiator->ChapAuth, initiator->ChapSecret, initiator->Name);
    return bad.or_report(ctx, "Failed DB Query for 'UPDATE `$iscsi_initiator`'. %s");
}

uint32_t x_qbobj_deleteInitiator(CallContext *ctx, sqlite3 *db, const char *name)
{
    TRY(require_initiator_name(ctx, name));
    return execute(ctx, db, "DELETE FROM `$iscsi_initiator` WHERE name=%Q", name)
        .or_report(ctx, "Failed DB Query for 'DELETE FROM `$iscsi_initiator`'. %s");
}

// ---- LUNs

uint32_t x_qbobj_getLun(CallContext *ctx, sqlite3 *db, Lun *lun)
{
    QB_ASSERT(lun);
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT LUN.name,LUN.lun_group,LUN.lun_n FROM `$iscsi_lun` LUN WHERE LUN.name=%Q",
               lun->Name)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM `$iscsi_lun`'. %s"));
    if (rows.count == 0) return REPORT(ctx, 6, "None of row selected from `$iscsi_lun` for resource_id=%s.", lun->Name);
    return fill_item(ctx, rows, lun);
}

int32_t x_qbobj_getLunId(CallContext *ctx, sqlite3 *db, const char *name)
{
    if (qbobj_validate_sharename(name, nullptr) == 0) return row_id(ctx, db, NameCheck::lun, name);
    LOG_FAILURE(ctx, "LUN name '%s' is invalid.", name);
    return -1;
}

uint32_t x_qbobj_addLun(CallContext *ctx, sqlite3 *db, Lun *lun)
{
    if (!lun) return REPORT(ctx, 8, "iSCSI LUN cannot be NULL.");
    return execute(ctx, db, "INSERT INTO `$iscsi_lun` (name,lun_group,lun_n) VALUES (%Q,%Q,%d)", lun->Name,
                   lun->LunGroup, lun->LunN)
        .or_report(ctx, "Failed DB Query for 'INSERT INTO `$iscsi_lun`'. %s");
}

uint32_t x_qbobj_deleteLun(CallContext *ctx, sqlite3 *db, const char *name)
{
    if (!name) return REPORT(ctx, 8, "iSCSI LUN Name cannot be NULL.");
    return execute(ctx, db, "DELETE FROM `$iscsi_lun` WHERE name=%Q", name)
        .or_report(ctx, "Failed DB Query for 'DELETE FROM `$iscsi_lun`'. %s");
}

// ---- Access lists

uint32_t x_qbobj_getLunGroupAccessList(CallContext *ctx, sqlite3 *db, const char *lunGroup,
                                       InitiatorCollection *initiators)
{
    QB_ASSERT(initiators);
    TRY(require_group_name(ctx, lunGroup));
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT DISTINCT L.initiator FROM `$iscsi_lun_group_access` L WHERE L.lun_group=%Q",
               lunGroup)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM `$iscsi_lun_group_access`'. %s"));
    return append_items(ctx, rows, &initiators->Initiator, [&](int row, Initiator *initiator) {
        read_row(ctx, rows, row, both(initiator->key, initiator->Name));
    });
}

uint32_t x_qbobj_addLunGroupAccessList(CallContext *ctx, sqlite3 *db, const char *lunGroup, const char *initiator)
{
    TRY(require_group_name(ctx, lunGroup));
    TRY(require_initiator_name(ctx, initiator));
    return execute(ctx, db, "INSERT INTO `$iscsi_lun_group_access` VALUES (%Q,%Q)", lunGroup, initiator)
        .or_report(ctx, "Failed DB Query for 'INSERT INTO `$iscsi_lun_group_access`'. %s");
}

uint32_t x_qbobj_deleteLunGroupAccessList(CallContext *ctx, sqlite3 *db, const char *lunGroup)
{
    TRY(require_group_name(ctx, lunGroup));
    return execute(ctx, db, "DELETE FROM `$iscsi_lun_group_access` WHERE lun_group=%Q", lunGroup)
        .or_report(ctx, "Failed DB Query for 'DELETE FROM `$iscsi_lun_group_access`'. %s");
}

uint32_t x_qbobj_deleteIniFromLunGroupAccessList(CallContext *ctx, sqlite3 *db, const char *initiator)
{
    TRY(require_initiator_name(ctx, initiator));
    return execute(ctx, db, "DELETE FROM `$iscsi_lun_group_access` WHERE initiator=%Q", initiator)
        .or_report(ctx, "Failed DB Query for 'DELETE FROM `$iscsi_lun_group_access`'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
