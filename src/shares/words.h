// The access words of share records and what stands for them in the tables.
#pragma once

#include <cstdint>

namespace qb {

inline constexpr char kReadWrite[] = "ReadWrite";
inline constexpr char kReadOnly[] = "ReadOnly";
inline constexpr char kDisabled[] = "Disabled";

/// The word of one triplet of permission bits. The write bit decides alone.
constexpr const char *word_of_bits(int32_t bits)
{
    return bits & 2 ? kReadWrite : bits & 4 ? kReadOnly : kDisabled;
}

/// The word of one triplet of bits that are taken away, as FTP stores them.
constexpr const char *word_of_removed_bits(int32_t bits)
{
    return !(bits & 2) ? kReadWrite : bits & 4 ? kDisabled : kReadOnly;
}

/// Two triplets in one number, the group's above everyone's.
constexpr int32_t packed(int32_t group, int32_t everyone)
{
    return group * 8 + everyone;
}
constexpr int32_t group_of(int32_t triplets)
{
    return triplets >> 3 & 7;
}
constexpr int32_t everyone_of(int32_t triplets)
{
    return triplets & 7;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
