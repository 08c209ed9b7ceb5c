// Memory that is wiped before it is given back: records and input texts may hold passwords.
#pragma once

#include <cstddef>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

namespace qbcli {

/// Memory of the heap that is overwritten when it is freed.
std::pmr::memory_resource *wiping_memory();

/// A text that leaves nothing behind when it grows or goes.
using PrivateText = std::pmr::string;

/// An empty private text.
PrivateText private_text();

/// Overwrites a text in place.
void wipe(std::string &text);

/// The records of one call and their texts. All goes away, wiped, with the arena.
class Arena {
public:
    /// Zero-filled memory, aligned for any record.
    void *zeroed(size_t size);
    /// A NUL-terminated copy.
    const char *copy(std::string_view text);
    /// A copy that is remembered as a secret.
    const char *copy_secret(std::string_view text);
    /// The secrets copied so far.
    const std::vector<std::string_view> &secrets() const { return secrets_; }

private:
    std::pmr::monotonic_buffer_resource memory_{wiping_memory()};
    std::vector<std::string_view> secrets_;
};

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
