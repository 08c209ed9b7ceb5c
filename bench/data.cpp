#include "data.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace bench {
namespace {

void run_on(sqlite3 *db, const std::string &sql)
{
    char *why = nullptr;
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &why) == SQLITE_OK) return;
    fprintf(stderr, "%s: %s\n", sql.c_str(), why);
    exit(1);
}

/// A generator of the numbers 0 to n-1 to select from.
std::string numbers(int n)
{
    return "(WITH RECURSIVE c(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM c WHERE i+1<" + std::to_string(n) +
           ") SELECT i FROM c WHERE " + std::to_string(n) + ">0)";
}

void fill_snapshots(sqlite3 *db, const Amount &amount)
{
    const std::string shares = std::to_string(amount.datasets);
    run_on(db,
           "INSERT INTO share (id,name,zfs_name,type,path,volume_id) SELECT 10+i,printf('share%04d',i),"
           "printf('tank/share%04d',i),'share',printf('/tank/share%04d',i),'tank' FROM " +
               numbers(amount.datasets));
    run_on(db, "INSERT INTO `$snapshot` (zfs_name,name,type,created_on) SELECT printf('tank/share%04d',i%" + shares +
                   "),printf('daily-%d',1700000000+i),1+i%3,1700000000+i FROM " + numbers(amount.snapshots));
}

void fill_enclosures(sqlite3 *db, const Amount &amount)
{
    const std::string enclosures = numbers(amount.enclosures);
    const std::string bays = enclosures + " e," + numbers(amount.bays) + " b";
    run_on(db,
           "INSERT INTO _disk_enclosure (controller,name,nr_row,nr_column,disk_horizontal,ses_device) SELECT "
           "i,printf('Shelf %d',i),8,4,1,printf('/dev/sg%d',i) FROM " +
               enclosures);
    run_on(db, "INSERT INTO jbod_port SELECT i,printf('Port %d',i) FROM " + enclosures);
    run_on(db, "INSERT INTO disk_port SELECT e.i,b.i,b.i%4+1,b.i/4+1 FROM " + bays);
    run_on(db,
           "INSERT INTO `$disk_info` SELECT printf('sd%d-%d',e.i,b.i),1,'SEAGATE ST8000NM0055',"
           "printf('ZA1%04d%04d',e.i,b.i),'SN05',7200,15628053168,8001563222016,e.i,b.i,'sas','tank','data','0',"
           "9173294387523,b.i,0,1 FROM " +
               bays);
    run_on(db,
           "INSERT INTO _disk_health (disk_id,temp,ata_errors,zpool_state) SELECT printf('sd%d-%d',e.i,b.i),34,0,"
           "'ONLINE' FROM " +
               bays);
    run_on(db,
           "INSERT INTO enclosure_health_spec (controller,name,devid,min,max,label) SELECT c.i,'fan',n.i,1000,9000,"
           "printf('Fan %d',n.i) FROM " +
               enclosures + " c," + numbers(kSensors) + " n");
    run_on(db,
           "INSERT INTO _enclosure_health (controller,name,devid,value,value_prev1,value_prev2,value_prev3) SELECT "
           "controller,name,devid,5000,5001,5002,5003 FROM enclosure_health_spec");
}

/// Shares with everything. Their folders are one: the directory of the database.
void fill_shares(sqlite3 *db, const std::string &folder, int count)
{
    const std::string from = " FROM " + numbers(count);
    const auto each = [&](const std::string &table, const std::string &values) {
        run_on(db, "INSERT INTO " + table + " SELECT " + values + from);
    };
    run_on(db, "UPDATE share SET type='subvolume'");
    // The owner of the folders is an account of the appliance, so that nobody asks the name service for it.
    run_on(db, "INSERT OR IGNORE INTO `$user` (id,uname) VALUES(" + std::to_string(getuid()) + ",'keeper')");
    run_on(db, "INSERT OR IGNORE INTO `$group` (id,gname) VALUES(" + std::to_string(getgid()) + ",'keeper')");
    each(
        "share (id,name,zfs_name,type,comment,path,volume_id,user_id,group_id,user_access,group_access,"
        "everyone_access,non_owner_delete)",
        "10+i,printf('share%05d',i),printf('tank/share%05d',i),'share','files','" + folder +
            "','tank',65533,65533,7,7,7,1");
    each("zfs_attr", "10+i,1000,0,500,0,1,0,0,'latency','standard',NULL");
    each("_zfs_stat", "10+i,1073741824,104857600,0,104857600,0,0,104857600,'1.25x'");
    each("cifs_share_option", "10+i,'writeable',1,0,6,6,1,7,7,1023,1,25000,0,0,1,0");
    each("afp_share_option", "10+i,1,'writeable',1,54,63");
    each("nfs_share_option", "10+i,1,'readonly',1");
    each("ftp_share_option", "10+i,1,'writeable',1,0,0");
    each("http_share_option", "10+i,1,'readonly',0");
    each("rsync_share_option", "10+i,1,'readonly','enabled'");
    each("rsync_user_password_acl", "10+i,'backup','secret'");
    each("dlna_share_option", "10+i,1,'readonly',0");
    each("daap_share_option", "10+i,1");
    each("zvol_share_option", "10+i,4096,1");
    each("snapshot_schedule", "10+i,1,'0','*','*','*','*',0,0,0,0");
    each("snapshot_management", "10+i,0,1,2592000,30,'01',0,0");
    run_on(db, "INSERT OR IGNORE INTO host (id,name) VALUES(1,'192.168.1.0/24')");
    each("host_acl", "10+i,1,'nfs',1,1,0");
    for (const char *proto : {"'cifs'", "'http'"}) {
        for (int user = 0; user < 5; user++)
            each("user_acl", "10+i," + std::to_string(kFirstUser + user) + "," + proto + ",1,0");
        for (int group = 0; group < 3; group++)
            each("group_acl", "10+i," + std::to_string(kFirstUser + group) + "," + proto + ",1,0");
    }
    for (int snapshot = 0; snapshot < 3; snapshot++)
        each("`$snapshot` (zfs_name,name,type,created_on)",
             "printf('tank/share%05d',i),'s',1+" + std::to_string(snapshot % 2) + ",1700000000+i");
}

void fill(sqlite3 *db, const std::string &folder, const Amount &amount)
{
    const std::string id = std::to_string(kFirstUser) + "+i";
    const std::string users = numbers(amount.users);
    run_on(db, "BEGIN");
    run_on(
        db,
        "INSERT INTO share (id,name,zfs_name,type,path,volume_id) VALUES(1,'media','tank/media','share','/tank/media',"
        "'tank')");
    run_on(db,
           "INSERT INTO `$user` (id,uname,passwd,email,home,group_id,shell,is_privileged,last_changed,is_locked,"
           "shell_access,fullname) SELECT " +
               id +
               ",printf('user%05d',i),'$1$abcdefgh$0123456789abcdefghijk.',"
               "printf('user%05d@example.com',i),printf('/home/user%05d',i),99,'/bin/false',0,20000,0,0,"
               "printf('User Number %d',i) FROM " +
               users);
    run_on(db, "INSERT INTO user_quota (user_id,share_id,mb_soft,mb_hard) SELECT " + id + ",1,800,1000 FROM " + users);
    run_on(db, "INSERT INTO _user_quota_stat (user_id,share_id,mb_used) SELECT " + id + ",1,i FROM " + users);
    run_on(
        db,
        "INSERT INTO `$home_folder` (user_id,snapshot_protection_enabled,quota,visible_snapdir,prev_versions) SELECT " +
            id + ",1,5000,'snapshots',0 FROM " + users);
    run_on(db, "INSERT INTO `$timemachine_quota` (user_id,enabled,capacity_mb) SELECT " + id + ",1,2000 FROM " + users +
                   " WHERE i%10=0");
    run_on(db, "INSERT INTO `$group` (id,gname,is_privileged) SELECT " + id + ",printf('group%04d',i),0 FROM " +
                   numbers(amount.groups));
    if (amount.members > 0)
        run_on(db, "INSERT INTO `$group_has_user` (user_id,group_id) SELECT " + std::to_string(kFirstUser) + "+(g.i*" +
                       std::to_string(amount.members) + "+m.i)%" + std::to_string(amount.users) + "," +
                       std::to_string(kFirstUser) + "+g.i FROM " + numbers(amount.groups) + " g," +
                       numbers(amount.members) + " m");
    run_on(db,
           "INSERT INTO `$log` (tstamp,severity,category,msg_tag,msg_args_xml) SELECT 1700000000+i,'info','account',"
           "'LOGMSG_LOGIN','<user>anna</user>' FROM " +
               numbers(amount.entries));
    run_on(db,
           "INSERT INTO _dictionary (id,lang_id,str) SELECT printf('key%05d',t.i),l.i+1,'a text of some length '||t.i "
           "FROM " +
               numbers(amount.texts) + " t," + numbers(2) + " l");
    fill_enclosures(db, amount);
    fill_snapshots(db, amount);
    if (amount.shares > 0) fill_shares(db, folder, amount.shares);
    run_on(db, "UPDATE account_default SET next_uid=" + std::to_string(kFirstUser + amount.users));
    run_on(db, "COMMIT");
    run_on(db, "PRAGMA wal_checkpoint(TRUNCATE)");
}

void open_filled(const std::string &path, const Amount &amount, qbdb_t **qbdb, sqlite3 **db)
{
    char why[256] = "";
    if (qbdb_open(path.c_str(), QBDB_OPEN_CREATE, "tank", qbdb, db, why, sizeof why) != 0) {
        fprintf(stderr, "%s\n", why);
        exit(1);
    }
    fill(*db, path.substr(0, path.rfind('/')), amount);
}

}  // namespace

Data::Data(const Amount &amount)
{
    directory = (std::filesystem::temp_directory_path() / "qbobj-bench-XXXXXX").string();
    if (!mkdtemp(directory.data())) exit(1);
    path = directory + "/appliance.db";
    open_filled(path, amount, &qbdb, &db);
}

Data::~Data()
{
    qbdb_close(qbdb);
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
}

void Data::run(const char *sql) const
{
    run_on(db, sql);
}

void Data::check(uint32_t rc) const
{
    if (rc == 0) return;
    fprintf(stderr, "a measured call failed: %u %s\n", rc, err.message ? err.message : "");
    exit(1);
}

void write_database(const std::string &path, const Amount &amount)
{
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    open_filled(path, amount, &qbdb, &db);
    qbdb_close(qbdb);
}

}  // namespace bench
// SPDX-License-Identifier: Apache-2.0
