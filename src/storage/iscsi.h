// iSCSI LUN groups, initiators, LUNs and access lists: workers.
#pragma once

#include "frame/worker.h"
#include "qbobj/storage.h"

namespace qb {

Worker<qbobj_getLunGroupCollection> x_qbobj_getLunGroupCollection;
Worker<qbobj_getLunGroup> x_qbobj_getLunGroup;
Worker<qbobj_getLunGroupId, int32_t> x_qbobj_getLunGroupId;
Worker<qbobj_addLunGroup> x_qbobj_addLunGroup;
Worker<qbobj_modifyLunGroup> x_qbobj_modifyLunGroup;
Worker<qbobj_deleteLunGroup> x_qbobj_deleteLunGroup;

Worker<qbobj_getInitiatorCollection> x_qbobj_getInitiatorCollection;
Worker<qbobj_getInitiator> x_qbobj_getInitiator;
Worker<qbobj_getInitiatorId, int32_t> x_qbobj_getInitiatorId;
Worker<qbobj_addInitiator> x_qbobj_addInitiator;
Worker<qbobj_modifyInitiator> x_qbobj_modifyInitiator;
Worker<qbobj_deleteInitiator> x_qbobj_deleteInitiator;

Worker<qbobj_getLun> x_qbobj_getLun;
Worker<qbobj_getLunId, int32_t> x_qbobj_getLunId;
Worker<qbobj_addLun> x_qbobj_addLun;
Worker<qbobj_deleteLun> x_qbobj_deleteLun;

Worker<qbobj_getLunGroupAccessList> x_qbobj_getLunGroupAccessList;
Worker<qbobj_addLunGroupAccessList> x_qbobj_addLunGroupAccessList;
Worker<qbobj_deleteLunGroupAccessList> x_qbobj_deleteLunGroupAccessList;
Worker<qbobj_deleteIniFromLunGroupAccessList> x_qbobj_deleteIniFromLunGroupAccessList;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
