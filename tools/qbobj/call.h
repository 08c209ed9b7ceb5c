// One call of an operation: values made of what the caller gave, the call, and what came out of it.
#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "database.h"
#include "failure.h"
#include "memory.h"
#include "records.h"

namespace qbcli {

/// What came out of a call: its out arguments, those that it completed, and the answer that it returned.
struct Outputs {
    std::vector<std::pair<std::string, Json>> values;
    bool alone = false;  ///< One record or list, which needs no name.

    /// One record or list stands alone, anything else is an object with a member for each output. Discarded when there
    /// is none.
    Json joined() &&;
};

/// The name of the returned value among the outputs.
inline constexpr const char *kReturned = "result";

class Call {
public:
    /// Makes the values. Whatever is wrong with what was given is refused here, before anything is called.
    Call(const QbobjOperation &operation, const Arguments &arguments);
    ~Call();
    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

    /// Calls the operation. Throws what it failed with.
    /// @return A warning: what the operation reported although it succeeded; empty as a rule.
    std::string run(Database &database, uint32_t timeout_ms);

    /// What came out.
    /// @param secrets In clear, not masked.
    Outputs outputs(bool secrets = false) const;
    Json outcome(bool secrets = false) const { return outputs(secrets).joined(); }

    /// kDone, or kNotFound for the answer "no".
    Status status() const;

    /// Calls the operation and nothing else: what comes back is the caller's to judge.
    uint32_t invoke(qbdb_t *qbdb, sqlite3 *db, ErrorInfo *err);

    /// Secrets among the values.
    const std::vector<std::string_view> &secrets() const { return arena_.secrets(); }

private:
    /// What the operation reads or writes through an address.
    struct Cell {
        int32_t i = 0;
        uint64_t n = 0;
        const char *s = nullptr;
        void *p = nullptr;
        bool array = false;  // given as a list
    };

    void bind(size_t index, const std::optional<Json> &given);
    void bind_scalar(size_t index, const Json *given);
    void bind_record(size_t index, const Json *given);
    void check_presence(const QbobjArgument &argument, const Json *given) const;
    [[noreturn]] void fail(uint32_t rc, const ErrorInfo &err, const std::string &message, Status status) const;
    [[noreturn]] void fail_without_report(uint32_t rc, const ErrorInfo &err, const Database &database) const;
    void judge(uint32_t rc, const ErrorInfo &err, const Database &database, uint32_t timeout_ms) const;
    Json argument_to_json(size_t index, bool secrets) const;

    const QbobjOperation &operation_;
    Arena arena_;
    std::array<Cell, QBOBJ_MAX_ARGUMENTS> cells_;
    bool says_null_ = false;  // the text "null" is among the given values
    std::array<QbobjValue, QBOBJ_MAX_ARGUMENTS> values_{};
    uint32_t returned_ = 0;
};

/// Whether the returned value is an answer of its own.
bool returns_answer(const QbobjOperation &operation);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
