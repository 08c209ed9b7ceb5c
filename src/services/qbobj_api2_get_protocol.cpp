// Reading the settings of the protocols, and over which of them home folders are served.
#include <cstring>

#include "frame/list.h"
#include "frame/read_row.h"
#include "services/services.h"

namespace qb {
namespace {

uint32_t read_cifs(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.enabled,S.user_home_directory,S.user_home_directory_recycle,"
               "S.user_home_directory_recycle_max_days,S.user_home_directory_recycle_max_size "
               "FROM service_cifs S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_cifs'. (%s)"));
    CifsOptions *o = p->CifsOptions = allocate<CifsOptions>(ctx);
    if (o && rows.count)
        read_row(ctx, rows, 0, p->Enabled, o->UserHomeDirectory, o->UserHomeDirectoryRecycle,
                 o->UserHomeDirectoryRecycleMaxDays, o->UserHomeDirectoryRecycleMaxSize);
    return 0;
}

uint32_t read_afp(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    return select_int32(ctx, db, p->Enabled, "SELECT S.enabled FROM service_afp S LIMIT 1")
        .or_report(ctx, "Failed DB Query 'SELECT service_afp'. (%s)");
}

uint32_t read_nfs(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.enabled,S.threads,S.user_home_directory,S.nfsv4,S.domain FROM service_nfs S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_nfs'. (%s)"));
    NfsOptions *o = p->NfsOptions = allocate<NfsOptions>(ctx);
    if (o && rows.count)
        read_row(ctx, rows, 0, p->Enabled, o->Threads, o->UserHomeDirectory, o->NfsV4Enable, o->NfsV4Domain);
    return 0;
}

uint32_t read_ftp(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.enabled,S.port,S.auth_mode,S.passive_range_min,S.passive_range_max,S.enable_masquerade,"
               "S.masquerade,S.upload_resume,S.user_home_directory,S.ftps,S.server_transfer_log,S.max_upload_rate,"
               "S.max_download_rate,S.force_ftps FROM service_ftp S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_ftp'. (%s)"));
    FtpOptions *o = p->FtpOptions = allocate<FtpOptions>(ctx);
    if (o && rows.count)
        read_row(ctx, rows, 0, p->Enabled, o->Port, o->AuthMode, o->PassiveRangeMin, o->PassiveRangeMax,
                 o->EnableMasquerade, o->MasqueradeAddress, o->AllowUploadResume, o->UserHomeDirectory, o->Ftps,
                 o->ServerTransferLog, o->MaxUploadRate, o->MaxDownloadRate, o->ForceFtps);
    return 0;
}

uint32_t read_daap(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT S.enabled,S.sharename,S.password,S.directory FROM service_daap S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_daap'. (%s)"));
    DaapOptions *o = p->DaapOptions = allocate<DaapOptions>(ctx);
    if (o && rows.count) read_row(ctx, rows, 0, p->Enabled, o->sharename, o->password, o->directory);
    return 0;
}

/// What is stored for "every host" reads as no host named.
uint32_t read_snmp_row(CallContext *ctx, sqlite3 *db, int32_t *enabled, SnmpOptions *o)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.enabled,CASE WHEN S.allow_host='default' THEN '' ELSE S.allow_host END,S.community,"
               "S.trap_destination FROM service_snmp S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_snmp'. (%s)"));
    if (rows.count) read_row(ctx, rows, 0, *enabled, o->AllowHost, o->Community, o->TrapDestination);
    return 0;
}

uint32_t read_snmp(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    SnmpOptions read{};
    TRY(read_snmp_row(ctx, db, &p->Enabled, &read));
    p->SnmpOptions = allocate<SnmpOptions>(ctx);
    if (p->SnmpOptions) *p->SnmpOptions = read;
    return 0;
}

/// ui_enabled is the administrator's switch; enabled follows it.
uint32_t read_ssh(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    constexpr int32_t kUsualPort = 22;
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.enabled,IFNULL(S.port,22),S.ui_enabled,S.password_authentication FROM service_ssh S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_ssh'. (%s)"));
    if (rows.count == 0) return 0;
    SshOptions *o = p->SshOptions = allocate<SshOptions>(ctx);
    if (!o) return 0;
    read_row(ctx, rows, 0, skip, o->Port, p->Enabled, o->PasswordAuthentication);
    if (o->Port < 1) o->Port = kUsualPort;
    return 0;
}

uint32_t read_replicate(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT S.enabled,S.owner,S.priv_data FROM service_replicate S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_replicate'. (%s)"));
    ReplicateOptions *o = p->ReplicateOptions = allocate<ReplicateOptions>(ctx);
    if (o && rows.count) read_row(ctx, rows, 0, p->Enabled, o->Owner, o->PrivData);
    return 0;
}

uint32_t read_smartnetwork(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    return select_int32(ctx, db, p->Enabled, "SELECT S.enabled FROM service_smartnetwork S LIMIT 1")
        .or_report(ctx, "Failed DB Query 'SELECT service_smartnetwork'. (%s)");
}

uint32_t read_upnpd(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    return select_int32(ctx, db, p->Enabled, "SELECT S.enabled FROM service_upnpd S LIMIT 1")
        .or_report(ctx, "Failed DB Query 'SELECT service_upnpd'. (%s)");
}

uint32_t read_rsync(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    return select_int32(ctx, db, p->Enabled, "SELECT S.enabled FROM service_rsync S LIMIT 1")
        .or_report(ctx, "Failed DB Query 'SELECT service_rsync'. (%s)");
}

uint32_t read_dlna(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.enabled,S.inotify,S.enable_tivo_server,S.enable_tivo_archiver FROM service_dlna S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_dlna'. (%s)"));
    DlnaOptions *o = p->DlnaOptions = allocate<DlnaOptions>(ctx);
    if (o && rows.count) read_row(ctx, rows, 0, p->Enabled, o->AutoScan, o->EnableTivoServer, o->EnableTivoArchiver);
    return 0;
}

uint32_t read_bonjour(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.enabled,S.cifs,S.afp,S.glassdeck,S.printer,S.quillbox,S.timemachine "
               "FROM service_avahi S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_avahi'. (%s)"));
    BonjourOptions *o = p->BonjourOptions = allocate<BonjourOptions>(ctx);
    if (o && rows.count)
        read_row(ctx, rows, 0, p->Enabled, o->CifsEnabled, o->AfpEnabled, o->GlassdeckEnabled, o->PrinterEnabled,
                 o->QuillboxEnabled, o->TimemachineEnabled);
    return 0;
}

uint32_t read_http(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT H.enabled,H.use_password,H.share_name,H.http_admin FROM service_http H LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_http'. (%s)"));
    HttpOptions *o = p->HttpOptions = allocate<HttpOptions>(ctx);
    if (o && rows.count) read_row(ctx, rows, 0, p->Enabled, o->LoginEnabled, o->ShareName, o->HttpAdmin);
    return 0;
}

/// HTTPS is always on and has no switch. Its failure has always been told as one of HTTP.
uint32_t read_https(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT H.port,H.ssl_key_host FROM service_https H LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_http'. (%s)"));
    HttpsOptions *o = p->HttpsOptions = allocate<HttpsOptions>(ctx);
    if (o && rows.count) read_row(ctx, rows, 0, o->Port, o->SslKeyHost);
    return 0;
}

/// A service whose setting was never stored is known by its key word alone.
void forget_unless(bool found, Protocol *p)
{
    if (!found) p->ProtocolId = p->ProtocolName = nullptr;
}

uint32_t read_antivirus(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    bool found = false;
    TRY(find_int32(ctx, db, p->Enabled, found, "SELECT S.val FROM service_misc S WHERE key='ANTIVIRUS'")
            .or_report(ctx, "Failed DB Query 'SELECT service_misc'. (%s)"));
    forget_unless(found, p);
    return 0;
}

uint32_t read_skyloft(CallContext *ctx, sqlite3 *db, Protocol *p)
{
    bool found = false;
    TRY(find_int32(ctx, db, p->Enabled, found, "SELECT S.val FROM service_misc S WHERE key='SKYLOFT'")
            .or_report(ctx, "Failed DB Query 'SELECT service_misc'. (%s)"));
    forget_unless(found, p);
    return 0;
}

/// How callers can come by a protocol.
enum class Reach { always, collection, name };

struct Reader {
    const char *word;
    uint32_t (*read)(CallContext *, sqlite3 *, Protocol *);
    Reach reach = Reach::always;
};

/// In the order of the collection.
constexpr Reader kReaders[] = {
    {"cifs", read_cifs},
    {"afp", read_afp},
    {"nfs", read_nfs},
    {"ftp", read_ftp},
    {"daap", read_daap},
    {"snmp", read_snmp},
    {"ssh", read_ssh},
    {"replicate", read_replicate},
    {"smartnetwork", read_smartnetwork},
    {"upnpd", read_upnpd, Reach::collection},
    {"rsync", read_rsync},
    {"dlna", read_dlna},
    {"bonjour", read_bonjour, Reach::name},
    {"http", read_http},
    {"https", read_https},
    {"anti-virus", read_antivirus},
    {"skyloft", read_skyloft},
};

/// Appends the protocol. A read that fails leaves the element with its key word alone: it tells where reading ended.
uint32_t append_protocol(CallContext *ctx, sqlite3 *db, List<Protocol> &list, const Reader &reader)
{
    Protocol *element = list.append(ctx);
    TRY_MEMORY(ctx);
    element->key = reader.word;
    Protocol read{};
    read.key = read.ProtocolId = read.ProtocolName = reader.word;
    TRY(reader.read(ctx, db, &read));
    TRY_MEMORY(ctx);
    *element = read;
    return 0;
}

uint32_t read_home_directories(CallContext *ctx, sqlite3 *db, HomeFolderOptions *read)
{
    Rows rows;
    const Failure bad = select(ctx, db, rows,
                               "SELECT (SELECT CIFS.user_home_directory FROM service_cifs CIFS LIMIT 1),"
                               "(SELECT NFS.user_home_directory FROM service_nfs NFS LIMIT 1),"
                               "(SELECT FTP.user_home_directory FROM service_ftp FTP LIMIT 1),"
                               "(SELECT DLNA.user_home_directory FROM service_dlna DLNA LIMIT 1),"
                               "(SELECT AFP.user_home_directory FROM service_afp AFP LIMIT 1)");
    if (bad || rows.count != 1)
        return REPORT(ctx, kStatementFailed, "Failed DB Query for 'SELECT FROM service_xxx'. nrow=%d %s", rows.count,
                      or_empty(bad.text));
    read_row(ctx, rows, 0, read->UserHomeDirectory, read->NfsUserHomeDirectory, read->FtpUserHomeDirectory,
             read->DlnaUserHomeDirectory, read->AfpUserHomeDirectory);
    return 0;
}

/// The policy of the home folders is that of the share 0, which is none.
uint32_t read_home_policy(CallContext *ctx, sqlite3 *db, HomeFolderOptions *read)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT SM.enabled,SM.schedule,SM.nonempty_snapshots,SM.retention_rule,SM.lifetime,SM.number "
               "FROM `snapshot_management` SM WHERE share_id=0")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM snapshot_management'. %s"));
    if (rows.count == 0) return 0;
    auto *policy = allocate<CustomSnapshotManagement>(ctx);
    auto *rules = allocate<SnapshotRetentionRules>(ctx);
    TRY_MEMORY(ctx);
    read_row(ctx, rows, 0, policy->Enabled, policy->CustomSnapshotSchedule, policy->NonEmptySnapshots, rules->Type,
             rules->Lifetime, rules->Number);
    policy->SnapshotRetentionRules = rules;
    read->CustomSnapshotManagement = policy;
    return 0;
}

}  // namespace

uint32_t x_qbobj_getProtocolCollection(CallContext *ctx, sqlite3 *db, ProtocolCollection *collection)
{
    QB_ASSERT(collection);
    List<Protocol> list(&collection->Protocol);
    for (const Reader &reader : kReaders)
        if (reader.reach != Reach::name) TRY(append_protocol(ctx, db, list, reader));
    return 0;
}

uint32_t x_qbobj_getProtocol(CallContext *ctx, sqlite3 *db, const char *name, ProtocolCollection *collection)
{
    QB_ASSERT(collection);
    List<Protocol> list(&collection->Protocol);
    for (const Reader &reader : kReaders)
        if (name && reader.reach != Reach::collection && strcmp(name, reader.word) == 0)
            return append_protocol(ctx, db, list, reader);
    return REPORT(ctx, 8, "Unknojwn protocol name %s\n", name ? name : "(null)");
}

uint32_t x_qbobj_getSnmpOptions(CallContext *ctx, sqlite3 *db, SnmpOptions *options)
{
    QB_ASSERT(options);
    SnmpOptions read{};
    int32_t enabled = 0;
    TRY(read_snmp_row(ctx, db, &enabled, &read));
    TRY_MEMORY(ctx);
    *options = read;
    return 0;
}

uint32_t x_qbobj_getHomeFolderOptions(CallContext *ctx, sqlite3 *db, HomeFolderOptions *options)
{
    QB_ASSERT(options);
    HomeFolderOptions read{};
    TRY(read_home_directories(ctx, db, &read));
    TRY(read_home_policy(ctx, db, &read));
    TRY_MEMORY(ctx);
    *options = read;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
