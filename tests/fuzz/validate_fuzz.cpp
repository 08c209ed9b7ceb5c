// Every check without a database on one text: the result is a documented one, comes again, and fits the outputs.

#include "../validate/checks.h"

#include <cstdint>
#include <cstdio>

namespace {

[[noreturn]] void fail(const char *check, const char *what)
{
    std::fprintf(stderr, "%s: %s\n", check, what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // A NUL in the data ends the text, and with it the allocation.
    std::string bytes(reinterpret_cast<const char *>(data), size);
    bytes.resize(std::strlen(bytes.c_str()));
    const checks::Exact text(bytes);

    for (const checks::Check &check : checks::all()) {
        const checks::Outcome outcome = check.run(text.get());
        if (outcome.fault != nullptr)
            fail(check.name, outcome.fault);
        if (!check.documents(outcome.result))
            fail(check.name, "a result that is not documented");
        if (!(check.run(text.get()) == outcome))
            fail(check.name, "another result the second time");
    }
    if (const char *broken = checks::broken_relation(text.get()))
        fail("relation", broken);
    return 0;
}
// SPDX-License-Identifier: Apache-2.0
