// Health of enclosures: which sensors a model has, their limits, their last four values.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "frame/list.h"
#include "frame/read_row.h"
#include "frame/text_file.h"
#include "storage/health.h"
#include "storage/volumes.h"

namespace qb {
namespace {

uint32_t read_items(CallContext *ctx, sqlite3 *db, int32_t controller, EnclosureHealthItem **head)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT E.name,E.devid,E.value,E.value_prev1,E.value_prev2,E.value_prev3,IFNULL(S.min,0),"
               "IFNULL(S.max,0),S.label FROM enclosure_health_spec S LEFT JOIN _enclosure_health E ON "
               "E.controller=S.controller AND E.name=S.name AND E.devid=S.devid WHERE S.controller=%d ORDER BY "
               "E.name,S.Label",
               controller)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM enclosure_health_spec'. %s"));
    if (rows.count == 0) return REPORT(ctx, 6, "No data in _enclosure_health table");
    List<EnclosureHealthItem> list(head);
    for (int i = 0; i < rows.count; i++) {
        EnclosureHealthItem *item = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, empty(item->Name), empty(item->DevId), item->Value, item->ValuePrev1, item->ValuePrev2,
                 item->ValuePrev3, item->Min, item->Max, empty(item->Label));
    }
    TRY_MEMORY(ctx);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, 0, rows.count);
    return 0;
}

uint32_t write_reading(CallContext *ctx, sqlite3 *db, int32_t controller, const char *name, const char *device,
                       int32_t value)
{
    TRY(execute(ctx, db,
                "INSERT OR IGNORE INTO _enclosure_health(controller,name,devid,value,value_prev1,value_prev2,"
                "value_prev3) VALUES(%d,%Q,%Q,%d,%d,%d,%d)",
                controller, name, device, value, value, value, value)
            .or_report(ctx, 8, "Fail 'INSERT INTO _enclousre_health. %s"));
    return execute(ctx, db,
                   "UPDATE _enclosure_health SET value=%d,value_prev1=value,value_prev2=value_prev1,"
                   "value_prev3=value_prev2 WHERE controller=%d AND name=%Q AND devid=%Q",
                   value, controller, name, device)
        .or_report(ctx, 8, "Fail 'UPDATE _enclousre_health. %s");
}

constexpr off_t kMostReadings = off_t{1024} * 1024;  // bytes

/// Opens the caller's file. Null with errno set when it is no file of sensible size.
TextFile open_readings(const char *path)
{
    TextFile file = open_text_file(path);
    struct stat status {};
    if (!file || fstat(fileno(file.get()), &status) != 0) return nullptr;
    if (status.st_size <= kMostReadings) return file;
    errno = EFBIG;
    return nullptr;
}

/// One reading to a line: controller, name, device, value, and anything after that.
struct Reading {
    int32_t controller = 0;
    char name[32];
    char device[32];
    int32_t value = 0;

    bool take(const char *line)
    {
        return sscanf(line, "%d,%31[^,],%31[^,],%d%*[^\n]%*c", &controller, name, device, &value) == 4;
    }
};

bool is_blank(const char *line)
{
    return line[strspn(line, " \t\r\v\f")] == '\0';
}

uint32_t write_readings(CallContext *ctx, sqlite3 *db, const char *path)
{
    const TextFile file = open_readings(path);
    if (!file) return REPORT(ctx, 8, "Cannot read file (%s). %s", path, strerror(errno));
    Reading reading;
    Line line;
    while (ftello(file.get()) <= kMostReadings && line.read(file.get())) {
        if (is_blank(line.text)) continue;
        if (!reading.take(line.text)) break;
        TRY(write_reading(ctx, db, reading.controller, reading.name, reading.device, reading.value));
    }
    return 0;
}

uint32_t write_midpoints(CallContext *ctx, sqlite3 *db)
{
    return execute(ctx, db,
                   "INSERT OR IGNORE INTO _enclosure_health(controller,name,devid,value,value_prev1,value_prev2,"
                   "value_prev3) SELECT controller,name,devid,(min+max)/2,(min+max)/2,(min+max)/2,(min+max)/2 FROM "
                   "enclosure_health_spec")
        .or_report(ctx, 8, "Fail 'INSERT INTO _enclousre_health. %s");
}

}  // namespace

uint32_t x_qbobj_getEnclosureHealthCollection(CallContext *ctx, sqlite3 *db, EnclosureHealthCollection *health)
{
    QB_ASSERT(health);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT DE.controller,DE.nr_cpu,DE.nr_fan,DE.nr_psu,DE.nr_volt,JP.label FROM _disk_enclosure DE INNER "
               "JOIN jbod_port JP ON JP.controller=DE.controller")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _disk_enclosure'. %s"));
    if (rows.count == 0) return REPORT(ctx, 6, "No data in _enclosure_health table");
    EnclosureHealth *read = nullptr;
    List<EnclosureHealth> list(&read);
    for (int i = 0; i < rows.count; i++) {
        EnclosureHealth *enclosure = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, enclosure->Controller, enclosure->NrCpu, enclosure->NrFan, enclosure->NrPsu,
                 enclosure->NrVolt, empty(enclosure->PortLabel));
        enclosure->key = enclosure_key(ctx, enclosure->Controller);
        TRY(read_items(ctx, db, enclosure->Controller, &enclosure->Health));
    }
    List<EnclosureHealth>(&health->Health).link(read);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, 0, rows.count);
    return 0;
}

uint32_t x_qbobj_getEnclosureHealth(CallContext *ctx, sqlite3 *db, EnclosureHealth *health)
{
    QB_ASSERT(health);
    EnclosureHealthItem *read = nullptr;
    TRY(read_items(ctx, db, health->Controller, &read));
    const char *key = enclosure_key(ctx, health->Controller);
    TRY_MEMORY(ctx);
    health->key = key;
    List<EnclosureHealthItem>(&health->Health).link(read);
    return 0;
}

uint32_t x_qbobj_setEnclosureHealth(CallContext *ctx, sqlite3 *db, EnclosureHealth *health)
{
    QB_ASSERT(health);
    for (const EnclosureHealthItem *item = health->Health; item; item = item->next)
        TRY(write_reading(ctx, db, health->Controller, item->Name, item->DevId, item->Value));
    return 0;
}

uint32_t x_qbobj_setEnclosureHealthForTest(CallContext *ctx, sqlite3 *db, const char *path)
{
    return path ? write_readings(ctx, db, path) : write_midpoints(ctx, db);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
