// Calls of the log and the network interfaces.
#pragma once

#include "anomaly/trial.h"

namespace test {

inline constexpr char kSystemPopulation[] = R"sql(
INSERT INTO `$log` (tstamp,severity,category,msg_tag,msg_args_xml) VALUES
    (1000,'info','system','LOGMSG_A',NULL),(2000,'warning','disk','LOGMSG_B','<a/>'),(3000,'err','share','LOGMSG_C',NULL);
INSERT INTO network_if (name,mac,protocol,ip,dns1,dns2,gateway,subnet) VALUES
    ('eth0','0:1:2:3:4:5','static','10.0.0.2','10.0.0.1','','10.0.0.1','255.255.255.0'),
    ('eth1','0:1:2:3:4:6','dhcp','','','','','');
)sql";

inline constexpr Trial kSystemTrials[] = {
    {"getLog", "all", "{}"},
    {"getLog", "filtered page", R"({"query":{"limit":2,"offset":1,"severity":"warn","category_in":"'disk','share'","order":1}})"},
    {"deleteLog", "some", R"({"query":{"timestamp_max":2500,"category_in":"'disk'"}})"},
    {"deleteLog", "all", "{}"},
    {"truncateLog", "", R"({"keep":1})"},
    {"addLog", "", R"({"time":4000,"severity":"info","category":"share","msgTag":"LOGMSG_D","argsXml":"<a>1</a>"})"},

    {"getNetworkInterfaceCollection", "", "{}"},
    {"getNetworkInterface", "", R"({"nif":{"Name":"eth0"}})"},
    {"addNetworkInterface", "", R"({"nif":{"Name":"eth2","Mac":"0:1:2:3:4:7","Protocol":"static","IP":"10.0.0.9",
        "DNS1":"10.0.0.1","DNS2":"","Gateway":"10.0.0.1","Subnet":"255.0.0.0"}})"},
    {"deleteNetworkInterface", "", R"({"name":"eth0"})"},
    {"modifyNetworkInterface", "", R"({"nif":{"Name":"eth0","Mac":"0:1:2:3:4:8","Protocol":"static","IP":"10.0.0.8",
        "DNS1":"10.0.0.8","DNS2":"10.0.0.8","Gateway":"10.0.0.8"}})"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
