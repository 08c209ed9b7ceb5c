// The workers of the system records' operations: the log, network interfaces, power supplies.
#pragma once

#include "frame/worker.h"
#include "qbobj/system.h"

namespace qb {

Worker<qbobj_getLog> x_qbobj_getLog;
Worker<qbobj_deleteLog> x_qbobj_deleteLog;
Worker<qbobj_truncateLog> x_qbobj_truncateLog;
Worker<qbobj_addLog> x_qbobj_addLog;

Worker<qbobj_getNetworkInterfaceCollection> x_qbobj_getNetworkInterfaceCollection;
Worker<qbobj_getNetworkInterface> x_qbobj_getNetworkInterface;
Worker<qbobj_addNetworkInterface> x_qbobj_addNetworkInterface;
Worker<qbobj_deleteNetworkInterface> x_qbobj_deleteNetworkInterface;
Worker<qbobj_modifyNetworkInterface> x_qbobj_modifyNetworkInterface;

Worker<qbobj_getUpsConfigCollection> x_qbobj_getUpsConfigCollection;
Worker<qbobj_getUpsConfigByNameAtHost> x_qbobj_getUpsConfigByNameAtHost;
Worker<qbobj_addUpsConfig> x_qbobj_addUpsConfig;
Worker<qbobj_deleteUpsConfig> x_qbobj_deleteUpsConfig;
Worker<qbobj_setUpsConfig> x_qbobj_setUpsConfig;
Worker<qbobj_setUpsInfo> x_qbobj_setUpsInfo;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
