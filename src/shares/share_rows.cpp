#include "shares/share_rows.h"

#include <cstring>

namespace qb {
namespace {

bool equal(const char *a, const char *b)
{
    return a && b ? strcmp(a, b) == 0 : a == b;
}

bool equal(const Rows &a, const Rows &b)
{
    if (a.count != b.count) return false;
    for (int row = 0; row < a.count; row++)
        for (int column = 0; column < a.columns; column++)
            if (!equal(a.cell(row, column), b.cell(row, column))) return false;
    return true;
}

}  // namespace

uint32_t ProtocolRows::read(CallContext *ctx, sqlite3 *db, int32_t share_id, const ProtocolTables &tables)
{
    auto &[options, hosts, users, groups, links] = of;
    const char *proto = tables.proto;
    TRY(select(ctx, db, options, "SELECT * FROM %s_share_option WHERE share_id=%d", proto, share_id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM %s_share_option'. %s", proto));
    if (tables.hosts)
        TRY(select(ctx, db, hosts,
                   "SELECT host_id,read,write,root FROM host_acl WHERE share_id=%d AND proto=%Q ORDER BY "
                   "host_id,read,write,root",
                   share_id, proto)
                .or_report(ctx, "Failed DB Query for 'SELECT FROM host_acl'. %s"));
    if (tables.accounts) {
        TRY(select(ctx, db, users,
                   "SELECT user_id,read,write FROM user_acl WHERE share_id=%d AND proto=%Q ORDER BY user_id,read,write",
                   share_id, proto)
                .or_report(ctx, "Failed DB Query for 'SELECT FROM user_acl'. %s"));
        TRY(select(ctx, db, groups,
                   "SELECT group_id,read,write FROM group_acl WHERE share_id=%d AND proto=%Q ORDER BY "
                   "group_id,read,write",
                   share_id, proto)
                .or_report(ctx, "Failed DB Query for 'SELECT FROM group_acl'. %s"));
    }
    if (!tables.links) return 0;
    return select(ctx, db, links,
                  "SELECT volume,share,folder,address,remote_share FROM cifs_dfs_option WHERE share_id=%d ORDER BY "
                  "volume,share,folder,address,remote_share",
                  share_id)
        .or_report(ctx, "Failed DB Query for 'SELECT FROM cifs_dfs_option'. %s");
}

bool ProtocolRows::operator==(const ProtocolRows &other) const
{
    for (int i = 0; i < kTables; i++)
        if (!equal(of[i], other.of[i])) return false;
    return true;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
