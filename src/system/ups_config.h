// Configuration of the uninterruptible power supplies: workers.
#pragma once

#include "frame/worker.h"
#include "qbobj/system.h"

namespace qb {

Worker<qbobj_getUpsConfigCollection> x_qbobj_getUpsConfigCollection;
Worker<qbobj_getUpsConfigByNameAtHost> x_qbobj_getUpsConfigByNameAtHost;
Worker<qbobj_addUpsConfig> x_qbobj_addUpsConfig;
Worker<qbobj_deleteUpsConfig> x_qbobj_deleteUpsConfig;
Worker<qbobj_setUpsConfig> x_qbobj_setUpsConfig;
Worker<qbobj_setUpsInfo> x_qbobj_setUpsInfo;

}  // namespace qb
