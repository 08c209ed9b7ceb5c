#include <chrono>
#include <thread>

#include "fixture/fixture.h"
#include "timemachine_tivo_coffer/status_file.h"

using test::elements;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Tivo : test::Database {
    TivoOptions tivo{};

    uint32_t get() { return qbobj_getTIVOSettings(qbdb, db, &tivo, &err); }
    uint32_t set() { return qbobj_setTIVOSettings(qbdb, db, &tivo, &err); }
    void add_share(int id, const std::string &path, bool dlna = true)
    {
        const std::string number = std::to_string(id);
        sql("INSERT INTO share (id,name,zfs_name,type,path,volume_id) VALUES(" + number + ",'s" + number + "','tank/s" +
            number + "','file','" + path + "','tank')");
        if (dlna)
            sql("INSERT INTO dlna_share_option (share_id,available,access,media_type) VALUES(" + number + ",1,'rw',0)");
    }
    void plan(const std::string &folder) { sql("INSERT INTO service_tivo VALUES('3','30','" + folder + "','0,6')"); }
    std::vector<std::string> stored() const { return rows("SELECT * FROM service_tivo"); }
};

TEST_F(Tivo, ReadsThePlanAndTheFolders)
{
    add_share(1, "/tank/movies");
    add_share(2, "/tank/o''brien");
    add_share(3, "/tank/private", false);
    plan("/tank/movies");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_STREQ(tivo.hour, "3");
    EXPECT_STREQ(tivo.minute, "30");
    EXPECT_STREQ(tivo.days, "0,6");
    EXPECT_STREQ(tivo.TIVOfolder, "/tank/movies");
    EXPECT_STREQ(tivo.DLNAfolderlist, "/tank/movies,/tank/o'brien");
}

TEST_F(Tivo, AFolderThatIsNotServedIsEmpty)
{
    add_share(1, "/tank/movies");
    add_share(2, "/tank/private", false);
    for (const char *folder : {"'/tank/private'", "'/tank/movies2'", "NULL", "''"}) {
        sql(std::string("DELETE FROM service_tivo;INSERT INTO service_tivo VALUES('1','2',") + folder + ",'3')");
        ASSERT_EQ(get(), 0u) << err.message;
        EXPECT_STREQ(tivo.TIVOfolder, "") << folder;
    }
    // It is looked for in the text of the whole list.
    sql("DELETE FROM service_tivo;INSERT INTO service_tivo VALUES('1','2','/tank/mov','3')");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_STREQ(tivo.TIVOfolder, "/tank/mov");
}

TEST_F(Tivo, WithoutOnePlanTheFieldsStayAsTheyAre)
{
    for (int plans : {0, 2}) {
        for (int i = 0; i < plans; i++) plan("/tank/movies");
        tivo = {};
        tivo.hour = "h";
        tivo.TIVOfolder = "f";
        ASSERT_EQ(get(), 0u) << err.message;
        EXPECT_STREQ(tivo.hour, "h");
        EXPECT_EQ(tivo.minute, nullptr);
        EXPECT_STREQ(tivo.TIVOfolder, "f");
        EXPECT_EQ(tivo.days, nullptr);
        EXPECT_STREQ(tivo.DLNAfolderlist, "");
    }
}

TEST_F(Tivo, AFailedReadLeavesTheRecord)
{
    plan("/tank/movies");
    fail_statement(1, 1, "injected", "dlna_share_option");
    expect_failure(5, "Failed 'SELECT path of dlna shares'. (injected)", [&] { return get(); });
    EXPECT_EQ(tivo.hour, nullptr);
    fail_statement(1, 1, "injected", "service_tivo");
    expect_failure(5, "Failed 'SELECT service_tivo'. (injected)", [&] { return get(); });
}

TEST_F(Tivo, AThousandFoldersAreJoined)
{
    for (int i = 1; i <= 1000; i++) add_share(i, "/tank/" + std::string(100, 'x') + std::to_string(i));
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(strlen(tivo.DLNAfolderlist), 1000u * 106 + 9 + 90 * 2 + 900 * 3 + 4 + 999);
}

TEST_F(Tivo, ThePlanIsReplaced)
{
    plan("/old");
    plan("/older");
    tivo.hour = "1";
    tivo.minute = "2";
    tivo.TIVOfolder = "/it's";
    tivo.days = "";
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("1|2|/it's|"));
}

TEST_F(Tivo, IsWrittenBackAsItWasRead)
{
    add_share(1, "/tank/movies");
    plan("/tank/movies");
    const std::string before = content();
    ASSERT_EQ(get(), 0u) << err.message;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(content(), before);
}

TEST_F(Tivo, AllFourValuesArePartOfAPlan)
{
    plan("/old");
    for (const char *TivoOptions::*missing :
         {&TivoOptions::hour, &TivoOptions::minute, &TivoOptions::TIVOfolder, &TivoOptions::days}) {
        tivo.hour = tivo.minute = tivo.TIVOfolder = tivo.days = "1";
        tivo.*missing = nullptr;
        expect_failure(8, "Invalid TIVO settings!", [&] { return set(); });
    }
}

// ---- media access keys

struct TivoKey : test::Database {
    uint32_t set(const char *name, const char *status, const char *key)
    {
        TivoMak mak{name, status, key};
        return qbobj_setTIVOMak(qbdb, db, &mak, &err);
    }
    std::vector<std::string> stored() const { return rows("SELECT * FROM tivo_mak ORDER BY name"); }
};

TEST_F(TivoKey, IsStoredReplacedAndRemoved)
{
    ASSERT_EQ(set("o'den", "true", "12'34"), 0u) << err.message;
    ASSERT_EQ(set("attic", "true", "99"), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("attic|99", "o'den|12'34"));
    ASSERT_EQ(set("o'den", "true", "56"), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("attic|99", "o'den|56"));
    for (const char *status : {"false", "TRUE", "", static_cast<const char *>(nullptr)}) {
        ASSERT_EQ(set("o'den", "true", "56"), 0u) << err.message;
        ASSERT_EQ(set("o'den", status, "78"), 0u) << err.message;
        EXPECT_THAT(stored(), ElementsAre("attic|99"));
    }
}

TEST_F(TivoKey, NeedsANameAndAKey)
{
    expect_failure(8, "TivoMak name cannot be NULL", [&] { return set(nullptr, "true", "1"); });
    expect_failure(8, "TivoMak key cannot be NULL", [&] { return set("den", "true", nullptr); });
}

// ---- devices, read from the service's file

struct TivoDevices : Tivo {
    test::StatusFile file;

    void SetUp() override
    {
        if (!file.usable) GTEST_SKIP() << file.kPath << " cannot be made here";
    }
    /// Name, status and activity of the devices.
    std::vector<std::string> devices()
    {
        tivo = {};
        EXPECT_EQ(get(), 0u) << err.message;
        std::vector<std::string> all;
        const auto text = [](const char *field) { return std::string(field ? field : "NULL"); };
        for (const TIVOhostsAcl *each : elements(tivo.TIVOhostsAcl))
            all.push_back(text(each->name) + "|" + text(each->status) + "|" + text(each->active));
        return all;
    }
    std::vector<std::string> devices(const std::string &text)
    {
        file.write(text);
        return devices();
    }
};

TEST_F(TivoDevices, AreReadInOrder)
{
    EXPECT_THAT(devices("[info]\nstatus=idle\n[Living Room]\nstatus=ready\n[Den [2]]\nstatus=archiving 30%\n"),
                ElementsAre("Living Room|ready|true", "Den [2]|archiving 30%|true"));
}

TEST_F(TivoDevices, TheStateTellsWhetherADeviceTakesPart)
{
    const std::pair<const char *, const char *> kStates[] = {
        {"archiving", "true"},      {"now ready", "true"},
        {"verifying key", "false"}, {"unauthorized", "false"},
        {"unconfigured", "false"},  {"not ready, unauthorized", "true"},
        {"Ready", "NULL"},          {"", "NULL"}};
    for (const auto &[status, active] : kStates)
        EXPECT_THAT(devices(std::string("[a]\nstatus=") + status + "\n"),
                    ElementsAre(std::string("a|") + status + "|" + active));
}

TEST_F(TivoDevices, OddFiles)
{
    const std::pair<std::string, std::vector<std::string>> kFiles[] = {
        {"", {}},
        {"\n\n", {}},
        {"status=ready\n", {}},                   // of nothing
        {"[info]\nstatus=idle", {}},              // no line end
        {"[a]\nstatus=ready", {"a|ready|true"}},  // no line end
        {"[a]\r\nstatus=ready\r\n", {"a|ready|true"}},
        {"[a]\n[b]\nstatus=ready\n", {"a|NULL|NULL", "b|ready|true"}},
        {"[a]\nname=x\nstatus=ready\n", {"a|ready|true"}},
        {"[a]\nstatus=ready\nstatus=verifying\n", {"a|ready|true"}},
        {"[]\nstatus=ready\n", {"|ready|true"}},
        {"[a\nstatus=ready\n]b[\n", {}},
        {" [a]\nstatus=ready\n", {}},
        {std::string("[a\0b]\nstatus=ready\n[c]\nstatus=r\0eady\n", 35), {"c|r|NULL"}},
        {"\xFF\xFE[a]\n[\xFF]\nstatus=\xC3ready\n", {"\xFF|\xC3ready|true"}},
        {"[a]\nstatus=ready\n[info]\nstatus=ready\n[b]\nstatus=unauthorized\n",
         {"a|ready|true", "b|unauthorized|false"}},
    };
    for (const auto &[text, found] : kFiles) EXPECT_EQ(devices(text), found) << testing::PrintToString(text);
}

TEST_F(TivoDevices, LongLinesAreReadInPieces)
{
    // 511 bytes at a time: what follows stands like a line of its own.
    const std::string room(511 - 7, 'r');
    EXPECT_THAT(devices("[a]\nstatus=" + room + "[b]\nstatus=ready\n"),
                ElementsAre("a|" + room + "|NULL", "b|ready|true"));
    EXPECT_THAT(devices("[" + std::string(600, 'n') + "]\nstatus=ready\n"), IsEmpty());
}

TEST_F(TivoDevices, AnEndlessFileComesToAnEnd)
{
    std::string text;
    for (int i = 0; i < 100000; i++) text += "[" + std::to_string(i) + "]\nstatus=ready\n";
    const size_t found = devices(text).size();
    EXPECT_GT(found, 1000u);
    EXPECT_LT(found, 100000u);
    file.link_to("/dev/zero");
    EXPECT_THAT(devices(), IsEmpty());
}

TEST_F(TivoDevices, WhatIsNoFileHasNone)
{
    EXPECT_THAT(devices(), IsEmpty());  // missing
    file.make_pipe();
    EXPECT_THAT(devices(), IsEmpty());
    file.make_directory();
    EXPECT_THAT(devices(), IsEmpty());
    file.link_to("/nowhere");
    EXPECT_THAT(devices(), IsEmpty());
}

TEST_F(TivoDevices, AreAppendedToTheList)
{
    file.write("[a]\nstatus=ready\n");
    TIVOhostsAcl first{};
    first.name = "first";
    tivo.TIVOhostsAcl = &first;
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(tivo.TIVOhostsAcl, &first);
    ASSERT_NE(first.next, nullptr);
    EXPECT_STREQ(first.next->name, "a");
}

/// How long a call takes, in seconds.
template <class Call>
double duration(Call call)
{
    const auto begun = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
}

TEST_F(TivoDevices, WaitsForTheServiceToLookRound)
{
    for (const char *busy : {"[info]\nstatus=scanning network\n[a]\nstatus=ready\n",
                             "[info]\nstatus=idle\n[a]\nstatus=ready\n[b]\nstatus=waiting for answer\n"}) {
        file.write(busy);
        std::thread service([this] {
            usleep(1500000);
            file.write("[info]\nstatus=idle\n[a]\nstatus=ready\n");
        });
        const double took = duration([&] { EXPECT_THAT(devices(), ElementsAre("a|ready|true")); });
        service.join();
        EXPECT_GT(took, 1.4);
        EXPECT_LT(took, 8);
    }
}

TEST_F(TivoDevices, GivesUpOnAServiceThatLooksForEver)
{
    file.write("[a]\nstatus=ready\n[info]\nstatus=scanning\n");
    const double took = duration([&] { EXPECT_THAT(devices(), IsEmpty()); });
    EXPECT_GT(took, 13);
    EXPECT_LT(took, 25);
}

TEST_F(TivoDevices, WhoseFileGoesAwayMeanwhileAreNone)
{
    file.write("[info]\nstatus=scanning\n");
    std::thread service([this] {
        usleep(500000);
        file.remove();
    });
    EXPECT_THAT(devices(), IsEmpty());
    service.join();
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
