// Network interfaces: workers.
#pragma once

#include "frame/report.h"
#include "qbobj/system.h"

namespace qb {

uint32_t x_qbobj_getNetworkInterfaceCollection(CallContext *ctx, sqlite3 *db, NetworkInterfaceCollection *interfaces);
uint32_t x_qbobj_getNetworkInterface(CallContext *ctx, sqlite3 *db, NetworkInterface *nif);
uint32_t x_qbobj_addNetworkInterface(CallContext *ctx, sqlite3 *db, NetworkInterface *nif);
uint32_t x_qbobj_deleteNetworkInterface(CallContext *ctx, sqlite3 *db, const char *name);
uint32_t x_qbobj_modifyNetworkInterface(CallContext *ctx, sqlite3 *db, NetworkInterface *nif);

}  // namespace qb
