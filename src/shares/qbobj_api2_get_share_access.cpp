// Who may see and change what: the access checks of SMB and HTTP, and the operations that ask them.
#include <cstring>

#include "accounts/lookup.h"
#include "frame/list.h"
#include "frame/together.h"
#include "shares/shares.h"
#include "shares/words.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

constexpr int32_t kNoShare = -1;
constexpr int32_t kBadShareName = -2;

/// The statements that look for a user, and for the user's groups, on a list, by the right that the row must grant.
struct ListSearch {
    Sql<int32_t, int32_t> user;             // share, user
    Sql<int32_t, int32_t, int32_t> groups;  // share, user twice: primary group, secondary groups
};

constexpr ListSearch kMayRead = {
    "SELECT 1 FROM user_acl A WHERE A.share_id=%d AND A.proto='cifs' AND A.user_id=%d AND A.read<>0",
    "SELECT 1 FROM group_acl A WHERE A.share_id=%d AND A.proto='cifs' AND A.read<>0 AND (A.group_id=(SELECT U.group_id "
    "FROM `$user` U WHERE U.id=%d) OR A.group_id IN (SELECT GU.group_id FROM `$group_has_user` GU WHERE "
    "GU.user_id=%d)) LIMIT 1",
};

constexpr ListSearch kMayWrite = {
    "SELECT 1 FROM user_acl A WHERE A.share_id=%d AND A.proto='cifs' AND A.user_id=%d AND A.write<>0",
    "SELECT 1 FROM group_acl A WHERE A.share_id=%d AND A.proto='cifs' AND A.write<>0 AND (A.group_id=(SELECT "
    "U.group_id FROM `$user` U WHERE U.id=%d) OR A.group_id IN (SELECT GU.group_id FROM `$group_has_user` GU WHERE "
    "GU.user_id=%d)) LIMIT 1",
};

constexpr ListSearch kMayNotWrite = {
    "SELECT 1 FROM user_acl A WHERE A.share_id=%d AND A.proto='cifs' AND A.user_id=%d AND A.write=0",
    "SELECT 1 FROM group_acl A WHERE A.share_id=%d AND A.proto='cifs' AND A.write=0 AND (A.group_id=(SELECT U.group_id "
    "FROM `$user` U WHERE U.id=%d) OR A.group_id IN (SELECT GU.group_id FROM `$group_has_user` GU WHERE "
    "GU.user_id=%d)) LIMIT 1",
};

constexpr ListSearch kOnHttpList = {
    "SELECT 1 FROM user_acl A WHERE A.share_id=%d AND A.proto='http' AND A.user_id=%d",
    "SELECT 1 FROM group_acl A WHERE A.share_id=%d AND A.proto='http' AND (A.group_id=(SELECT U.group_id FROM `$user` "
    "U WHERE U.id=%d) OR A.group_id IN (SELECT GU.group_id FROM `$group_has_user` GU WHERE GU.user_id=%d)) LIMIT 1",
};

/// Looks for a user on a list, then for the groups.
Failure find_on_lists(CallContext *ctx, sqlite3 *db, const ListSearch &search, int32_t share_id, int32_t user_id,
                      bool *found)
{
    int32_t one = 0;
    const Failure bad = find_int32(ctx, db, one, *found, search.user, share_id, user_id);
    if (bad || *found) return bad;
    return find_int32(ctx, db, one, *found, search.groups, share_id, user_id, user_id);
}

/// Default access of a share; null without the protocol.
struct Door {
    const char *access = nullptr;
    int32_t guest = 0;

    bool is(const char *word) const { return strcmp(access, word) == 0; }
    bool open() const { return is("readonly") || is("writeable"); }
};

Failure find_cifs_door(CallContext *ctx, sqlite3 *db, int32_t share_id, Door *door)
{
    Rows rows;
    const Failure bad = select(ctx, db, rows,
                               "SELECT CIFS.cifs_access,CIFS.cifs_guest_access FROM cifs_share_option CIFS WHERE "
                               "CIFS.share_id=%d",
                               share_id);
    if (bad || rows.count == 0) return bad;
    door->access = rows.text(ctx, 0, 0);
    door->guest = rows.int32(0, 1);
    return bad;
}

/// Domain users, whose ids are negative, count as no user here.
Failure check_cifs_read(CallContext *ctx, sqlite3 *db, int32_t share_id, int32_t user_id, bool *granted)
{
    *granted = false;
    Door door;
    const Failure bad = find_cifs_door(ctx, db, share_id, &door);
    if (bad || !door.access) return bad;
    if (door.open()) {
        *granted = user_id >= 0 || door.guest != 0;
        return {};
    }
    return user_id >= 0 ? find_on_lists(ctx, db, kMayRead, share_id, user_id, granted) : Failure{};
}

/// Where everybody may write, a row without write takes it away; elsewhere one with write gives it.
Failure check_cifs_write(CallContext *ctx, sqlite3 *db, int32_t share_id, int32_t user_id, bool *granted)
{
    *granted = false;
    Door door;
    const Failure bad = find_cifs_door(ctx, db, share_id, &door);
    if (bad || !door.access) return bad;
    if (!door.is("writeable"))
        return user_id >= 0 ? find_on_lists(ctx, db, kMayWrite, share_id, user_id, granted) : Failure{};
    if (user_id < 0) {
        *granted = door.guest != 0;
        return {};
    }
    bool refused = false;
    const Failure worse = find_on_lists(ctx, db, kMayNotWrite, share_id, user_id, &refused);
    *granted = !worse && !refused;
    return worse;
}

/// An open share with lists is for those on the user list and for secondary members of the groups on the group list.
Failure check_open_http(CallContext *ctx, sqlite3 *db, int32_t share_id, int32_t user_id, bool *granted)
{
    int32_t users = 0;
    int32_t groups = 0;
    if (const Failure bad = select_int32(
            ctx, db, users, "SELECT COUNT(*) FROM user_acl A WHERE A.share_id=%d AND A.proto='http'", share_id))
        return bad;
    if (const Failure bad = select_int32(
            ctx, db, groups, "SELECT COUNT(*) FROM group_acl A WHERE A.share_id=%d AND A.proto='http'", share_id))
        return bad;
    *granted = users == 0 && groups == 0;
    if (*granted) return {};
    int32_t one = 0;
    const Failure bad = find_int32(ctx, db, one, *granted, kOnHttpList.user, share_id, user_id);
    if (bad || *granted) return bad;
    return find_int32(ctx, db, one, *granted,
                      "SELECT 1 FROM group_acl A INNER JOIN `$group_has_user` GU ON GU.group_id=A.group_id WHERE "
                      "A.share_id=%d AND A.proto='http' AND GU.user_id=%d LIMIT 1",
                      share_id, user_id);
}

Failure check_http(CallContext *ctx, sqlite3 *db, int32_t share_id, int32_t user_id, bool *granted)
{
    *granted = false;
    Door door;
    const Failure bad = select_text(
        ctx, db, door.access, "SELECT HTTP.http_access FROM http_share_option HTTP WHERE HTTP.share_id=%d", share_id);
    if (bad || !door.access) return bad;
    if (door.open()) return check_open_http(ctx, db, share_id, user_id, granted);
    return user_id == kNoId ? Failure{} : find_on_lists(ctx, db, kOnHttpList, share_id, user_id, granted);
}

/// How a protocol tells who may see a share.
struct AccessCheck {
    const char *proto;
    Failure (*check)(CallContext *ctx, sqlite3 *db, int32_t share_id, int32_t user_id, bool *granted);
};
constexpr AccessCheck kAccessChecks[] = {{"cifs", check_cifs_read}, {"http", check_http}};

/// Null for a protocol that has no such check.
const AccessCheck *access_check_of(const char *proto)
{
    for (const AccessCheck &each : kAccessChecks)
        if (strcmp(each.proto, proto) == 0) return &each;
    return nullptr;
}

/// Appends every share of a result, and fills those that the user may see.
uint32_t append_accessible(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, const Rows &rows,
                           const AccessCheck *access, int32_t user_id, Share **head)
{
    List<Share> list(head);
    Together together(ctx, db, "share", rows);
    for (int i = 0; i < rows.count; i++) {
        Share *share = list.append(ctx);
        TRY_MEMORY(ctx);
        share->ShareId = rows.text(ctx, i, 0);
        share->key = share->ShareId;
        bool granted = false;
        if (!access || access->check(ctx, db, rows.int32(i, 0), user_id, &granted))
            return REPORT(ctx, 2, "Failed in access check.");
        if (granted) TRY(share_load(ctx, db, settings, rows, i, share));
    }
    TRY_MEMORY(ctx);
    return 0;
}

uint32_t require_user(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id)
{
    *id = kNoId;
    int32_t ads = 0;
    if (name && (!find_ads_mode(ctx, db, &ads) || !find_user_id(ctx, db, ads, name, id)))
        return REPORT(ctx, 8, "User (%s) is invalid.", name);
    return 0;
}

int32_t find_share_by_name(CallContext *ctx, sqlite3 *db, const char *name)
{
    if (qbobj_validate_sharename(name, nullptr) != 0) {
        LOG_FAILURE(ctx, "Share name '%s' is invalid.", name);
        return kBadShareName;
    }
    bool found = false;
    int32_t id = 0;
    const Failure bad = find_name(ctx, db, NameCheck::share_name, name, found, id);
    return !bad.logged(ctx, "Failed DB Query for 'SELECT share'. %s\n") && found ? id : kNoShare;
}

int32_t find_share_by_path(CallContext *ctx, sqlite3 *db, const char *path)
{
    bool found = false;
    int32_t id = 0;
    const Failure bad = find_name(ctx, db, NameCheck::share_of_path, path, found, id);
    if (!bad.logged(ctx, "Failed DB Query for 'SELECT share'. %s\n") && found) return id;
    TRACE(ctx, "Path '%s' is not in share.", path);
    return kNoShare;
}

/// What a user may do in a share. Without an answer of the database, nothing.
const char *access_word(CallContext *ctx, sqlite3 *db, int32_t share_id, int32_t user_id)
{
    bool granted = false;
    if (check_cifs_read(ctx, db, share_id, user_id, &granted).logged(ctx, "Failed in access check. %s\n") || !granted)
        return kDisabled;
    if (check_cifs_write(ctx, db, share_id, user_id, &granted).logged(ctx, "Failed in access check. %s\n") || !granted)
        return kReadOnly;
    return kReadWrite;
}

uint32_t answer_access(CallContext *ctx, sqlite3 *db, const char *user_name, const char *share_or_path,
                       int32_t (*find_share)(CallContext *, sqlite3 *, const char *), const char **access)
{
    int32_t ads = 0;
    int32_t user_id = kNoId;
    const bool known = find_ads_mode(ctx, db, &ads) && find_user_id(ctx, db, ads, user_name, &user_id);
    const int32_t share_id = find_share(ctx, db, share_or_path);
    const char *word = known && share_id >= 0 ? access_word(ctx, db, share_id, user_id) : kDisabled;
    TRY_MEMORY(ctx);
    *access = word;
    return 0;
}

}  // namespace

uint32_t x_qbobj_getAccessibleShareCollection(CallContext *ctx, sqlite3 *db, const char *userName,
                                              const char *protocolName, ShareCollection *shares)
{
    QB_ASSERT(shares);
    int32_t user_id = kNoId;
    TRY(require_user(ctx, db, userName, &user_id));
    if (check_protocol_name(protocolName) != 0) return REPORT(ctx, 8, "ProtocolName (%s) is invalid", protocolName);
    ShareSettings settings;
    TRY(read_share_settings(ctx, db, &settings));
    Rows rows;
    TRY(select(ctx, db, rows, "%s WHERE S.type='share' ORDER BY S.name COLLATE NOCASE", kShareQuery)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s"));
    const uint32_t rc =
        append_accessible(ctx, db, settings, rows, access_check_of(protocolName), user_id, &shares->Share);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, static_cast<int>(rc), rows.count);
    return rc;
}

uint32_t x_qbobj_getShareAccess(CallContext *ctx, sqlite3 *db, const char *shareName, const char *userName,
                                const char **access)
{
    QB_ASSERT(access);
    return answer_access(ctx, db, userName, shareName, find_share_by_name, access);
}

uint32_t x_qbobj_getPathAccess(CallContext *ctx, sqlite3 *db, const char *path, const char *userName,
                               const char **access)
{
    QB_ASSERT(access);
    return answer_access(ctx, db, userName, path, find_share_by_path, access);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
