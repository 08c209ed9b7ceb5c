#include "memory.h"

#include <string.h>

namespace qbcli {
namespace {

class WipingMemory : public std::pmr::memory_resource {
    std::pmr::memory_resource *heap = std::pmr::new_delete_resource();

    void *do_allocate(size_t size, size_t alignment) override { return heap->allocate(size, alignment); }
    void do_deallocate(void *memory, size_t size, size_t alignment) override
    {
        explicit_bzero(memory, size);
        heap->deallocate(memory, size, alignment);
    }
    bool do_is_equal(const memory_resource &other) const noexcept override { return this == &other; }
};

}  // namespace

std::pmr::memory_resource *wiping_memory()
{
    static WipingMemory memory;
    return &memory;
}

PrivateText private_text()
{
    return PrivateText(wiping_memory());
}

void wipe(std::string &text)
{
    explicit_bzero(text.data(), text.size());
}

void *Arena::zeroed(size_t size)
{
    void *memory = memory_.allocate(size, alignof(std::max_align_t));
    memset(memory, 0, size);
    return memory;
}

const char *Arena::copy(std::string_view text)
{
    auto *memory = static_cast<char *>(memory_.allocate(text.size() + 1, 1));
    text.copy(memory, text.size());
    memory[text.size()] = '\0';
    return memory;
}

const char *Arena::copy_secret(std::string_view text)
{
    const char *memory = copy(text);
    if (!text.empty()) secrets_.emplace_back(memory, text.size());
    return memory;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
