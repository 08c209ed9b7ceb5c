#include "failure.h"

namespace qbcli {

Status status_of(uint32_t code)
{
    switch (code) {
        case 0: return Status::kDone;
        case 2: return Status::kMemory;
        case 5:
        case 7: return Status::kFailed;  // 7 comes from SQLite alone: no memory for a transaction
        case 6: return Status::kNotFound;
        default: return Status::kRefused;
    }
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
