// Health of UPS units: what their monitors last told, as text for display.
#include "frame/list.h"
#include "frame/read_row.h"
#include "storage/health.h"

namespace qb {

uint32_t x_qbobj_getUpsHealthCollection(CallContext *ctx, sqlite3 *db, UpsHealthCollection *health)
{
    QB_ASSERT(health);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT UC.name||'@'||UC.host,UC.name,UC.host,REPLACE(IFNULL(UH.ups_status,'?'),' ','_'),"
               "IFNULL(UH.ups_alarm,'?'),IFNULL(UC.ups_model,'?'),IFNULL(UH.battery_charge,'?')||' %%',"
               "IFNULL(UH.battery_runtime,'?')||' min',IFNULL(UH.battery_voltage,'?')||' V' FROM _ups_config UC LEFT "
               "JOIN _ups_health UH ON UH.name=UC.name AND UH.host=UC.host")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _ups_health'. %s"));
    UpsHealth *read = nullptr;
    List<UpsHealth> list(&read);
    for (int i = 0; i < rows.count; i++) {
        UpsHealth *ups = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, empty(ups->key), empty(ups->UpsName), empty(ups->ServerHost), empty(ups->UpsStatus),
                 empty(ups->UpsAlarm), empty(ups->UpsModel), empty(ups->BatteryCharge), empty(ups->BatteryRunTime),
                 empty(ups->BatteryVoltage));
    }
    TRY_MEMORY(ctx);
    List<UpsHealth>(&health->Health).link(read);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, 0, rows.count);
    return 0;
}

uint32_t x_qbobj_setUpsHealth(CallContext *ctx, sqlite3 *db, UpsHealth *health)
{
    for (const UpsHealth *ups = health; ups; ups = ups->next)
        TRY(execute(ctx, db,
                    "INSERT OR REPLACE INTO _ups_health(name,host,ups_status,ups_alarm,battery_charge,"
                    "battery_runtime,battery_voltage)VALUES(%Q,%Q,%Q,%Q,%Q,%Q,%Q)",
                    ups->UpsName, ups->ServerHost, ups->UpsStatus, ups->UpsAlarm, ups->BatteryCharge,
                    ups->BatteryRunTime, ups->BatteryVoltage)
                .or_report(ctx, 8, "Fail 'INSERT INTO _ups_health'. %s"));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
