// Calls of the power supplies' configuration.
#pragma once

#include "anomaly/trial.h"

namespace test {

inline constexpr char kUpsPopulation[] = R"sql(
INSERT INTO _ups_config (name,host,port,type,enabled,description,ups_model,ups_mfr,ups_mfr_date,ups_serial,
                         shutdown_threshold,snmp_community,snmp_mibs,remote_username,remote_password) VALUES
    ('desk','localhost','auto','local',1,'under the desk','M1','Maker','2026-01-01','S1',20,NULL,NULL,NULL,NULL),
    ('rack','localhost','10.0.0.7','snmp',1,'in the rack',NULL,NULL,NULL,NULL,30,'public','apcc',NULL,NULL),
    ('hall','10.0.0.8','10.0.0.8','remote',0,'in the hall',NULL,NULL,NULL,NULL,40,NULL,NULL,'monitor','secret');
INSERT INTO _ups_health (name,host,ups_status,ups_alarm) VALUES ('desk','localhost','OL CHRG','none');
UPDATE service_upsd SET enabled=1,listen1='0.0.0.0';
)sql";

inline constexpr Trial kUpsTrials[] = {
    {"getUpsConfigCollection", "", "{}"},
    {"getUpsConfigByNameAtHost", "", R"({"resourceId":"desk@localhost"})"},
    {"addUpsConfig", "local",
     R"({"ups":{"Type":"local","Name":"chair","Enabled":1,"Description":"x","ShutdownThreshold":5,
        "Share_enabled":0,"List1":"127.0.0.1"}})"},
    {"addUpsConfig", "snmp",
     R"({"ups":{"Type":"snmp","Name":"tower","Port":"10.0.0.9","SnmpCommunity":"public","SnmpMibs":"mge"}})"},
    {"addUpsConfig", "remote", R"({"ups":{"Type":"remote","Name":"cellar","Port":"10.0.0.9","RemoteUserName":"monitor",
        "RemotePassword":"secret"}})"},
    {"deleteUpsConfig", "local", R"({"resourceId":"desk@localhost"})"},
    {"deleteUpsConfig", "remote", R"({"resourceId":"hall@10.0.0.8"})"},
    {"setUpsConfig", "local",
     R"({"ups":{"key":"desk@localhost","Type":"local","Name":"chair","Enabled":1,"Description":"x",
        "ShutdownThreshold":5,"Share_enabled":0,"List1":"127.0.0.1"}})"},
    {"setUpsConfig", "snmp",
     R"({"ups":{"key":"rack@localhost","Name":"tower","SnmpCommunity":"private","SnmpMibs":"mge"}})"},
    {"setUpsConfig", "remote", R"({"ups":{"key":"hall@10.0.0.8","Name":"cellar","RemoteUserName":"watch",
        "RemotePassword":"new"}})",
     Accounts::local, 5},
    {"setUpsInfo", "", R"({"ups":{"key":"desk@localhost","UpsModel":"M2","UpsMfr":"Other","UpsMfrDate":"2026-02-02",
        "UpsSerial":"S2","ShutdownThreshold":7}})"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
