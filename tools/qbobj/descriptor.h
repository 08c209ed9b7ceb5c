// An open file.
#pragma once

#include <unistd.h>

namespace qbcli {

/// A descriptor that is closed with its scope; negative for none.
struct Descriptor {
    int fd;
    explicit Descriptor(int descriptor) : fd(descriptor) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor()
    {
        if (fd >= 0) close(fd);
    }
};

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
