// The disk inventory, taken from a tree that looks like the kernel's and from this machine's own.
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "fixture/files.h"
#include "fixture/fixture.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

struct ImportDisks : test::Database {
    fs::path root = directory.path;

    void put(const std::string &name, const std::string &content) const
    {
        fs::create_directories((root / name).parent_path());
        std::ofstream(root / name, std::ios::binary) << content;
    }
    /// A block device as the kernel shows it: a link into the tree of devices. `attributes` are relative to the block
    /// device; what begins with "device/" lies at the hardware behind it.
    void device(const std::string &path, const std::map<std::string, std::string> &attributes) const
    {
        const std::string name = fs::path(path).filename();
        const fs::path folder = root / "sys/devices" / path;
        fs::create_directories(folder);
        fs::create_directories(root / "sys/block");
        fs::create_symlink("../devices/" + path, root / "sys/block" / name);
        for (const auto &[attribute, content] : attributes) {
            if (attribute.rfind("device/", 0) == 0 && !fs::exists(folder / "device")) {
                fs::create_directories(folder / "../../hardware" / name);
                fs::create_symlink("../../hardware/" + name, folder / "device");
            }
            put("sys/devices/" + path + "/" + attribute, content);
        }
    }
    void sata(int port, const std::string &name, const std::string &serial) const
    {
        const std::string n = std::to_string(port);
        device("pci0000:00/0000:00:1f.2/ata" + n + "/host" + n + "/target" + n + ":0:0/" + n + ":0:0:0/block/" + name,
               {{"size", "7814037168\n"},
                {"queue/rotational", "1\n"},
                {"queue/logical_block_size", "512\n"},
                {"device/vendor", "ATA     \n"},
                {"device/model", "WDC WD40EFRX-68N\n"},
                {"device/rev", "0A82\n"},
                {"device/type", "0\n"},
                {"device/vpd_pg80", std::string("\0\x80\0\x14", 4) + serial},
                {"device/vpd_pgb1", std::string("\0\xb1\0\x3c\x15\x18\0\0", 8)}});
    }
    void pull(const std::string &name) const { fs::remove(root / "sys/block" / name); }
    int import()
    {
        sql("BEGIN");
        const int rc = qbdb_import_nolock(qbdb, db, QBDB_IMPORT_DISKS);
        sql("COMMIT");
        return rc;
    }
    std::vector<std::string> present() const { return rows("SELECT id FROM `$disk_info` WHERE present=1 ORDER BY id"); }
};

TEST_F(ImportDisks, DescribesEachKindOfDisk)
{
    sata(3, "sda", "     WD-WCC4E1234567");
    device("pci0000:00/0000:01:00.0/host8/port-8:0/end_device-8:0/target8:0:5/8:0:5:0/block/sdb",
           {{"size", "15628053168\n"},
            {"queue/rotational", "0\n"},
            {"queue/logical_block_size", "4096\n"},
            {"device/vendor", "SEAGATE \n"},
            {"device/model", "XS3840SE70014   \n"},
            {"device/rev", "0003\n"},
            {"device/type", "0\n"},
            {"device/vpd_pg80", std::string("\0\x80\0\x08", 4) + "Z1Z2Z3Z4"},
            {"device/hwmon/hwmon3/temp1_input", "34850\n"}});
    device("pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0/block/sdc",
           {{"size", "60088320\n"},
            {"removable", "1\n"},
            {"queue/rotational", "1\n"},
            {"device/vendor", "SanDisk \n"},
            {"device/model", "Ultra           \n"},
            {"device/rev", "1.00\n"},
            {"device/type", "0\n"}});
    device("pci0000:00/0000:02:00.0/nvme/nvme1/nvme1n1",
           {{"size", "1000215216\n"},
            {"queue/rotational", "0\n"},
            {"device/model", "Samsung SSD 980 PRO 512GB               \n"},
            {"device/serial", "S5GXNX0R123456\n"},
            {"device/firmware_rev", "5B2QGXA7\n"}});
    device(
        "pci0000:00/0000:00:02.0/virtio1/block/vda",
        {{"size", "536870912\n"}, {"serial", "overlay"}, {"queue/rotational", "1\n"}, {"device/vendor", "0x1af4\n"}});
    device("platform/sdhci/mmc_host/mmc0/mmc0:0001/block/mmcblk0", {{"size", "61071360\n"},
                                                                    {"queue/rotational", "0\n"},
                                                                    {"device/name", "DA4032\n"},
                                                                    {"device/serial", "0x2d8f1c7a\n"},
                                                                    {"device/fwrev", "0x3132333435\n"}});
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(
        rows("SELECT id,present,model,serial,fw_version,rpm,sectors,capacity,controller,port,hwif,channel FROM "
             "`$disk_info` ORDER BY id"),
        ElementsAre("mmcblk0|1|DA4032|0x2d8f1c7a|0x3132333435|0|61071360|31268536320|0|50000|mmc|50000",
                    "nvme1n1|1|Samsung SSD 980 PRO 512GB|S5GXNX0R123456|5B2QGXA7|0|1000215216|512110190592|0|30001|"
                    "nvme|30001",
                    "sda|1|WDC WD40EFRX-68N|WD-WCC4E1234567|0A82|5400|7814037168|4000787030016|0|2|sata|2",
                    "sdb|1|SEAGATE XS3840SE70014|Z1Z2Z3Z4|0003|0|1953506646|8001563222016|0|12053|sas|12053",
                    "sdc|1|SanDisk Ultra|NULL|1.00|NULL|60088320|30765219840|0|21536|usb|21536",
                    "vda|1|NULL|overlay|NULL|NULL|536870912|274877906944|0|40001|virtio|40001"));
    EXPECT_THAT(rows("SELECT disk_id,temp FROM _disk_health ORDER BY disk_id"),
                ElementsAre("mmcblk0|NULL", "nvme1n1|NULL", "sda|NULL", "sdb|34", "sdc|NULL", "vda|NULL"));
    EXPECT_THAT(rows("SELECT typeof(rpm),typeof(sectors),typeof(capacity) FROM `$disk_info` WHERE id='sda'"),
                ElementsAre("integer|integer|integer"));
}

TEST_F(ImportDisks, LeavesOutWhatIsNoDisk)
{
    const std::map<std::string, std::string> some = {{"size", "2048\n"}};
    for (const char *name : {"loop0", "ram0", "zram0", "dm-0", "md127", "nbd0"})
        device(std::string("virtual/block/") + name, some);
    const auto with = [](std::map<std::string, std::string> attributes) {
        attributes.insert({{"size", "2048\n"}, {"device/x", ""}});
        return attributes;
    };
    device("pci/ata2/host2/target2:0:0/2:0:0:0/block/sr0", with({{"device/type", "5\n"}}));
    device("platform/floppy.0/block/fd0", with({}));
    device("mtd/block/mtdblock0", with({}));
    device("mmc_host/mmc0/mmc0:0001/block/mmcblk0boot0", with({}));
    device("usb1/host7/target7:0:0/7:0:0:0/block/sdz", with({{"size", "0\n"}}));
    device("virtual/nvme-subsystem/nvme-subsys0/nvme0c0n1", with({{"hidden", "1\n"}}));
    device("virtual/nvme-subsystem/nvme-subsys0/nvme0n1", with({{"hidden", "0\n"}}));
    device("pci/ata1/host1/target1:0:0/1:0:0:0/block/sdy", with({{"size", "many\n"}}));
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(rows("SELECT id,hwif,port FROM `$disk_info`"), ElementsAre("nvme0n1|nvme|30000"));
}

TEST_F(ImportDisks, KeepsWhatIsKnownOfAPulledDisk)
{
    sata(1, "sda", "A1");
    sata(2, "sdb", "B2");
    ASSERT_EQ(import(), 0);
    sql("UPDATE `$disk_info` SET volume_id='tank',pool_type='data',pool_state='0',pool_hostid=7,replaced_with_spare=1,"
        "is_signed_by_vxmr=1; INSERT INTO `$disk_info` (id,present) VALUES('sdx',1),('sdy',0)");
    pull("sda");
    ASSERT_EQ(import(), 0);
    static constexpr char kPool[] =
        "SELECT id,present,channel,volume_id,pool_type,pool_state,pool_hostid,replaced_with_spare,is_signed_by_vxmr "
        "FROM "
        "`$disk_info` WHERE id LIKE 'sd_' ORDER BY id";
    EXPECT_THAT(rows(kPool),
                ElementsAre("sda|0|0|tank|data|0|7|1|1", "sdb|1|1|tank|data|0|7|1|1",
                            "sdx|0|NULL|NULL|NULL|NULL|NULL|NULL|NULL", "sdy|0|NULL|NULL|NULL|NULL|NULL|NULL|NULL"));
    sata(4, "sda", "A1");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(rows(kPool), testing::Contains("sda|1|3|tank|data|0|7|1|1")) << "back in another bay";
    const std::string before = content();
    ASSERT_EQ(import(), 0);
    EXPECT_EQ(content(), before) << "nothing changed";
}

TEST_F(ImportDisks, AnotherSerialNumberIsAnotherDisk)
{
    sata(1, "sda", "A1");
    ASSERT_EQ(import(), 0);
    sql("UPDATE `$disk_info` SET volume_id='tank',pool_type='data',pool_state='0',pool_hostid=7,replaced_with_spare=1,"
        "is_signed_by_vxmr=1");
    fs::remove_all(root / "sys");
    sata(1, "sda", "A2");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(rows("SELECT serial,volume_id,pool_type,pool_state,pool_hostid,replaced_with_spare,is_signed_by_vxmr "
                     "FROM `$disk_info`"),
                ElementsAre("A2|NULL|NULL|NULL|NULL|NULL|NULL"));
}

TEST_F(ImportDisks, MakesAChassisWhereNoneIsDescribed)
{
    put("sys/class/dmi/id/product_name", "DataTower 8\n");
    sata(1, "sda", "A1");
    sata(3, "sdb", "B2");
    ASSERT_EQ(import(), 0);
    static constexpr char kChassis[] =
        "SELECT controller,name,nr_row,nr_column,disk_horizontal,ses_device,dead_slots "
        "FROM _disk_enclosure";
    EXPECT_THAT(rows(kChassis), ElementsAre("0|DataTower 8|1|2|0||NULL"));
    EXPECT_THAT(rows("SELECT * FROM jbod_port"), ElementsAre("0|"));
    EXPECT_THAT(rows("SELECT * FROM disk_port"), ElementsAre("0|0|1|1", "0|2|2|1"));
    pull("sda");
    sata(2, "sdc", "C3");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(rows(kChassis), ElementsAre("0|DataTower 8|1|3|0||NULL"));
    EXPECT_THAT(rows("SELECT * FROM disk_port"), ElementsAre("0|0|1|1", "0|2|2|1", "0|1|3|1"))
        << "a bay keeps its slot";
}

TEST_F(ImportDisks, LeavesADescribedChassisAlone)
{
    sql("INSERT INTO _disk_enclosure (controller,name,nr_row,nr_column) VALUES(0,'Front',4,2);"
        "INSERT INTO jbod_port VALUES(0,'A'); INSERT INTO disk_port VALUES(0,0,2,4);"
        "INSERT INTO _disk_health (disk_id,temp,power_on_hrs) VALUES('sda',31,9000)");
    sata(1, "sda", "A1");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(rows("SELECT controller,name,nr_row,nr_column FROM _disk_enclosure"), ElementsAre("0|Front|4|2"));
    EXPECT_THAT(rows("SELECT * FROM jbod_port"), ElementsAre("0|A"));
    EXPECT_THAT(rows("SELECT * FROM disk_port"), ElementsAre("0|0|2|4"));
    EXPECT_THAT(rows("SELECT disk_id,temp,power_on_hrs FROM _disk_health"), ElementsAre("sda|31|9000"));
}

TEST_F(ImportDisks, BearsOddAnswers)
{
    device("pci/ata1/host1/target1:0:0/1:0:0:0/block/sda", {{"size", "2048"},
                                                            {"device/model", "a\x01\xff" + std::string(300, 'm')},
                                                            {"device/vendor", std::string(200, 'v')},
                                                            {"device/vpd_pg80", "\x01"},
                                                            {"device/rev", ""},
                                                            {"queue/rotational", "1\n"},
                                                            {"device/vpd_pgb1", std::string("\0\xb1\0\x3c\0\x01", 6)}});
    ASSERT_EQ(mkfifo((root / "sys/block/sda/device/serial").c_str(), 0600), 0) << "must not wait for a writer";
    device("elsewhere/block/sdb", {{"size", "8\n"}, {"device/x", ""}, {"queue/logical_block_size", "0\n"}});
    fs::create_symlink("../devices/nowhere", root / "sys/block/sdc");
    put("sys/block/README", "no device");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(rows("SELECT id,substr(model,length(model)-3),length(model),serial,fw_version,rpm,sectors,hwif FROM "
                     "`$disk_info` ORDER BY id"),
                ElementsAre("sda|mmmm|95|NULL|NULL|NULL|2048|sata", "sdb|NULL|NULL|NULL|NULL|NULL|8|other"));
    EXPECT_EQ(value("SELECT model LIKE '% a??mm%' FROM `$disk_info` WHERE id='sda'"), "1");
}

TEST_F(ImportDisks, WithoutAListNothingChanges)
{
    sql("INSERT INTO `$disk_info` (id,present) VALUES('sda',1)");
    const std::string before = content();
    EXPECT_NE(import(), 0);
    EXPECT_THAT(logged(2), ElementsAre("The disks cannot be listed. No such file or directory\n"));
    qbdb_import_options options{};
    options.root = "/does/not/exist";
    ASSERT_EQ(qbdb_set_import_options(qbdb, &options), 0);
    EXPECT_NE(import(), 0);
    EXPECT_EQ(content(), before);
}

TEST_F(ImportDisks, AFailureReportsNoDiskAsPulled)
{
    sata(1, "sda", "A1");
    sata(2, "sdb", "B2");
    ASSERT_EQ(import(), 0);
    sata(3, "sdc", "C3");
    pull("sda");
    for (int nth = 1;; nth++) {
        sql("BEGIN");
        fail_statement(nth);
        const int rc = qbdb_import_nolock(qbdb, db, QBDB_IMPORT_DISKS);
        fail_statement(0);
        const auto there = present();
        sql("ROLLBACK");
        if (rc == 0) {
            EXPECT_GT(nth, 8);
            break;
        }
        EXPECT_THAT(there, testing::IsSupersetOf({"sda", "sdb"})) << nth;
    }
}

TEST_F(ImportDisks, ADatabaseOpenedForReadingStaysAsItIs)
{
    qbdb_t *reader = nullptr;
    sqlite3 *connection = nullptr;
    ASSERT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_READONLY, nullptr, &reader, &connection, nullptr, 0), 0);
    EXPECT_EQ(qbdb_import_nolock(reader, connection, QBDB_IMPORT_DISKS), 0);
    EXPECT_EQ(qbdb_hf_stats_import(reader, connection), 0);
    qbdb_close(reader);
}

TEST_F(ImportDisks, ThisMachine)
{
    ASSERT_EQ(qbdb_set_import_options(qbdb, nullptr), 0);
    if (!fs::exists("/sys/block")) GTEST_SKIP() << "this machine has no /sys/block";
    ASSERT_EQ(import(), 0);
    std::vector<std::string> expected;
    for (const auto &entry : fs::directory_iterator("/sys/block")) {
        const std::string name = entry.path().filename();
        long size = 0;
        std::ifstream(entry.path() / "size") >> size;
        int type = 0;
        std::ifstream(entry.path() / "device/type") >> type;
        if (fs::exists(entry.path() / "device") && size > 0 && type == 0 && name.rfind("fd", 0) != 0)
            expected.push_back(name + "|" + std::to_string(size * 512));
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(rows("SELECT id,capacity FROM `$disk_info` WHERE present=1 ORDER BY id"), expected);
    for (const auto &disk : expected) printf("this machine has %s\n", disk.c_str());
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
