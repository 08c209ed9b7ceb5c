// Writing the settings of the protocols, and over which of them home folders are served.
#include <apr_hash.h>

#include <cstring>
#include <iterator>

#include "frame/pool.h"
#include "frame/query.h"
#include "frame/set_list.h"
#include "services/port_probe.h"
#include "services/services.h"
#include "validate/validate.h"

namespace qb {
namespace {

constexpr const char *kTables[] = {
    "service_cifs",  "service_afp",          "service_nfs",   "service_ftp",   "service_daap", "service_snmp",
    "service_ssh",   "service_replicate",    "service_dlna",  "service_upnpd", "service_http", "service_https",
    "service_rsync", "service_smartnetwork", "service_avahi", nullptr,
};
constexpr char kPrefix[] = "_setprotocol_";
constexpr uint32_t kCopiesStay = 3;

bool is_port(int32_t port)
{
    return static_cast<uint32_t>(port) - 1 <= 65534;
}

uint32_t write_cifs(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    return execute(ctx, db, "UPDATE service_cifs SET enabled=%d", p->Enabled)
        .or_report(ctx, "Failed DB Query 'UPDATE service_cifs'. (%s)");
}

uint32_t write_afp(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    return execute(ctx, db, "UPDATE service_afp SET enabled=%d", p->Enabled)
        .or_report(ctx, "Failed DB Query 'UPDATE service_afp'. (%s)");
}

uint32_t write_nfs(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const NfsOptions *o = p->NfsOptions;
    if (!o) return REPORT(ctx, 8, "NfsOptions cannot be NULL");
    return execute(ctx, db, "UPDATE service_nfs SET enabled=%d,threads=%d,user_home_directory=%d,nfsv4=%d,domain=%Q",
                   p->Enabled, o->Threads, o->UserHomeDirectory, o->NfsV4Enable, o->NfsV4Domain)
        .or_report(ctx, "Failed DB Query 'UPDATE service_nfs'. (%s)");
}

/// The FTP server itself may listen on the port by now, so that no port counts as taken.
constexpr bool is_ftp_port_taken(int32_t)
{
    return false;
}

uint32_t check_ftp_ports(CallContext *ctx, sqlite3 *db, const FtpOptions *o)
{
    if (!is_port(o->Port)) return REPORT(ctx, 810, "Invalid Port (%d), 1-65535.", o->Port);
    int32_t stored = 0;
    TRY(select_int32(ctx, db, stored, "SELECT port FROM service_ftp")
            .or_report(ctx, "Fail DB Query 'SELECT service_ftp'"));
    if (o->Port != stored && is_ftp_port_taken(o->Port)) return REPORT(ctx, 811, "Port (%d) is already used.", o->Port);
    if (o->PassiveRangeMin < 32768 || o->PassiveRangeMax > 65535 || o->PassiveRangeMin > o->PassiveRangeMax)
        return REPORT(ctx, 812, "Invalid PassiveRange, 32768-65535 and Min=<Max");
    return 0;
}

/// An address that is announced has to be one; "0" stands for none.
bool is_masquerade_good(const Protocol *p)
{
    const FtpOptions *o = p->FtpOptions;
    if (!p->Enabled || !o->EnableMasquerade || !is_set(o->MasqueradeAddress)) return true;
    return strcmp(o->MasqueradeAddress, "0") == 0 || check_host_or_address(o->MasqueradeAddress) == 0;
}

bool is_rate(int32_t rate)
{
    return rate >= 0 && rate <= 99999;
}

uint32_t check_ftp(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const FtpOptions *o = p->FtpOptions;
    if (!o) return REPORT(ctx, 8, "FtpOptions cannot be NULL");
    TRY(check_ftp_ports(ctx, db, o));
    if (check_one_of(o->AuthMode, Case::exact, {"anonymous", "user"}))
        return REPORT(ctx, 813, "Invalid Authenticat Mode, Either 'anonymous' or 'user'");
    if (!is_masquerade_good(p)) return REPORT(ctx, 814, "Invalid Masquerade Address (%s).", o->MasqueradeAddress);
    if (!is_rate(o->MaxUploadRate) || !is_rate(o->MaxDownloadRate))
        return REPORT(ctx, 830, "Invalid MAX Bandwidth, 0-99999.");
    return 0;
}

uint32_t write_ftp(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    TRY(check_ftp(ctx, db, p));
    const FtpOptions *o = p->FtpOptions;
    return execute(ctx, db,
                   "UPDATE service_ftp SET enabled=%d,port=%d,auth_mode=%Q,passive_range_min=%d,passive_range_max=%d,"
                   "enable_masquerade=%d,masquerade=%Q,upload_resume=%d,ftps=%d,force_ftps=%d,server_transfer_log=%d,"
                   "max_upload_rate=%d,max_download_rate=%d",
                   p->Enabled, o->Port, o->AuthMode, o->PassiveRangeMin, o->PassiveRangeMax, o->EnableMasquerade,
                   o->MasqueradeAddress, o->AllowUploadResume, o->Ftps, o->ForceFtps, o->ServerTransferLog,
                   o->MaxUploadRate, o->MaxDownloadRate)
        .or_report(ctx, "Failed DB Query 'UPDATE service_ftp'. (%s)");
}

/// Missing options have always been reported as those of DLNA. The mask stands for the stored password.
uint32_t write_daap(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const DaapOptions *o = p->DaapOptions;
    if (!o) return REPORT(ctx, 8, "DlnaOptions cannot be NULL");
    SetList<512> set;
    set.add("enabled=%d", p->Enabled);
    if (!o->sharename) return REPORT(ctx, 8, "DAAP Sharename cannot be NULL");
    set.add("sharename=%Q", o->sharename);
    if (!o->password) return REPORT(ctx, 8, "DAAP password cannot be NULL");
    if (!is_password_mask(o->password)) set.add("password=%Q", o->password);
    if (set.dropped)
        return REPORT(ctx, kStatementFailed, "Failed DB Query 'UPDATE service_daap'. (%s)", "The values are too long.");
    return execute(ctx, db, "UPDATE service_daap SET %s", +set.text)
        .or_report(ctx, "Failed DB Query 'UPDATE service_daap'. (%s)");
}

/// An address, a host name or a network: 0, or what the last of them has against it.
int32_t check_snmp_host(const char *host)
{
    char network[network_text_size];
    if (qbobj_validate_ip(host) == 0 || check_host_or_address(host) == 0) return 0;
    return check_network(host, network);
}

/// Splits a list at its commas and checks its items. 0, or the first failing item with its result.
int32_t check_list(CallContext *ctx, const char *list, int32_t (*check)(const char *), const char *&failing)
{
    char **items = noted(ctx, qbdb_csv_to_array(ctx->qbdb, list));
    for (; items && *items; items++) {
        if (const int32_t rc = check(*items)) {
            failing = *items;
            return rc;
        }
    }
    return 0;
}

uint32_t check_snmp(CallContext *ctx, const SnmpOptions *o)
{
    if (!o) return REPORT(ctx, 8, "SnmpOptions cannot be NULL");
    const char *item = nullptr;
    if (const int32_t rc = check_list(ctx, o->AllowHost, check_snmp_host, item))
        return REPORT(ctx, 816, "Invalid AllowHost (%s) (rc=%d).", item, rc);
    if (const int32_t rc = check_device_name(o->Community))
        return REPORT(ctx, 817, "Invalid Community (%s) (rc=%d).", o->Community ? o->Community : "(null)", rc);
    if (const int32_t rc = check_list(ctx, o->TrapDestination, qbobj_validate_ip, item))
        return REPORT(ctx, 818, "Invalid TrapDestination (%s) (rc=%d).", item, rc);
    TRY_MEMORY(ctx);
    return 0;
}

uint32_t write_snmp(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const SnmpOptions *o = p->SnmpOptions;
    TRY(check_snmp(ctx, o));
    return execute(ctx, db, "UPDATE service_snmp SET enabled=%d,allow_host=%Q,community=%Q,trap_destination=%Q",
                   p->Enabled, o->AllowHost, o->Community, o->TrapDestination)
        .or_report(ctx, "Failed DB Query 'UPDATE service_snmp'. (%s)");
}

uint32_t write_ssh(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const SshOptions *o = p->SshOptions;
    if (!o) return REPORT(ctx, 8, "SshOptions cannot be NULL");
    if (!is_port(o->Port)) return REPORT(ctx, 821, "Invalid Port (%d), 1-65535.", o->Port);
    const int32_t by_password = o->PasswordAuthentication == 1;
    return execute(ctx, db, "UPDATE service_ssh SET enabled=%d,port=%d,ui_enabled=%d,password_authentication=%d",
                   p->Enabled, o->Port, p->Enabled, by_password)
        .or_report(ctx, "Failed DB Query 'UPDATE service_ssh'. (%s)");
}

uint32_t write_replicate(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const ReplicateOptions *o = p->ReplicateOptions;
    if (!o) return REPORT(ctx, 8, "ReplicateOptions cannot be NULL");
    return execute(ctx, db, "UPDATE service_replicate SET enabled=%d,owner=%Q,priv_data=%Q", p->Enabled, o->Owner,
                   o->PrivData)
        .or_report(ctx, "Failed DB Query 'UPDATE service_replicate'. (%s)");
}

uint32_t write_smartnetwork(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    TRY(execute(ctx, db, "UPDATE service_misc SET val=%d WHERE key='WIDGETRY'", p->Enabled)
            .or_report(ctx, "Failed DB Query 'UPDATE service_misc'. (%s)"));
    return execute(ctx, db, "UPDATE service_smartnetwork SET enabled=%d", p->Enabled)
        .or_report(ctx, "Failed DB Query 'UPDATE service_smartnetwork'. (%s)");
}

uint32_t write_upnpd(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    return execute(ctx, db, "UPDATE service_upnpd SET enabled=%d", p->Enabled)
        .or_report(ctx, "Failed DB Query 'UPDATE service_upnpd'. (%s)");
}

uint32_t write_rsync(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    return execute(ctx, db, "UPDATE service_rsync SET enabled=%d", p->Enabled)
        .or_report(ctx, "Failed DB Query 'UPDATE service_rsync'. (%s)");
}

uint32_t write_dlna(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const DlnaOptions *o = p->DlnaOptions;
    if (!o) return REPORT(ctx, 8, "DlnaOptions cannot be NULL");
    return execute(ctx, db,
                   "UPDATE service_dlna SET enabled=%d,inotify=%d,enable_tivo_server=%d,enable_tivo_archiver=%d",
                   p->Enabled, o->AutoScan, o->EnableTivoServer, o->EnableTivoArchiver)
        .or_report(ctx, "Failed DB Query 'UPDATE service_dlna'. (%s)");
}

uint32_t write_http(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const HttpOptions *o = p->HttpOptions;
    if (!o) return REPORT(ctx, 8, "HttpOptions cannot be NULL");
    return execute(ctx, db, "UPDATE service_http SET enabled=%d,use_password=%d,http_admin=%d,share_name=%Q",
                   p->Enabled, o->LoginEnabled, o->HttpAdmin, o->ShareName)
        .or_report(ctx, "Failed DB Query 'UPDATE service_http'. (%s)");
}

/// The additional port must be no privileged one, and a new one must be free.
uint32_t check_https_port(CallContext *ctx, sqlite3 *db, int32_t port)
{
    if (port != 0 && (port < 1024 || port > 65535))
        return REPORT(ctx, 827, "Invalid Additional https port (%d)(%d ).", port, 0);
    int32_t stored = 0;
    TRY(select_int32(ctx, db, stored, "SELECT port FROM service_https")
            .or_report(ctx, "Fail DB Query 'SELECT service_https'"));
    if (port == 0 || port == stored) return 0;
    if (const int32_t rc = probe_local_port(ctx, port))
        return REPORT(ctx, 828, "Additional https port in use  (%d)(%d ).", port, rc);
    return 0;
}

uint32_t write_https(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const HttpsOptions *o = p->HttpsOptions;
    if (!o) return REPORT(ctx, 8, "HttpsOptions cannot be NULL");
    if (const int32_t rc = check_host_or_address(o->SslKeyHost))
        return REPORT(ctx, 829, "Invalid SSL Key Host Address (%s)(%d ).", o->SslKeyHost ? o->SslKeyHost : "(null)",
                      rc);
    TRY(check_https_port(ctx, db, o->Port));
    return execute(ctx, db, "UPDATE service_https SET port=%d,ssl_key_host=%Q", o->Port, o->SslKeyHost)
        .or_report(ctx, "Failed DB Query 'UPDATE service_https'. (%s)");
}

/// While the service is off nothing is announced, whatever the record says.
uint32_t write_bonjour(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    const BonjourOptions *o = p->BonjourOptions;
    if (!o) return REPORT(ctx, 8, "BonjourOptions cannot be NULL");
    const auto announced = [p](int32_t flag) -> int32_t { return p->Enabled && flag; };
    return execute(ctx, db,
                   "UPDATE service_avahi SET enabled=%d,cifs=%d,afp=%d,glassdeck=%d,printer=%d,quillbox=%d,"
                   "timemachine=%d",
                   p->Enabled, announced(o->CifsEnabled), announced(o->AfpEnabled), announced(o->GlassdeckEnabled),
                   announced(o->PrinterEnabled), announced(o->QuillboxEnabled), announced(o->TimemachineEnabled))
        .or_report(ctx, "Failed DB Query 'UPDATE service_avahi'. (%s)");
}

Failure store_antivirus(CallContext *ctx, sqlite3 *db, int32_t enabled)
{
    return execute(ctx, db, "INSERT OR REPLACE INTO service_misc (key,val) VALUES('ANTIVIRUS','%d')", enabled);
}

Failure store_skyloft(CallContext *ctx, sqlite3 *db, int32_t enabled)
{
    return execute(ctx, db, "INSERT OR REPLACE INTO service_misc (key,val) VALUES('SKYLOFT','%d')", enabled);
}

uint32_t write_antivirus(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    return store_antivirus(ctx, db, p->Enabled)
        .or_report(ctx, "Failed DB Query 'INSERT OR REPLACE service_misc'. (%s)");
}

uint32_t write_skyloft(CallContext *ctx, sqlite3 *db, const Protocol *p)
{
    return store_skyloft(ctx, db, p->Enabled).or_report(ctx, "Failed DB Query 'INSERT OR REPLACE service_misc'. (%s)");
}

struct Writer {
    const char *word;
    uint32_t (*write)(CallContext *, sqlite3 *, const Protocol *);
    const char *table;
    const char *setting = nullptr;  // for a service that has no table
};

constexpr Writer kWriters[] = {
    {"cifs", write_cifs, "service_cifs"},
    {"afp", write_afp, "service_afp"},
    {"nfs", write_nfs, "service_nfs"},
    {"ftp", write_ftp, "service_ftp"},
    {"daap", write_daap, "service_daap"},
    {"snmp", write_snmp, "service_snmp"},
    {"ssh", write_ssh, "service_ssh"},
    {"replicate", write_replicate, "service_replicate"},
    {"smartnetwork", write_smartnetwork, "service_smartnetwork"},
    {"upnpd", write_upnpd, "service_upnpd"},
    {"rsync", write_rsync, "service_rsync"},
    {"dlna", write_dlna, "service_dlna"},
    {"http", write_http, "service_http"},
    {"https", write_https, "service_https"},
    {"bonjour", write_bonjour, "service_avahi"},
    {"anti-virus", write_antivirus, nullptr, "ANTIVIRUS"},
    {"skyloft", write_skyloft, nullptr, "SKYLOFT"},
};
constexpr size_t kProtocols = std::size(kWriters);

bool is_word(const char *word, const char *text)
{
    return text && strcmp(word, text) == 0;
}

/// The protocol that an element stands for: a place in the table above, or its end.
size_t find_writer(const Protocol *p)
{
    size_t i = 0;
    for (; i < kProtocols; i++) {
        const char *word = kWriters[i].word;
        if (is_word(word, p->key) || is_word(word, p->ProtocolId) || is_word(word, p->ProtocolName)) break;
    }
    return i;
}

/// The switches of the services without a table, by their place in the table above.
using Switches = int32_t[kProtocols];

uint32_t read_switches(CallContext *ctx, sqlite3 *db, Switches &switches)
{
    for (size_t i = 0; i < kProtocols; i++)
        if (kWriters[i].setting)
            TRY(select_int32(ctx, db, switches[i], "SELECT val FROM service_misc WHERE key=%Q", kWriters[i].setting)
                    .or_report(ctx, "Failed DB Query 'SELECT service_misc'. (%s)"));
    return 0;
}

uint32_t write_protocols(CallContext *ctx, sqlite3 *db, const ProtocolCollection *collection)
{
    for (const Protocol *p = collection->Protocol; p; p = p->next) {
        const size_t i = find_writer(p);
        if (i < kProtocols) TRY(kWriters[i].write(ctx, db, p));
    }
    return 0;
}

/// Raises Changed where what is stored differs from what it was.
void report_changes(const ProtocolCollection *collection, apr_hash_t *differing, const Switches &before)
{
    for (Protocol *p = collection->Protocol; p; p = p->next) {
        const size_t i = find_writer(p);
        if (i == kProtocols) continue;
        const char *table = kWriters[i].table;
        p->Changed |= table ? apr_hash_get(differing, table, APR_HASH_KEY_STRING) != nullptr : p->Enabled != before[i];
    }
}

/// What a call of the support library came to, with a lack of memory noted.
bool failed(CallContext *ctx, int rc)
{
    return static_cast<bool>(noted(ctx, Failure{rc, nullptr}));
}

/// A service's name becomes part of a statement: what is no plain word names no service.
bool is_plain_word(const char *name)
{
    return name[strspn(name, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_")] == '\0';
}

Failure store_switch(CallContext *ctx, sqlite3 *db, const char *name, int32_t enabled)
{
    if (is_word("anti-virus", name)) return store_antivirus(ctx, db, enabled);
    if (is_word("skyloft", name)) return store_skyloft(ctx, db, enabled);
    if (is_word("smartnetwork", name)) {
        const Failure bad =
            execute(ctx, db, "INSERT OR REPLACE INTO service_misc (key,val) VALUES('WIDGETRY','%d')", enabled);
        return bad ? bad : execute(ctx, db, "UPDATE service_smartnetwork SET enabled=%d", enabled);
    }
    if (!is_plain_word(name)) return {SQLITE_ERROR, "There is no such service."};
    return execute(ctx, db, "UPDATE service_%s SET enabled=%d", name, enabled);
}

Failure store_home_directories(CallContext *ctx, sqlite3 *db, const HomeFolderOptions *o)
{
    Failure bad = execute(ctx, db, "UPDATE service_cifs SET user_home_directory=%d", o->UserHomeDirectory);
    if (!bad) bad = execute(ctx, db, "UPDATE service_nfs SET user_home_directory=%d", o->NfsUserHomeDirectory);
    if (!bad) bad = execute(ctx, db, "UPDATE service_ftp SET user_home_directory=%d", o->FtpUserHomeDirectory);
    if (!bad) bad = execute(ctx, db, "UPDATE service_dlna SET user_home_directory=%d", o->DlnaUserHomeDirectory);
    if (!bad) bad = execute(ctx, db, "UPDATE service_afp SET user_home_directory=%d", o->AfpUserHomeDirectory);
    return bad;
}

}  // namespace

uint32_t x_qbobj_setProtocolCollection(CallContext *ctx, sqlite3 *db, ProtocolCollection *collection)
{
    QB_ASSERT(collection);
    // Without the old state there is nothing to tell a change by: the whole call is left out, and that is no error.
    if (failed(ctx, qbdb_sql_duplicate_tables(ctx->qbdb, db, 0, kTables, kPrefix))) return 0;
    Switches before{};
    TRY(read_switches(ctx, db, before));
    TRY(write_protocols(ctx, db, collection));
    apr_hash_t *differing = nullptr;
    const bool compared = !failed(ctx, qbdb_sql_compare_tables(ctx->qbdb, db, 0, kTables, kPrefix, &differing));
    const bool dropped = !failed(ctx, qbdb_sql_delete_tables(ctx->qbdb, db, 0, kTables, kPrefix));
    TRY_MEMORY(ctx);
    if (!dropped) {
        LOG_FAILURE(ctx, "Error in qbdb_sql_delete_tables()\n");
        return kCopiesStay;
    }
    if (compared) report_changes(collection, differing, before);
    return 0;
}

uint32_t x_qbobj_setProtocolEnable(CallContext *ctx, sqlite3 *db, const char *name, int32_t enabled)
{
    if (!name) return REPORT(ctx, 8, "protocol cannot be NULL");
    return store_switch(ctx, db, name, enabled != 0)
        .or_report(ctx, "Failed DB Query 'INSERT OR REPLACE service_xxx'. (%s)");
}

uint32_t x_qbobj_setHomeFolderOptions(CallContext *ctx, sqlite3 *db, HomeFolderOptions *options)
{
    QB_ASSERT(options);
    TRY(store_home_directories(ctx, db, options).or_report(ctx, "Failed DB Query for 'UPDATE service_xxx' %s"));
    const CustomSnapshotManagement *policy = options->CustomSnapshotManagement;
    if (!policy) return 0;
    SetList<1024> set;
    set.add("enabled=%d", policy->Enabled);
    if (const SnapshotRetentionRules *rules = policy->SnapshotRetentionRules) {
        set.add("retention_rule=%d", rules->Type);
        set.add("lifetime=%d", rules->Lifetime);
        set.add("number=%d", rules->Number);
    }
    // A schedule that does not fit is dropped: the stored one stays.
    if (policy->CustomSnapshotSchedule) set.add("schedule=%Q", policy->CustomSnapshotSchedule);
    set.add("nonempty_snapshots=%d", policy->NonEmptySnapshots);
    return execute(ctx, db, "UPDATE snapshot_management SET %s WHERE share_id=0", +set.text)
        .or_report(ctx, "Failed DB Query for 'UPDATE snapshot_management'. %s\n");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
