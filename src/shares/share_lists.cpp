// The access lists of a share's protocols, read.
#include "accounts/lookup.h"
#include "frame/list.h"
#include "frame/read_row.h"
#include "shares/share_details.h"

namespace qb {
namespace {

/// Local ids are their own POSIX ids. The directory is not asked for each of the others.
int32_t own_posix_id(int32_t id)
{
    return id < 0 ? kNoId : id;
}

// A share has eight of these lists. Each kind of accounts has a text of its own because one that is put together has to
// be looked up among the prepared statements.

Failure select_users(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto, Rows &rows)
{
    if (ads)
        return select(
            ctx, db, rows,
            "SELECT U.id,U.uname,CASE WHEN UA.write THEN 'ReadWrite' WHEN UA.read THEN 'ReadOnly' ELSE 'Disabled' END "
            "FROM `$user` U INNER JOIN user_acl UA ON UA.user_id=U.id AND UA.share_id=%d AND UA.proto=%Q WHERE U.rid "
            "IS NOT NULL ORDER BY U.uname COLLATE NOCASE",
            share_id, proto);
    return select(
        ctx, db, rows,
        "SELECT U.id,U.uname,CASE WHEN UA.write THEN 'ReadWrite' WHEN UA.read THEN 'ReadOnly' ELSE 'Disabled' END FROM "
        "`$user` U INNER JOIN user_acl UA ON UA.user_id=U.id AND UA.share_id=%d AND UA.proto=%Q WHERE U.rid IS NULL "
        "ORDER BY U.uname COLLATE NOCASE",
        share_id, proto);
}

Failure select_groups(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto, Rows &rows)
{
    if (ads)
        return select(
            ctx, db, rows,
            "SELECT G.id,G.gname,CASE WHEN GA.write THEN 'ReadWrite' WHEN GA.read THEN 'ReadOnly' ELSE 'Disabled' END "
            "FROM `$group` G INNER JOIN group_acl GA ON GA.group_id=G.id AND GA.share_id=%d AND GA.proto=%Q WHERE "
            "G.rid "
            "IS NOT NULL ORDER BY G.gname COLLATE NOCASE",
            share_id, proto);
    return select(
        ctx, db, rows,
        "SELECT G.id,G.gname,CASE WHEN GA.write THEN 'ReadWrite' WHEN GA.read THEN 'ReadOnly' ELSE 'Disabled' END FROM "
        "`$group` G INNER JOIN group_acl GA ON GA.group_id=G.id AND GA.share_id=%d AND GA.proto=%Q WHERE G.rid IS NULL "
        "ORDER BY G.gname COLLATE NOCASE",
        share_id, proto);
}

}  // namespace

uint32_t read_host_acl(CallContext *ctx, sqlite3 *db, int32_t share_id, const char *proto, HostAcl **head)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT H.id,H.name,CASE WHEN HA.write THEN 'ReadWrite' WHEN HA.read THEN 'ReadOnly' ELSE 'Disabled' "
               "END,HA.root FROM host H INNER JOIN host_acl HA ON HA.host_id=H.id AND HA.share_id=%d AND HA.proto=%Q",
               share_id, proto)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM host,host_acl'. %s"));
    List<HostAcl> list(head);
    for (int i = 0; i < rows.count; i++) {
        HostAcl *acl = list.append(ctx);
        Host *host = allocate<Host>(ctx);
        TRY_MEMORY(ctx, "Failed to allocate Host.");
        acl->Host = host;
        read_row(ctx, rows, i, both(host->resource_id, host->HostId), host->HostName, acl->Access, acl->Root);
    }
    return 0;
}

uint32_t read_user_acl(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto, UserAcl **head)
{
    Rows rows;
    TRY(select_users(ctx, db, ads, share_id, proto, rows)
            .or_report(ctx, "Failed DB Query for 'SELECT user_acl(%s)'. (%s)", proto));
    List<UserAcl> list(head);
    for (int i = 0; i < rows.count; i++) {
        UserAcl *acl = list.append(ctx);
        SystemUser *user = allocate<SystemUser>(ctx);
        TRY_MEMORY(ctx, "Failed to allocate SystemUser.");
        acl->User = user;
        read_row(ctx, rows, i, both(user->resource_id, user->UserId), user->UserName, acl->Access);
        user->_PosixId = own_posix_id(user->UserId);
    }
    return 0;
}

uint32_t read_group_acl(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto,
                        GroupAcl **head)
{
    Rows rows;
    TRY(select_groups(ctx, db, ads, share_id, proto, rows)
            .or_report(ctx, "Failed DB Query for 'SELECT group_acl(%s)'. (%s)", proto));
    List<GroupAcl> list(head);
    for (int i = 0; i < rows.count; i++) {
        GroupAcl *acl = list.append(ctx);
        SystemGroup *group = allocate<SystemGroup>(ctx);
        TRY_MEMORY(ctx);
        acl->Group = group;
        read_row(ctx, rows, i, both(group->resource_id, group->GroupId), group->GroupName, acl->Access);
        group->_PosixId = own_posix_id(group->GroupId);
    }
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
