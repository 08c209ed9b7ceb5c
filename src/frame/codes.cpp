// The table of codes and what they mean.
#include "qbobj/codes.h"

namespace {

#define QB_CODE_ROW(CODE, MEANING) {CODE, MEANING},
constexpr QbobjCode kCodes[] = {QBOBJ_FOR_EACH_CODE(QB_CODE_ROW){0, nullptr}};
#undef QB_CODE_ROW

consteval bool ascend()
{
    for (const QbobjCode *row = kCodes + 1; row->code; row++)
        if (row->code <= row[-1].code) return false;
    return true;
}
static_assert(ascend(), "codes ascend, each stands once");

}  // namespace

const QbobjCode *qbobj_codes(void)
{
    return kCodes;
}

const char *qbobj_code_meaning(uint32_t code)
{
    for (const QbobjCode *row = kCodes; row->code; row++)
        if (row->code == code) return row->meaning;
    return nullptr;
}
// SPDX-License-Identifier: Apache-2.0
