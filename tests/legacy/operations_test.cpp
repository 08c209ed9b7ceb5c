// The older entry points in the operation table.
#include "fixture/fixture.h"

using testing::ElementsAre;

namespace {

struct LegacyOperations : test::Database {};

constexpr const char *kNames[] = {"getFolderAttribute", "getServiceEntry", "setServiceEntry", "getRegistryEntry",
                                  "setRegistryEntry"};

TEST_F(LegacyOperations, AreFoundWithAndWithoutPrefix)
{
    for (const char *name : kNames) {
        const QbobjOperation *row = qbobj_find_operation(name);
        ASSERT_NE(row, nullptr) << name;
        EXPECT_STREQ(row->name, name);
        EXPECT_STREQ(row->family, "legacy");
        EXPECT_EQ(row->returns, QBOBJ_RETURNS_CODE);
        EXPECT_EQ(row->count, 2u);
        EXPECT_EQ(qbobj_find_operation((std::string("qbobj_") + name).c_str()), row);
    }
    EXPECT_STREQ(qbobj_find_operation("addLog")->name, "qbobj_addLog");
    EXPECT_STREQ(qbobj_find_operation("qbobj_addLog")->name, "qbobj_addLog");
    for (const char *name : {"", "qbobj_", "getServiceEntr", "getserviceentry", "qbobj_qbobj_addLog", "qbobj_get"})
        EXPECT_EQ(qbobj_find_operation(name), nullptr) << name;
    EXPECT_EQ(qbobj_find_operation(nullptr), nullptr);
}

TEST_F(LegacyOperations, AloneHaveNoPrefix)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        EXPECT_EQ(std::string(row->name).starts_with("qbobj_"), std::string(row->family) != "legacy") << row->name;
}

TEST_F(LegacyOperations, DescribeTheFolderAttributes)
{
    const QbobjField *type = qbobj_find_operation("getFolderAttribute")->arguments[1].type;
    ASSERT_NE(type, nullptr);
    EXPECT_STREQ(type->name, "FolderAttribute");
    EXPECT_EQ(type->position, sizeof(FolderAttribute));
    std::vector<std::string> fields;
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        fields.push_back(std::string(1, field->kind) + " " + field->name + " " + std::to_string(field->position));
    EXPECT_THAT(fields, ElementsAre("u ShareFlags " + std::to_string(offsetof(FolderAttribute, ShareFlags)),
                                    "u MediaType " + std::to_string(offsetof(FolderAttribute, MediaType)),
                                    "s Comment " + std::to_string(offsetof(FolderAttribute, Comment)),
                                    "u IsHome " + std::to_string(offsetof(FolderAttribute, IsHome)),
                                    "u IsSubfolder " + std::to_string(offsetof(FolderAttribute, IsSubfolder))));
    EXPECT_EQ(qbobj_find_type("FolderAttribute"), nullptr) << "it is none of the named types";
}

TEST_F(LegacyOperations, CanBeCalledThroughTheTable)
{
    QbobjValue values[2];
    values[0].s = "app";
    values[1].s = "on";
    ASSERT_EQ(qbobj_find_operation("setRegistryEntry")->call(qbdb, db, values, &err), 0u) << err.message;
    const char *read = nullptr;
    values[1].p = &read;
    ASSERT_EQ(qbobj_find_operation("getRegistryEntry")->call(qbdb, db, values, &err), 0u) << err.message;
    EXPECT_STREQ(read, "on");

    sql("INSERT INTO share (id,name,zfs_name,path,comment) VALUES (1,'m','tank/m','/tank/m','Media')");
    FolderAttribute attr{};
    values[0].s = "/tank/m";
    values[1].p = &attr;
    ASSERT_EQ(qbobj_find_operation("getFolderAttribute")->call(qbdb, db, values, &err), 0u) << err.message;
    EXPECT_STREQ(attr.Comment, "Media");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
