// Protocol settings in the tests: a database in which every setting has a value of its own.
#pragma once

#include <algorithm>
#include <map>

#include "fixture/fixture.h"

namespace test {

/// The rows of every table, sorted. Which row number a replaced row has got does not matter.
inline std::map<std::string, std::vector<std::string>> every_table(const Database &database)
{
    std::map<std::string, std::vector<std::string>> all;
    for (const std::string &table : database.rows("SELECT name FROM sqlite_schema WHERE type='table'")) {
        all[table] = database.rows("SELECT * FROM `" + table + "`");
        std::sort(all[table].begin(), all[table].end());
    }
    return all;
}

/// Every setting given, none as the factory has it, and all of it as an operation would have written it.
inline constexpr char kEverySetting[] =
    "UPDATE service_cifs SET enabled=1,user_home_directory=1,user_home_directory_recycle=1,"
    "  user_home_directory_recycle_max_days=30,user_home_directory_recycle_max_size=4096;"
    "UPDATE service_afp SET enabled=1,user_home_directory=1;"
    "UPDATE service_nfs SET enabled=1,threads=16,user_home_directory=1,nfsv4=1,domain='example.com';"
    "UPDATE service_ftp SET enabled=1,port=2121,auth_mode='anonymous',passive_range_min=40000,passive_range_max=40100,"
    "  enable_masquerade=1,masquerade='nas.example.com',upload_resume=0,user_home_directory=1,ftps=0,force_ftps=1,"
    "  server_transfer_log=1,max_upload_rate=100,max_download_rate=99999;"
    "UPDATE service_daap SET enabled=1,sharename='o''brien''s music',password='secret',directory='/tank/music';"
    "UPDATE service_snmp SET enabled=1,allow_host='10.0.0.1,host.example.com,10.1.0.0/16',community='private',"
    "  trap_destination='10.0.0.2,10.0.0.3';"
    "UPDATE service_ssh SET enabled=1,ui_enabled=1,port=2222,password_authentication=1;"
    "UPDATE service_replicate SET enabled=1,owner='anna',priv_data='{\"peer\":\"nas2\"}';"
    "UPDATE service_smartnetwork SET enabled=1;UPDATE service_misc SET val='1' WHERE key='WIDGETRY';"
    "UPDATE service_upnpd SET enabled=1;"
    "UPDATE service_rsync SET enabled=1;"
    "UPDATE service_dlna SET enabled=1,inotify=0,enable_tivo_server=1,enable_tivo_archiver=1,user_home_directory=1;"
    "UPDATE service_http SET enabled=1,use_password=0,share_name='web',http_admin=0;"
    "UPDATE service_https SET port=4443,ssl_key_host='nas.example.com';"
    "UPDATE service_avahi SET enabled=1,cifs=0,afp=1,glassdeck=0,printer=1,quillbox=0,timemachine=1;"
    "UPDATE service_misc SET val='1' WHERE key IN ('ANTIVIRUS','SKYLOFT');";

struct Protocols : Database {
    ProtocolCollection collection{};

    uint32_t get(const char *name) { return qbobj_getProtocol(qbdb, db, name, &collection, &err); }
    uint32_t get_all() { return qbobj_getProtocolCollection(qbdb, db, &collection, &err); }
    uint32_t set() { return qbobj_setProtocolCollection(qbdb, db, &collection, &err); }

    /// A protocol as it is stored, alone in a list of its own.
    Protocol *stored(const std::string &name)
    {
        collection = {};
        EXPECT_EQ(name == "upnpd" ? get_all() : get(name.c_str()), 0u) << err.message;
        for (Protocol *each : elements(collection.Protocol)) {
            if (each->key != name) continue;
            collection.Protocol = each;
            each->next = nullptr;
            return each;
        }
        ADD_FAILURE() << "no protocol " << name;
        abort();
    }
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
