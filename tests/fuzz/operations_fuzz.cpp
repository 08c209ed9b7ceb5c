// Runs for 120 seconds in the test command.
//
// Calls of any operations with any arguments on a populated database. The tables of operations and fields
// say what there is to call and what its records look like, so that a new operation is called without a word
// here. Pointers that an operation requires are given, as its contract asks for; everything else is up to
// the input: how long a chain is, what a text holds, which sub-record is missing.
#include <fcntl.h>
#include <libxml/tree.h>
#include <sanitizer/lsan_interface.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "qbdb.h"
#include "qbobj.h"

namespace {

const char *current = "before the first call";
std::string scratch;  // the directory of the database

void remove_scratch()
{
    for (const char *each : {"/fuzz.db", "/fuzz.db-wal", "/fuzz.db-shm"}) unlink((scratch + each).c_str());
    rmdir(scratch.c_str());
}

[[noreturn]] void fail(const std::string &what)
{
    std::fprintf(stderr, "%s: %s\n", current, what.c_str());
    remove_scratch();
    std::abort();
}

void require(bool holds, const char *what)
{
    if (!holds) fail(what);
}

// ---- the input

/// Takes the input apart; zeros when it is used up.
struct Input {
    const uint8_t *at;
    const uint8_t *end;

    bool empty() const { return at == end; }
    uint8_t byte() { return empty() ? 0 : *at++; }
    uint32_t below(uint32_t bound) { return byte() % bound; }
    uint64_t number(int bytes)
    {
        uint64_t all = 0;
        for (int i = 0; i < bytes; i++) all = all << 8 | byte();
        return all;
    }
};

/// Memory of one input's arguments. Each piece is an allocation of its own, so that reading past its end shows.
struct Arena {
    std::vector<void *> pieces;
    Arena() = default;
    Arena(const Arena &) = delete;
    Arena &operator=(const Arena &) = delete;
    ~Arena()
    {
        for (void *piece : pieces) std::free(piece);
    }
    void *zeroed(size_t size)
    {
        pieces.push_back(std::calloc(1, size));
        return pieces.back();
    }
    const char *copy(const std::string &text)
    {
        auto *piece = static_cast<char *>(zeroed(text.size() + 1));
        std::memcpy(piece, text.data(), text.size());
        return piece;
    }
};

// What the database knows, what the operations look for, and what has broken text handling before.
constexpr const char *kWords[] = {
    "",
    "anna",
    "bob",
    "carl",
    "dora",
    "remote@example.com",
    "users",
    "admin",
    "staff",
    "sky-loft",
    "guest",
    "nobody",
    "root",
    "eth0",
    "eth1",
    "tank/media",
    "tank/data",
    "tank",
    "info",
    "warning",
    "emerge",
    "disk",
    "misc",
    "LOGMSG_DISK_ADDED",
    "LOGMSG_",
    "ads",
    "user",
    "tdb",
    "rid",
    "rsync",
    "uname",
    "LANGUAGE",
    "WIDGETRY",
    "ANTIVIRUS",
    "anti-virus",
    "skyloft",
    "smartnetwork",
    "cifs",
    "nfs",
    "ftp",
    "daap",
    "snmp",
    "ssh",
    "http",
    "https",
    "dlna",
    "bonjour",
    "avahi",
    "anonymous",
    "true",
    "login",
    "logout",
    "de-de",
    "en-us",
    "add",
    "a@b.com",
    "host.example.com",
    "10.0.0.1",
    "255.255.255.0",
    "00:11:22:33:44:55",
    "dhcp",
    "AAAAB3NzaC1",
    "AAAAB3NzaC2",
    "SINGLE_USER",
    "TM_ON",
    "HF_EXISTS",
    "&&USER_WITH_ADMIN==1",
    "||HF_SNAPSHOT_PROTECTION==1",
    "||HF_SNAPSHOT_ACCESS==0",
    "%",
    "an%",
    "_",
    "'",
    "''",
    "x' OR '1'='1",
    "%s%s%n%d",
    "\"",
    "/tank/media/x",
    "/home/anna",
    "\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F",
    "\xFF\xFE",
    "\xC3",
    "\xED\xA0\x80",
    "\xF4\x90\x80\x80",
    "\n",
    " ",
    "'info','err'",
    "'disk','misc'",
    "ReadWrite",
    "ReadOnly",
    "Disabled",
    "Enabled",
    "Music",
    "cifs",
    "http",
    "share",
    "zvol",
    "media",
    "always",
    "192.168.1",
    "new-user",
    "new-group",
    "secret",
    "$1$abcdefgh$0123456789012345678901",
    "v2",
    "sda",
    "sdb",
    "media",
    "data",
    "daily",
    "created_on",
    "name",
    "fan",
    "1",
    "desk",
    "desk@localhost",
    "local",
    "snmp",
    "remote",
    "public",
    "apcc",
    "disks",
    "iqn.2026-01.com.example:host",
    "share",
    "home",
    "*",
    "volume",
    "usb",
    "usb_port_1_1",
    "timemachine",
    "cifs",
    "nightly",
    "Mon,Fri",
};
constexpr int64_t kNumbers[] = {21,        2121,      40000,     65535,     0,       1,          2,      -1,    -2,
                                -5,        96,        97,        98,        99,      100,        101,    102,   103,
                                104,       200,       201,       255,       32766,   32767,      32768,  65533, 65534,
                                INT32_MAX, INT32_MIN, INT64_MAX, INT64_MIN, 1 << 30, 4294967295, 1000000};

template <class T, size_t N>
constexpr uint32_t count_of(const T (&)[N])
{
    return N;
}

/// Builds arguments out of the input.
struct Builder {
    Input &input;
    Arena arena{};
    int records = 0;  // built so far: a bound for the whole graph

    explicit Builder(Input &from) : input(from) {}

    std::string text()
    {
        const uint8_t form = input.byte();
        if (form < 160) return kWords[input.below(count_of(kWords))];
        if (form < 180) return "new" + std::to_string(input.below(40));
        if (form < 200)
            return std::string(kWords[input.below(count_of(kWords))]) + kWords[input.below(count_of(kWords))];
        if (form < 210) return std::string(input.number(2), static_cast<char>('a' + form % 26));
        if (form < 212) return std::string(100000, static_cast<char>(0x80 | input.byte()));
        std::string bytes;
        for (uint32_t left = input.below(48); left; left--)
            if (const uint8_t each = input.byte()) bytes += static_cast<char>(each);
        return bytes;
    }

    const char *string() { return arena.copy(text()); }

    uint64_t number(int bytes)
    {
        const uint8_t form = input.byte();
        if (form < 192) return static_cast<uint64_t>(kNumbers[form % count_of(kNumbers)]);
        return form < 224 ? input.byte() : input.number(bytes);
    }

    /// Whether something that may be missing is missing.
    bool missing() { return input.byte() < 64; }

    void fill_field(char *record, const QbobjField &field, int depth)
    {
        char *at = record + field.position;
        const bool optional = field.flags & QBOBJ_FIELD_OPTIONAL;
        switch (field.kind) {
            case 'i':
            case 'u': {
                const auto value = static_cast<uint32_t>(number(4));
                std::memcpy(at, &value, sizeof value);
                if (optional) std::memset(at - 4, missing(), 1);
                break;
            }
            case 'l':
            case 'n': {
                const uint64_t value = number(8);
                std::memcpy(at, &value, sizeof value);
                if (optional) std::memset(at - 8, missing(), 1);
                break;
            }
            case 's': {
                const char *value = missing() ? nullptr : string();
                std::memcpy(at, &value, sizeof value);
                break;
            }
            default: {
                void *value = depth == 0 || missing() ? nullptr : chain(field.subtype, depth - 1);
                std::memcpy(at, &value, sizeof value);
                break;
            }
        }
    }

    void *record(const QbobjField *type, int depth)
    {
        auto *made = static_cast<char *>(arena.zeroed(type->position));
        records++;
        if (type->flags & QBOBJ_TYPE_KEY_WORD) {
            const char *key = missing() ? nullptr : string();
            std::memcpy(made + sizeof(void *), &key, sizeof key);
        }
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) fill_field(made, *field, depth);
        return made;
    }

    /// A record, or a chain of them where the type has a link.
    void *chain(const QbobjField *type, int depth)
    {
        uint32_t length = 1;
        if (type->flags & QBOBJ_TYPE_LIST) {
            const uint8_t form = input.byte();
            length = form < 128 ? 1 : form < 250 ? 2 + form % 3 : 20 + input.below(200);
        }
        void *head = nullptr;
        void **link = &head;
        // The input may be used up long before a long chain is.
        for (; length && records < 500; length--) {
            void *made = record(type, depth);
            *link = made;
            link = static_cast<void **>(made);
        }
        return head ? head : arena.zeroed(type->position);
    }
};

// ---- the outputs

size_t touched = 0;

void read_text(const char *text)
{
    if (text) touched += std::strlen(text);
}

const char *pointer_at(const void *place)
{
    const char *value = nullptr;
    std::memcpy(&value, place, sizeof(void *));
    return value;
}

/// Reads every field of a record and of what it leads to.
void read_records(const QbobjField *type, const char *record)
{
    for (; record; record = type->flags & QBOBJ_TYPE_LIST ? pointer_at(record) : nullptr) {
        if (type->flags & QBOBJ_TYPE_KEY_WORD) read_text(pointer_at(record + sizeof(void *)));
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
            const char *at = record + field->position;
            if (field->kind == 's') read_text(pointer_at(at));
            else if (field->kind == 'o') read_records(field->subtype, pointer_at(at));
            else touched += static_cast<uint8_t>(*at);
        }
    }
}

/// Reads every text of an XML tree.
void read_tree(const xmlNode *node)
{
    for (; node; node = node->next) {
        for (const xmlAttr *attribute = node->properties; attribute; attribute = attribute->next)
            read_text(reinterpret_cast<const char *>(attribute->children->content));
        if (node->type == XML_ELEMENT_NODE) read_tree(node->children);
        else read_text(reinterpret_cast<const char *>(node->content));
    }
}

// ---- the database

constexpr const char *kPopulation =
    "INSERT INTO share (id,name,zfs_name,type,path,volume_id,update_ts) VALUES "
    "(1,'media','tank/media','share','/tank/media','tank','x'),(2,'data','tank/data','folder','/tank/"
    "data','tank','x'),(3,'open','tank/open','share','/tmp','tank','2024-01-01 00:00:00');"
    "INSERT INTO cifs_share_option (share_id,cifs_access,cifs_guest_access,available) VALUES "
    "(1,'disabled',1,1),(3,'writeable',0,1);"
    "INSERT INTO afp_share_option VALUES (1,1,'readonly',0,54,NULL);INSERT INTO nfs_share_option VALUES (1,1,'x',1);"
    "INSERT INTO ftp_share_option VALUES (1,1,'writeable',1,2,23);INSERT INTO http_share_option VALUES "
    "(1,1,'disabled',0),(3,1,'readonly',1);"
    "INSERT INTO rsync_share_option VALUES (1,1,'x','enabled');"
    "INSERT INTO rsync_user_password_acl VALUES (1,'bob','secret');"
    "INSERT INTO dlna_share_option VALUES (1,1,'readonly',2);INSERT INTO daap_share_option VALUES (1,0);"
    "INSERT INTO zvol_share_option VALUES (1,1024,1);INSERT INTO host VALUES (1,'192.168.1.0/24'),(2,'desk');"
    "INSERT INTO host_acl VALUES (1,1,'cifs',1,1,0),(1,2,'nfs',1,0,1);"
    "INSERT INTO user_acl VALUES (1,100,'cifs',1,0),(1,-5,'cifs',1,1),(3,101,'http',1,0);"
    "INSERT INTO group_acl VALUES (1,100,'cifs',1,1),(3,98,'http',0,0);"
    "INSERT INTO cifs_dfs_option VALUES (1,'tank','media','link','desk','x');"
    "INSERT INTO snapshot_schedule VALUES (1,1,'0','*','*','*','*',0,1,0,0);"
    "INSERT INTO snapshot_management VALUES (1,1,1,86400,7,'01',0,0);"
    "INSERT INTO process_on_share VALUES (1,4711,1,'x');"
    "INSERT INTO `$application_on_share` VALUES ('tank/media','tm','x');"
    "INSERT INTO `$snapshot` (zfs_name,name,type,created_on) VALUES ('tank/media','a',1,1);"
    "INSERT INTO `$snapshot_clones` (cloned_zfs_name,parent_snapshot_name,parent_zfs_name) VALUES ('open','a','media');"
    "INSERT INTO `$group` (id,gname,is_privileged,rid) VALUES (100,'staff',0,NULL),(101,'empty',0,NULL),"
    "(102,'removed',-1,NULL),(-7,'domain users',0,513);"
    "INSERT INTO `$user` "
    "(id,uname,passwd,email,home,group_id,shell,is_privileged,last_changed,is_locked,shell_access,rid)"
    " VALUES (100,'anna','$1$abcdefgh$0123456789012345678901','a@b.com','/home/anna',99,'/bin/false',0,19000,0,0,NULL),"
    "(101,'bob','','','/tank/home/bob',100,'/bin/bash',0,19000,0,1,NULL),"
    "(102,'carl','!$1$abcdefgh$0123456789012345678901',NULL,NULL,NULL,NULL,0,NULL,1,0,NULL),"
    "(103,'removed-user','*',NULL,'/home/x',99,'/bin/false',-1,19000,0,0,NULL),"
    "(104,'remote@example.com','*',NULL,'/home/r',97,'/bin/false',0,19000,0,0,NULL),"
    "(-5,'dora','*',NULL,'/home/dora',-7,'/bin/false',0,19000,0,0,1000);"
    "UPDATE account_default SET next_uid=105;"
    "INSERT INTO `$group_has_user` VALUES (100,100),(101,98);"
    "INSERT INTO `$home_folder` VALUES (100,1,1000000,'.snap',1),(101,0,0,'',0);"
    "INSERT INTO `_hf_zfs_stat` VALUES (100,4096);"
    "INSERT INTO `$timemachine_quota` VALUES (96,1,100000),(100,1,1000);"
    "WITH RECURSIVE n(i) AS (SELECT 1000 UNION ALL SELECT i+1 FROM n WHERE i<1012) INSERT INTO `$timemachine_quota` "
    "SELECT i,1,1 FROM n;"
    "INSERT INTO user_quota VALUES (100,1,80,100);INSERT INTO group_quota VALUES (100,1,80,100);"
    "INSERT INTO _user_quota_stat VALUES (1,100,7);INSERT INTO _group_quota_stat VALUES (1,100,7);"
    "INSERT INTO ssh_public_key VALUES (1,100,'rsync','ssh-rsa','AAAAB3NzaC1','c','f','t'),"
    "(2,98,'','ssh-rsa','AAAAB3NzaC2','c','f','t'),(3,0,'','ssh-rsa','AAAAB3NzaC2','c','f','root_t');"
    "INSERT INTO smb_username_map VALUES (1,'remote@example.com','alias','uname');"
    "INSERT INTO network_if VALUES ('eth0','00:11:22:33:44:55','dhcp','10.0.0.1','','','','255.255.255.0'),"
    "('eth1',NULL,NULL,NULL,NULL,NULL,NULL,NULL);"
    "INSERT INTO `$snapshot` (zfs_name,name,type,created_on) VALUES ('tank/media','daily',1,100),"
    "('tank/data','daily',2,200),('tank/gone','1',3,102),('tank/media','1',0,NULL);"
    "INSERT INTO `$home_folder_snapshot` (user_name,home_dir,name,type,created_on) VALUES "
    "('anna','/home/anna','daily',1,100),('bob','/home/anna','1',3,200),('removed-user','/home/x','daily',2,NULL);"
    "INSERT INTO `$snapshot_clones` (cloned_zfs_name,parent_snapshot_name,parent_zfs_name) VALUES "
    "('data','daily','media'),(NULL,NULL,NULL);"
    "INSERT INTO enclosure_health_spec (controller,name,devid,min,max,label) VALUES (1,'fan','1',1,9,'F'),"
    "(2,'fan','1',NULL,NULL,NULL),(1,'name','1',2147483647,2147483647,NULL);"
    "INSERT INTO _enclosure_health (controller,name,devid,value) VALUES (1,'fan','1',5);"
    "INSERT INTO _ups_health (name,host,ups_status) VALUES ('1','host.example.com','a b');"
    "INSERT INTO `$log`(tstamp,severity,category,msg_tag,msg_args_xml) VALUES (1,'info','disk','LOGMSG_A',NULL),"
    "(2,'err','misc','LOGMSG_B','<a/>'),(3,'emerge','share','LOGMSG_C','');"
    "INSERT INTO `$registry` VALUES ('LANGUAGE','x');"
    "INSERT INTO service_tivo VALUES ('1','2','/tank/media','3');INSERT INTO tivo_mak VALUES ('anna','1');"
    "INSERT INTO service_coffer VALUES (1,'a@b.com','x','y');"
    "INSERT INTO _dictionary (id,lang_id,str) VALUES ('add',2,'Hinzufügen'),(']]>',1,']]>'),('null',1,NULL);"
    "INSERT INTO _volume (id,lv_name,raid_type,blk_total) VALUES ('v2','Archive',NULL,7),('u1','USB',NULL,NULL);"
    "INSERT INTO _disk_enclosure (controller,name,nr_row,nr_column) VALUES (0,'Front',2,4),(1,NULL,NULL,NULL);"
    "INSERT INTO jbod_port VALUES (0,'internal'),(1,'A');INSERT INTO disk_port VALUES (0,0,1,1),(0,1,2,1),(1,0,1,1);"
    "INSERT INTO `$disk_info` (id,present,model,controller,port,channel,volume_id,pool_state,pool_hostid) VALUES "
    "('sda',1,'M',0,0,0,'tank','0',7),('sdb',0,'M',0,1,1,'v2','9',7),('sdc',1,NULL,1,0,0,NULL,NULL,NULL);"
    "INSERT INTO _disk_health (disk_id,temp) VALUES ('sda',30),('sdb',31),('sdc',NULL);"
    "INSERT INTO `$volume_spares` VALUES ('sdc');"
    "INSERT INTO volume_schedule VALUES (1,'tank',1,2,'0','3','*','*','0'),(-1,'v2',NULL,NULL,NULL,NULL,NULL,NULL,NULL);"
    "INSERT INTO _ups_config (name,host,port,type,enabled) VALUES ('desk','localhost','auto','local',1),"
    "('rack','localhost','10.0.0.1','snmp',0),('hall','10.0.0.1','10.0.0.1','remote',1);"
    "INSERT INTO _ups_health (name,host,ups_status) VALUES ('desk','localhost','OL CHRG');"
    "INSERT INTO `$iscsi_lun_group` (name,target,chap_secret) VALUES ('disks','t','s'),('bare',NULL,NULL);"
    "INSERT INTO `$iscsi_lun` (name,lun_group,lun_n) VALUES ('disks','disks',1);"
    "INSERT INTO `$iscsi_initiator` (name,chap_secret) VALUES ('iqn.2026-01.com.example:host','s'),('disks',NULL);"
    "INSERT INTO `$iscsi_lun_group_access` VALUES ('disks','iqn.2026-01.com.example:host'),('disks',NULL);"
    "INSERT INTO backup (id,name,src_type,src_share_proto,dst_type,dst_share_proto,sch_dow) VALUES "
    "(1,'nightly','share','media','remote','cifs',34),(2,NULL,NULL,NULL,NULL,NULL,-1);"
    "INSERT INTO backup_button_jobs VALUES (1,2),(2,1),(3,99);"
    "INSERT INTO usb_port VALUES (1,'FRONT','1_1','2_1'),(2,NULL,NULL,NULL);"
    "INSERT INTO usb_storage VALUES (1,'1:1','/media/usb'),(2,NULL,NULL);";

/// The populated database, and a copy of it in memory from which what an input changed is put back.
struct Database {
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    std::vector<std::string> tables;
    std::set<std::string> changing;  // statements of the present input that may have changed something
    bool committed = false;          // something was written since this was last set to false

    Database()
    {
        // The pool is mapped memory, in which the sanitizer does not look for pointers: what the handle owns
        // would look lost to it.
        const __lsan::ScopedDisabler disabler;
        scratch = access("/dev/shm", W_OK) == 0 ? "/dev/shm/qbobj-fuzz-XXXXXX" : "/tmp/qbobj-fuzz-XXXXXX";
        require(mkdtemp(scratch.data()), "no directory");
        char why[256] = "";
        const std::string path = scratch + "/fuzz.db";
        if (qbdb_open(path.c_str(), QBDB_OPEN_CREATE, "tank", &qbdb, &db, why, sizeof why)) fail(why);
        // What records changes is made by the first transaction that may write.
        require(qbdb_sql_begin(qbdb, db, 0, __FILE__, __LINE__) == 0, "no transaction");
        require(qbdb_sql_rollback(qbdb, db, 0, __FILE__, __LINE__) == 0, "no rollback");
        qbdb_set_log_hook(
            qbdb, [](void *, const char *, uint32_t, uint32_t, uint32_t, const char *) {}, nullptr);
        static const qbdb_directory_hooks kDirectory{
            nullptr, [](void *, const char *name) { return name[0] == 'd' ? 20000 : -1; },
            [](void *, const char *name) { return name[0] == 'd' ? 20001 : -1; },
            [](void *, int32_t uid, char *name, size_t size) {
                return uid == -5 ? (snprintf(name, size, "dora"), 0) : 1;
            },
            [](void *, int32_t gid, char *name, size_t size) {
                return gid == -7 ? (snprintf(name, size, "domain users"), 0) : 1;
            }};
        qbdb_set_directory_hooks(qbdb, &kDirectory);
        qbdb_import_options options{};
        options.root = scratch.c_str();
        qbdb_set_import_options(qbdb, &options);
        qbdb_set_import_hook(
            qbdb,
            [](void *, qbdb_t *handle, sqlite3 *connection, int) {
                return qbdb_sql_exec_mprintf(handle, connection, nullptr, "fuzz", 1,
                                             "UPDATE `$disk_info` SET present=1-present");
            },
            nullptr);
        exec(kPopulation);
        exec("ATTACH ':memory:' AS kept");
        // Filling a table that counts its ids writes to SQLite's table of sequences: that one is put back last.
        tables = rows("SELECT name FROM main.sqlite_schema WHERE type='table' ORDER BY name='sqlite_sequence'");
        for (const std::string &table : tables)
            exec("CREATE TABLE kept.\"" + (table == "sqlite_sequence" ? "sequence" : table) +
                 "\" AS SELECT * FROM main.\"" + table + "\"");
        qbdb_set_statement_hook(qbdb, see, this);
        sqlite3_wal_hook(db, written, this);  // in place of the automatic checkpoint
    }

    ~Database()
    {
        qbdb_close(qbdb);
        remove_scratch();
    }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    static int see(void *self, const char *sql, const char *, uint32_t, const char **)
    {
        static constexpr const char *kHarmless[] = {"SELECT", "BEGIN", "COMMIT", "ROLLBACK"};
        for (const char *each : kHarmless)
            if (strncmp(sql, each, strlen(each)) == 0) return 0;
        static_cast<Database *>(self)->changing.insert(sql);
        return 0;
    }
    static int written(void *self, sqlite3 *, const char *, int pages)
    {
        static_cast<Database *>(self)->committed = true;
        if (pages > 2000)
            sqlite3_wal_checkpoint_v2(static_cast<Database *>(self)->db, "main", SQLITE_CHECKPOINT_PASSIVE, nullptr,
                                      nullptr);
        return SQLITE_OK;
    }

    void exec(const std::string &sql)
    {
        char *why = nullptr;
        if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &why) != SQLITE_OK) fail((why ? why : "") + (": " + sql));
    }
    std::vector<std::string> rows(const std::string &sql)
    {
        std::vector<std::string> all;
        sqlite3_stmt *stmt = nullptr;
        if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) fail(sql + ": " + sqlite3_errmsg(db));
        while (sqlite3_step(stmt) == SQLITE_ROW) {
            const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt, 0));
            all.emplace_back(text ? text : "NULL");
        }
        sqlite3_finalize(stmt);
        return all;
    }

    static std::string kept(const std::string &table)
    {
        return "kept.\"" + (table == "sqlite_sequence" ? "sequence" : table) + "\"";
    }

    /// Puts back the tables that a statement of the input named. The log's ids count on in a table of SQLite's.
    void restore()
    {
        if (changing.empty()) return;
        exec("BEGIN IMMEDIATE");
        for (const std::string &table : tables) {
            bool named = table == "sqlite_sequence";
            for (const std::string &sql : changing) named = named || strcasestr(sql.c_str(), table.c_str());
            if (!named) continue;
            exec("DELETE FROM main.\"" + table + "\"");
            exec("INSERT INTO main.\"" + table + "\" SELECT * FROM " + kept(table));
        }
        exec("COMMIT");
        changing.clear();
    }

    /// Every row is the one that it was at the beginning: the next input meets what the first one met.
    void check_restored()
    {
        for (const std::string &table : tables) {
            const std::string name = "main.\"" + table + "\"";
            if (!rows("SELECT * FROM " + name + " EXCEPT SELECT * FROM " + kept(table)).empty() ||
                !rows("SELECT * FROM " + kept(table) + " EXCEPT SELECT * FROM " + name).empty())
                fail("the database was not put back: " + table);
        }
        require(rows("PRAGMA main.integrity_check") == std::vector<std::string>{"ok"}, "integrity_check");
    }

    void check_after_change()
    {
        require(rows("SELECT COUNT(*) FROM main.sqlite_schema WHERE type='table'")[0] == std::to_string(tables.size()),
                "a table was left over or went");
        require(rows("SELECT COUNT(*) FROM temp.sqlite_schema")[0] == "0", "a temporary table was left over");
        require(atoi(rows("SELECT COUNT(*) FROM main.`$timemachine_quota`")[0].c_str()) <= 16, "too many allowances");
        require(rows("SELECT COUNT(*) FROM main.account_default")[0] == "1", "not one row of account defaults");
    }
};

Database &database()
{
    static Database one;
    return one;
}

// ---- the calls

/// The file of users that one operation reads: made for the call when there is none, by one process at a time.
struct UserListFile {
    static constexpr const char *kPath = "/tmp/user_list.txt";
    int lock = -1;
    bool made = false;

    UserListFile(Builder &builder, const QbobjOperation &operation)
    {
        if (strcmp(operation.name, "qbobj_checkUserList") != 0) return;
        lock = open("/tmp/user_list.txt.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0666);
        if (lock >= 0) flock(lock, LOCK_EX);
        const int file = open(kPath, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
        made = file >= 0;
        if (!made) return;
        static constexpr const char *kBeginnings[] = {"", "export_list\n", "import_list\n", "User_Name\n"};
        std::string text = kBeginnings[builder.input.below(count_of(kBeginnings))];
        if (builder.input.byte() < 192) text += "User_Name\tGroup_Name\tEmail_Address\tPassword\n";
        for (uint32_t lines = builder.input.below(6); lines; lines--) {
            for (uint32_t fields = 2 + builder.input.below(4); fields; fields--) text += builder.text() + "\t";
            text += "\n";
        }
        if (write(file, text.data(), text.size()) < 0) fail("the list of users cannot be written");
        close(file);
    }
    ~UserListFile()
    {
        if (made) unlink(kPath);
        if (lock >= 0) close(lock);
    }
    UserListFile(const UserListFile &) = delete;
    UserListFile &operator=(const UserListFile &) = delete;
};

/// One argument's value and the place where an output goes.
struct Slot {
    QbobjValue value{.p = nullptr};
    const char *record = nullptr;  // of a record argument
    void *out = nullptr;           // of a list, a text or a number
};

Slot build_argument(Builder &builder, const QbobjArgument &argument)
{
    Slot slot;
    if (argument.optional && builder.missing()) return slot;
    const bool in = argument.direction == QBOBJ_IN;
    switch (argument.kind) {
        case QBOBJ_KIND_INT32:
            if (in) slot.value.i = static_cast<int32_t>(builder.number(4));
            else slot.value.p = builder.arena.zeroed(sizeof(int32_t));
            break;
        case QBOBJ_KIND_UINT64:
            if (in) slot.value.n = builder.number(8);
            else slot.value.p = builder.arena.zeroed(sizeof(uint64_t));
            break;
        case QBOBJ_KIND_STRING:
            if (in) slot.value.s = builder.string();
            else slot.out = slot.value.p = builder.arena.zeroed(sizeof(char *));
            break;
        case QBOBJ_KIND_RECORD:
            slot.value.p = argument.direction == QBOBJ_OUT ? builder.arena.zeroed(argument.type->position)
                                                           : builder.chain(argument.type, 2);
            slot.record = static_cast<const char *>(slot.value.p);
            break;
        default:
            slot.out = slot.value.p = builder.arena.zeroed(sizeof(void *));
            if (argument.kind == QBOBJ_KIND_LIST && argument.direction != QBOBJ_OUT) {
                void *head = builder.chain(argument.type, 2);
                std::memcpy(slot.out, &head, sizeof head);
            }
    }
    return slot;
}

void read_argument(const QbobjArgument &argument, const Slot &slot)
{
    if (slot.record) read_records(argument.type, slot.record);
    if (!slot.out) return;
    const char *value = pointer_at(slot.out);
    if (argument.kind == QBOBJ_KIND_STRING) read_text(value);
    else if (argument.kind == QBOBJ_KIND_LIST) read_records(argument.type, value);
    else if (argument.kind == QBOBJ_KIND_XML) {
        auto *tree = reinterpret_cast<xmlNode *>(const_cast<char *>(value));
        read_tree(tree);
        xmlFreeNode(tree);
    }
}

bool is_documented(const QbobjOperation &operation, uint32_t rc)
{
    const std::string codes = std::string(" ") + operation.codes + " ";
    return rc == 0 || codes.find(" " + std::to_string(rc) + " ") != std::string::npos;
}

void check_result(const QbobjOperation &operation, uint32_t rc, const ErrorInfo &err)
{
    constexpr uint32_t kNone = 0xFFFFFFFF;
    switch (operation.returns) {
        case QBOBJ_RETURNS_CODE:
            if (!is_documented(operation, rc))
                fail("undocumented code " + std::to_string(rc) + ": " + (err.message ? err.message : ""));
            break;
        case QBOBJ_RETURNS_FOUND: require(rc == 0 || rc == kNone, "neither found nor not found"); break;
        case QBOBJ_RETURNS_ANSWER: require(rc <= 2 || rc == kNone, "no answer"); break;
        case QBOBJ_RETURNS_TRUTH: require(rc <= 1, "neither true nor false"); break;
        case QBOBJ_RETURNS_COUNT: require(rc == kNone || rc <= INT32_MAX, "no count"); break;
        case QBOBJ_RETURNS_ID: break;
    }
    if (err.code == 0) {
        require(!err.message && !err.file && err.line == 0, "half an error record");
        return;
    }
    if (rc && operation.returns == QBOBJ_RETURNS_CODE) require(err.code == rc, "another code than the record's");
    require(err.message && *err.message && err.file && *err.file && err.line > 0, "an error record with gaps");
    read_text(err.message);
}

void call(Database &database, Builder &builder, const QbobjOperation &operation)
{
    current = operation.name;
    const UserListFile file(builder, operation);
    Slot slots[QBOBJ_MAX_ARGUMENTS];
    QbobjValue values[QBOBJ_MAX_ARGUMENTS];
    for (uint32_t i = 0; i < operation.count; i++) {
        slots[i] = build_argument(builder, operation.arguments[i]);
        values[i] = slots[i].value;
    }
    // What stands in the caller's error record before the call is nobody's business.
    ErrorInfo err{77, "before", 77, "before"};
    database.committed = false;
    const uint32_t rc = operation.call(database.qbdb, database.db, values, &err);

    require(sqlite3_get_autocommit(database.db), "a transaction was left open");
    check_result(operation, rc, err);
    for (uint32_t i = 0; i < operation.count; i++) read_argument(operation.arguments[i], slots[i]);
    const bool failed = operation.returns == QBOBJ_RETURNS_CODE && rc != 0;
    if (!operation.changes) require(!database.committed, "an operation that reads wrote");
    if (failed) require(!database.committed, "a call that failed left something behind");
    if (database.committed) database.check_after_change();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr int kMostCalls = 6;
    static uint32_t operations = 0;
    static uint32_t runs = 0;
    if (operations == 0)
        while (qbobj_operations()[operations].name) operations++;

    Database &known = database();
    Input input{data, data + size};
    const uint8_t mode = input.byte();
    if (mode & 1) known.exec("UPDATE service_cifs SET security='ads',no_sync_ads=" + std::to_string(mode >> 1 & 1));
    if (mode & 4) known.exec("UPDATE account_default SET private_time_machine=1");
    if (mode & 7) known.changing.insert("service_cifs account_default");
    known.qbdb->log_level = mode & 8 ? 5 : 2;  // with it every record is written to the log
    Builder builder(input);
    qbdb_request_begin(known.qbdb);
    for (int i = 0; i < kMostCalls && !input.empty(); i++)
        call(known, builder, qbobj_operations()[input.byte() % operations]);
    known.restore();
    if (++runs % 64 == 1) known.check_restored();
    return 0;
}
// SPDX-License-Identifier: Apache-2.0
