// Health of disks, enclosures and UPS units: workers.
#pragma once

#include "frame/worker.h"
#include "qbobj/storage.h"

namespace qb {

Worker<qbobj_getDiskHealthCollection> x_qbobj_getDiskHealthCollection;
Worker<qbobj_setDiskHealth> x_qbobj_setDiskHealth;

Worker<qbobj_getEnclosureHealthCollection> x_qbobj_getEnclosureHealthCollection;
Worker<qbobj_getEnclosureHealth> x_qbobj_getEnclosureHealth;
Worker<qbobj_setEnclosureHealth> x_qbobj_setEnclosureHealth;
Worker<qbobj_setEnclosureHealthForTest> x_qbobj_setEnclosureHealthForTest;

Worker<qbobj_getUpsHealthCollection> x_qbobj_getUpsHealthCollection;
Worker<qbobj_setUpsHealth> x_qbobj_setUpsHealth;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
