// Network interfaces: reading, adding, changing, deleting.
#include "frame/list.h"
#include "frame/read_row.h"
#include "frame/set_list.h"
#include "system/workers.h"
#include "validate/validate.h"

namespace qb {
namespace {

constexpr char kColumns[] = "SELECT N.name,N.mac,N.protocol,N.ip,N.dns1,N.dns2,N.gateway,N.subnet FROM network_if N";

using Field = const char *NetworkInterface::*;

void read_interface(CallContext *ctx, const Rows &rows, int row, NetworkInterface *nif)
{
    read_row(ctx, rows, row, both(nif->key, nif->Name), nif->Mac, nif->Protocol, nif->IP, nif->DNS1, nif->DNS2,
             nif->Gateway, nif->Subnet);
}

uint32_t read_interfaces(CallContext *ctx, sqlite3 *db, NetworkInterface **head, Rows &rows)
{
    TRY(select(ctx, db, rows, "%s ORDER BY N.name COLLATE NOCASE", +kColumns)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM network_interface'. %s"));
    NetworkInterface *read = nullptr;
    List<NetworkInterface> list(&read);
    for (int i = 0; i < rows.count; i++) {
        NetworkInterface *nif = list.append(ctx);
        TRY_MEMORY(ctx);
        read_interface(ctx, rows, i, nif);
    }
    TRY_MEMORY(ctx);
    List<NetworkInterface>(head).link(read);
    return 0;
}

/// A format that takes one text, checked while it is compiled.
using Format = Sql<const char *>;

/// A field that holds an address and may be missing in a new interface.
struct AddressField {
    Field field;
    Format refusal;
};

constexpr AddressField kAddresses[] = {
    {&NetworkInterface::IP, "Invalid NetworkInterface IP (%s)"},
    {&NetworkInterface::DNS1, "Invalid NetworkInterface DNS1 (%s)"},
    {&NetworkInterface::DNS2, "Invalid NetworkInterface DNS2 (%s)"},
    {&NetworkInterface::Gateway, "Invalid NetworkInterface Gateway (%s)"},
};

uint32_t check_new_interface(CallContext *ctx, const NetworkInterface *nif)
{
    if (check_short_name(nif->Name)) return REPORT(ctx, 8, "Invalid NetworkInterface Name (%s)", nif->Name);
    if (check_mac(nif->Mac)) return REPORT(ctx, 8, "Invalid NetworkInterface Mac (%s)", nif->Mac);
    for (const auto &[field, refusal] : kAddresses)
        if (is_set(nif->*field) && check_ipv4(nif->*field)) return REPORT(ctx, 8, refusal.text, nif->*field);
    return 0;
}

int32_t accept_any(const char *)
{
    return 0;
}

/// A field that can be changed.
struct ChangeField {
    Field field;
    Format assignment;
    int32_t (*check)(const char *);
    Format refusal;
};

constexpr ChangeField kChangeable[] = {
    {&NetworkInterface::Mac, "mac=%Q", check_mac, "NetworkInterface Mac (%s) is invalid."},
    {&NetworkInterface::Protocol, "protocol=%Q", accept_any, "%s"},
    {&NetworkInterface::IP, "ip=%Q", check_ipv4, "NetworkInterface IP (%s) is invalid."},
    {&NetworkInterface::DNS1, "dns1=%Q", check_ipv4, "NetworkInterface DNS1 (%s) is invalid."},
    {&NetworkInterface::DNS2, "dns2=%Q", check_ipv4, "NetworkInterface DNS2 (%s) is invalid."},
    {&NetworkInterface::Gateway, "gateway=%Q", check_ipv4, "NetworkInterface Gateway (%s) is invalid."},
};

}  // namespace

uint32_t x_qbobj_getNetworkInterfaceCollection(CallContext *ctx, sqlite3 *db, NetworkInterfaceCollection *interfaces)
{
    QB_ASSERT(interfaces);
    Rows rows;
    const uint32_t rc = read_interfaces(ctx, db, &interfaces->NetworkInterface, rows);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, static_cast<int>(rc), rows.count);
    return rc;
}

uint32_t x_qbobj_getNetworkInterface(CallContext *ctx, sqlite3 *db, NetworkInterface *nif)
{
    QB_ASSERT(nif);
    if (!nif->Name) return REPORT(ctx, 8, "NetworkInterface Name cannot be NULL.");
    Rows rows;
    TRY(select(ctx, db, rows, "%s WHERE N.name=%Q", +kColumns, nif->Name)
            .or_report(ctx, "Failed DB Query for 'SELECT network_if'. %s"));
    if (rows.count == 0) return REPORT(ctx, 6, "NetworkInterface Name=%s not exist.", nif->Name);
    NetworkInterface read{};
    read_interface(ctx, rows, 0, &read);
    TRY_MEMORY(ctx);
    read.next = nif->next;
    *nif = read;
    return 0;
}

uint32_t x_qbobj_addNetworkInterface(CallContext *ctx, sqlite3 *db, NetworkInterface *nif)
{
    QB_ASSERT(nif);
    TRY(check_new_interface(ctx, nif));
    const auto bad =
        execute(ctx, db,
                "INSERT INTO network_if (name,mac,protocol,ip,dns1,dns2,gateway,subnet) "
                "VALUES(%Q,%Q,%Q,%Q,%Q,%Q,%Q,%Q)",
                nif->Name, nif->Mac, nif->Protocol, nif->IP, nif->DNS1, nif->DNS2, nif->Gateway, nif->Subnet);
    if (bad.rc == kConstraint) return REPORT(ctx, 8, "NetworkInterface Name (%s) is already exist.", nif->Name);
    return bad.or_report(ctx, "Failed DB Query for 'INSERT INTO network_if'. %s");
}

uint32_t x_qbobj_modifyNetworkInterface(CallContext *ctx, sqlite3 *db, NetworkInterface *nif)
{
    QB_ASSERT(nif);
    if (!nif->Name) return REPORT(ctx, 8, "NetworkInterface Name cannot be NULL.");
    SetList<512> set;
    for (const auto &[field, assignment, check, refusal] : kChangeable) {
        const char *value = nif->*field;
        if (!value) continue;
        if (check(value)) return REPORT(ctx, 8, refusal.text, value);
        set.add(assignment, value);
    }
    // A value silently left out would look as if it had been written.
    if (set.dropped) return REPORT(ctx, 5, "Failed 'UPDATE network_if'. %s", "The values are too long.");
    if (set.empty()) return 0;
    return execute(ctx, db, "UPDATE network_if SET %s WHERE Name=%Q", +set.text, nif->Name)
        .or_report(ctx, "Failed 'UPDATE network_if'. %s");
}

uint32_t x_qbobj_deleteNetworkInterface(CallContext *ctx, sqlite3 *db, const char *name)
{
    if (!name) return REPORT(ctx, 8, "NetworkInterface Name cannot be NULL.");
    TRY(execute(ctx, db, "DELETE FROM network_if WHERE name=%Q", name)
            .or_report(ctx, "Failed DELETE network_if. (%s)"));
    if (sqlite3_changes(db) == 0)
        return REPORT(ctx, 6, "None of row is deleted. Specifie Name (%s) is not exist.", name);
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
