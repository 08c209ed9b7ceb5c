// Calls of the protocol settings, Time Machine, TiVo, Coffer, the dictionary and the daemon's record.
#pragma once

#include "anomaly/trial.h"

namespace test {

inline constexpr char kServicesPopulation[] = R"sql(
UPDATE account_default SET home_volume_id='tank';
UPDATE `$user` SET passwd='!$1$saltsalt$qjXMvbEw8oaL.CzflDtaK/' WHERE id=96;
INSERT INTO service_tivo VALUES('3','30','/tank/media','0,6');
INSERT INTO tivo_mak VALUES('den','1234');
INSERT INTO service_coffer VALUES(1,'anna@example.com','secret','nightly');
INSERT INTO _dictionary (id,lang_id,str) VALUES('add',2,'Hinzufügen'),('cancel',2,'Abbrechen');
)sql";

inline constexpr Exempt kServicesLeftOutputs[] = {
    {"getProtocolCollection", "the protocols read so far stay in the list, and a bare one"},
    {"getProtocol", "a bare protocol stays in the list"},
};

inline constexpr Exempt kServicesSilent[] = {
    {"setProtocolCollection", "copies that cannot be removed are told to the log only"},
};

inline constexpr Exempt kServicesOddAnswers[] = {
    {"setProtocolCollection: succeeds with other results 0 \"\"",
     "without copies of the tables nothing is written, and without a comparison nothing is said to have changed"},
    {"setProtocolCollection: fails with 5 \"Failed DB Query 'SELECT service_misc'. (disk I/O error)\"",
     "of all its failures only the copies that stay are silent"},
    {"setProtocolCollection: stores something else 0 \"\"",
     "without copies of the tables nothing is written, and that is no failure"},
    {"setQuillboxdInfo (first): fails with 8 \"Fail 'UPDATE $quillboxd", "any failure to write is told so"},
    {"setQuillboxdInfo (first): fails with 8 \"database or disk is full\"", "any failure to write is told so"},
    {"setQuillboxdInfo (first): fails with 8 \"disk I/O error\"", "any failure to write is told so"},
    {"setQuillboxdInfo (first): fails with 8 \"unable to open database file\"", "any failure to write is told so"},
};

inline constexpr Trial kServicesTrials[] = {
    {"getProtocolCollection", "", "{}"},
    {"getProtocol", "ftp", R"({"name":"ftp"})"},
    {"getProtocol", "bonjour", R"({"name":"bonjour"})"},
    {"getSnmpOptions", "", "{}"},
    {"getHomeFolderOptions", "", "{}"},
    {"setProtocolCollection", "", R"({"collection":{"Protocol":[
        {"key":"cifs","Enabled":0}, {"key":"afp","Enabled":1},
        {"key":"nfs","NfsOptions":[{"Threads":4}]},
        {"key":"ftp","Enabled":1,"FtpOptions":{"Port":2121,"AuthMode":"user","PassiveRangeMin":40000,
            "PassiveRangeMax":40100,"EnableMasquerade":1,"MasqueradeAddress":"nas.example.com"}},
        {"key":"daap","DaapOptions":{"sharename":"music","password":"secret"}},
        {"key":"snmp","SnmpOptions":{"AllowHost":"10.0.0.1,10.0.0.0/8","Community":"private",
            "TrapDestination":"10.0.0.1,10.0.0.2"}},
        {"key":"ssh","Enabled":1,"SshOptions":{"Port":2222}},
        {"key":"replicate","ReplicateOptions":{"Owner":"anna"}},
        {"key":"smartnetwork","Enabled":1}, {"key":"upnpd","Enabled":1}, {"key":"rsync","Enabled":1},
        {"key":"dlna","Enabled":1,"DlnaOptions":{"AutoScan":1}},
        {"key":"http","Enabled":1,"HttpOptions":{"ShareName":"media"}},
        {"key":"https","HttpsOptions":{"SslKeyHost":"nas.example.com"}},
        {"key":"bonjour","Enabled":1,"BonjourOptions":{"AfpEnabled":1}},
        {"key":"anti-virus","Enabled":1}, {"key":"skyloft","Enabled":1}]}})"},
    {"setProtocolEnable", "afp", R"({"name":"afp","enabled":1})"},
    {"setProtocolEnable", "smartnetwork", R"({"name":"smartnetwork","enabled":1})"},
    {"setProtocolEnable", "anti-virus", R"({"name":"anti-virus","enabled":1})"},
    {"setHomeFolderOptions", "", R"({"options":{"UserHomeDirectory":0,"NfsUserHomeDirectory":1,
        "CustomSnapshotManagement":[{"Enabled":1,"CustomSnapshotSchedule":"01","SnapshotRetentionRules":[
            {"Type":2,"Number":3,"Lifetime":4}]}]}})"},

    {"getTimemachine", "", "{}"},
    {"setTimemachine", "on, new password", R"({"tm":{"Enabled":1,"Password":"secret","CapacityMB":5000}})"},
    {"setTimemachine", "on, old password", R"({"tm":{"Enabled":1,"CapacityMB":5000}})"},
    {"setTimemachine", "off", R"({"tm":{"Enabled":0}})"},
    {"setTimemachineEnable", "on", R"({"enable":1})"},
    {"setTimemachineEnable", "off", R"({"enable":0})"},

    {"getTIVOSettings", "", "{}"},
    {"setTIVOSettings", "", R"({"tivo":{"hour":"1","minute":"2","TIVOfolder":"/tank/media","days":"3"}})"},
    {"setTIVOMak", "stored", R"({"mak":{"name":"den","status":"true","key":"99"}})"},
    {"setTIVOMak", "removed", R"({"mak":{"name":"den","status":"false"}})"},

    {"getCofferSettings", "", "{}"},
    {"setCofferSettings", "login", R"({"coffer":{"Action":"login","UserName":"bob@example.com","UserPassword":"x",
        "DefaultJob":"weekly"}})"},
    {"setCofferSettings", "logout", R"({"coffer":{"Action":"logout"}})"},
    {"cleanCofferSettings", "", "{}"},

    {"getDictionary", "", R"({"languageWish":"de-de"})"},
    {"getTranslatedString", "", R"({"languageWish":"de-de","key":"add","defaultText":"?"})"},
    {"getQuillboxdInfo", "", "{}"},
    {"setQuillboxdInfo", "first", R"({"started":100,"stopped":200,"version":"2.1"})"},
    {"setQuillboxdInfo", "nothing", R"({"started":-1,"stopped":-1})"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
