// Measures operations beside two peers that do the same work in the same process (peers.h), over the same
// rows, and prints ratios. See docs/performance.md.
//
//   qbobj_bench [--quick] [--json FILE]        the table
//   qbobj_bench --once CASE WAY COUNT          COUNT calls and nothing else, for an instruction count
//   qbobj_bench --cases                        the names that --once takes
//   qbobj_bench --count CASE...                one call of each of the small cases, in counted_call(), for a count
//   qbobj_bench --build                        what instruction counts depend on beside the sources
//   qbobj_bench --database FILE USERS          leaves a filled database for a peer in another process
#include <apr_allocator.h>
#include <gnu/libc-version.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "peers.h"
#include "report.h"

namespace {

using namespace bench;

/// A database with the peers that work on it; made when the first case that needs it runs.
struct Bed {
    Data data;
    Peer<Formatted> a;
    Peer<Prepared> b;

    explicit Bed(const Amount &amount) : data(amount), a(data), b(data) { data.qbdb->log_level = 0; }
};

struct LazyBed {
    Amount amount;
    std::unique_ptr<Bed> made;
    Bed &get()
    {
        if (!made) made = std::make_unique<Bed>(amount);
        return *made;
    }
};

/// One measured operation.
struct Case {
    std::string name;
    int records;
    std::shared_ptr<LazyBed> bed;
    std::function<void(Bed &)> ways[kWays];
    const char *undo = nullptr;  // takes back what a call wrote, outside the measured time
};

/// A chain of users to be added, alike but for their names.
struct UserChain {
    std::vector<std::string> names;
    std::vector<User> users;

    explicit UserChain(int count) : names(static_cast<size_t>(count)), users(static_cast<size_t>(count))
    {
        for (size_t i = 0; i < users.size(); i++) {
            names[i] = "new" + std::to_string(i);
            users[i] = User{};
            users[i].UserName = names[i].c_str();
            users[i].GroupName = "users";
            users[i].Email = "new@example.com";
            users[i].SysHash = "$1$abcdefgh$0123456789abcdefghijk.";
            users[i].Password = users[i].SysHash;
            users[i].next = i + 1 < users.size() ? &users[i + 1] : nullptr;
        }
    }

    User *fresh()
    {
        for (User &user : users) user.resource_id = user.UserId = 0;
        return users.data();
    }
};

/// A user who changes: nobody writes the same values again and again.
struct Changing {
    User user{};
    char email[64] = "";
    int changes = 0;

    User *next()
    {
        snprintf(email, sizeof email, "anna%d@example.com", ++changes);
        user = {};
        user.resource_id = user.UserId = kFirstUser + 500;
        user.UserName = "user00500";
        user.GroupName = "users";
        user.Email = email;
        user.Password = masked_password;
        return &user;
    }
};

void list_users(Bed &bed, int32_t limit, int32_t offset)
{
    Data &d = bed.data;
    UserCollection users{};
    AccountQuery query{};
    query.limit = limit;
    query.offset = offset;
    d.check(qbobj_getUserCollection(d.qbdb, d.db, &users, limit ? &query : nullptr, 0, &d.err));
}

std::vector<Case> read_cases(bool quick)
{
    std::vector<Case> cases;
    std::shared_ptr<LazyBed> largest;
    for (const int users : quick ? std::vector<int>{1000} : std::vector<int>{1000, 10000, 32000}) {
        largest = std::make_shared<LazyBed>(LazyBed{{.users = users}, nullptr});
        cases.push_back({"getUserCollection/" + std::to_string(users),
                         users,
                         largest,
                         {[](Bed &bed) { list_users(bed, 0, 0); }, [](Bed &bed) { bed.a.all_users(); },
                          [](Bed &bed) { bed.b.all_users(); }}});
    }
    const int users = largest->amount.users;
    cases.push_back(
        {"getUserCollection/page of 50",
         50,
         largest,
         {[users](Bed &bed) { list_users(bed, 50, users / 2); }, [users](Bed &bed) { bed.a.page_of_users(users / 2); },
          [users](Bed &bed) { bed.b.page_of_users(users / 2); }}});
    cases.push_back(
        {"getUser/1",
         1,
         largest,
         {[](Bed &bed) {
              Data &d = bed.data;
              User user{};
              user.resource_id = kFirstUser + 500;
              d.check(qbobj_getUser(d.qbdb, d.db, &user, &d.err));
          },
          [](Bed &bed) { bed.a.one_user(kFirstUser + 500); }, [](Bed &bed) { bed.b.one_user(kFirstUser + 500); }}});
    const auto user_name = [](Bed &bed) {
        Data &d = bed.data;
        const char *name = nullptr;
        d.check(qbobj_getUserName(d.qbdb, d.db, kFirstUser + 500, &name, &d.err));
    };
    cases.push_back({"getUserName/1",
                     1,
                     largest,
                     {user_name, [](Bed &bed) { bed.a.user_name(kFirstUser + 500); },
                      [](Bed &bed) { bed.b.user_name(kFirstUser + 500); }}});
    cases.push_back({"getGroupCollection/500x20",
                     500,
                     std::make_shared<LazyBed>(LazyBed{{.users = 5000, .groups = 500, .members = 20}, nullptr}),
                     {[](Bed &bed) {
                          Data &d = bed.data;
                          GroupCollection groups{};
                          d.check(qbobj_getGroupCollection(d.qbdb, d.db, &groups, nullptr, &d.err));
                      },
                      [](Bed &bed) { bed.a.all_groups(); }, [](Bed &bed) { bed.b.all_groups(); }}});
    for (const int shares : quick ? std::vector<int>{100} : std::vector<int>{100, 1000, 10000})
        cases.push_back({"getShareCollection/" + std::to_string(shares),
                         shares,
                         std::make_shared<LazyBed>(LazyBed{{.users = 10, .groups = 5, .shares = shares}, nullptr}),
                         {[](Bed &bed) {
                              Data &d = bed.data;
                              ShareCollection all{};
                              d.check(qbobj_getShareCollection(d.qbdb, d.db, &all, &d.err));
                          },
                          [](Bed &bed) { bed.a.all_shares(); }, [](Bed &bed) { bed.b.all_shares(); }}});
    cases.push_back({"getLog/100 of 100000",
                     100,
                     std::make_shared<LazyBed>(LazyBed{{.entries = 100000}, nullptr}),
                     {[](Bed &bed) {
                          Data &d = bed.data;
                          LogQuery query{};
                          query.limit = 100;
                          query.offset = 5000;
                          query.order = 1;
                          LogEntry *entries = nullptr;
                          int32_t count = 0;
                          int32_t total = 0;
                          d.check(qbobj_getLog(d.qbdb, d.db, &query, &entries, &count, &total, &d.err));
                      },
                      [](Bed &bed) { bed.a.log_page(100, 5000); }, [](Bed &bed) { bed.b.log_page(100, 5000); }}});
    for (const int texts : quick ? std::vector<int>{1000} : std::vector<int>{1000, 10000}) {
        cases.push_back({"getDictionary/" + std::to_string(texts),
                         texts,
                         std::make_shared<LazyBed>(LazyBed{{.texts = texts}, nullptr}),
                         {[](Bed &bed) {
                              Data &d = bed.data;
                              xmlNode *dictionary = nullptr;
                              d.check(qbobj_getDictionary(d.qbdb, d.db, "de-de", &dictionary, &d.err));
                              xmlFreeNode(dictionary);
                          },
                          [](Bed &bed) { bed.a.dictionary(); }, [](Bed &bed) { bed.b.dictionary(); }}});
    }
    return cases;
}

std::vector<Case> disk_cases(bool quick)
{
    std::vector<Case> cases;
    std::shared_ptr<LazyBed> bed;
    for (const int enclosures : quick ? std::vector<int>{8} : std::vector<int>{1, 8, 64}) {
        bed = std::make_shared<LazyBed>(LazyBed{{.enclosures = enclosures, .bays = 32}, nullptr});
        cases.push_back({"getDiskEnclosureCollection/" + std::to_string(enclosures) + "x32",
                         enclosures * 32,
                         bed,
                         {[](Bed &b) {
                              Data &d = b.data;
                              DiskEnclosureCollection all{};
                              d.check(qbobj_getDiskEnclosureCollection(d.qbdb, d.db, &all, &d.err));
                          },
                          [](Bed &b) { b.a.all_enclosures(); }, [](Bed &b) { b.b.all_enclosures(); }}});
    }
    cases.push_back({"getDiskByDevname/1",
                     1,
                     bed,
                     {[](Bed &b) {
                          Data &d = b.data;
                          Disk disk{};
                          disk.DevName = "sd0-17";
                          d.check(qbobj_getDiskByDevname(d.qbdb, d.db, &disk, &d.err));
                      },
                      [](Bed &b) { b.a.one_disk("sd0-17"); }, [](Bed &b) { b.b.one_disk("sd0-17"); }}});
    return cases;
}

std::vector<Case> write_cases(bool quick)
{
    static constexpr char kRemoveUsers[] =
        "BEGIN; DELETE FROM `$user` WHERE uname GLOB 'new[0-9]*'; DELETE FROM `$home_folder` WHERE user_id<2000 OR "
        "user_id>=3000; UPDATE account_default SET next_uid=3000; COMMIT";
    std::vector<Case> cases;
    const auto bed = std::make_shared<LazyBed>(LazyBed{{.users = 1000}, nullptr});
    const int chained = quick ? 100 : 1000;
    const auto chain = std::make_shared<UserChain>(chained);
    cases.push_back(
        {"addUser/chain of " + std::to_string(chain->users.size()),
         static_cast<int>(chain->users.size()),
         bed,
         {[chain](Bed &b) {
              Data &d = b.data;
              d.check(qbobj_addUser(d.qbdb, d.db, chain->fresh(), &d.err));
          },
          [chain](Bed &b) { b.a.add_users(chain->fresh()); }, [chain](Bed &b) { b.b.add_users(chain->fresh()); }},
         kRemoveUsers});
    const auto list = std::make_shared<UserChain>(quick ? 500 : 10000);
    cases.push_back(
        {"addUserList/" + std::to_string(list->users.size()),
         static_cast<int>(list->users.size()),
         bed,
         {[list](Bed &b) {
              Data &d = b.data;
              d.check(qbobj_addUserList(d.qbdb, d.db, list->fresh(), &d.err));
          },
          [list](Bed &b) { b.a.add_user_list(list->fresh()); }, [list](Bed &b) { b.b.add_user_list(list->fresh()); }},
         kRemoveUsers});
    const auto user = std::make_shared<Changing>();
    cases.push_back(
        {"modifyUser/1",
         1,
         bed,
         {[user](Bed &b) {
              Data &d = b.data;
              d.check(qbobj_modifyUser(d.qbdb, d.db, user->next(), &d.err));
          },
          [user](Bed &b) { b.a.modify_user(user->next()); }, [user](Bed &b) { b.b.modify_user(user->next()); }}});
    cases.push_back({"addLog/1",
                     1,
                     bed,
                     {[](Bed &b) {
                          Data &d = b.data;
                          d.check(qbobj_addLog(d.qbdb, d.db, 1700000000, "info", "account", "LOGMSG_LOGIN",
                                               "<user>anna</user>", &d.err));
                      },
                      [](Bed &b) { b.a.add_log(); }, [](Bed &b) { b.b.add_log(); }}});
    return cases;
}

void list_snapshots(Bed &bed, const char *share, int32_t limit, int32_t offset)
{
    Data &d = bed.data;
    SnapshotCollection snapshots{};
    d.check(qbobj_getSnapshotCollection(d.qbdb, d.db, &snapshots, share, nullptr, 0, 0, 0, nullptr, 0, limit, offset,
                                        &d.err));
}

/// A chain of snapshots to be added, of shares in turn.
struct SnapshotChain {
    std::vector<std::string> shares;
    std::vector<Snapshot> snapshots;

    SnapshotChain(int count, int of_shares) : shares(static_cast<size_t>(count)), snapshots(static_cast<size_t>(count))
    {
        for (size_t i = 0; i < snapshots.size(); i++) {
            char name[32];
            snprintf(name, sizeof name, "share%04d", static_cast<int>(i) % of_shares);
            shares[i] = name;
            snapshots[i] = {i + 1 < snapshots.size() ? &snapshots[i + 1] : nullptr,
                            0,
                            shares[i].c_str(),
                            "tank",
                            "new",
                            1,
                            1800000000,
                            nullptr};
        }
    }
};

std::vector<Case> snapshot_cases(bool quick)
{
    std::vector<Case> cases;
    std::shared_ptr<LazyBed> largest;
    for (const int snapshots : quick ? std::vector<int>{1000} : std::vector<int>{1000, 10000}) {
        const int shares = snapshots / 20;
        largest = std::make_shared<LazyBed>(LazyBed{{.datasets = shares, .snapshots = snapshots}, nullptr});
        cases.push_back(
            {"getSnapshotCollection/" + std::to_string(snapshots),
             snapshots,
             largest,
             {[](Bed &bed) { list_snapshots(bed, nullptr, 0, 0); }, [](Bed &bed) { bed.a.all_snapshots(INT32_MAX, 0); },
              [](Bed &bed) { bed.b.all_snapshots(INT32_MAX, 0); }}});
    }
    const int middle = largest->amount.snapshots / 2;
    cases.push_back({"getSnapshotCollection/page of 50",
                     50,
                     largest,
                     {[middle](Bed &bed) { list_snapshots(bed, nullptr, 50, middle); },
                      [middle](Bed &bed) { bed.a.all_snapshots(50, middle); },
                      [middle](Bed &bed) { bed.b.all_snapshots(50, middle); }}});
    cases.push_back(
        {"getSnapshotCollection/20 of a share",
         20,
         largest,
         {[](Bed &bed) { list_snapshots(bed, "share0007", 0, 0); }, [](Bed &bed) { bed.a.snapshots_of("share0007"); },
          [](Bed &bed) { bed.b.snapshots_of("share0007"); }}});
    const auto chain = std::make_shared<SnapshotChain>(quick ? 100 : 1000, largest->amount.datasets);
    cases.push_back({"addSnapshot/chain of " + std::to_string(chain->snapshots.size()),
                     static_cast<int>(chain->snapshots.size()),
                     largest,
                     {[chain](Bed &b) {
                          Data &d = b.data;
                          d.check(qbobj_addSnapshot(d.qbdb, d.db, chain->snapshots.data(), &d.err));
                      },
                      [chain](Bed &b) { b.a.add_snapshots(chain->snapshots.data()); },
                      [chain](Bed &b) { b.b.add_snapshots(chain->snapshots.data()); }},
                     "DELETE FROM `$snapshot` WHERE created_on=1800000000"});
    return cases;
}

std::vector<Case> health_cases()
{
    const auto bed = std::make_shared<LazyBed>(LazyBed{{.enclosures = 8, .bays = 32}, nullptr});
    return {{"getDiskHealthCollection/256",
             256,
             bed,
             {[](Bed &b) {
                  Data &d = b.data;
                  DiskHealthCollection health{};
                  d.check(qbobj_getDiskHealthCollection(d.qbdb, d.db, &health, &d.err));
              },
              [](Bed &b) { b.a.disk_health(); }, [](Bed &b) { b.b.disk_health(); }}},
            {"getEnclosureHealthCollection/8x24",
             8 * kSensors,
             bed,
             {[](Bed &b) {
                  Data &d = b.data;
                  EnclosureHealthCollection health{};
                  d.check(qbobj_getEnclosureHealthCollection(d.qbdb, d.db, &health, &d.err));
              },
              [](Bed &b) { b.a.enclosure_health(); }, [](Bed &b) { b.b.enclosure_health(); }}}};
}

/// The log level below which a call writes nothing must cost nothing: level 3 beside level 0.
Case trace_case(const std::shared_ptr<LazyBed> &bed)
{
    const auto at_level = [](uint32_t level) {
        return [level](Bed &b) {
            Data &d = b.data;
            const char *name = nullptr;
            d.qbdb->log_level = level;
            d.check(qbobj_getUserName(d.qbdb, d.db, kFirstUser + 500, &name, &d.err));
            d.qbdb->log_level = 0;
        };
    };
    return {"getUserName/log level 3 : A,B = 0", 1, bed, {at_level(3), at_level(0), at_level(0)}};
}

std::vector<Case> all_cases(bool quick)
{
    std::vector<Case> cases = read_cases(quick);
    cases.push_back(trace_case(cases[0].bed));
    for (auto *make : {disk_cases, write_cases, snapshot_cases})
        for (Case &each : make(quick)) cases.push_back(std::move(each));
    for (Case &each : health_cases()) cases.push_back(std::move(each));
    return cases;
}

void call_once(const Case &each, Way way)
{
    Bed &bed = each.bed->get();
    qbdb_request_begin(bed.data.qbdb);
    each.ways[way](bed);
}

void undo(const Case &each)
{
    if (each.undo) each.bed->get().data.run(each.undo);
}

void measure(benchmark::State &state, const Case &each, Way way)
{
    for (auto _ : state) {
        (void)_;
        const auto start = std::chrono::steady_clock::now();
        call_once(each, way);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        undo(each);
    }
}

/// Bytes of address space that the process has: what the pools' allocator maps shows there.
size_t memory_in_use()
{
    size_t pages = 0;
    if (FILE *file = fopen("/proc/self/statm", "r")) {
        if (fscanf(file, "%zu", &pages) != 1) pages = 0;
        fclose(file);
    }
    return pages * 4096;
}

/// Memory that one of our calls takes for each record, beyond what the handle holds already.
double bytes_per_record(const Case &each)
{
    Bed &bed = each.bed->get();
    call_once(each, kOurs);  // statements are prepared now
    undo(each);
    qbdb_request_end(bed.data.qbdb);
    qbdb_t *qbdb = bed.data.qbdb;
    // What the pools give up must go back to the heap at once, or the next call would take it from there unseen.
    apr_allocator_t *allocator = apr_pool_allocator_get(qbdb->pool);
    apr_allocator_max_free_set(allocator, 1);
    qbdb_request_begin(qbdb);
    each.ways[kOurs](bed);
    undo(each);
    qbdb_request_end(qbdb);
    const size_t before = memory_in_use();
    qbdb_request_begin(qbdb);
    each.ways[kOurs](bed);
    const size_t after = memory_in_use();
    undo(each);
    qbdb_request_end(qbdb);
    apr_allocator_max_free_set(allocator, APR_ALLOCATOR_MAX_FREE_UNLIMITED);
    return after > before ? static_cast<double>(after - before) / each.records : 0;
}

int run_all(bool quick, const char *json)
{
    const std::vector<Case> cases = all_cases(quick);
    RatioReporter reporter;
    for (const Case &each : cases) {
        reporter.order.push_back(each.name);
        reporter.facts[each.name] = {each.name.substr(0, each.name.find('/')), each.records, bytes_per_record(each)};
        for (const Way way : {kOurs, kFormatted, kPrepared})
            benchmark::RegisterBenchmark((each.name + "/" + kWayNames[way]).c_str(),
                                         [&each, way](benchmark::State &state) { measure(state, each, way); })
                ->UseManualTime()
                ->Repetitions(quick ? 3 : 7)
                ->MinTime(quick ? 0.02 : 0.15);
    }
    std::string program = "qbobj_bench";
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    char *arguments[] = {program.data(), interleave.data(), nullptr};
    int count = 2;
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_table();
    return json && !reporter.write_json(json) ? 1 : 0;
}

int run_once(const std::string &name, const std::string &way_name, int count)
{
    for (const Case &each : all_cases(false))
        for (const Way way : {kOurs, kFormatted, kPrepared})
            if (each.name == name && way_name == kWayNames[way]) {
                call_once(each, way);  // prepares the statements
                undo(each);
                for (int i = 0; i < count; i++) {
                    call_once(each, way);
                    undo(each);
                }
                return 0;
            }
    fprintf(stderr, "no case %s, way %s\n", name.c_str(), way_name.c_str());
    return 2;
}

}  // namespace

/// Its name is how the counting program finds it.
extern "C" __attribute__((noinline)) void counted_call(const Case &measured)
{
    call_once(measured, kOurs);
}

namespace {

/// Calls of small cases for the program that counts the instructions of this function.
int count_calls(const std::vector<std::string> &names)
{
    const std::vector<Case> cases = all_cases(true);
    for (const std::string &name : names) {
        const auto found =
            std::find_if(cases.begin(), cases.end(), [&](const Case &each) { return each.name == name; });
        if (found == cases.end()) return fprintf(stderr, "no small case %s\n", name.c_str()), 2;
        for (int i = 0; i < 2; i++) {  // statements are prepared, pools have grown
            call_once(*found, kOurs);
            undo(*found);
        }
        counted_call(*found);
        undo(*found);
    }
    return 0;
}

}  // namespace

int main(int argc, char **argv)
{
    bool quick = false;
    const char *json = nullptr;
    for (int i = 1; i < argc; i++) {
        const std::string word = argv[i];
        if (word == "--quick") quick = true;
        else if (word == "--json" && i + 1 < argc) json = argv[++i];
        else if (word == "--once" && i + 3 < argc) return run_once(argv[i + 1], argv[i + 2], atoi(argv[i + 3]));
        else if (word == "--database" && i + 2 < argc)
            return write_database(argv[i + 1], {.users = atoi(argv[i + 2])}), 0;
        else if (word == "--count") return count_calls({argv + i + 1, argv + argc});
        else if (word == "--build")
            return printf("compiler %s, SQLite %s, glibc %s\n", __VERSION__, sqlite3_libversion(),
                          gnu_get_libc_version()), 0;
        else if (word == "--cases") {
            for (const Case &each : all_cases(false)) printf("%s\t%d\n", each.name.c_str(), each.records);
            return 0;
        } else {
            fprintf(stderr,
                    "usage: qbobj_bench [--quick] [--json FILE] | --once CASE WAY COUNT | --cases | --count CASE... | "
                    "--build | --database FILE USERS\n");
            return 2;
        }
    }
    return run_all(quick, json);
}
// SPDX-License-Identifier: Apache-2.0
