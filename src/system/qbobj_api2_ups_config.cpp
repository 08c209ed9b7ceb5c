// Configuration of the uninterruptible power supplies: reading, adding, changing, deleting.
#include "frame/list.h"
#include "frame/query.h"
#include "frame/read_row.h"
#include "system/workers.h"
#include "validate/validate.h"

namespace qb {
namespace {

constexpr char kUnits[] =
    "SELECT U.name||'@'||U.host,U.port,U.type,U.name,U.description,U.ups_model,U.ups_mfr,U.ups_mfr_date,U.ups_serial,"
    "U.shutdown_threshold,U.snmp_community,U.snmp_mibs,U.remote_username,U.remote_password,U.enabled,"
    "REPLACE(IFNULL(UH.ups_status,'?'),' ','_'),IFNULL(UH.ups_alarm,'?') FROM _ups_config U LEFT JOIN _ups_health UH "
    "ON UH.name=U.name AND UH.host=U.host";

/// The monitor watches no more.
constexpr int32_t kMostEnabled = 6;

bool is_local(const char *type)
{
    return type && strcmp(type, "local") == 0;
}

bool is_remote(const char *type)
{
    return type && strcmp(type, "remote") == 0;
}

/// A unit attached here is offered to other machines by the server of this appliance, which has one setting for all.
uint32_t read_sharing(CallContext *ctx, sqlite3 *db, UpsConfig *ups)
{
    if (!is_local(ups->Type)) return 0;
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT U.enabled,U.listen1 FROM service_upsd U  LIMIT 1")
            .or_report(ctx, "SQL Fail for SELECT service_upsd. %s"));
    if (rows.count > 0) read_row(ctx, rows, 0, ups->Share_enabled, ups->List1);
    return 0;
}

uint32_t read_unit(CallContext *ctx, sqlite3 *db, const Rows &rows, int row, UpsConfig *ups)
{
    read_row(ctx, rows, row, ups->key, ups->Port, ups->Type, ups->Name, ups->Description, ups->UpsModel, ups->UpsMfr,
             ups->UpsMfrDate, ups->UpsSerial, ups->ShutdownThreshold, ups->SnmpCommunity, ups->SnmpMibs,
             ups->RemoteUserName, ups->RemotePassword, ups->Enabled, ups->UpsStatus, ups->UpsAlarm);
    TRY_MEMORY(ctx);
    return read_sharing(ctx, db, ups);
}

uint32_t check_unit_name(CallContext *ctx, const char *name)
{
    const int32_t rc = check_ups_name(name);
    switch (rc) {
        case 0: return 0;
        case 1:
        case 2: return REPORT(ctx, 825, "UPS Name (%s) contains invalid char. Must be '[a-zA-Z][0-9a-zA-Z]*'.", name);
        case 3: return REPORT(ctx, 806, "UPS Name (%s) is too long", name);
        default: return REPORT(ctx, 8, "Invalid UPS Name (%s), rc=%d", name, rc);
    }
}

/// No more units may be switched on; where that is so, not even one that is switched off can be added.
uint32_t check_room(CallContext *ctx, sqlite3 *db)
{
    int32_t count = 0;
    TRY(select_int32(ctx, db, count, "SELECT COUNT(*) FROM _ups_config WHERE enabled=1")
            .or_report(ctx, "Failed DB Query for 'SELECT _ups_config'. %s"));
    if (count >= kMostEnabled) return REPORT(ctx, 826, "Too many UPS. There are %d UPSs enalbed already.", count);
    return 0;
}

// ---- Local units

uint32_t check_nothing(CallContext *, const UpsConfig *)
{
    return 0;
}

uint32_t insert_local(CallContext *ctx, sqlite3 *db, const UpsConfig *ups)
{
    TRY(execute(ctx, db,
                "INSERT INTO _ups_config (name,host,port,type,enabled,description,shutdown_threshold) "
                "VALUES(%Q,'localhost','auto',%Q,%d,%Q,%d)",
                ups->Name, ups->Type, ups->Enabled, ups->Description, ups->ShutdownThreshold)
            .or_report(ctx, "Failed DB Query for 'INSERT _ups_config'. %s"));
    return execute(ctx, db, "UPDATE service_upsd SET enabled=%d,listen1=%Q", ups->Share_enabled, ups->List1)
        .or_report(ctx, "Failed DB Query for 'INSERT service_upsd'. %s");
}

uint32_t update_local(CallContext *ctx, sqlite3 *db, const UpsConfig *ups)
{
    TRY(execute(ctx, db, "UPDATE _ups_config SET enabled=%d,name=%Q,description=%Q,shutdown_threshold=%d", ups->Enabled,
                ups->Name, ups->Description, ups->ShutdownThreshold)
            .or_report(ctx, "Failed DB Query for 'UPDATE _ups_config' for LOCAL ups. %s"));
    return execute(ctx, db, "UPDATE service_upsd SET enabled=%d,listen1=%Q", ups->Share_enabled, ups->List1)
        .or_report(ctx, "Failed DB Query for 'UPDATE _ups_config' for LOCAL ups. %s");
}

// ---- Units with an SNMP card

/// What the SNMP driver of the monitor knows.
constexpr std::initializer_list<const char *> kMibs = {
    "auto",    "mge",     "apcc",     "netvision",  "pw", "aphel_genesisII", "aphel_revelation",
    "raritan", "baytech", "cpqpower", "cyberpower",
};

uint32_t check_snmp(CallContext *ctx, const UpsConfig *ups)
{
    if (check_ups_name(ups->SnmpCommunity)) return REPORT(ctx, 8, "Invalid community (%s).", ups->SnmpCommunity);
    if (check_one_of(ups->SnmpMibs, Case::exact, kMibs)) return REPORT(ctx, 8, "Invalid mibs (%s).", ups->SnmpMibs);
    return 0;
}

uint32_t insert_snmp(CallContext *ctx, sqlite3 *db, const UpsConfig *ups)
{
    return execute(ctx, db,
                   "INSERT INTO _ups_config (name,host,port,type,enabled,description,shutdown_threshold,"
                   "snmp_community,snmp_mibs) VALUES(%Q,'localhost',%Q,%Q,%d,%Q,%d,%Q,%Q)",
                   ups->Name, ups->Port, ups->Type, ups->Enabled, ups->Description, ups->ShutdownThreshold,
                   ups->SnmpCommunity, ups->SnmpMibs)
        .or_report(ctx, "Failed DB Query for 'INSERT _ups_config'. %s");
}

uint32_t update_snmp(CallContext *ctx, sqlite3 *db, const UpsConfig *ups)
{
    return execute(ctx, db,
                   "UPDATE _ups_config SET enabled=1,name=%Q,description=%Q,shutdown_threshold=%d,snmp_community=%Q,"
                   "snmp_mibs=%Q",
                   ups->Name, ups->Description, ups->ShutdownThreshold, ups->SnmpCommunity, ups->SnmpMibs)
        .or_report(ctx, "Failed DB Query for 'UPDATE _ups_config' for SNMP ups. %s");
}

// ---- Units of another server

uint32_t check_remote(CallContext *ctx, const UpsConfig *ups)
{
    if (!ups->RemoteUserName) return REPORT(ctx, 8, "Need to specify RemoteUserName.");
    if (check_user_name(ups->RemoteUserName, nullptr))
        return REPORT(ctx, 8, "Invalid remote NUT user name (%s).", ups->RemoteUserName);
    if (!ups->RemotePassword) return REPORT(ctx, 8, "Need to specify RemotePassword.");
    // Nothing else can be wrong with a password, so that the message never shows one.
    if (!is_set(ups->RemotePassword)) return REPORT(ctx, 8, "Invalid remote NUT passwer (%s).", ups->RemotePassword);
    return 0;
}

uint32_t insert_remote(CallContext *ctx, sqlite3 *db, const UpsConfig *ups)
{
    return execute(ctx, db,
                   "INSERT INTO _ups_config (name,host,port,type,enabled,description,shutdown_threshold,"
                   "remote_username,remote_password) VALUES(%Q,%Q,%Q,%Q,%d,%Q,%d,%Q,%Q)",
                   ups->Name, ups->Port, ups->Port, ups->Type, ups->Enabled, ups->Description, ups->ShutdownThreshold,
                   ups->RemoteUserName, ups->RemotePassword)
        .or_report(ctx, "Failed DB Query for 'INSERT _ups_config'. %s");
}

/// The statement is not a whole one and the database always refuses it: a remote unit is deleted and added again.
/// Without a WHERE clause it would give every unit one server's account.
uint32_t update_remote(CallContext *ctx, sqlite3 *db, const UpsConfig *ups)
{
    return execute(ctx, db,
                   "UPDATE _ups_config SET enabled=1,name=%Q,description='',remote_username=%Q,remote_password",
                   ups->Name, ups->RemoteUserName)
        .or_report(ctx, "Failed DB Query for 'UPDATE _ups_config' for REMOTE ups. %s");
}

// ---- All types

/// What is special to a type of unit.
struct UpsType {
    const char *word;
    bool has_address;
    uint32_t (*check)(CallContext *ctx, const UpsConfig *ups);
    uint32_t (*insert)(CallContext *ctx, sqlite3 *db, const UpsConfig *ups);
    uint32_t (*update)(CallContext *ctx, sqlite3 *db, const UpsConfig *ups);
};

constexpr UpsType kTypes[] = {
    {"local", false, check_nothing, insert_local, update_local},
    {"remote", true, check_remote, insert_remote, update_remote},
    {"snmp", true, check_snmp, insert_snmp, update_snmp},
};

uint32_t require_type(CallContext *ctx, const char *word, const UpsType **type)
{
    for (const UpsType &each : kTypes)
        if (word && strcmp(each.word, word) == 0) return *type = &each, 0;
    return REPORT(ctx, 8, "Invalid Type (%s), must be either 'remote' or 'snmp'.", word);
}

/// The stored type of the unit with a resource id.
uint32_t require_unit(CallContext *ctx, sqlite3 *db, const char *resource_id, const char **type)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT U.type FROM _ups_config U WHERE U.name||'@'||U.host=%Q", resource_id)
            .or_report(ctx, "Error 'SELECT _ups_config. %s'."));
    if (rows.count == 0) return REPORT(ctx, 8, "No UPS for resource-id='%s'.", resource_id);
    *type = rows.text(ctx, 0, 0);
    TRY_MEMORY(ctx);
    return 0;
}

}  // namespace

uint32_t x_qbobj_getUpsConfigCollection(CallContext *ctx, sqlite3 *db, UpsConfigCollection *ups)
{
    QB_ASSERT(ups);
    Rows rows;
    TRY(select(ctx, db, rows, "%s", +kUnits).or_report(ctx, "SQL Fail for SELECT _ups_config. %s"));
    UpsConfig *read = nullptr;
    List<UpsConfig> list(&read);
    for (int i = 0; i < rows.count; i++) {
        UpsConfig *unit = list.append(ctx);
        TRY_MEMORY(ctx);
        TRY(read_unit(ctx, db, rows, i, unit));
    }
    TRY_MEMORY(ctx);
    List<UpsConfig>(&ups->UpsConfig).link(read);
    return 0;
}

uint32_t x_qbobj_getUpsConfigByNameAtHost(CallContext *ctx, sqlite3 *db, const char *resourceId, UpsConfig *ups)
{
    QB_ASSERT(ups);
    Rows rows;
    TRY(select(ctx, db, rows, "%s WHERE %Q=U.name||'@'||U.host", +kUnits, resourceId)
            .or_report(ctx, "SQL Fail for SELECT _ups_config. %s"));
    if (rows.count == 0) return 0;
    UpsConfig read{};
    // Sharing is read even for a single unit, so that writing the record back does not switch it off.
    TRY(read_unit(ctx, db, rows, 0, &read));
    TRY_MEMORY(ctx);
    read.next = ups->next;
    *ups = read;
    return 0;
}

uint32_t x_qbobj_addUpsConfig(CallContext *ctx, sqlite3 *db, UpsConfig *ups)
{
    QB_ASSERT(ups);
    TRY(check_unit_name(ctx, ups->Name));
    const UpsType *type = nullptr;
    TRY(require_type(ctx, ups->Type, &type));
    QB_ASSERT(type);
    if (type->has_address && check_ipv4(ups->Port))
        return REPORT(ctx, 8, "Invalid Port (%s), must be IPv4 address.", ups->Port);
    TRY(check_room(ctx, db));
    TRY(type->check(ctx, ups));
    TRY(type->insert(ctx, db, ups));
    const char *host = is_remote(ups->Type) ? ups->Port : "localhost";
    const char *key = noted(ctx, apr_psprintf(pool_of(ctx->qbdb), "%s@%s", ups->Name, host));
    TRY_MEMORY(ctx);
    ups->key = key;
    return 0;
}

uint32_t x_qbobj_setUpsConfig(CallContext *ctx, sqlite3 *db, UpsConfig *ups)
{
    QB_ASSERT(ups);
    if (!ups->key) return REPORT(ctx, 8, "Invalid resource-id (%s)", "(null)");
    const char *stored = nullptr;
    TRY(require_unit(ctx, db, ups->key, &stored));
    if (ups->Type && (!stored || strcmp(stored, ups->Type) != 0))
        return REPORT(ctx, 8, "Cannot change UPS type %s-->%s.", stored, ups->Type);
    TRY(check_unit_name(ctx, ups->Name));
    const UpsType *type = nullptr;
    TRY(require_type(ctx, stored, &type));
    QB_ASSERT(type);
    TRY(type->check(ctx, ups));
    return type->update(ctx, db, ups);
}

uint32_t x_qbobj_setUpsInfo(CallContext *ctx, sqlite3 *db, UpsConfig *ups)
{
    QB_ASSERT(ups);
    if (!ups->key) return REPORT(ctx, 8, "NULL resource_id");
    const char *type = nullptr;
    TRY(require_unit(ctx, db, ups->key, &type));
    TRY(execute(ctx, db,
                "UPDATE _ups_config SET ups_model=%Q,ups_mfr=%Q,ups_mfr_date=%Q,ups_serial=%Q WHERE name||'@'||host=%Q",
                ups->UpsModel, ups->UpsMfr, ups->UpsMfrDate, ups->UpsSerial, ups->key)
            .or_report(ctx, "Failed DB Query for 'UPDATE _ups_config'. %s"));
    if (is_remote(type)) return 0;
    return execute(ctx, db, "UPDATE _ups_config SET shutdown_threshold=%d WHERE name||'@'||host=%Q",
                   ups->ShutdownThreshold, ups->key)
        .or_report(ctx, "Failed DB Query for 'UPDATE _ups_config'. %s");
}

uint32_t x_qbobj_deleteUpsConfig(CallContext *ctx, sqlite3 *db, const char *resourceId)
{
    if (!resourceId) return REPORT(ctx, 8, "NULL resource_id");
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT U.type FROM _ups_config U  WHERE name||'@'||host=%Q LIMIT 1", resourceId)
            .or_report(ctx, "Failed DB Query for 'get _ups_config'. %s"));
    if (rows.count == 0) return REPORT(ctx, 8, "Specified resource-id='%s' does not exist.", resourceId);
    if (is_local(rows.cell(0, 0)))
        TRY(execute(ctx, db, "UPDATE service_upsd SET enabled=0")
                .or_report(ctx, "Failed DB Query for 'UPDATE service_upsd'. %s"));
    return execute(ctx, db, "DELETE FROM _ups_config WHERE name||'@'||host=%Q", resourceId)
        .or_report(ctx, "Failed DB Query for 'DELETE _ups_config'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
