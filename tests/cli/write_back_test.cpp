// Settings that the program prints can be given back to it.
#include <algorithm>
#include <map>

#include "cli/run.h"
#include "protocols/protocols.h"
#include "validate/validate.h"

namespace {

struct WriteBack : test::Database {
    test::Result call(std::vector<std::string> words, const std::string &input = "") const
    {
        words.insert(words.begin(), {test::program(), "-d", path});
        return test::run_command(words, input);
    }
    /// What the first call prints goes into the second.
    void pass_on(const std::vector<std::string> &from, const std::string &to)
    {
        const test::Result read = call(from);
        ASSERT_EQ(read.status, 0) << read.err;
        const test::Result written = call({to, "-"}, read.out);
        EXPECT_EQ(written.status, 0) << written.err;
    }
};

TEST_F(WriteBack, EveryProtocolLeavesEveryTableAsItWas)
{
    sql(test::kEverySetting);
    const auto before = test::every_table(*this);
    for (const char *word : qb::protocol_names) {
        SCOPED_TRACE(word);
        const bool alone = std::string(word) != "upnpd";  // which is read with the others only
        pass_on(
            alone ? std::vector<std::string>{"getProtocol", word} : std::vector<std::string>{"getProtocolCollection"},
            "setProtocolCollection");
        EXPECT_EQ(test::every_table(*this), before);
    }
}

TEST_F(WriteBack, HomeFoldersTivoAndTimeMachineToo)
{
    sql("INSERT INTO share (id,name,zfs_name,type,path,volume_id) VALUES(1,'m','tank/m','file','/tank/m','tank');"
        "INSERT INTO dlna_share_option (share_id,available,access,media_type) VALUES(1,1,'rw',0);"
        "INSERT INTO service_tivo VALUES('3','30','/tank/m','0,6')");
    const test::Result on = call({"setTimemachine", "Enabled=1", "CapacityMB=5000", "Password=-"}, "secret\n");
    ASSERT_EQ(on.status, 0) << on.err;
    const auto before = test::every_table(*this);
    for (const char *settings : {"HomeFolderOptions", "TIVOSettings", "Timemachine"}) {
        SCOPED_TRACE(settings);
        pass_on({std::string("get") + settings}, std::string("set") + settings);
        EXPECT_EQ(test::every_table(*this), before);
    }
}

TEST_F(WriteBack, SecretsAreNotShown)
{
    sql("UPDATE service_daap SET password='open sesame'");
    for (const char *form : {"--json", "--table"}) {
        const test::Result read = call({"getProtocol", "daap", form});
        EXPECT_THAT(read.out, testing::HasSubstr(masked_password));
        EXPECT_THAT(read.out, testing::Not(testing::HasSubstr("sesame")));
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
