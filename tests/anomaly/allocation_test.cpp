// Every allocation of every operation fails: once, and from there on.
#include <apr_pools.h>
#include <dlfcn.h>

#include <cerrno>

#include "anomaly/anomaly.h"
#include "anomaly/memory.h"
#include "handle.h"

constinit test::Memory test::memory{};

using namespace test;

namespace {

/// SQLite's own allocator with ours in front. Without lookaside and page blocks, every need shows.
struct SqliteMemory {
    sqlite3_mem_methods own{};

    SqliteMemory()
    {
        sqlite3_config(SQLITE_CONFIG_GETMALLOC, &own);
        sqlite3_mem_methods methods = own;
        methods.xMalloc = [](int size) { return memory.refuse(Source::sqlite) ? nullptr : get().own.xMalloc(size); };
        methods.xRealloc = [](void *block, int size) {
            return memory.refuse(Source::sqlite) ? nullptr : get().own.xRealloc(block, size);
        };
        sqlite3_config(SQLITE_CONFIG_MALLOC, &methods);
        sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0);
        sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
        sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    }
    static SqliteMemory &get()
    {
        static SqliteMemory methods;
        return methods;
    }
};

[[maybe_unused]] const SqliteMemory &installed = SqliteMemory::get();

}  // namespace

// This stands before the pool library's own for the whole program, its own calls included.
extern "C" void *apr_palloc(apr_pool_t *pool, apr_size_t size)
{
    static const auto allocate = reinterpret_cast<decltype(&apr_palloc)>(dlsym(RTLD_NEXT, "apr_palloc"));
    return memory.refuse(Source::pool) ? nullptr : allocate(pool, size);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" void *__libc_malloc(size_t);
extern "C" void *__libc_calloc(size_t, size_t);
extern "C" void *__libc_realloc(void *, size_t);
extern "C" void __libc_free(void *);

namespace {

void *counted(void *block)
{
    if (block) __atomic_fetch_add(&memory.blocks, 1, __ATOMIC_RELAXED);
    else errno = ENOMEM;
    return block;
}

}  // namespace

extern "C" void *malloc(size_t size) noexcept
{
    return counted(memory.refuse(Source::heap) ? nullptr : __libc_malloc(size));
}
extern "C" void *calloc(size_t count, size_t size) noexcept
{
    return counted(memory.refuse(Source::heap) ? nullptr : __libc_calloc(count, size));
}
extern "C" void *realloc(void *block, size_t size) noexcept
{
    if (!block) return malloc(size);
    if (!memory.refuse(Source::heap)) return __libc_realloc(block, size);
    errno = ENOMEM;
    return nullptr;
}
extern "C" void free(void *block) noexcept
{
    if (block) __atomic_fetch_sub(&memory.blocks, 1, __ATOMIC_RELAXED);
    __libc_free(block);
}
#endif

namespace {

struct Allocations : Anomaly, testing::WithParamInterface<std::tuple<const Family *, Trouble>> {
    const Trouble trouble = std::get<Trouble>(GetParam());
    long failed = 0;
    std::vector<bool> met = std::vector<bool>(family.memory_exceptions.size());

    Allocations() : Anomaly(*std::get<const Family *>(GetParam()))
    {
        pause = [](bool on) { memory.watching = !on; };
        apr_allocator_max_free_set(qbdb->internal->allocator, 1);  // pools give back what they do not need
        memory = {.source = trouble.source, .forever = trouble.forever, .blocks = memory.blocks};
    }
    ~Allocations() override { memory.source = Source::none; }

    Outcome run_failing(const Trial &trial, long nth)
    {
        qbdb_set_statement_cache(qbdb, 0);  // statements are prepared anew
        qbdb_set_statement_cache(qbdb, 256);
        return run(trial, 0, 0, [&](bool entering) {
            if (entering && trouble.source == Source::heap) apr_palloc(qbdb->request_pool, 7900);
            memory.nth = entering ? nth : 0;
            memory.count = entering ? 0 : memory.count;
            memory.refused = entering ? false : memory.refused;
            memory.watching = entering;
        });
    }

    void expect_next_call_works(const Trial &trial, const Outcome &reference)
    {
        const Outcome next = run_failing(trial, 0);
        EXPECT_EQ(next.rc, reference.rc) << next.message;
        EXPECT_EQ(next.outputs, reference.outputs);
        EXPECT_TRUE(next.stored == reference.stored);
    }

    bool excepted(const Trial &trial, const Outcome &outcome)
    {
        for (size_t i = 0; i < met.size(); i++) {
            const MemoryException &row = family.memory_exceptions[i];
            const bool same = outcome.rc == row.rc && !strcmp(trial.operation, row.operation) &&
                              outcome.message.starts_with(row.message) && outcome.message.empty() == !*row.message;
            if (same) met[i] = true;
            if (same) return true;
        }
        return false;
    }

    void check(const Trial &trial, const Outcome &outcome, const Outcome &reference)
    {
        const QbobjOperation &operation = operation_of(trial);
        if (outcome.rc == reference.rc && outcome.code == reference.code) {
            if (outcome.rc == 0 || !is_listed(family.left_outputs, trial)) {
                EXPECT_EQ(outcome.outputs, reference.outputs);
            }
            EXPECT_TRUE(outcome.stored == reference.stored) << "stores something else";
            return;
        }
        EXPECT_FALSE(outcome.wrote_outputs && !is_listed(family.left_outputs, trial)) << outcome.outputs;
        if (excepted(trial, outcome)) return;
        if (outcome.statements.size() <= 1 && outcome.rc == SQLITE_NOMEM) {
            EXPECT_EQ(outcome.code, 0u) << "it could not begin";
        } else if (operation.returns != QBOBJ_RETURNS_CODE) {
            EXPECT_EQ(outcome.rc, operation.returns == QBOBJ_RETURNS_TRUTH ? 0 : 0xFFFFFFFF);
            EXPECT_EQ(outcome.code, 0u) << outcome.message;
        } else {
            EXPECT_TRUE(outcome.rc == 2 || outcome.rc == 5) << outcome.rc << " " << outcome.message;
            EXPECT_TRUE(documents(operation, outcome.rc)) << outcome.rc << " " << outcome.message;
            EXPECT_EQ(outcome.code, outcome.rc);
            EXPECT_NE(outcome.message, "");
        }
    }
};

TEST_P(Allocations, EachFails)
{
    if (trouble.source == Source::heap && !kHeapIsOurs)
        GTEST_SKIP() << "the sanitizer owns the heap: pools and SQLite are tested by themselves";
    for (const Trial &trial : family.trials) {
        SCOPED_TRACE(name_of(trial));
        begin(trial);
        run_failing(trial, 0);
        const Outcome reference = run_failing(trial, 0);
        EXPECT_EQ(reference.rc, after_refused_commit(trial, SQLITE_FULL)) << reference.message;
        const long blocks = memory.blocks;
        for (long n = 1;; n++) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            const Outcome outcome = run_failing(trial, n);
            if (!memory.refused) {
                EXPECT_GT(n, memory.count);
                break;
            }
            failed++;
            check(trial, outcome, reference);
        }
        EXPECT_TRUE(image_of(db) == before);
        expect_next_call_works(trial, reference);
        if (kHeapIsOurs) {
            EXPECT_LE(memory.blocks, blocks) << "something was not given back";
        }
    }
    for (size_t i = 0; i < met.size() && trouble.source != Source::pool; i++)  // they are of statements
        EXPECT_TRUE(met[i]) << family.memory_exceptions[i].operation
                            << " needs no exception: " << family.memory_exceptions[i].why;
    printf("%ld allocations failed\n", failed);
}

INSTANTIATE_TEST_SUITE_P(, Allocations,
                         testing::Combine(testing::ValuesIn(families()),
                                          testing::Values(Trouble{Source::pool, false, "pool_once"},
                                                          Trouble{Source::pool, true, "pool_forever"},
                                                          Trouble{Source::sqlite, false, "sqlite_once"},
                                                          Trouble{Source::sqlite, true, "sqlite_forever"},
                                                          Trouble{Source::heap, false, "heap_once"},
                                                          Trouble{Source::heap, true, "heap_forever"})),
                         [](const auto &info) {
                             return std::string(std::get<0>(info.param)->name) + "_" + std::get<1>(info.param).name;
                         });

}  // namespace
// SPDX-License-Identifier: Apache-2.0
