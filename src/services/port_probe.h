// Whether something listens on a TCP port of this machine.
#pragma once

#include "frame/report.h"

namespace qb {

inline constexpr int32_t kPortFree = 0;
inline constexpr int32_t kPortTaken = -1;
inline constexpr int32_t kNoSocket = -2;
inline constexpr int32_t kNoLocalHost = -3;

/// Connects to the port on every address of "localhost" and tells which of the above it is. A connection that is
/// neither made nor refused within a moment counts as none.
int32_t probe_local_port(CallContext *ctx, int32_t port);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
