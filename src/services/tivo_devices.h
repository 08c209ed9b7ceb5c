// The devices that the TiVo service has seen, as its state file tells of them.
#pragma once

#include "frame/report.h"
#include "qbobj/services.h"

namespace qb {

/// Reads the devices; waits while the service is looking for them, and gives up with none when it takes too long.
/// There are none either when the service does not run. 0, or the code of a report.
uint32_t read_tivo_devices(CallContext *ctx, TIVOhostsAcl **devices);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
