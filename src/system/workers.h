// The workers of the system records' operations: the log, network interfaces.
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

}  // namespace qb
