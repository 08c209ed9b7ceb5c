// What backup jobs can read and write, and the names of USB ports.
#include "jobs.h"
#include "fixture/plans.h"

using test::elements;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAre;

namespace {

using Texts = std::vector<std::string>;

struct BackupTargets : test::Backup {
    Texts sources;
    Texts destinations;

    BackupTargets()
    {
        sql("INSERT INTO share (id,name,zfs_name,type,path,volume_id) VALUES(4,'disk','tank/disk','zvol','/x','tank');"
            "INSERT INTO _volume (id,lv_name) VALUES('pond','pond'),('USB','USB'),('media','media');"
            "INSERT INTO `$user` (id,uname,home,group_id,is_privileged,rid) VALUES"
            "(100,'bob','/home/bob',99,0,NULL),(101,'Anna','/home/anna',99,0,NULL),(102,'left','/x',99,-1,NULL),"
            "(103,'visitor','/x',65533,0,NULL),(104,'nowhere','/x',NULL,0,NULL),(105,'dora','/home/dora',99,0,1105);"
            "INSERT INTO usb_port (id,descr,port,alt_port) VALUES(1,'FRONT','1_1','2_1'),(2,'BACK','1_2',NULL),"
            "(3,'TOP','1_3','2_3');"
            "INSERT INTO usb_storage (usbpath,mount_point) VALUES('1:1.4','/media/front'),('2:3','/media/top')");
    }

    static std::string shown(const BackupTarget *each)
    {
        return std::string(each->Type) + "|" + each->UsbSubType + "|" + each->ShareNameOrProtocol + "|" + each->Path +
               "|" + std::to_string(each->Id) + "|" + std::to_string(each->Ejectable);
    }
    void read()
    {
        BackupTargetCollection targets{};
        ASSERT_EQ(qbobj_getBackupTargetCollection(qbdb, db, &targets, &err), 0u) << err.message;
        sources.clear();
        for (const BackupTarget *each : elements(targets.AvailableSourceTarget)) sources.push_back(shown(each));
        destinations.clear();
        for (const BackupTarget *each : elements(targets.AvailableDestinationTarget))
            destinations.push_back(shown(each));
    }
    static Texts of_type(const Texts &all, const std::string &type)
    {
        Texts some;
        for (const std::string &each : all)
            if (each.starts_with(type + "|")) some.push_back(each);
        return some;
    }
    std::string sub_type(const char *port)
    {
        const char *found = "untouched";
        EXPECT_EQ(qbobj_getBackupUSBSubType(qbdb, db, port, &found, &err), 0u) << err.message;
        return found ? found : "(null)";
    }
};

TEST_F(BackupTargets, Sources)
{
    read();
    EXPECT_THAT(of_type(sources, "share"), ElementsAre("share||media|/tank/media|1|0", "share||photos|/tank/photos|2|0",
                                                       "share||stick|/media/stick|3|1"));
    EXPECT_THAT(of_type(sources, "home"), UnorderedElementsAre("home||*|/tank/home|0|0", "home||bob|/home/bob|100|0",
                                                               "home||Anna|/home/anna|101|0"));
    const std::string pond = value("SELECT rowid FROM _volume WHERE id='pond'");
    const std::string tank = value("SELECT rowid FROM _volume WHERE id='tank'");
    EXPECT_THAT(of_type(sources, "volume"),
                ElementsAre("volume||pond|/pond|" + pond + "|0", "volume||tank|/tank|" + tank + "|0"));
    EXPECT_THAT(of_type(sources, "remote"), ElementsAre("remote||cifs||1|0", "remote||cifs-ab||2|0", "remote||ftp||3|0",
                                                        "remote||http||4|0", "remote||nfs||5|0", "remote||rsync||6|0"));
    EXPECT_THAT(of_type(sources, "usb"),
                ElementsAre("usb|BACKUP_FRONT|usb_port_1_1|/media/front|1|1", "usb|BACKUP_BACK|usb_port_1_2||2|1",
                            "usb|BACKUP_TOP|usb_port_1_3|/media/top|3|1"));
    EXPECT_THAT(of_type(sources, "timemachine"), ElementsAre("timemachine||~timemachine~|/c/.timemachine|0|0"));
    Texts kinds;
    for (const std::string &each : sources)
        if (const std::string kind = each.substr(0, each.find('|')); kinds.empty() || kinds.back() != kind)
            kinds.push_back(kind);
    EXPECT_THAT(kinds, ElementsAre("share", "home", "volume", "remote", "usb", "timemachine"));
    EXPECT_EQ(of_type(sources, "home")[0], "home||*|/tank/home|0|0") << "all homes come before single ones";
}

TEST_F(BackupTargets, Destinations)
{
    read();
    EXPECT_THAT(
        destinations,
        ElementsAre("share||media|/tank/media|1|0", "share||photos|/tank/photos|2|0", "share||stick|/media/stick|3|1",
                    "home||Anna|/home/anna|101|0", "home||bob|/home/bob|100|0", "remote||cifs||1|0", "remote||ftp||3|0",
                    "remote||nfs||5|0", "remote||rsync||6|0", "usb|BACKUP_FRONT|usb_port_1_1|/media/front|1|1",
                    "usb|BACKUP_BACK|usb_port_1_2||2|1", "usb|BACKUP_TOP|usb_port_1_3|/media/top|3|1"));
}

TEST_F(BackupTargets, InDirectoryModeTheHomesOfDirectoryUsers)
{
    sql("UPDATE service_cifs SET security='ads'");
    read();
    EXPECT_THAT(of_type(sources, "home"), ElementsAre("home||*|/tank/home|0|0", "home||dora|/home/dora|105|0"));
    EXPECT_THAT(of_type(destinations, "home"), ElementsAre("home||dora|/home/dora|105|0"));
}

TEST_F(BackupTargets, WithoutAHomeVolumeNotAllHomes)
{
    sql("UPDATE account_default SET home_volume_id='none'");
    read();
    EXPECT_THAT(of_type(sources, "home"), SizeIs(2));
}

TEST_F(BackupTargets, WithoutAGuestGroupTheNogroupUsersAreLeftOut)
{
    sql("DELETE FROM `$group` WHERE gname='guest'; UPDATE `$user` SET group_id=65534 WHERE id=100");
    read();
    EXPECT_THAT(of_type(destinations, "home"),
                UnorderedElementsAre("home||Anna|/home/anna|101|0", "home||visitor|/x|103|0"));
}

TEST_F(BackupTargets, AtMost500Homes)
{
    sql("WITH RECURSIVE n(i) AS (SELECT 1000 UNION ALL SELECT i+1 FROM n WHERE i<1600) INSERT INTO `$user` "
        "(id,uname,home,group_id,is_privileged) SELECT i,'u'||i,'/home/u'||i,99,0 FROM n");
    read();
    EXPECT_THAT(of_type(sources, "home"), SizeIs(501));
    EXPECT_THAT(of_type(destinations, "home"), SizeIs(500));
}

TEST_F(BackupTargets, ListsThatAreNotEmptyAreAppendedTo)
{
    BackupTarget first{};
    BackupTarget other{};
    BackupTargetCollection targets{&first, &other};
    ASSERT_EQ(qbobj_getBackupTargetCollection(qbdb, db, &targets, &err), 0u) << err.message;
    EXPECT_EQ(targets.AvailableSourceTarget, &first);
    EXPECT_STREQ(first.next->Type, "share");
    EXPECT_EQ(targets.AvailableDestinationTarget, &other);
    EXPECT_STREQ(other.next->Type, "share");
}

TEST_F(BackupTargets, NamesOfUsbPorts)
{
    EXPECT_EQ(sub_type("usb_port_1_1"), "BACKUP_FRONT");
    EXPECT_EQ(sub_type("usb_port_2_1"), "BACKUP_FRONT") << "its second controller";
    EXPECT_EQ(sub_type("usb_port_1_2"), "BACKUP_BACK");
    for (const char *none : {"1_1", "usb_port_", "usb_port_9", "", "x' OR '1'='1", static_cast<const char *>(nullptr)})
        EXPECT_EQ(sub_type(none), "(null)");
    const char *found = "untouched";
    fail_statement(1);
    expect_failure(5, "Failed DB Query for usb_port. injected",
                   [&] { return qbobj_getBackupUSBSubType(qbdb, db, "usb_port_1_1", &found, &err); });
    EXPECT_STREQ(found, "untouched");
}

TEST_F(BackupTargets, WhatIsReadWhole)
{
    take_statements();
    read();
    sub_type("usb_port_1_1");
    test::expect_indexed(db, take_statements(),
                         {{"share", "'~timemachine~'", "lists all shares"},
                          {"share", "readonly=0", "lists all shares"},
                          {"_volume", "", "a few volumes"},
                          {"backup_protocol", "", "a handful of protocols"},
                          {"usb_port", "", "a handful of connectors"},
                          {"usb_storage", "", "a few devices"},
                          {"$user", "LIMIT 500", "lists the first 500 homes"},
                          {"T", "LIMIT 500", "these homes"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
