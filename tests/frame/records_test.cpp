// The field tables against the list of record types that is kept by hand, the type-name table, clearing,
// introspection, the exported constants.
#include <algorithm>
#include <cstring>
#include <map>
#include <set>

#include "fixture/fixture.h"
#include "fixture/record_list.h"

using test::listed_type;
using test::ListedField;
using test::ListedType;
using test::record_list;

namespace {

std::vector<const QbobjField *> fields_of_table(const QbobjField *type)
{
    std::vector<const QbobjField *> fields;
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) fields.push_back(field);
    return fields;
}

TEST(Records, TypeNameTableHasAllTypesInOrder)
{
    ASSERT_EQ(record_list().size(), 110u);
    const QbobjType *row = qbobj_types();
    for (const ListedType &type : record_list()) {
        ASSERT_NE(row->name, nullptr) << type.name;
        EXPECT_EQ(row->name, type.name);
        row++;
    }
    EXPECT_EQ(row->name, nullptr);
    EXPECT_EQ(row->fields, nullptr);
}

TEST(Records, FieldTablesEqualTheList)
{
    for (const ListedType &type : record_list()) {
        SCOPED_TRACE(type.name);
        const QbobjField *table = qbobj_find_type(type.name.c_str());
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(table->name, type.name);
        EXPECT_EQ(table->flags, type.flags);
        EXPECT_EQ(table->subtype, nullptr);
        const auto fields = fields_of_table(table);
        ASSERT_EQ(fields.size(), type.fields.size());
        for (size_t i = 0; i < fields.size(); i++) {
            SCOPED_TRACE(type.fields[i].name);
            EXPECT_EQ(fields[i]->name, type.fields[i].name);
            EXPECT_EQ(fields[i]->kind, type.fields[i].kind);
            EXPECT_EQ(fields[i]->flags, type.fields[i].flags);
            EXPECT_EQ(fields[i]->subtype ? fields[i]->subtype->name : "", type.fields[i].subtype);
            if (fields[i]->subtype) {
                EXPECT_EQ(fields[i]->subtype, qbobj_find_type(fields[i]->subtype->name));
            }
        }
        EXPECT_EQ(fields.back()[1].kind, '.');
    }
}

TEST(Records, OptionalNumbersAreThese)
{
    std::set<std::string> optional;
    for (const ListedType &type : record_list())
        for (const ListedField &field : type.fields)
            if (field.has_indicator()) optional.insert(type.name + "." + field.name);
    EXPECT_THAT(optional,
                testing::UnorderedElementsAre(
                    "Share.QuotaMB", "Share.ReserveMB", "Share.RefQuotaMB", "Share.RefReserveMB", "Share.Compression",
                    "Share.BitRotProtection", "Share.Dedup", "FileStat.NonOwnerDelete", "HttpShareOption.EnableWebDav",
                    "FtpShareOption.NewFileFolderPermAutoset", "AfpShareOption.AllowGuestAccess",
                    "AfpShareOption.NewFileFolderPermAutoset", "CifsShareOption.AllowGuestAccess",
                    "CifsShareOption.ShareDisplayOption", "CifsShareOption.EnableRecycleBin",
                    "CifsShareOption.RecycleSizeLimit", "CifsShareOption.RecycleAgeLimit",
                    "CifsShareOption.NewFileFolderPermAutoset", "CifsShareOption.AclChangeRestrictionToggle",
                    "CifsShareOption.EnableOplocks", "Disk.PoolHostId", "DiskDiff.PoolHostId"));
}

TEST(Records, FirstFieldIsTheRowIdWhereTheFlagSaysSo)
{
    for (const ListedType &type : record_list()) {
        if (!(type.flags & QBOBJ_TYPE_ROW_ID)) continue;
        const QbobjField *first = qbobj_find_type(type.name.c_str()) + 1;
        EXPECT_STREQ(first->name, "resource_id") << type.name;
        EXPECT_EQ(first->kind, 'i') << type.name;
        EXPECT_EQ(first->position, 8u) << type.name;
    }
}

TEST(Records, PositionsFollowFromTheKinds)
{
    // The rules once more, without the compiler's help: link, key word, then each field at its alignment, an
    // optional number behind an indicator that takes a slot of the number's own size.
    for (const ListedType &type : record_list()) {
        SCOPED_TRACE(type.name);
        const QbobjField *table = qbobj_find_type(type.name.c_str());
        size_t end = (type.is_list() ? 8 : 0) + (type.has_key() ? 8 : 0);
        size_t alignment = end ? 8 : 4;
        for (size_t i = 0; i < type.fields.size(); i++) {
            const size_t size = type.fields[i].size();
            alignment = std::max(alignment, size);
            const size_t start = (end + size - 1) / size * size + (type.fields[i].has_indicator() ? size : 0);
            EXPECT_EQ(table[i + 1].position, start) << type.fields[i].name;
            end = start + size;
        }
        EXPECT_EQ(table->position, (end + alignment - 1) / alignment * alignment);
    }
}

TEST(Records, NamesAreLookedUpExactly)
{
    EXPECT_NE(qbobj_find_type("Share"), nullptr);
    EXPECT_EQ(qbobj_find_type("share"), nullptr);
    EXPECT_EQ(qbobj_find_type("Share "), nullptr);
    EXPECT_EQ(qbobj_find_type("Shar"), nullptr);
    EXPECT_EQ(qbobj_find_type(""), nullptr);
    EXPECT_EQ(qbobj_find_type(nullptr), nullptr);
}

// ---- Clearing

struct Clearing {
    const char *name;
    size_t size;
    uint32_t (*clear)(void *record);
};

#define CLEARING(T) {#T, sizeof(T), [](void *record) { return qbobj_clear_##T(static_cast<T *>(record)); }},
const Clearing kClearings[] = {QBOBJ_FOR_EACH_TYPE(CLEARING)};

TEST(Clear, ZeroesEveryByteOfTheRecordAndNoMore)
{
    ASSERT_EQ(std::size(kClearings), 110u);
    for (const Clearing &type : kClearings) {
        SCOPED_TRACE(type.name);
        EXPECT_EQ(type.size, qbobj_find_type(type.name)->position);
        alignas(8) unsigned char memory[1024];
        ASSERT_LE(type.size, sizeof memory - 16);
        memset(memory, 0xA5, sizeof memory);
        EXPECT_EQ(type.clear(memory + 8), 0u);
        for (size_t i = 0; i < sizeof memory; i++)
            ASSERT_EQ(memory[i], i >= 8 && i < 8 + type.size ? 0 : 0xA5) << "byte " << static_cast<long>(i) - 8;
    }
}

TEST(Clear, NullIsRefused)
{
    for (const Clearing &type : kClearings) EXPECT_EQ(type.clear(nullptr), 0xFFFFFFFFu) << type.name;
}

TEST(Clear, LeavesTheElementsOfACollection)
{
    Share second{};
    second.ShareName = "second";
    Share first{};
    first.ShareName = "first";
    first.next = &second;
    ShareCollection shares{&first};
    EXPECT_EQ(qbobj_clear_ShareCollection(&shares), 0u);
    EXPECT_EQ(shares.Share, nullptr);
    EXPECT_STREQ(first.ShareName, "first");
    EXPECT_EQ(first.next, &second);
    EXPECT_STREQ(second.ShareName, "second");
}

// ---- Secrets

TEST(Secrets, AreFieldsThatExist)
{
    int secrets = 0;
    for (const QbobjType *type = qbobj_types(); type->name; type++)
        for (const QbobjField *field : fields_of_table(type->fields)) {
            if (!qbobj_is_secret(type->fields, field)) continue;
            secrets++;
            EXPECT_EQ(field->kind, 's') << type->name << "." << field->name;
        }
    EXPECT_EQ(secrets, 19);  // a misspelt row of the table would be one less
}

TEST(Secrets, CoverEveryFieldNamedLikeAPassword)
{
    for (const QbobjType *type = qbobj_types(); type->name; type++)
        for (const QbobjField *field : fields_of_table(type->fields)) {
            std::string name = field->name;
            for (char &c : name) c = static_cast<char>(tolower(c));
            const bool telling = field->kind == 's' &&
                                 (name.find("password") != std::string::npos ||
                                  name.find("secret") != std::string::npos || name.find("hash") != std::string::npos);
            const bool setting = name == "passwordserver" || name == "passwordprotection";
            if (telling && !setting) {
                EXPECT_EQ(qbobj_is_secret(type->fields, field), 1) << type->name << "." << field->name;
            }
        }
    EXPECT_EQ(qbobj_is_secret(qbobj_find_type("User"), qbobj_find_type("User") + 3), 0);
}

// ---- Operations

TEST(Operations, AreFoundWithAndWithoutThePrefix)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        EXPECT_EQ(qbobj_find_operation(row->name), row) << row->name;
        // The older entry points have no prefix; being asked for with one is fine.
        const bool legacy = strcmp(row->family, "legacy") == 0;
        const std::string prefix = "qbobj_";
        EXPECT_EQ(std::string(row->name).rfind(prefix, 0) == 0, !legacy) << row->name;
        const std::string other = legacy ? prefix + row->name : std::string(row->name).substr(prefix.size());
        EXPECT_EQ(qbobj_find_operation(other.c_str()), row) << other;
    }
    EXPECT_EQ(qbobj_find_operation(nullptr), nullptr);
    EXPECT_EQ(qbobj_find_operation(""), nullptr);
    EXPECT_EQ(qbobj_find_operation("qbobj_"), nullptr);
    EXPECT_EQ(qbobj_find_operation("getlog"), nullptr);
    EXPECT_EQ(qbobj_find_operation("getLogs"), nullptr);
}

TEST(Operations, RowsAreWhole)
{
    std::set<std::string> names;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        SCOPED_TRACE(row->name);
        EXPECT_TRUE(names.insert(row->name).second) << "twice";
        EXPECT_TRUE(row->family && *row->family);
        EXPECT_TRUE(row->summary && *row->summary);
        EXPECT_EQ(row->summary[strlen(row->summary) - 1], '.');
        ASSERT_NE(row->codes, nullptr);
        EXPECT_EQ(std::string(row->codes).find_first_not_of("0123456789 "), std::string::npos) << row->codes;
        EXPECT_NE(row->call, nullptr);
        ASSERT_LE(row->count, static_cast<uint32_t>(QBOBJ_MAX_ARGUMENTS));
        std::set<std::string> arguments;
        for (uint32_t i = 0; i < row->count; i++) {
            const QbobjArgument &argument = row->arguments[i];
            ASSERT_TRUE(argument.name && *argument.name) << i;
            SCOPED_TRACE(argument.name);
            EXPECT_TRUE(arguments.insert(argument.name).second) << "twice";
            const bool records = argument.kind == QBOBJ_KIND_RECORD || argument.kind == QBOBJ_KIND_LIST;
            EXPECT_EQ(argument.type != nullptr, records);
            if (argument.chain) {
                ASSERT_TRUE(records);
                EXPECT_TRUE(argument.type->flags & QBOBJ_TYPE_LIST) << "a chain needs links";
            }
            if (argument.kind == QBOBJ_KIND_LIST) {
                EXPECT_TRUE(argument.type->flags & QBOBJ_TYPE_LIST);
            }
        }
        for (uint32_t i = row->count; i < QBOBJ_MAX_ARGUMENTS; i++) EXPECT_EQ(row->arguments[i].name, nullptr);
    }
    EXPECT_FALSE(names.empty());
}

TEST(Operations, ArgumentsOfTheLog)
{
    const QbobjOperation *row = qbobj_find_operation("getLog");
    ASSERT_NE(row, nullptr);
    ASSERT_EQ(row->count, 4u);
    EXPECT_EQ(row->changes, 0);
    EXPECT_EQ(row->arguments[0].kind, QBOBJ_KIND_RECORD);
    EXPECT_EQ(row->arguments[0].type, qbobj_find_type("LogQuery"));
    EXPECT_EQ(row->arguments[0].optional, 1);
    EXPECT_EQ(row->arguments[0].direction, QBOBJ_IN);
    EXPECT_EQ(row->arguments[1].kind, QBOBJ_KIND_LIST);
    EXPECT_EQ(row->arguments[1].type, qbobj_find_type("LogEntry"));
    EXPECT_EQ(row->arguments[1].direction, QBOBJ_OUT);
    EXPECT_EQ(row->arguments[2].kind, QBOBJ_KIND_INT32);
    EXPECT_EQ(row->arguments[2].direction, QBOBJ_OUT);
    const QbobjOperation *add = qbobj_find_operation("addLog");
    ASSERT_EQ(add->count, 5u);
    EXPECT_EQ(add->changes, 1);
    EXPECT_EQ(add->arguments[0].kind, QBOBJ_KIND_INT32);
    EXPECT_EQ(add->arguments[0].direction, QBOBJ_IN);
    EXPECT_EQ(add->arguments[1].kind, QBOBJ_KIND_STRING);
    EXPECT_EQ(add->arguments[1].optional, 1);
}

TEST(Operations, TakeAndDumpSoMany)
{
    const struct {
        const char *name;
        uint32_t arguments;
        int dumped;
    } cases[] = {
        {"getPosixUID", 1, 0},
        {"truncateLog", 1, 0},
        {"getSystemUser", 1, 1},
        {"addUser", 1, 1},
        {"getSmbUserNameMapCount", 2, 0},
        {"getUID", 2, 0},
        {"getUserName", 2, 0},
        {"isMemberOfGroup", 2, 0},
        {"getSshPublicKeyById", 2, 1},
        {"getGroupCollection", 2, 2},
        {"getPosixUIDGID", 3, 0},
        {"getUserInGroupName", 3, 1},
        {"getUserCollection", 3, 2},
        {"getLog", 4, 2},
        {"checkUserList", 4, 4},
        {"addLog", 5, 0},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.name);
        const QbobjOperation *row = qbobj_find_operation(each.name);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->count, each.arguments);
        EXPECT_EQ(std::count_if(row->arguments, row->arguments + row->count,
                                [](const QbobjArgument &argument) { return argument.type != nullptr; }),
                  each.dumped);
    }
}

struct Calls : test::Database {};

TEST_F(Calls, EachOperationBeginsAsItsRowSaysAndDumpsItsRecordsInOrder)
{
    // Nothing but BEGIN runs, so each call fails after the dump, unless it needs no statement at all.
    std::string begin;
    const auto refuse = [](void *self, const char *sql, const char *, uint32_t, const char **) -> int {
        if (strncmp(sql, "BEGIN", 5) != 0) return 1;
        *static_cast<std::string *>(self) = sql;
        return 0;
    };
    qbdb_set_statement_hook(qbdb, refuse, &begin);
    qbdb->log_level = 5;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        if (strcmp(row->family, "legacy") == 0) continue;  // these have a frame of their own
        SCOPED_TRACE(row->name);
        std::vector<std::vector<uint64_t>> memory;
        QbobjValue values[QBOBJ_MAX_ARGUMENTS] = {};
        std::vector<std::string> expected;
        for (uint32_t i = 0; i < row->count; i++) {
            const QbobjArgument &argument = row->arguments[i];
            memory.emplace_back(256);  // a zeroed record, an empty list, a place for a number or text
            if (argument.kind == QBOBJ_KIND_STRING && argument.direction == QBOBJ_IN) values[i].s = "x";
            else if (argument.direction != QBOBJ_IN || argument.type) values[i].p = memory.back().data();
            if (argument.kind != QBOBJ_KIND_RECORD) continue;  // the list is empty
            const bool list = argument.type->flags & QBOBJ_TYPE_LIST;
            expected.push_back(std::string(argument.type->name) + (list ? "[0] = {\n" : " = {\n"));
        }
        log.clear();
        row->call(qbdb, db, values, &err);
        EXPECT_EQ(begin, row->changes ? "BEGIN IMMEDIATE" : "BEGIN");
        std::vector<std::string> dumped;
        for (const test::LogLine &line : log) {
            if (line.level != 5 || line.file != "qbobj_api2.cpp") continue;
            if (line.text[0] == ' ' || line.text == "}\n") continue;
            dumped.push_back(line.text);
        }
        if (dumped.size() > expected.size()) dumped.resize(expected.size());  // it succeeded and dumped again
        EXPECT_EQ(dumped, expected);
    }
}

TEST_F(Calls, OperationsRunThroughTheTable)
{
    QbobjValue entry[5];
    entry[0].i = 7;
    entry[1].s = "err";
    entry[2].s = "disk";
    entry[3].s = "LOGMSG_DISK";
    entry[4].s = "<a/>";
    ASSERT_EQ(qbobj_find_operation("addLog")->call(qbdb, db, entry, &err), 0u) << err.message;
    LogEntry *entries = nullptr;
    int32_t count = 0;
    int32_t total = 0;
    QbobjValue read[4];
    read[0].p = nullptr;
    read[1].p = &entries;
    read[2].p = &count;
    read[3].p = &total;
    ASSERT_EQ(qbobj_find_operation("getLog")->call(qbdb, db, read, &err), 0u) << err.message;
    ASSERT_NE(entries, nullptr);
    EXPECT_EQ(entries->TimeStamp, 7);
    EXPECT_STREQ(entries->Severity, "err");
    EXPECT_STREQ(entries->Category, "disk");
    EXPECT_STREQ(entries->MessageTag, "LOGMSG_DISK");
    EXPECT_STREQ(entries->MessageArgsXml, "<a/>");
    EXPECT_EQ(count, 1);
    EXPECT_EQ(total, 1);
}

// ---- Constants

TEST(Constants, LogWords)
{
    EXPECT_STREQ(QBLOG_CATEGORY_SNAPSHOT, "snapshot");
    EXPECT_STREQ(QBLOG_CATEGORY_MBACKUP, "mbackup");
    EXPECT_STREQ(QBLOG_CATEGORY_BACKUP, "backup");
    EXPECT_STREQ(QBLOG_CATEGORY_ACCOUNT, "account");
    EXPECT_STREQ(QBLOG_CATEGORY_SHARE, "share");
    EXPECT_STREQ(QBLOG_CATEGORY_VOLUME, "volume");
    EXPECT_STREQ(QBLOG_CATEGORY_DISK, "disk");
    EXPECT_STREQ(QBLOG_CATEGORY_SYSTEM, "system");
    EXPECT_STREQ(QBLOG_CATEGORY_MISC, "misc");
    EXPECT_STREQ(QBLOG_SEVERITY_EMERG, "emerge");
    EXPECT_STREQ(QBLOG_SEVERITY_ALERT, "alert");
    EXPECT_STREQ(QBLOG_SEVERITY_CRIT, "crit");
    EXPECT_STREQ(QBLOG_SEVERITY_ERR, "err");
    EXPECT_STREQ(QBLOG_SEVERITY_WARNING, "warning");
    EXPECT_STREQ(QBLOG_SEVERITY_NOTICE, "notice");
    EXPECT_STREQ(QBLOG_SEVERITY_INFO, "info");
    EXPECT_STREQ(QBLOG_SEVERITY_DEBUG, "debug");
}

TEST(Constants, MaskIsEightBlackCircles)
{
    ASSERT_EQ(strlen(masked_password), 24u);
    for (int i = 0; i < 8; i++) EXPECT_EQ(memcmp(masked_password + 3 * i, "\xE2\x97\x8F", 3), 0) << i;
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
