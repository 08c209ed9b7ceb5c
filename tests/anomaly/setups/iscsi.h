// Calls of iSCSI.
#pragma once

#include "anomaly/trial.h"

namespace test {

inline constexpr char kIscsiPopulation[] = R"sql(
INSERT INTO `$iscsi_lun_group` (id,name,target,all_hosts,chap_auth,chap_secret) VALUES
    (1,'disks','iqn.2026-01.com.example:disks',0,1,'secret'),(2,'open','iqn.2026-01.com.example:open',1,0,NULL);
INSERT INTO `$iscsi_initiator` (id,name,chap_auth,chap_secret) VALUES
    (1,'iqn.2026-01.com.example:host',1,'secret'),(2,'host',0,NULL);
INSERT INTO `$iscsi_lun` (id,name,lun_group,lun_n) VALUES (1,'one','disks',1),(2,'two','disks',2);
INSERT INTO `$iscsi_lun_group_access` VALUES ('disks','iqn.2026-01.com.example:host'),('disks','host'),('open','host');
)sql";

inline constexpr Trial kIscsiTrials[] = {
    {"getLunGroupCollection", "", "{}"},
    {"getLunGroup", "", R"({"group":{"Name":"disks"}})"},
    {"getLunGroupId", "", R"({"name":"open"})", Accounts::local, 2},
    {"addLunGroup", "", R"({"group":{"Name":"new","Target":"iqn.2026-01.com.example:new","ChapAuth":1,"ChapSecret":"s"}})"},
    {"modifyLunGroup", "", R"({"group":{"Name":"disks","Target":"t","AnyInitiator":1,"ChapSecret":"new"}})"},
    {"modifyLunGroup", "masked", R"({"group":{"Name":"disks","Target":"t","ChapSecret":"●●●●●●●●"}})"},
    {"deleteLunGroup", "", R"({"name":"disks"})"},

    {"getInitiatorCollection", "", "{}"},
    {"getInitiator", "", R"({"initiator":{"Name":"iqn.2026-01.com.example:host"}})"},
    {"getInitiatorId", "", R"({"name":"host"})", Accounts::local, 2},
    {"addInitiator", "", R"({"initiator":{"Name":"new","ChapAuth":1,"ChapSecret":"s"}})"},
    {"modifyInitiator", "", R"({"initiator":{"Name":"host","ChapAuth":1,"ChapSecret":"new"}})"},
    {"modifyInitiator", "masked", R"({"initiator":{"Name":"host","ChapAuth":1,"ChapSecret":"●●●●●●●●"}})"},
    {"deleteInitiator", "", R"({"name":"host"})"},

    {"getLun", "", R"({"lun":{"Name":"one"}})"},
    {"getLunId", "", R"({"name":"two"})", Accounts::local, 2},
    {"addLun", "", R"({"lun":{"Name":"three","LunGroup":"disks","LunN":3}})"},
    {"deleteLun", "", R"({"name":"one"})"},

    {"getLunGroupAccessList", "", R"({"lunGroup":"disks"})"},
    {"addLunGroupAccessList", "", R"({"lunGroup":"open","initiator":"iqn.2026-01.com.example:host"})"},
    {"deleteLunGroupAccessList", "", R"({"lunGroup":"disks"})"},
    {"deleteIniFromLunGroupAccessList", "", R"({"initiator":"host"})"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
