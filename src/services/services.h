// Service-wide settings: workers.
#pragma once

#include "frame/worker.h"
#include "qbobj/services.h"

namespace qb {

// Protocols and home folders
Worker<qbobj_getProtocolCollection> x_qbobj_getProtocolCollection;
Worker<qbobj_getProtocol> x_qbobj_getProtocol;
Worker<qbobj_getSnmpOptions> x_qbobj_getSnmpOptions;
Worker<qbobj_getHomeFolderOptions> x_qbobj_getHomeFolderOptions;
Worker<qbobj_setProtocolCollection> x_qbobj_setProtocolCollection;
Worker<qbobj_setProtocolEnable> x_qbobj_setProtocolEnable;
Worker<qbobj_setHomeFolderOptions> x_qbobj_setHomeFolderOptions;

// Time Machine
Worker<qbobj_getTimemachine> x_qbobj_getTimemachine;
Worker<qbobj_setTimemachine> x_qbobj_setTimemachine;
Worker<qbobj_setTimemachineEnable> x_qbobj_setTimemachineEnable;

// TiVo
Worker<qbobj_getTIVOSettings> x_qbobj_getTIVOSettings;
Worker<qbobj_setTIVOSettings> x_qbobj_setTIVOSettings;
Worker<qbobj_setTIVOMak> x_qbobj_setTIVOMak;

// Coffer
Worker<qbobj_getCofferSettings> x_qbobj_getCofferSettings;
Worker<qbobj_setCofferSettings> x_qbobj_setCofferSettings;
Worker<qbobj_cleanCofferSettings> x_qbobj_cleanCofferSettings;

// Dictionary and daemon record
Worker<qbobj_getDictionary> x_qbobj_getDictionary;
Worker<qbobj_getTranslatedString> x_qbobj_getTranslatedString;
Worker<qbobj_getQuillboxdInfo> x_qbobj_getQuillboxdInfo;
Worker<qbobj_setQuillboxdInfo> x_qbobj_setQuillboxdInfo;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
