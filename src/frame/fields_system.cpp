#include "frame/field_table.h"

namespace qb {

QB_RECORD(ResourceId, 0, F(resource_id))
QB_RECORD(NetworkInterface, 0, F(Name), F(Mac), F(Protocol), F(IP), F(DNS1), F(DNS2), F(Gateway), F(Subnet))
QB_RECORD(LogEntry, 0, F(LogId), F(TimeStamp), F(Severity), F(Category), F(MessageTag), F(MessageArgsXml))
QB_RECORD(LogQuery, 0, F(limit), F(offset), F(order), F(timestamp_min), F(timestamp_max), F(severity),
          F(severity_in), F(category_in), F(msg_tag))
QB_RECORD(UpsConfig, 0, F(Port), F(Type), F(Enabled), F(Name), F(Description), F(UpsModel), F(UpsMfr),
          F(UpsMfrDate), F(UpsSerial), F(ShutdownThreshold), F(Share_enabled), F(List1), F(SnmpCommunity),
          F(SnmpMibs), F(RemoteUserName), F(RemotePassword), F(UpsStatus), F(UpsAlarm), F(BatteryCharge),
          F(BatteryRunTime), F(BatteryVoltage))
QB_RECORD(NetworkInterfaceCollection, 0, LIST(NetworkInterface))
QB_RECORD(UpsConfigCollection, 0, LIST(UpsConfig))

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
