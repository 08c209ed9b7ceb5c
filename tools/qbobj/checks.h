// What the library's tables say of given values beyond their kinds: words, secrets, fields that an operation ignores.
#pragma once

#include <string>
#include <vector>

#include "json_text.h"
#include "qbobj.h"

namespace qbcli {

/// Where a value was given.
enum class Origin {
    kTyped,     ///< On the command line: each field is meant.
    kDocument,  ///< From a file or standard input: a record that was read from the database may come back whole.
};

/// Judges the values that are given for one call.
class Checks {
public:
    explicit Checks(const QbobjOperation &operation) : operation_(operation) {}

    /// Takes note of the fields that the operation ignores.
    void see(const QbobjArgument &argument, const Json &value, Origin origin);
    /// Refuses a text that is none of its field's words, and the mask where it would be stored as the secret itself.
    void judge(const QbobjArgument &argument, const Json &value) const;

    /// Refuses a change of which nothing that was given is used.
    void refuse_useless() const;
    /// "FullName is not stored by addUser"; empty when everything is.
    std::string warning() const;

private:
    struct Place;
    void note(const QbobjArgument &argument, const QbobjField *type, const Json &record, const Place &place,
              bool silent);
    bool stores() const;

    const QbobjOperation &operation_;
    std::vector<std::string> ignored_;
    bool anything_used_ = false;
};

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
