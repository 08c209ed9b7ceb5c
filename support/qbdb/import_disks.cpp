// The disk inventory: what the kernel shows in /sys/block, brought into `$disk_info`.
//
// Only whole disks with hardware behind them count: no loop, ram, zram, device-mapper or RAID devices, which have no
// "device", no optical or floppy drives, no flash partitions for booting, and no drive without a medium.
#include <apr_pools.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "import.h"

namespace qdb {
namespace {

constexpr size_t kMostDisks = 4096;
constexpr uint64_t kKernelSector = 512;  // the unit of "size", whatever the disk's own sectors are

/// A disk as the kernel shows it; an empty text is not known.
struct FoundDisk {
    char name[64];
    char model[128];
    char serial[128];
    char firmware[64];
    char rpm[12];
    char temperature[12];
    const char *transport;
    uint64_t sectors;
    uint64_t capacity;
    int32_t controller;
    int32_t bay;
};

const char *or_null(const char *text)
{
    return *text ? text : nullptr;
}

/// Reads a small file of the kernel's. The bytes read, 0 when there are none.
size_t read_bytes(int at, const char *path, char *bytes, size_t size)
{
    const Descriptor file(openat(at, path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    const ssize_t count = file ? read(file.fd, bytes, size) : -1;
    return count > 0 ? static_cast<size_t>(count) : 0;
}

/// Stores printable text without the blanks around it, cut to fit. True when there is any.
bool store_text(const char *bytes, size_t count, char *text, size_t size)
{
    while (count && (bytes[count - 1] == ' ' || bytes[count - 1] == '\n' || bytes[count - 1] == '\0')) count--;
    while (count && *bytes == ' ') bytes++, count--;
    count = std::min(count, size - 1);
    std::transform(bytes, bytes + count, text, [](char c) { return c >= ' ' && c <= '~' ? c : '?'; });
    text[count] = '\0';
    return count > 0;
}

/// Reads one line as text; "" when there is none. True when there is any.
bool read_text(int at, const char *path, char *text, size_t size)
{
    char bytes[256];
    return store_text(bytes, read_bytes(at, path, bytes, sizeof bytes), text, size);
}

/// Reads a number; false when there is none.
bool read_number(int at, const char *path, uint64_t *number)
{
    char text[32];
    if (!read_text(at, path, text, sizeof text)) return false;
    char *end = nullptr;
    *number = strtoull(text, &end, 10);
    return end != text && *end == '\0';
}

/// The first of these files that has a text gives it.
template <size_t N>
void read_first(int at, const char *const (&paths)[N], char *text, size_t size)
{
    for (const char *path : paths)
        if (read_text(at, path, text, size)) return;
}

bool begins_with(const char *text, const char *prefix)
{
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

/// The kinds of SCSI device that are disks: direct access, reduced direct access, zoned.
bool is_disk_type(uint64_t type)
{
    return type == 0 || type == 14 || type == 20;
}

/// Whether a whole disk of hardware stands behind a block device. A hidden device is one path of several to a disk.
bool is_disk(int device, const char *name)
{
    if (faccessat(device, "device", F_OK, 0) != 0) return false;
    if (begins_with(name, "fd") || begins_with(name, "mtdblock") || strstr(name, "boot")) return false;
    uint64_t value = 0;
    if (read_number(device, "device/type", &value) && !is_disk_type(value)) return false;
    if (read_number(device, "hidden", &value) && value != 0) return false;
    return read_number(device, "size", &value) && value != 0;
}

/// How a disk is attached, as its place among the kernel's devices tells. Bays are numbered by address, so that a bay
/// keeps its number while others come and go; the kinds have ranges of their own.
struct Attachment {
    const char *mark;  // in the path of the device
    const char *transport;
    int32_t first_bay;
    bool by_address;  // the bay is the SCSI address, else the number after the mark
};

constexpr Attachment kAttachments[] = {
    {"/usb", "usb", 20000, true},           {"/end_device-", "sas", 10000, true},   {"/ata", "sata", -1, false},
    {"/session", "iscsi", 60000, true},     {"/rport-", "fc", 70000, true},         {"/host", "scsi", 10000, true},
    {"/nvme/nvme", "nvme", 30000, false},   {"/nvme-subsys", "nvme", 30000, false}, {"/virtio", "virtio", 40000, false},
    {"/mmc_host/mmc", "mmc", 50000, false}, {"/vbd-", "xen", 80000, false},
};
constexpr Attachment kUnknownAttachment = {"", "other", 90000, true};

const Attachment &attachment_of(const char *path)
{
    for (const Attachment &each : kAttachments)
        if (strstr(path, each.mark)) return each;
    return kUnknownAttachment;
}

int32_t bay_of(const Attachment &attachment, const char *path)
{
    int32_t number = 0;
    if (attachment.by_address) {
        int host = 0;
        int target = 0;
        const char *address = strstr(path, "/target");
        if (address && sscanf(address, "/target%d:%*d:%d", &host, &target) == 2)
            number = host % 32 * 256 + target % 256;
    } else {
        const char *mark = strstr(path, attachment.mark);
        const size_t digits = mark ? strcspn(mark, "0123456789") : 0;
        if (mark && mark[digits]) number = static_cast<int32_t>(strtol(mark + digits, nullptr, 10) % 10000);
    }
    return attachment.first_bay + number;
}

/// Model with the maker's name before it, where the kernel keeps the two apart. True for an ATA disk, whose "maker" is
/// its command set, whichever bus it hangs on.
bool read_model(int device, FoundDisk *disk)
{
    char maker[32] = "";
    char model[64] = "";
    read_first(device, {"device/model", "device/name"}, model, sizeof model);
    if (*model) read_text(device, "device/vendor", maker, sizeof maker);
    const bool ata = strcmp(maker, "ATA") == 0;
    const bool named = *maker && !ata && !begins_with(maker, "0x");
    snprintf(disk->model, sizeof disk->model, "%s%s%s", named ? maker : "", named ? " " : "", model);
    return ata;
}

/// The serial number: a line of text, or page 80h of the disk's own description behind its four bytes of header.
void read_serial(int device, FoundDisk *disk)
{
    read_first(device, {"device/serial", "serial"}, disk->serial, sizeof disk->serial);
    char page[256];
    const size_t count = *disk->serial ? 0 : read_bytes(device, "device/vpd_pg80", page, sizeof page);
    if (count > 4) store_text(page + 4, count - 4, disk->serial, sizeof disk->serial);
}

/// Revolutions a minute: 0 for a disk without moving parts, page B1h of the disk's description for one with; not known
/// when it says nothing there.
void read_rotation(int device, FoundDisk *disk)
{
    uint64_t rotational = 0;
    if (!read_number(device, "queue/rotational", &rotational)) return;
    unsigned rate = 0;
    unsigned char page[64];
    if (rotational && read_bytes(device, "device/vpd_pgb1", reinterpret_cast<char *>(page), sizeof page) >= 6)
        rate = static_cast<unsigned>(page[4]) << 8 | page[5];
    const bool known = !rotational || (rate > 0x400 && rate < 0xFFFF);
    if (known) snprintf(disk->rpm, sizeof disk->rpm, "%u", rate);
}

void read_size(int device, FoundDisk *disk)
{
    uint64_t size = 0;
    uint64_t sector = 0;
    read_number(device, "size", &size);
    if (!read_number(device, "queue/logical_block_size", &sector) || sector == 0) sector = kKernelSector;
    disk->capacity = size * kKernelSector;
    disk->sectors = disk->capacity / sector;
}

/// Degrees Celsius, where a driver measures them (in thousandths).
void read_temperature(int device, FoundDisk *disk)
{
    const Folder sensors(open_folder(device, "device/hwmon"));
    while (const dirent *entry = sensors.next()) {
        char path[NAME_MAX + 32];
        char text[16];
        snprintf(path, sizeof path, "device/hwmon/%s/temp1_input", entry->d_name);
        if (!read_text(device, path, text, sizeof text)) continue;
        snprintf(disk->temperature, sizeof disk->temperature, "%d", static_cast<int>(strtol(text, nullptr, 10) / 1000));
        return;
    }
}

/// Describes a block device; false when it is no disk. Without memory for that `errno` says so.
bool read_disk(int block, const char *name, FoundDisk *disk)
{
    const Descriptor device(open_folder(block, name));
    if (!device || strlen(name) >= sizeof disk->name || !is_disk(device.fd, name)) return false;
    char path[PATH_MAX] = "";
    if (readlinkat(block, name, path, sizeof path - 1) < 0) return false;
    *disk = {};
    memcpy(disk->name, name, strlen(name) + 1);
    const Attachment &attachment = attachment_of(path);
    disk->transport = read_model(device.fd, disk) ? "sata" : attachment.transport;
    disk->bay = bay_of(attachment, path);
    read_serial(device.fd, disk);
    read_first(device.fd, {"device/firmware_rev", "device/rev", "device/fwrev"}, disk->firmware, sizeof disk->firmware);
    read_rotation(device.fd, disk);
    read_size(device.fd, disk);
    read_temperature(device.fd, disk);  // the last: nothing after it touches errno
    return true;
}

/// The disks of the machine, in a pool of their own, sorted by name.
struct Inventory {
    apr_pool_t *pool = nullptr;
    FoundDisk *disks = nullptr;
    size_t count = 0;

    Inventory() = default;
    Inventory(const Inventory &) = delete;
    Inventory &operator=(const Inventory &) = delete;
    ~Inventory()
    {
        if (pool) apr_pool_destroy(pool);
    }
    FoundDisk *begin() const { return disks; }
    FoundDisk *end() const { return disks + count; }

    bool has(const char *name) const
    {
        const auto before = [](const FoundDisk &disk, const char *wanted) { return strcmp(disk.name, wanted) < 0; };
        const FoundDisk *found = std::lower_bound(begin(), end(), name, before);
        return found != end() && strcmp(found->name, name) == 0;
    }
};

int log_failure(qbdb_t *qbdb, int rc, const char *why)
{
    if (qbdb->log_level > 1) qbdb_log(qbdb, __FILE__, __LINE__, 2, 0, "The disks cannot be listed. %s\n", why);
    return rc;
}

int log_no_memory(qbdb_t *qbdb)
{
    return log_failure(qbdb, SQLITE_NOMEM, "Out of memory.");
}

/// Takes the inventory. 0, or non-zero, logged.
int take_inventory(qbdb_t *qbdb, int root, Inventory *inventory)
{
    const Folder block(open_folder(root, "sys/block"));
    if (!block.dir) return errno == ENOMEM ? log_no_memory(qbdb) : log_failure(qbdb, SQLITE_CANTOPEN, strerror(errno));
    size_t devices = 0;
    while (devices < kMostDisks && block.next()) devices++;
    rewinddir(block.dir);
    if (apr_pool_create(&inventory->pool, pool_of(qbdb)) != APR_SUCCESS) return log_no_memory(qbdb);
    inventory->disks = static_cast<FoundDisk *>(apr_palloc(inventory->pool, (devices + 1) * sizeof(FoundDisk)));
    if (!inventory->disks) return log_no_memory(qbdb);
    while (inventory->count < devices) {
        const dirent *entry = block.next();
        if (!entry) break;
        errno = 0;
        const bool found = read_disk(dirfd(block.dir), entry->d_name, &inventory->disks[inventory->count]);
        if (errno == ENOMEM) return log_no_memory(qbdb);
        inventory->count += found;
    }
    std::sort(inventory->begin(), inventory->end(),
              [](const FoundDisk &a, const FoundDisk &b) { return strcmp(a.name, b.name) < 0; });
    return 0;
}

/// Enters a disk or brings it up to date. Another serial number is another disk: what was known of the pool on the
/// former one does not hold for it.
int enter_disk(qbdb_t *qbdb, sqlite3 *db, const FoundDisk &disk)
{
    return qbdb_sql_exec_mprintf(
        qbdb, db, nullptr, __FILE__, __LINE__,
        "INSERT INTO `$disk_info` AS D (id,present,model,serial,fw_version,rpm,sectors,capacity,controller,port,hwif,"
        "channel)VALUES(%Q,1,%Q,%Q,%Q,%Q,%llu,%llu,%d,%d,%Q,%d)ON CONFLICT(id)DO UPDATE SET present=1,"
        "model=excluded.model,serial=excluded.serial,fw_version=excluded.fw_version,rpm=excluded.rpm,"
        "sectors=excluded.sectors,capacity=excluded.capacity,controller=excluded.controller,port=excluded.port,"
        "hwif=excluded.hwif,channel=excluded.channel,"
        "volume_id=CASE WHEN D.serial IS excluded.serial THEN D.volume_id END,"
        "pool_type=CASE WHEN D.serial IS excluded.serial THEN D.pool_type END,"
        "pool_state=CASE WHEN D.serial IS excluded.serial THEN D.pool_state END,"
        "pool_hostid=CASE WHEN D.serial IS excluded.serial THEN D.pool_hostid END,"
        "replaced_with_spare=CASE WHEN D.serial IS excluded.serial THEN D.replaced_with_spare END,"
        "is_signed_by_vxmr=CASE WHEN D.serial IS excluded.serial THEN D.is_signed_by_vxmr END",
        disk.name, or_null(disk.model), or_null(disk.serial), or_null(disk.firmware), or_null(disk.rpm),
        static_cast<unsigned long long>(disk.sectors), static_cast<unsigned long long>(disk.capacity), disk.controller,
        disk.bay, disk.transport, disk.bay);
}

/// Makes the disk's bay and health row where there is none: a disk without them is in no list.
int enter_surroundings(qbdb_t *qbdb, sqlite3 *db, const FoundDisk &disk)
{
    if (const int rc = qbdb_sql_exec_mprintf(
            qbdb, db, nullptr, __FILE__, __LINE__,
            "INSERT INTO disk_port (controller,port,slot_col,slot_row) SELECT %d,%d,(SELECT IFNULL(MAX(slot_col),0)+1 "
            "FROM disk_port WHERE controller=%d),1 WHERE NOT EXISTS (SELECT 1 FROM disk_port WHERE controller=%d AND "
            "port=%d)",
            disk.controller, disk.bay, disk.controller, disk.controller, disk.bay))
        return rc;
    return qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__,
                                 "INSERT INTO _disk_health (disk_id,temp)VALUES(%Q,%Q)ON CONFLICT(disk_id)DO UPDATE "
                                 "SET temp=excluded.temp WHERE excluded.temp IS NOT NULL",
                                 disk.name, or_null(disk.temperature));
}

/// Makes the main chassis where the database describes none, under the machine's name, and lets it have as many columns
/// as there are bays.
int enter_chassis(qbdb_t *qbdb, sqlite3 *db, int root)
{
    char name[64] = "";
    if (!read_text(root, "sys/class/dmi/id/product_name", name, sizeof name)) strcpy(name, "Main chassis");
    int rc = qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__,
                                   "INSERT INTO _disk_enclosure "
                                   "(controller,name,nr_row,nr_column,disk_horizontal,ses_device) SELECT 0,%Q,1,0,0,'' "
                                   "WHERE NOT EXISTS (SELECT 1 FROM _disk_enclosure WHERE controller=0)",
                                   name);
    if (rc == 0)
        rc =
            qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__,
                                  "UPDATE _disk_enclosure SET nr_column=(SELECT MAX(slot_col) FROM disk_port WHERE "
                                  "controller=0) WHERE controller=0 AND nr_column<(SELECT MAX(slot_col) FROM disk_port "
                                  "WHERE controller=0)");
    return rc ? rc
              : qbdb_sql_exec_mprintf(
                    qbdb, db, nullptr, __FILE__, __LINE__,
                    "INSERT INTO jbod_port (controller,label) SELECT 0,'' WHERE NOT EXISTS (SELECT 1 FROM "
                    "jbod_port WHERE controller=0)");
}

/// A result table; released on every path.
struct Table {
    char **cells = nullptr;
    int rows = 0;
    int columns = 0;
    Table() = default;
    Table(const Table &) = delete;
    Table &operator=(const Table &) = delete;
    ~Table() { sqlite3_free_table(cells); }
};

/// Marks the disks that are gone.
int mark_missing(qbdb_t *qbdb, sqlite3 *db, const Inventory &inventory)
{
    Table known;
    int rc = qbdb_sql_get_table_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, &known.cells, &known.rows,
                                        &known.columns, "SELECT id FROM `$disk_info` WHERE present<>0");
    for (int i = 1; rc == 0 && i <= known.rows; i++)
        if (!inventory.has(known.cells[i]))
            rc = qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__,
                                       "UPDATE `$disk_info` SET present=0 WHERE id=%Q", known.cells[i]);
    return rc;
}

int enter_inventory(qbdb_t *qbdb, sqlite3 *db, int root, const Inventory &inventory)
{
    int rc = 0;
    for (const FoundDisk &disk : inventory) {
        if (rc == 0) rc = enter_disk(qbdb, db, disk);
        if (rc == 0) rc = enter_surroundings(qbdb, db, disk);
    }
    if (rc == 0) rc = enter_chassis(qbdb, db, root);
    return rc == 0 ? mark_missing(qbdb, db, inventory) : rc;
}

}  // namespace

// All or nothing: a disk that was entered by an import that then failed would be known to the next inventory, and
// nobody would ever be told that it was plugged in.
int import_disks(qbdb_t *qbdb, sqlite3 *db)
{
    const Descriptor root(open_folder(AT_FDCWD, import_root(qbdb)));
    if (!root) return log_failure(qbdb, SQLITE_CANTOPEN, strerror(errno));
    Inventory inventory;
    if (const int rc = take_inventory(qbdb, root.fd, &inventory)) return rc;
    int rc = qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, "SAVEPOINT import_disks");
    if (rc) return rc;
    rc = enter_inventory(qbdb, db, root.fd, inventory);
    if (rc == 0) rc = qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, "RELEASE import_disks");
    if (rc) qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, "ROLLBACK TO import_disks");
    return rc;
}

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
