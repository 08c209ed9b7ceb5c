// Calls of settings by key and folder attributes.
#pragma once

#include "anomaly/trial.h"

namespace test {

inline constexpr char kLegacyPopulation[] = R"sql(
INSERT OR REPLACE INTO service_misc (key,val,table_name,column_name) VALUES
    ('plain','1',NULL,NULL),('mirrored','8080','service_https','port');
INSERT INTO `$registry` (key,value) VALUES('colour','blue');
)sql";

inline constexpr Exempt kLegacyLeftOutputs[] = {
    {"getFolderAttribute", "a COMMIT that fails comes after the answer"},
    {"getServiceEntry", "a COMMIT that fails comes after the answer"},
    {"getRegistryEntry", "a COMMIT that fails comes after the answer"},
};

inline constexpr Exempt kLegacyOddAnswers[] = {
    {"setServiceEntry (removed): stores something else 0 \"\"", "its first statement is not looked at"},
};

inline constexpr Trial kLegacyTrials[] = {
    {"getFolderAttribute", "share", R"({"path":"/tank/media"})"},
    {"getFolderAttribute", "below a home folder", R"({"path":"/home/anna/letters/old"})"},
    {"getServiceEntry", "", R"({"key":"plain"})"},
    {"setServiceEntry", "new", R"({"key":"fresh","val":"1"})"},
    {"setServiceEntry", "mirrored", R"({"key":"mirrored","val":"9090"})"},
    {"setServiceEntry", "removed", R"({"key":"plain"})"},
    {"getRegistryEntry", "", R"({"key":"colour"})"},
    {"setRegistryEntry", "new", R"({"key":"size","val":"big"})"},
    {"setRegistryEntry", "present", R"({"key":"colour","val":"red"})"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
