// iSCSI: LUN groups, initiators, LUNs, access lists.
#include <functional>

#include "fixture/fixture.h"
#include "fixture/plans.h"

using test::elements;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace {

constexpr uint32_t kNothing = 0xFFFFFFFF;  // -1
constexpr char kIqn[] = "iqn.2026-01.com.example:host";

struct Iscsi : test::Database {
    static LunGroup group(const char *name)
    {
        LunGroup made{};
        made.Name = name;
        made.Target = "iqn.2026-01.com.example:target";
        made.AnyInitiator = 0;
        made.ChapAuth = 1;
        made.ChapSecret = "it's secret";
        return made;
    }
    static Initiator initiator(const char *name)
    {
        Initiator made{};
        made.Name = name;
        made.ChapAuth = 1;
        made.ChapSecret = "it's secret";
        return made;
    }
    static Lun lun(const char *name, const char *of = "disks", int32_t number = 3)
    {
        Lun made{};
        made.Name = name;
        made.LunGroup = of;
        made.LunN = number;
        return made;
    }

    uint32_t add(LunGroup made) { return qbobj_addLunGroup(qbdb, db, &made, &err); }
    uint32_t add(Initiator made) { return qbobj_addInitiator(qbdb, db, &made, &err); }
    uint32_t add(Lun made) { return qbobj_addLun(qbdb, db, &made, &err); }
    uint32_t modify(LunGroup made) { return qbobj_modifyLunGroup(qbdb, db, &made, &err); }
    uint32_t modify(Initiator made) { return qbobj_modifyInitiator(qbdb, db, &made, &err); }
    uint32_t get(LunGroup *read) { return qbobj_getLunGroup(qbdb, db, read, &err); }
    uint32_t get(Initiator *read) { return qbobj_getInitiator(qbdb, db, read, &err); }
    uint32_t get(Lun *read) { return qbobj_getLun(qbdb, db, read, &err); }
    uint32_t admit(const char *to, const char *name) { return qbobj_addLunGroupAccessList(qbdb, db, to, name, &err); }

    std::vector<std::string> groups() const
    {
        return rows("SELECT name,target,all_hosts,chap_auth,chap_secret FROM `$iscsi_lun_group` ORDER BY id");
    }
    std::vector<std::string> initiators() const
    {
        return rows("SELECT name,chap_auth,chap_secret FROM `$iscsi_initiator` ORDER BY id");
    }
    std::vector<std::string> luns() const { return rows("SELECT name,lun_group,lun_n FROM `$iscsi_lun` ORDER BY id"); }
    std::vector<std::string> access() const { return rows("SELECT * FROM `$iscsi_lun_group_access` ORDER BY rowid"); }

    std::vector<std::string> admitted(const char *to)
    {
        InitiatorCollection read{};
        EXPECT_EQ(qbobj_getLunGroupAccessList(qbdb, db, to, &read, &err), 0u) << err.message;
        std::vector<std::string> names;
        for (const Initiator *each : elements(read.Initiator)) {
            names.emplace_back(each->Name);
            EXPECT_STREQ(each->key, each->Name);
            EXPECT_EQ(each->ChapSecret, nullptr);
        }
        return names;
    }
};

// ---- LUN groups

TEST_F(Iscsi, AddsAndReadsALunGroup)
{
    LunGroup made = group("disks");
    LunGroup ignored = group("others");
    made.next = &ignored;
    ASSERT_EQ(add(made), 0u) << err.message;
    EXPECT_THAT(groups(), ElementsAre("disks|iqn.2026-01.com.example:target|0|1|it's secret"));
    LunGroup after{};
    LunGroup read{};
    read.Name = "disks";
    read.AnyInitiator = 7;
    read.next = &after;
    ASSERT_EQ(get(&read), 0u) << err.message;
    EXPECT_STREQ(read.key, "disks");
    EXPECT_STREQ(read.Name, "disks");
    EXPECT_STREQ(read.Target, made.Target);
    EXPECT_EQ(read.AnyInitiator, 0);
    EXPECT_EQ(read.ChapAuth, 1);
    EXPECT_STREQ(read.ChapSecret, "it's secret");
    EXPECT_EQ(read.next, &after) << "the link is the caller's";
}

TEST_F(Iscsi, ReadsNothingAsNothing)
{
    sql("INSERT INTO `$iscsi_lun_group` (name) VALUES('bare'); INSERT INTO `$iscsi_initiator` (name) VALUES('bare');"
        "INSERT INTO `$iscsi_lun` (name) VALUES('bare')");
    LunGroup of_group = group("bare");
    ASSERT_EQ(get(&of_group), 0u) << err.message;
    EXPECT_EQ(of_group.Target, nullptr);
    EXPECT_EQ(of_group.ChapAuth, 0);
    EXPECT_EQ(of_group.ChapSecret, nullptr);
    Initiator of_initiator = initiator("bare");
    ASSERT_EQ(get(&of_initiator), 0u) << err.message;
    EXPECT_EQ(of_initiator.ChapAuth, 0);
    EXPECT_EQ(of_initiator.ChapSecret, nullptr);
    Lun of_lun = lun("bare");
    ASSERT_EQ(get(&of_lun), 0u) << err.message;
    EXPECT_EQ(of_lun.LunGroup, nullptr);
    EXPECT_EQ(of_lun.LunN, 0);
}

TEST_F(Iscsi, ListsGroupsByNameWithoutCase)
{
    for (const char *name : {"LUN2", "zoo", "lun1", "Disks"}) ASSERT_EQ(add(group(name)), 0u) << err.message;
    LunGroup first{};
    LunGroupCollection all{&first};
    ASSERT_EQ(qbobj_getLunGroupCollection(qbdb, db, &all, &err), 0u) << err.message;
    EXPECT_EQ(all.LunGroup, &first) << "a list that is not empty is appended to";
    std::vector<std::string> names;
    for (const LunGroup *each : elements(first.next)) {
        names.emplace_back(each->Name);
        EXPECT_STREQ(each->key, each->Name);
        EXPECT_STREQ(each->ChapSecret, "it's secret");
    }
    EXPECT_THAT(names, ElementsAre("Disks", "lun1", "LUN2", "zoo"));
}

TEST_F(Iscsi, ModifiesALunGroup)
{
    ASSERT_EQ(add(group("disks")), 0u) << err.message;
    ASSERT_EQ(add(group("Disks")), 0u) << err.message;
    LunGroup change{};
    change.Name = "disks";
    change.Target = "t'";
    change.AnyInitiator = 1;
    ASSERT_EQ(modify(change), 0u) << err.message;
    EXPECT_THAT(groups(), ElementsAre("disks|t'|1|0|NULL", "Disks|iqn.2026-01.com.example:target|0|1|it's secret"));
}

TEST_F(Iscsi, TheMaskKeepsASecret)
{
    ASSERT_EQ(add(group("disks")), 0u) << err.message;
    ASSERT_EQ(add(initiator("host")), 0u) << err.message;
    LunGroup of_group = group("disks");
    of_group.Target = "new";
    of_group.ChapAuth = 0;
    of_group.AnyInitiator = 1;
    of_group.ChapSecret = masked_password;
    ASSERT_EQ(modify(of_group), 0u) << err.message;
    Initiator of_initiator = initiator("host");
    of_initiator.ChapAuth = 0;
    of_initiator.ChapSecret = masked_password;
    ASSERT_EQ(modify(of_initiator), 0u) << err.message;
    EXPECT_THAT(groups(), ElementsAre("disks|new|1|0|it's secret"));
    EXPECT_THAT(initiators(), ElementsAre("host|0|it's secret"));
}

TEST_F(Iscsi, WhatIsNotThereIsModifiedAndDeletedWithoutAnError)
{
    ASSERT_EQ(add(group("disks")), 0u) << err.message;
    ASSERT_EQ(add(initiator("host")), 0u) << err.message;
    ASSERT_EQ(add(lun("one")), 0u) << err.message;
    const std::string before = content();
    EXPECT_EQ(modify(group("others")), 0u) << err.message;
    EXPECT_EQ(modify(group(nullptr)), 0u) << err.message;
    EXPECT_EQ(modify(initiator("others")), 0u) << err.message;
    EXPECT_EQ(qbobj_deleteLunGroup(qbdb, db, "others", &err), 0u) << err.message;
    EXPECT_EQ(qbobj_deleteInitiator(qbdb, db, "others", &err), 0u) << err.message;
    EXPECT_EQ(qbobj_deleteLun(qbdb, db, "others", &err), 0u) << err.message;
    EXPECT_EQ(qbobj_deleteLunGroupAccessList(qbdb, db, "others", &err), 0u) << err.message;
    EXPECT_EQ(qbobj_deleteIniFromLunGroupAccessList(qbdb, db, "others", &err), 0u) << err.message;
    EXPECT_EQ(content(), before);
}

TEST_F(Iscsi, DeletingAGroupLeavesItsLunsAndItsAccessList)
{
    ASSERT_EQ(add(group("disks")), 0u) << err.message;
    ASSERT_EQ(add(group("others")), 0u) << err.message;
    ASSERT_EQ(add(lun("one")), 0u) << err.message;
    ASSERT_EQ(admit("disks", kIqn), 0u) << err.message;
    ASSERT_EQ(qbobj_deleteLunGroup(qbdb, db, "disks", &err), 0u) << err.message;
    EXPECT_THAT(groups(), ElementsAre(StartsWith("others|")));
    EXPECT_THAT(luns(), ElementsAre("one|disks|3"));
    EXPECT_THAT(admitted("disks"), ElementsAre(kIqn));
}

// ---- Initiators

TEST_F(Iscsi, AddsReadsModifiesAndDeletesAnInitiator)
{
    Initiator made = initiator(kIqn);
    Initiator ignored = initiator("others");
    made.next = &ignored;
    ASSERT_EQ(add(made), 0u) << err.message;
    EXPECT_THAT(initiators(), ElementsAre("iqn.2026-01.com.example:host|1|it's secret"));
    Initiator after{};
    Initiator read{};
    read.Name = kIqn;
    read.next = &after;
    ASSERT_EQ(get(&read), 0u) << err.message;
    EXPECT_STREQ(read.key, kIqn);
    EXPECT_STREQ(read.Name, kIqn);
    EXPECT_EQ(read.ChapAuth, 1);
    EXPECT_STREQ(read.ChapSecret, "it's secret");
    EXPECT_EQ(read.next, &after) << "the link is the caller's";
    Initiator change{};
    change.Name = kIqn;
    ASSERT_EQ(modify(change), 0u) << err.message;
    EXPECT_THAT(initiators(), ElementsAre("iqn.2026-01.com.example:host|0|NULL"));
    ASSERT_EQ(admit("disks", kIqn), 0u) << err.message;
    ASSERT_EQ(qbobj_deleteInitiator(qbdb, db, kIqn, &err), 0u) << err.message;
    EXPECT_THAT(initiators(), IsEmpty());
    EXPECT_THAT(admitted("disks"), ElementsAre(kIqn)) << "the access lists are emptied by a call of their own";
}

TEST_F(Iscsi, ListsInitiatorsByNameWithoutCase)
{
    for (const char *name : {"Zoe", "anna", "Bob"}) ASSERT_EQ(add(initiator(name)), 0u) << err.message;
    Initiator first{};
    InitiatorCollection all{&first};
    ASSERT_EQ(qbobj_getInitiatorCollection(qbdb, db, &all, &err), 0u) << err.message;
    EXPECT_EQ(all.Initiator, &first) << "a list that is not empty is appended to";
    std::vector<std::string> names;
    for (const Initiator *each : elements(first.next)) {
        names.emplace_back(each->Name);
        EXPECT_STREQ(each->key, each->Name);
        EXPECT_STREQ(each->ChapSecret, "it's secret");
    }
    EXPECT_THAT(names, ElementsAre("anna", "Bob", "Zoe"));
}

// ---- LUNs

TEST_F(Iscsi, AddsReadsAndDeletesALun)
{
    Lun made = lun("one");
    Lun ignored = lun("two");
    made.next = &ignored;
    ASSERT_EQ(add(made), 0u) << err.message;
    EXPECT_THAT(luns(), ElementsAre("one|disks|3")) << "the group need not exist";
    Lun after{};
    Lun read{};
    read.Name = "one";
    read.next = &after;
    ASSERT_EQ(get(&read), 0u) << err.message;
    EXPECT_STREQ(read.key, "one");
    EXPECT_STREQ(read.Name, "one");
    EXPECT_STREQ(read.LunGroup, "disks");
    EXPECT_EQ(read.LunN, 3);
    EXPECT_EQ(read.next, &after) << "the link is the caller's";
    ASSERT_EQ(qbobj_deleteLun(qbdb, db, "one", &err), 0u) << err.message;
    EXPECT_THAT(luns(), IsEmpty());
}

// ---- Access lists

TEST_F(Iscsi, AnInitiatorAdmittedTwiceIsReadOnce)
{
    for (const char *name : {"a", "b", "a"}) ASSERT_EQ(admit("disks", name), 0u) << err.message;
    ASSERT_EQ(admit("others", "c'"), 0u) << err.message;
    EXPECT_THAT(access(), ElementsAre("disks|a", "disks|b", "disks|a", "others|c'"));
    EXPECT_THAT(admitted("disks"), UnorderedElementsAre("a", "b"));
    EXPECT_THAT(admitted("others"), ElementsAre("c'"));
    EXPECT_THAT(admitted("nobody's"), IsEmpty());
    Initiator first{};
    InitiatorCollection all{&first};
    ASSERT_EQ(qbobj_getLunGroupAccessList(qbdb, db, "others", &all, &err), 0u) << err.message;
    EXPECT_EQ(all.Initiator, &first) << "a list that is not empty is appended to";
    EXPECT_STREQ(first.next->Name, "c'");
}

TEST_F(Iscsi, EmptiesTheListOfOneGroup)
{
    for (const char *name : {"a", "b", "a"}) ASSERT_EQ(admit("disks", name), 0u) << err.message;
    ASSERT_EQ(admit("others", "a"), 0u) << err.message;
    ASSERT_EQ(qbobj_deleteLunGroupAccessList(qbdb, db, "disks", &err), 0u) << err.message;
    EXPECT_THAT(access(), ElementsAre("others|a"));
}

TEST_F(Iscsi, TakesAnInitiatorOutOfAllLists)
{
    for (const char *name : {"a", "b", "a"}) ASSERT_EQ(admit("disks", name), 0u) << err.message;
    ASSERT_EQ(admit("others", "a"), 0u) << err.message;
    ASSERT_EQ(qbobj_deleteIniFromLunGroupAccessList(qbdb, db, "a", &err), 0u) << err.message;
    EXPECT_THAT(access(), ElementsAre("disks|b"));
}

// ---- Row ids

using Id = uint32_t (*)(qbdb_t *, sqlite3 *, const char *, ErrorInfo *);

TEST_F(Iscsi, TellsRowIds)
{
    sql("INSERT INTO `$iscsi_lun_group` (id,name) VALUES(41,'disks'),(42,'iqn.2026-01.com.example:host');"
        "INSERT INTO `$iscsi_initiator` (id,name) VALUES(51,'disks'),(52,'iqn.2026-01.com.example:host'),(53,'homes');"
        "INSERT INTO `$iscsi_lun` (id,name) VALUES(61,'disks'),(62,'iqn.2026-01.com.example:host'),(63,'homes')");
    const struct {
        Id id;
        uint32_t disks;
        uint32_t iqn;
        const char *complaint;  // of the log, about the second name
    } kinds[] = {
        {qbobj_getLunGroupId, 41, 42, nullptr},
        {qbobj_getInitiatorId, 51, kNothing, "Initiator name 'iqn.2026-01.com.example:host' is invalid."},
        {qbobj_getLunId, 61, kNothing, "LUN name 'iqn.2026-01.com.example:host' is invalid."},
    };
    for (const auto &kind : kinds) {
        EXPECT_EQ(kind.id(qbdb, db, "disks", &err), kind.disks);
        log.clear();
        take_statements();
        EXPECT_EQ(kind.id(qbdb, db, kIqn, &err), kind.iqn);
        if (kind.complaint) {
            EXPECT_THAT(logged(2), ElementsAre(kind.complaint));
            EXPECT_THAT(take_statements(), ElementsAre(StartsWith("BEGIN"), "ROLLBACK"));
            EXPECT_EQ(kind.id(qbdb, db, "homes", &err), kNothing) << "reserved";
        }
        for (const char *none : {"unknown", "Disks", "", "x' OR '1'='1", static_cast<const char *>(nullptr)})
            EXPECT_EQ(kind.id(qbdb, db, none, &err), kNothing);
        fail_statement(1);
        EXPECT_EQ(kind.id(qbdb, db, "disks", &err), kNothing);
        EXPECT_EQ(err.code, 0u);
        EXPECT_EQ(err.message, nullptr);
    }
}

// ---- Refusals

TEST_F(Iscsi, MissingArguments)
{
    const char *kNoGroup = "LUN Group Name cannot be NULL.";
    const char *kNoInitiator = "iSCSI Initiator Name cannot be NULL.";
    InitiatorCollection read{};
    const struct {
        const char *message;
        std::function<uint32_t()> call;
    } calls[] = {
        {"LUN Group cannot be NULL.", [&] { return qbobj_addLunGroup(qbdb, db, nullptr, &err); }},
        {"LUN Group cannot be NULL.", [&] { return qbobj_modifyLunGroup(qbdb, db, nullptr, &err); }},
        {kNoGroup, [&] { return qbobj_deleteLunGroup(qbdb, db, nullptr, &err); }},
        {"iSCSI Initiator cannot be NULL.", [&] { return qbobj_addInitiator(qbdb, db, nullptr, &err); }},
        {"iSCSI Initiator cannot be NULL.", [&] { return qbobj_modifyInitiator(qbdb, db, nullptr, &err); }},
        {kNoInitiator, [&] { return qbobj_deleteInitiator(qbdb, db, nullptr, &err); }},
        {"iSCSI LUN cannot be NULL.", [&] { return qbobj_addLun(qbdb, db, nullptr, &err); }},
        {"iSCSI LUN Name cannot be NULL.", [&] { return qbobj_deleteLun(qbdb, db, nullptr, &err); }},
        {kNoGroup, [&] { return qbobj_getLunGroupAccessList(qbdb, db, nullptr, &read, &err); }},
        {kNoGroup, [&] { return admit(nullptr, "a"); }},
        {kNoInitiator, [&] { return admit("disks", nullptr); }},
        {kNoGroup, [&] { return qbobj_deleteLunGroupAccessList(qbdb, db, nullptr, &err); }},
        {kNoInitiator, [&] { return qbobj_deleteIniFromLunGroupAccessList(qbdb, db, nullptr, &err); }},
    };
    for (const auto &each : calls) expect_failure(8, each.message, each.call);
}

TEST_F(Iscsi, NothingIsReadOfWhatIsNotThere)
{
    for (const char *name : {"none", "", static_cast<const char *>(nullptr)}) {
        const std::string shown = name ? name : "(null)";
        LunGroup of_group = group(name);
        expect_failure(6, "None of row selected from `$iscsi_lun_group` for resource_id=" + shown + ".",
                       [&] { return get(&of_group); });
        EXPECT_STREQ(of_group.ChapSecret, "it's secret") << "the record stays as it is";
        Initiator of_initiator = initiator(name);
        expect_failure(6, "None of row selected from `$iscsi_initiator` for resource_id=" + shown + ".",
                       [&] { return get(&of_initiator); });
        Lun of_lun = lun(name);
        expect_failure(6, "None of row selected from `$iscsi_lun` for resource_id=" + shown + ".",
                       [&] { return get(&of_lun); });
    }
}

TEST_F(Iscsi, NamesAreThereAndUnique)
{
    ASSERT_EQ(add(group("disks")), 0u) << err.message;
    ASSERT_EQ(add(initiator("disks")), 0u) << err.message;
    ASSERT_EQ(add(lun("disks")), 0u) << err.message;
    for (const char *name : {"disks", static_cast<const char *>(nullptr)}) {
        const std::string why = name ? "UNIQUE" : "NOT NULL";
        expect_failure(5,
                       "Failed DB Query for 'INSERT INTO `$iscsi_lun_group`'. " + why +
                           " constraint failed: $iscsi_lun_group.name",
                       [&] { return add(group(name)); });
        expect_failure(5,
                       "Failed DB Query for 'INSERT INTO `$iscsi_initiator`'. " + why +
                           " constraint failed: $iscsi_initiator.name",
                       [&] { return add(initiator(name)); });
        expect_failure(5,
                       "Failed DB Query for 'INSERT INTO `$iscsi_lun`'. " + why + " constraint failed: $iscsi_lun.name",
                       [&] { return add(lun(name)); });
    }
}

// ---- Plans

TEST_F(Iscsi, OnlyListsAreReadWhole)
{
    ASSERT_EQ(add(group("disks")), 0u) << err.message;
    ASSERT_EQ(add(initiator("host")), 0u) << err.message;
    ASSERT_EQ(add(lun("one")), 0u) << err.message;
    ASSERT_EQ(admit("disks", "host"), 0u) << err.message;
    take_statements();
    LunGroup of_group = group("disks");
    Initiator of_initiator = initiator("host");
    Lun of_lun = lun("one");
    LunGroupCollection all_groups{};
    InitiatorCollection all_initiators{};
    ASSERT_EQ(qbobj_getLunGroupCollection(qbdb, db, &all_groups, &err), 0u);
    ASSERT_EQ(qbobj_getInitiatorCollection(qbdb, db, &all_initiators, &err), 0u);
    ASSERT_EQ(get(&of_group) + get(&of_initiator) + get(&of_lun), 0u);
    ASSERT_EQ(modify(of_group) + modify(of_initiator), 0u);
    EXPECT_THAT(admitted("disks"), ElementsAre("host"));
    for (const Id id : {qbobj_getLunGroupId, qbobj_getInitiatorId, qbobj_getLunId}) id(qbdb, db, "one", &err);
    ASSERT_EQ(qbobj_deleteLunGroup(qbdb, db, "disks", &err), 0u);
    ASSERT_EQ(qbobj_deleteInitiator(qbdb, db, "host", &err), 0u);
    ASSERT_EQ(qbobj_deleteLun(qbdb, db, "one", &err), 0u);
    ASSERT_EQ(qbobj_deleteLunGroupAccessList(qbdb, db, "disks", &err), 0u);
    ASSERT_EQ(qbobj_deleteIniFromLunGroupAccessList(qbdb, db, "host", &err), 0u);
    test::expect_indexed(db, take_statements(),
                         {{"$iscsi_lun_group", "ORDER BY L.name", "lists all groups"},
                          {"$iscsi_initiator", "ORDER BY I.name", "lists all initiators"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
