// What changing a share costs beside 100, 1,000 and 10,000 others. Every call writes back a share with all protocols,
// another comment and another access over NFS, and commits. Beside it what it would cost to find out whose rows changed
// by copying and comparing whole tables. Medians of rounds that visit the sizes in turn, processor time, in memory.
//
//   qbobj_share_changes [--quick]
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "data.h"

namespace {

using namespace bench;

constexpr int kChanged = 20;  // shares, spread over the table

double processor_microseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

double median(std::vector<double> times)
{
    std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
    return times[times.size() / 2];
}

/// The tables of each protocol.
constexpr const char *kTables[][6] = {
    {"cifs_share_option", "host_acl", "user_acl", "group_acl", "cifs_dfs_option", nullptr},
    {"afp_share_option", "host_acl", "user_acl", "group_acl", nullptr},
    {"nfs_share_option", "host_acl", nullptr},
    {"ftp_share_option", "host_acl", "user_acl", "group_acl", nullptr},
    {"dlna_share_option", nullptr},
    {"daap_share_option", nullptr},
    {"rsync_share_option", "host_acl", nullptr},
    {"http_share_option", "host_acl", "user_acl", "group_acl", nullptr},
};

struct Size {
    int shares;
    Data data;
    std::vector<Share> records;
    std::vector<double> ours;
    std::vector<double> copies;

    explicit Size(int count) : shares(count), data({.users = 10, .groups = 5, .shares = count}), records(kChanged)
    {
        data.qbdb->log_level = 0;
        data.run("UPDATE _volume SET blk_free=1073741824");
        for (size_t i = 0; i < records.size(); i++) {
            records[i] = Share{};
            char text[16];
            snprintf(text, sizeof text, "share%05d", static_cast<int>(i) * (shares / kChanged));
            records[i].ShareName = text;
            data.check(qbobj_getShare(data.qbdb, data.db, &records[i], &data.err));
        }
    }

    void change(int round)
    {
        Share &share = records[static_cast<size_t>(round % kChanged)];
        const bool odd = round / kChanged % 2;
        share.Comment = odd ? "one" : "the other";
        share.Nfs->DefaultAccess = odd ? "ReadOnly" : "ReadWrite";
        share.Nfs->Changed = 0;
        qbdb_request_begin(data.qbdb);
        const double start = processor_microseconds();
        data.check(qbobj_modifyShare(data.qbdb, data.db, &share, &data.err));
        ours.push_back(processor_microseconds() - start);
        if (share.Nfs->Changed != 1 || share.Cifs->Changed != 0) abort();
    }

    void copy_and_compare()
    {
        qbdb_request_begin(data.qbdb);
        data.run("BEGIN IMMEDIATE");
        const double start = processor_microseconds();
        for (const auto &tables : kTables) {
            int32_t changed = 0;
            data.check(static_cast<uint32_t>(qbdb_sql_duplicate_tables(data.qbdb, data.db, 0, tables, "_copy_")));
            data.check(
                static_cast<uint32_t>(qbdb_sql_compare_tables2(data.qbdb, data.db, 0, tables, "_copy_", &changed)));
            data.check(static_cast<uint32_t>(qbdb_sql_delete_tables(data.qbdb, data.db, 0, tables, "_copy_")));
        }
        copies.push_back(processor_microseconds() - start);
        data.run("ROLLBACK");
    }
};

}  // namespace

int main(int argc, char **argv)
{
    const bool quick = argc > 1 && strcmp(argv[1], "--quick") == 0;
    if (argc > 1 && !quick) return fprintf(stderr, "usage: qbobj_share_changes [--quick]\n"), 2;
    setenv("TMPDIR", "/dev/shm", 0);
    const int rounds = quick ? 2 * kChanged : 1000;
    std::vector<std::unique_ptr<Size>> sizes;
    for (const int shares : quick ? std::vector<int>{100} : std::vector<int>{100, 1000, 10000})
        sizes.push_back(std::make_unique<Size>(shares));
    for (int round = -kChanged; round < rounds; round++)
        for (const auto &size : sizes) {
            size->change(round + kChanged);
            if (round == -1) size->ours.clear();  // statements are prepared by now
        }
    for (int round = 0; round < (quick ? 1 : 5); round++)
        for (const auto &size : sizes) size->copy_and_compare();
    printf("%8s %14s %10s %22s\n", "shares", "modifyShare", "to first", "copies of all tables");
    for (const auto &size : sizes)
        printf("%8d %11.0f us %10.2f %19.0f us\n", size->shares, median(size->ours),
               median(size->ours) / median(sizes[0]->ours), median(size->copies));
}
// SPDX-License-Identifier: Apache-2.0
