// What the peers do for each measured operation: the same statements in the same order, the same records
// from the same pool. An Engine (engines.h) says how a statement is run.
#pragma once

#include <libxml/tree.h>

#include <cstring>

#include "data.h"
#include "engines.h"
#include "peer_shares.h"

namespace bench {

inline const xmlChar *xml(const char *text)
{
    return reinterpret_cast<const xmlChar *>(text);
}

template <class T>
T *append(apr_pool_t *pool, T ***tail)
{
    auto *element = static_cast<T *>(apr_pcalloc(pool, sizeof(T)));
    **tail = element;
    *tail = &element->next;
    return element;
}

inline constexpr char kAdsMode[] = "SELECT CASE WHEN S.security='ads' THEN 1 ELSE 0 END FROM service_cifs S LIMIT 1";
inline constexpr char kUserQuotas[] =
    "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM user_quota Q INNER JOIN share S ON S.id=Q.share_id LEFT JOIN "
    "_user_quota_stat QS ON QS.share_id=Q.share_id AND QS.user_id=Q.user_id WHERE Q.user_id=%d";
inline constexpr char kGroupQuotas[] =
    "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM group_quota Q INNER JOIN share S ON S.id=Q.share_id LEFT JOIN "
    "_group_quota_stat QS ON QS.share_id=Q.share_id AND QS.group_id=Q.group_id WHERE Q.group_id=%d";
inline constexpr char kHomeFolder[] =
    "SELECT H.snapshot_protection_enabled,H.quota,(SELECT S.used FROM `_hf_zfs_stat` S WHERE S.user_id=H.user_id),"
    "H.visible_snapdir,H.prev_versions FROM `$home_folder` H WHERE H.user_id=%d";
inline constexpr char kTimeMachinePath[] =
    "SELECT A.home_volume_id || '/.timemachine/' || U.uname FROM account_default A, '$user' U WHERE U.id=%d";
inline constexpr char kTimeMachine[] = "SELECT T.enabled,T.capacity_mb FROM '$timemachine_quota' T WHERE T.user_id=%d";

#define QB_LISTED_USERS                                                                                          \
    "FROM `$user` U WHERE (U.is_privileged=0 AND U.group_id<>98 AND U.rid IS NULL AND U.uname<>'nobody' AND "    \
    "U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM `$group` G WHERE G.gname='guest'),(SELECT id FROM " \
    "`$group` G WHERE G.gname='nogroup')))"
inline constexpr char kCountUsers[] = "SELECT COUNT(*) " QB_LISTED_USERS;
inline constexpr char kUsers[] =
    "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE G.id=U.group_id),U.home,U.email,U.passwd,CASE WHEN "
    "U.rid IS NULL THEN 0 ELSE 1 END,U.fullname,U.is_locked,U.group_id,U.shell_access " QB_LISTED_USERS
    " ORDER BY U.uname";
inline constexpr char kUsersPage[] =
    "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE G.id=U.group_id),U.home,U.email,U.passwd,CASE WHEN "
    "U.rid IS NULL THEN 0 ELSE 1 END,U.fullname,U.is_locked,U.group_id,U.shell_access " QB_LISTED_USERS
    " ORDER BY U.uname LIMIT %d,%d";
inline constexpr char kUser[] =
    "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE G.id=U.group_id),U.home,U.email,U.passwd,CASE WHEN "
    "U.rid IS NULL THEN 0 ELSE 1 END,U.is_locked,U.group_id,U.shell_access FROM `$user` U WHERE U.is_privileged<>1 "
    "AND U.uname<>'nobody' AND U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM `$group` G WHERE "
    "G.gname='guest'),(SELECT id FROM `$group` G WHERE G.gname='nogroup')) AND U.id=%d ORDER BY U.uname COLLATE "
    "NOCASE";

inline constexpr char kDisks[] =
    "SELECT D.id,D.present,D.model,D.serial,D.fw_version,D.rpm,D.sectors,D.capacity,H.temp,H.ata_errors,D.volume_id,"
    "P.slot_col||'x'||P.slot_row,D.hwif,D.pool_type,D.pool_state,D.pool_hostid,P.controller,"
    "IFNULL(H.zpool_state,'ONLINE'),D.controller,D.channel FROM `$disk_info` D INNER JOIN disk_port P ON "
    "P.controller=D.controller AND P.port=D.port INNER JOIN _disk_health H ON H.disk_id=D.id WHERE D.controller=%d "
    "ORDER BY 20 COLLATE NOCASE";
inline constexpr char kOneDisk[] =
    "SELECT D.id,D.present,D.model,D.serial,D.fw_version,D.rpm,D.sectors,D.capacity,H.temp,H.ata_errors,D.volume_id,"
    "P.slot_col||'x'||P.slot_row,D.hwif,P.controller,D.controller,D.channel,D.replaced_with_spare,"
    "D.is_signed_by_vxmr FROM `$disk_info` D INNER JOIN disk_port P ON P.controller=D.controller AND P.port=D.port "
    "LEFT JOIN _disk_health H ON H.disk_id=D.id WHERE D.id=%Q";

inline const char *pool_state(int32_t state, const char *volume, uint64_t host)
{
    static constexpr const char *kWords[] = {"ACTIVE",  "EXPORTED",      "DESTROYED", "SPARE",
                                             "L2CACHE", "UNINITIALIZED", "UNAVAIL",   "POTENTIALLY_ACTIVE"};
    if (host == 0 || !*volume) return "NEW";
    return state >= 0 && state < 8 ? kWords[state] : "UNKNOWN";
}
inline constexpr char kSnapshots[] =
    "SELECT S.id,SH.name,V.lv_name,S.name,S.type,S.created_on FROM `$snapshot` S INNER JOIN share SH ON "
    "SH.zfs_name=S.zfs_name INNER JOIN _volume V ON V.id=SH.volume_id WHERE S.created_on>=%d AND S.created_on<=%d AND "
    "S.type>0 AND S.type<4 ORDER BY S.created_on ASC LIMIT %d OFFSET %d";
inline constexpr char kShareSnapshots[] =
    "SELECT S.id,SH.name,V.lv_name,S.name,S.type,S.created_on FROM `$snapshot` S INNER JOIN share SH ON "
    "SH.zfs_name=S.zfs_name INNER JOIN _volume V ON V.id=SH.volume_id WHERE S.created_on>=%d AND S.created_on<=%d AND "
    "S.type>0 AND S.type<4 AND SH.name=%Q ORDER BY S.created_on ASC LIMIT %d OFFSET %d";
inline constexpr char kDiskHealth[] =
    "SELECT D.disk_id,D.ata_errors,D.realloc_sect,D.realloc_event,D.spin_retry_cnt,D.ioedc,D.cmd_timeouts,"
    "D.pending_sect,D.uncorrectable_err,D.temp,D.start_stop_cnt,D.power_on_hrs,D.power_cycle_cnt,D.load_cycle_cnt,"
    "IFNULL(D.zpool_state,'UNKNOWN'),D.zpool_read_error_cnt,D.zpool_write_error_cnt, D.zpool_cksum_error_cnt,"
    "DI.controller,DI.channel FROM _disk_health D INNER JOIN `$disk_info` DI ON DI.id=D.disk_id";
inline constexpr char kSensorsOf[] =
    "SELECT E.name,E.devid,E.value,E.value_prev1,E.value_prev2,E.value_prev3,IFNULL(S.min,0),IFNULL(S.max,0),S.label "
    "FROM enclosure_health_spec S LEFT JOIN _enclosure_health E ON E.controller=S.controller AND E.name=S.name AND "
    "E.devid=S.devid WHERE S.controller=%d ORDER BY E.name,S.Label";

template <class Engine>
struct Peer {
    Engine engine;
    const Data *data;

    explicit Peer(const Data &d) : engine(d), data(&d) {}

    apr_pool_t *pool() { return engine.pool = data->qbdb->request_pool; }

    void quotas(const char *sql, int32_t id, Quota **head)
    {
        Quota **tail = head;
        engine.each(
            sql,
            [&](const auto &row) {
                Quota *quota = append(engine.pool, &tail);
                quota->AccountId = id;
                quota->ShareId = row.word(0);
                quota->HardMB = row.uint64(1);
                quota->UsedMB = row.uint64(2);
            },
            id);
    }

    /// Quotas, home-folder settings and Time Machine allowance of one user.
    void side_records(User *user)
    {
        const int32_t id = user->UserId;
        quotas(kUserQuotas, id, &user->UserQuota);
        engine.each(
            kHomeFolder,
            [&](const auto &row) {
                auto *home =
                    static_cast<UserHomeFolderSettings *>(apr_pcalloc(engine.pool, sizeof(UserHomeFolderSettings)));
                home->UserId = id;
                home->SnapshotProtectionEnabled = row.int32(0);
                home->SizeLimit = row.uint64(1);
                home->SizeUsed = row.uint64(2);
                home->VisibleSnapFolder = row.word(3);
                home->VisibleSnapshot = row.has(3);
                home->PrevVersions = row.int32(4);
                user->HomeFolderSettings = home;
            },
            id);
        const char *path = nullptr;
        engine.each(
            kTimeMachinePath, [&](const auto &row) { path = row.text(0); }, id);
        engine.each(
            kTimeMachine,
            [&](const auto &row) {
                auto *quota =
                    static_cast<UserTimeMachineQuota *>(apr_pcalloc(engine.pool, sizeof(UserTimeMachineQuota)));
                quota->UserId = id;
                quota->Enabled = row.int32(0);
                quota->CapacityMB = row.int32(1);
                quota->UsedMB = path ? get_tm_used_mb(path) : 0;
                user->TimeMachineQuota = quota;
            },
            id);
    }

    template <class Row>
    void fill_user(User *user, const Row &row)
    {
        user->resource_id = user->UserId = row.int32(0);
        user->UserName = row.word(1);
        user->GroupName = row.word(2);
        user->HomeDirectory = row.word(3);
        user->Email = row.word(4);
        user->Password = row.has(5) ? masked_password : "";
        user->IsDomainMember = row.int32(6);
    }

    template <class... Page>
    void user_list(const char *sql, Page... page)
    {
        pool();
        engine.begin_reading();
        UserCollection users{};
        engine.each(kAdsMode, [](const auto &) {});
        engine.each(kCountUsers, [&](const auto &row) { users.TotalEntries = row.int32(0); });
        engine.each(kCountUsers, [&](const auto &row) { users.Entries = row.int32(0); });
        User **tail = &users.User;
        engine.each(
            sql,
            [&](const auto &row) {
                User *user = append(engine.pool, &tail);
                fill_user(user, row);
                user->FullName = row.word(7);
                user->IsLocked = row.int32(8);
                user->ShellAccess = row.int32(10);
                side_records(user);
            },
            page...);
        engine.commit();
    }

    void all_users() { user_list(kUsers); }
    void page_of_users(int offset) { user_list(kUsersPage, offset, 50); }

    void one_user(int32_t id)
    {
        pool();
        engine.begin_reading();
        User user{};
        engine.each(kAdsMode, [](const auto &) {});
        engine.each("SELECT S.no_sync_ads FROM service_cifs S LIMIT 1", [](const auto &) {});
        engine.each(
            kUser,
            [&](const auto &row) {
                fill_user(&user, row);
                user.IsLocked = row.int32(7);
                user.ShellAccess = row.int32(9);
            },
            id);
        side_records(&user);
        engine.commit();
    }

    void user_name(int32_t id)
    {
        pool();
        engine.begin_reading();
        const char *name = nullptr;
        engine.each(
            "SELECT U.uname FROM `$user` U WHERE U.id=%d", [&](const auto &row) { name = row.text(0); }, id);
        engine.commit();
    }

    void all_groups()
    {
        pool();
        engine.begin_reading();
        GroupCollection groups{};
        static constexpr char kCount[] =
            "SELECT COUNT(*) FROM `$group` G WHERE G.is_privileged=0 AND G.rid IS NULL AND G.gname<>'nogroup' AND "
            "G.gname<>'guest'";
        engine.each(kAdsMode, [](const auto &) {});
        engine.each(kCount, [&](const auto &row) { groups.TotalEntries = row.int32(0); });
        engine.each(kCount, [&](const auto &row) { groups.Entries = row.int32(0); });
        Group **tail = &groups.Group;
        engine.each(
            "SELECT G.id,G.gname,CASE WHEN G.rid IS NULL THEN 0 ELSE 1 END FROM `$group` G WHERE G.is_privileged=0 AND "
            "G.rid IS NULL AND G.gname<>'nogroup' AND G.gname<>'guest' ORDER BY G.gname",
            [&](const auto &row) {
                Group *group = append(engine.pool, &tail);
                group->resource_id = group->GroupId = row.int32(0);
                group->GroupName = row.word(1);
                group->IsDomainMember = row.int32(2);
                quotas(kGroupQuotas, group->GroupId, &group->GroupQuota);
                User **members = &group->SecondaryMember;
                engine.each(
                    "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE "
                    "G.id=U.group_id),U.home,U.email,U.passwd,"
                    "CASE WHEN U.rid IS NULL THEN 0 ELSE 1 END FROM `$group_has_user` GU INNER JOIN `$user` U ON "
                    "U.id=GU.user_id WHERE GU.group_id=%d ORDER BY U.uname COLLATE NOCASE",
                    [&](const auto &member_row) {
                        User *member = append(engine.pool, &members);
                        fill_user(member, member_row);
                        quotas(kUserQuotas, member->UserId, &member->UserQuota);
                    },
                    group->GroupId);
            });
        engine.commit();
    }

    void add_users(const User *chain)
    {
        pool();
        engine.begin();
        engine.each(kAdsMode, [](const auto &) {});
        for (const User *user = chain; user; user = user->next) add_user(user);
        engine.commit();
    }

    void add_user(const User *user)
    {
        const auto nothing = [](const auto &) {};
        int32_t group = 99;
        engine.each(
            "SELECT id FROM `$group` WHERE gname=%Q AND rid IS NULL", [&](const auto &row) { group = row.int32(0); },
            user->GroupName);
        const char *home = nullptr;
        engine.each(
            "SELECT '/home/'||%Q", [&](const auto &row) { home = row.text(0); }, user->UserName);
        engine.each("SELECT COUNT(*) FROM `$user` WHERE uname=%Q", nothing, user->UserName);
        int32_t id = 0;
        engine.each("SELECT next_uid FROM account_default", [&](const auto &row) { id = row.int32(0); });
        bool taken = false;
        engine.each(
            "SELECT id FROM `$user` WHERE id >= %d ORDER BY id",
            [&](const auto &row) { taken = taken || row.int32(0) == id; }, id);
        if (taken) give_up(engine.db, "the id is taken");
        engine.run("UPDATE account_default SET next_uid=%d", id + 1);
        engine.run(
            "INSERT INTO `$user` (id,uname,passwd,email,home,group_id,shell,is_privileged,last_changed,is_locked,"
            "shell_access) VALUES(%d,%Q,%Q,%Q,%Q,%d,%Q,0,STRFTIME('%%s',DATETIME('NOW'))/60/60/24,%d,%d)",
            id, user->UserName, user->SysHash, user->Email, home, group, "/bin/false", user->IsLocked,
            user->ShellAccess);
        engine.run(
            "INSERT INTO `$home_folder` (user_id,snapshot_protection_enabled,quota,visible_snapdir,prev_versions) "
            "VALUES "
            "(%d,(SELECT snapshot_protection FROM account_default LIMIT 1),(SELECT home_folder_capacity_limit FROM "
            "account_default LIMIT 1),%Q,0)",
            id, "");
        engine.each(
            "SELECT home FROM `$user` WHERE id=%d", [&](const auto &row) { row.text(0); }, id);
        engine.each("SELECT unix_uname FROM 'smb_username_map' WHERE smb_uname=%Q limit 1", nothing, user->UserName);
        engine.each("SELECT private_time_machine FROM account_default LIMIT 1", nothing);
    }

    void add_user_list(const User *chain)
    {
        pool();
        engine.begin();
        for (const User *user = chain; user; user = user->next) {
            int32_t group = 99;
            int32_t id = 0;
            engine.each(
                "SELECT id FROM `$group` WHERE gname=%Q AND rid IS NULL",
                [&](const auto &row) { group = row.int32(0); }, user->GroupName);
            engine.each(
                "SELECT IFNULL(MAX(U.id)+1,100) FROM `$user` U WHERE U.is_privileged=0 AND U.rid IS NULL AND "
                "U.id<32767",
                [&](const auto &row) { id = row.int32(0); });
            engine.run(
                "INSERT INTO `$user` (id,uname,passwd,email,home,group_id,shell,is_privileged,last_changed) "
                "VALUES(%d,%Q,%Q,%Q,%Q,%d,'/bin/false',0,STRFTIME('%%s',DATETIME('NOW'))/60/24/24)",
                id, user->UserName, user->Password, user->Email, "/home", group);
            engine.each(
                "SELECT home FROM `$user` WHERE id=%d", [&](const auto &row) { row.text(0); }, id);
        }
        engine.commit();
    }

    void modify_user(const User *user)
    {
        const auto nothing = [](const auto &) {};
        const int32_t id = user->UserId;
        pool();
        engine.begin();
        engine.each(kAdsMode, nothing);
        engine.each("SELECT S.no_sync_ads FROM service_cifs S LIMIT 1", nothing);
        engine.each("SELECT id FROM `$user` WHERE id=%d", nothing, id);
        engine.each("SELECT U.home,U.uname,U.is_privileged FROM `$user` U WHERE U.id=%d", nothing, id);
        engine.each("SELECT G.gname FROM `$user` U INNER JOIN `$group` G ON G.id=U.group_id WHERE U.id=%d", nothing,
                    id);
        engine.each("SELECT id FROM `$user` WHERE uname=%Q AND rid IS NULL", nothing, user->UserName);
        engine.each("SELECT U.uname FROM `$user` U WHERE U.id=%d AND U.uname<>%Q", nothing, id, user->UserName);
        engine.each("SELECT U.home FROM `$user` U WHERE U.id=%d AND U.uname<>%Q", nothing, id, user->UserName);
        const char *home = nullptr;
        engine.each(
            "SELECT '/home/'||%Q", [&](const auto &row) { home = row.text(0); }, user->UserName);
        engine.each("SELECT id FROM `$group` WHERE gname=%Q AND rid IS NULL", nothing, user->GroupName);
        engine.each("SELECT COUNT(*) FROM ssh_public_key WHERE user_id=%d AND serve_for='rsync'", nothing, id);
        engine.run(
            "UPDATE `$user` SET uname=%Q,home=%Q,email=%Q,group_id=%d,is_locked=%d,shell=%Q,shell_access=%d WHERE "
            "id=%d",
            user->UserName, home, user->Email, 99, user->IsLocked, "/bin/false", user->ShellAccess, id);
        engine.each("SELECT unix_uname FROM 'smb_username_map' WHERE smb_uname=%Q limit 1", nothing, user->UserName);
        engine.commit();
    }

    void all_shares()
    {
        pool();
        ShareReader<Engine>{engine, data->qbdb}.list();
    }

    void log_page(int limit, int offset)
    {
        pool();
        engine.begin_reading();
        LogEntry *entries = nullptr;
        LogEntry **tail = &entries;
        const auto nothing = [](const auto &) {};
        engine.each("SELECT COUNT(*) FROM `$log` L ", nothing);
        engine.each("SELECT COUNT(*) FROM `$log` L", nothing);
        engine.each(
            "SELECT L.id,L.tstamp,L.severity,L.category,L.msg_tag,L.msg_args_xml FROM `$log` L ORDER BY L.id DESC "
            "LIMIT "
            "%d,%d",
            [&](const auto &row) {
                LogEntry *entry = append(engine.pool, &tail);
                entry->LogId = row.int32(0);
                entry->TimeStamp = row.int32(1);
                entry->Severity = row.text(2);
                entry->Category = row.text(3);
                entry->MessageTag = row.text(4);
                entry->MessageArgsXml = row.text(5);
            },
            offset, limit);
        engine.commit();
    }

    /// The tree is made and freed with libxml2, as a caller would.
    void dictionary()
    {
        pool();
        engine.begin_reading();
        xmlNode *root = xmlNewNode(nullptr, xml("Dictionary"));
        xmlNode *german = nullptr;
        engine.each("SELECT lang,spell FROM _lang_supported ORDER BY id", [&](const auto &row) {
            xmlNode *language = xmlAddChild(root, xmlNewNode(nullptr, xml("Language")));
            xmlNewProp(language, xml("code"), xml(row.text(0)));
            xmlNewProp(language, xml("spell"), xml(row.text(1)));
            if (strcmp(row.text(0), "de-de") == 0) german = language;
        });
        engine.each(
            "SELECT CASE WHEN val='auto' THEN IFNULL(%Q,'en-us') ELSE val END FROM service_misc WHERE "
            "key='GLASSDECKLOCALE'",
            [](const auto &) {}, "de-de");
        engine.each(
            "SELECT EN.id,IFNULL(D.str,EN.str) FROM (SELECT id,str FROM _dictionary WHERE lang_id=(SELECT id FROM "
            "_lang_supported WHERE lang='en-us')) AS EN LEFT JOIN _dictionary D ON D.id=EN.id AND D.lang_id=(SELECT id "
            "FROM _lang_supported WHERE lang=%Q)",
            [&](const auto &row) {
                xmlNode *item = xmlAddChild(german, xmlNewNode(nullptr, xml("item")));
                xmlNewProp(item, xml("key"), xml(row.text(0)));
                const char *text = row.text(1);
                xmlAddChild(item, xmlNewCDataBlock(nullptr, xml(text), static_cast<int>(strlen(text))));
            },
            "de-de");
        engine.commit();
        xmlFreeNode(root);
    }

    void add_log()
    {
        pool();
        engine.begin();
        engine.run("INSERT INTO `$log`(tstamp,severity,category,msg_tag,msg_args_xml)VALUES(%d,%Q,%Q,%Q,%Q)",
                   1700000000, "info", "account", "LOGMSG_LOGIN", "<user>anna</user>");
        engine.commit();
    }

    template <class Row>
    void fill_disk(Disk *disk, const Row &row)
    {
        disk->DiskId = disk->DevName = row.word(0);
        disk->Present = row.int32(1);
        disk->Model = row.word(2);
        disk->Serial = row.word(3);
        disk->FirmwareVersion = row.word(4);
        disk->RPM = row.int32(5);
        disk->Sectors = row.uint64(6);
        disk->Capacity = row.uint64(7);
        disk->Temperature = row.int32(8);
        disk->ATAError = row.int32(9);
        disk->Pool = row.word(10);
        disk->SlotName = row.word(11);
        disk->HardwareInterface = row.word(12);
    }

    void disks_of(DiskCollection *enclosure, int32_t controller)
    {
        Disk **tail = &enclosure->Disk;
        engine.each(
            kDisks,
            [&](const auto &row) {
                Disk *disk = append(engine.pool, &tail);
                fill_disk(disk, row);
                disk->resource_id = static_cast<int32_t>(strtol(disk->DiskId, nullptr, 10));
                disk->PoolType = row.word(13);
                disk->PoolHostId = row.uint64(15);
                disk->PoolState = pool_state(row.int32(14), disk->Pool, disk->PoolHostId);
                disk->DiskEnclosureId = row.int32(16);
                disk->DiskState = row.word(17);
                disk->Controller = row.int32(18);
                disk->Channel = row.int32(19);
            },
            controller);
        engine.each(
            "SELECT E.controller,E.nr_column,E.nr_row,E.disk_horizontal,E.name,J.label,E.ses_device,E.dead_slots FROM "
            "_disk_enclosure E INNER JOIN jbod_port J ON J.controller=E.controller WHERE E.controller=%d",
            [&](const auto &row) {
                enclosure->DiskEnclosureId = row.int32(0);
                enclosure->EnclosureCols = row.int32(1);
                enclosure->EnclosureRows = row.int32(2);
                enclosure->IsSlotHorizontal = row.int32(3);
                enclosure->EnclosureName = row.word(4);
                enclosure->DiskEnclosurePort = row.word(5);
                enclosure->SESDevice = row.word(6);
                enclosure->DeadSlots = row.text(7);
            },
            controller);
    }

    void all_enclosures()
    {
        pool();
        engine.begin_reading();
        DiskEnclosureCollection enclosures{};
        DiskCollection **tail = &enclosures.DiskCollection;
        engine.each("SELECT E.controller,E.name,E.nr_row,E.nr_column,E.disk_horizontal FROM _disk_enclosure E",
                    [&](const auto &row) {
                        DiskCollection *enclosure = append(engine.pool, &tail);
                        const int32_t controller = row.int32(0);
                        enclosure->key = apr_psprintf(engine.pool, "controller-%d", controller);
                        disks_of(enclosure, controller);
                    });
        engine.commit();
    }

    void one_disk(const char *name)
    {
        pool();
        engine.begin_reading();
        Disk disk{};
        engine.each(
            kOneDisk,
            [&](const auto &row) {
                fill_disk(&disk, row);
                disk.DiskEnclosureId = row.int32(13);
                disk.Controller = row.int32(14);
                disk.Channel = row.int32(15);
                disk.ReplacedWithSpare = row.int32(16);
                disk.IsSignedByVexmoor = row.int32(17);
            },
            name);
        engine.commit();
    }

    // ---- snapshots

    template <class... Filter>
    void snapshots(const char *sql, Filter... filter)
    {
        pool();
        engine.begin_reading();
        SnapshotCollection all{};
        Snapshot **tail = &all.Snapshot;
        engine.each(
            sql,
            [&](const auto &row) {
                Snapshot *snapshot = append(engine.pool, &tail);
                snapshot->resource_id = row.int32(0);
                snapshot->ShareName = row.word(1);
                snapshot->VolumeName = row.word(2);
                snapshot->SnapshotName = row.word(3);
                snapshot->Type = row.int32(4);
                snapshot->CreatedOn = row.int32(5);
                char folder[4096];
                snprintf(folder, sizeof folder, "/%s/%s", snapshot->VolumeName, snapshot->ShareName);
                const char *path = nullptr;
                snapshot_get_path(folder, snapshot->SnapshotName, &path);
                snapshot->Path = path ? apr_pstrdup(engine.pool, path) : "";
            },
            filter...);
        engine.commit();
    }

    void all_snapshots(int limit, int offset) { snapshots(kSnapshots, 0, INT32_MAX, limit, offset); }
    void snapshots_of(const char *share) { snapshots(kShareSnapshots, 0, INT32_MAX, share, INT32_MAX, 0); }

    void add_snapshots(Snapshot *chain)
    {
        pool();
        engine.begin();
        for (Snapshot *snapshot = chain; snapshot; snapshot = snapshot->next) {
            int32_t share = 0;
            const char *volume = nullptr;
            engine.each(
                "SELECT id FROM share WHERE name=%Q", [&](const auto &row) { share = row.int32(0); },
                snapshot->ShareName);
            engine.each(
                "SELECT id FROM _volume WHERE lv_name=%Q", [&](const auto &row) { volume = row.text(0); },
                snapshot->VolumeName);
            engine.each(
                "SELECT 1 FROM share WHERE id=%d AND volume_id=%Q", [](const auto &) {}, share, volume);
            engine.run(
                "INSERT INTO `$snapshot`(zfs_name,name,type,created_on)VALUES((SELECT S.zfs_name FROM share S WHERE "
                "S.id=%d),%Q,%d,%d)",
                share, snapshot->SnapshotName, snapshot->Type, snapshot->CreatedOn);
            snapshot->resource_id = static_cast<int32_t>(sqlite3_last_insert_rowid(engine.db));
        }
        engine.commit();
    }

    // ---- health

    void disk_health()
    {
        pool();
        engine.begin_reading();
        DiskHealthCollection all{};
        DiskHealth **tail = &all.Health;
        engine.each(kDiskHealth, [&](const auto &row) {
            DiskHealth *disk = append(engine.pool, &tail);
            disk->DiskId = row.word(0);
            int column = 1;
            for (int32_t *number :
                 {&disk->ATAErrors, &disk->ReallocSect, &disk->ReallocEvent, &disk->SpinRetryCnt, &disk->IOEdc,
                  &disk->CmdTimeouts, &disk->PendingSect, &disk->UncorrectableErr, &disk->Temp, &disk->StartStopCnt,
                  &disk->PowerOnHrs, &disk->PowerCycleCnt, &disk->LoadCycleCnt})
                *number = row.int32(column++);
            disk->ZpoolState = row.word(14);
            disk->ZpoolReadErrorCnt = row.int32(15);
            disk->ZpoolWriteErrorCnt = row.int32(16);
            disk->ZpoolCksumErrorCnt = row.int32(17);
            disk->Controller = row.int32(18);
            disk->Channel = row.int32(19);
            disk->key = apr_psprintf(engine.pool, "controller-%d", disk->Controller);
        });
        engine.commit();
    }

    void sensors(EnclosureHealth *enclosure)
    {
        EnclosureHealthItem **tail = &enclosure->Health;
        engine.each(
            kSensorsOf,
            [&](const auto &row) {
                EnclosureHealthItem *item = append(engine.pool, &tail);
                item->Name = row.word(0);
                item->DevId = row.word(1);
                item->Value = row.int32(2);
                item->ValuePrev1 = row.int32(3);
                item->ValuePrev2 = row.int32(4);
                item->ValuePrev3 = row.int32(5);
                item->Min = row.int32(6);
                item->Max = row.int32(7);
                item->Label = row.word(8);
            },
            enclosure->Controller);
    }

    void enclosure_health()
    {
        pool();
        engine.begin_reading();
        EnclosureHealthCollection all{};
        EnclosureHealth **tail = &all.Health;
        engine.each(
            "SELECT DE.controller,DE.nr_cpu,DE.nr_fan,DE.nr_psu,DE.nr_volt,JP.label FROM _disk_enclosure DE INNER JOIN "
            "jbod_port JP ON JP.controller=DE.controller",
            [&](const auto &row) {
                EnclosureHealth *enclosure = append(engine.pool, &tail);
                enclosure->Controller = row.int32(0);
                enclosure->NrCpu = row.int32(1);
                enclosure->NrFan = row.int32(2);
                enclosure->NrPsu = row.int32(3);
                enclosure->NrVolt = row.int32(4);
                enclosure->PortLabel = row.word(5);
                enclosure->key = apr_psprintf(engine.pool, "controller-%d", enclosure->Controller);
            });
        for (EnclosureHealth *enclosure = all.Health; enclosure; enclosure = enclosure->next) sensors(enclosure);
        engine.commit();
    }
};

}  // namespace bench
// SPDX-License-Identifier: Apache-2.0
