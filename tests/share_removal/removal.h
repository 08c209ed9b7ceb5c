// Common ground: shares with everything, and what the database says of one of them.
#pragma once

#include "shares_read/shares.h"

namespace test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Removal : Shares {
    std::vector<std::string> regenerated;

    Removal()
    {
        add_accounts();
        qbdb_set_service_hook(
            qbdb,
            [](void *self, qbdb_t *, sqlite3 *, const char *proto) {
                static_cast<Removal *>(self)->regenerated.emplace_back(proto);
                return 1;  // what comes of it is not looked at
            },
            this);
    }

    /// The tables that know shares by number. The home folders' schedule has a number and no share.
    std::vector<std::string> tables_by_number() const
    {
        return rows(
            "SELECT M.name FROM sqlite_master M WHERE M.type='table' AND M.name<>'$home_folder_snapshot_schedule' AND "
            "EXISTS(SELECT 1 FROM pragma_table_info(M.name) C WHERE C.name='share_id') ORDER BY M.name");
    }

    /// What the tables know of a share by number: one text a row, without the number.
    std::vector<std::string> rows_of(int32_t id, const std::string &table) const
    {
        std::string columns = value("SELECT group_concat('quote(`'||name||'`)','||''|''||') FROM pragma_table_info('" +
                                    table + "') WHERE name<>'share_id'");
        return rows("SELECT " + columns + " FROM `" + table + "` WHERE share_id=" + std::to_string(id) + " ORDER BY 1");
    }

    /// The numbers of all shares.
    std::vector<std::string> ids() const { return rows("SELECT id FROM share ORDER BY id"); }
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
