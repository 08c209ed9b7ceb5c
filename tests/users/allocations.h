// What the program allocates in pools; the functions stand in allocation_test.cpp.
#pragma once

#include <cstddef>

namespace test {

/// Bytes allocated in pools so far, each block rounded up as the pool does.
extern size_t pool_bytes;

}  // namespace test
