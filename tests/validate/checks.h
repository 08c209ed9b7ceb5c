// Every check as one row: how to run it on a text and which results it may give. The property test and the fuzzer
// both walk the list.
#pragma once

#include "validate/validate.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace checks {

/// A copy of a text in memory of exactly its size, so that the sanitizer sees a read before or behind it.
class Exact {
public:
    explicit Exact(const std::string &text) : bytes(new char[text.size() + 1])
    {
        std::memcpy(bytes.get(), text.c_str(), text.size() + 1);
    }

    const char *get() const { return bytes.get(); }

private:
    std::unique_ptr<char[]> bytes;
};

/// What a check answered.
struct Outcome {
    int32_t result = 0;
    std::string output;   ///< its outputs as text, empty when there are none
    const char *fault = nullptr; ///< set when the outputs do not fit the result

    bool operator==(const Outcome &other) const { return result == other.result && output == other.output; }
};

/// One check.
struct Check {
    const char *name;
    std::vector<int32_t> results;
    std::function<Outcome(const char *)> run;

    bool documents(int32_t result) const { return std::ranges::find(results, result) != results.end(); }
};

inline constexpr char untouched[] = "untouched";

inline std::function<Outcome(const char *)> plain(int32_t (*check)(const char *))
{
    return [check](const char *text) { return Outcome{check(text), {}, nullptr}; };
}

/// A check that hands its argument back.
inline std::function<Outcome(const char *)> echoing(int32_t (*check)(const char *, const char **))
{
    return [check](const char *text) {
        Outcome outcome;
        const char *out = untouched;
        outcome.result = check(text, &out);
        if (out != (outcome.result == 0 ? text : nullptr))
            outcome.fault = "the output is neither the name nor null";
        if (check(text, nullptr) != outcome.result)
            outcome.fault = "the result depends on the output being asked for";
        return outcome;
    };
}

/// A map from a word to a word; the value and the fallback have to be treated alike.
inline std::function<Outcome(const char *)> word_map(int32_t (*map)(const char *, const char *, const char **))
{
    return [map](const char *text) {
        Outcome outcome;
        const char *out = untouched;
        const char *fallback_out = untouched;
        outcome.result = map(text, "never looked at", &out);
        if ((outcome.result == 0) != (out != nullptr) || out == untouched)
            outcome.fault = "the output does not fit the result";
        if (map(nullptr, text, &fallback_out) != outcome.result || fallback_out != out)
            outcome.fault = "the fallback is treated otherwise than the value";
        outcome.output = out != nullptr ? out : "";
        return outcome;
    };
}

/// A conversion to a number.
template <class Number>
std::function<Outcome(const char *)> number_map(std::function<int32_t(const char *, const char *, Number *)> map)
{
    return [map](const char *text) {
        constexpr Number sentinel = -987654;
        Outcome outcome;
        Number out = sentinel;
        Number fallback_out = sentinel;
        outcome.result = map(text, "never looked at", &out);
        if ((outcome.result == 0) != (out != sentinel))
            outcome.fault = "the output does not fit the result";
        if (map(nullptr, text, &fallback_out) != outcome.result || fallback_out != out)
            outcome.fault = "the fallback is treated otherwise than the value";
        if (map(text, nullptr, nullptr) != outcome.result)
            outcome.fault = "the result depends on the output being asked for";
        outcome.output = std::to_string(out);
        return outcome;
    };
}

inline Outcome run_share_type(const char *text)
{
    Outcome outcome;
    const char *out = untouched;
    outcome.result = qbobj_validate_sharetype(text, &out);
    if ((outcome.result == 0) != (out != nullptr) || out == untouched)
        outcome.fault = "the output does not fit the result";
    outcome.output = out != nullptr ? out : "";
    return outcome;
}

inline Outcome run_resource_id(const char *text)
{
    Outcome outcome;
    int32_t out = -7;
    outcome.result = qb::parse_resource_id(text, &out);
    if (outcome.result == 0 ? out < 1 || out != std::strtol(text, nullptr, 10) : out != -7)
        outcome.fault = "the output does not fit the result";
    outcome.output = std::to_string(out);
    return outcome;
}

inline Outcome run_network(const char *text)
{
    Outcome outcome;
    char out[qb::network_text_size];
    std::memset(out, 'x', sizeof out);
    outcome.result = qb::check_network(text, out);
    if (std::memchr(out, '\0', sizeof out) == nullptr)
        outcome.fault = "the output has no end";
    else if ((outcome.result == 0) != (out[0] != '\0'))
        outcome.fault = "the output does not fit the result";
    else
        outcome.output = out;
    return outcome;
}

inline Outcome run_host_or_network(const char *text)
{
    Outcome outcome;
    char buffer[qb::network_text_size];
    const char *out = untouched;
    outcome.result = qb::check_host_or_network(text, buffer, &out);
    if (outcome.result == 0 ? out != text && out != buffer : out != nullptr)
        outcome.fault = "the output does not fit the result";
    else
        outcome.output = out != nullptr ? out : "";
    return outcome;
}

inline Outcome run_access_flags(const char *text)
{
    Outcome outcome;
    int32_t read = -7, write = -7;
    outcome.result = qb::map_access_flags(text, nullptr, &read, &write);
    if (outcome.result == 0 ? read < write || write < 0 || read > 1 : read != -7 || write != -7)
        outcome.fault = "the flags do not fit the result";
    outcome.output = std::to_string(read) + " " + std::to_string(write);
    return outcome;
}

inline Outcome run_one_of(const char *text)
{
    const int32_t exact = qb::check_one_of(text, qb::Case::exact, {"standard", "always", "disabled"});
    const int32_t ignored = qb::check_one_of(text, qb::Case::ignored, {"standard", "always", "disabled"});
    return {ignored, {}, exact == 0 && ignored != 0 ? "a word equal with case differs without" : nullptr};
}

inline Outcome run_mask(const char *text)
{
    return {qb::is_password_mask(text) ? 1 : 0, {}, nullptr};
}

inline const std::vector<Check> &all()
{
    using namespace qb;
    static const std::vector<Check> list = {
        {"share type", {0, 1}, run_share_type},
        {"share name", {0, -1, 1, 2, 3, 4, 5}, echoing(qbobj_validate_sharename)},
        {"snapshot name", {0, -1, 1, 2, 3}, plain(qbobj_validate_snapshotname)},
        {"own host name", {0, -11, 2, 3}, plain(qbobj_validate_myhostname)},
        {"share comment", {0, -1, 2, 3}, plain(qbobj_validate_share_comment)},
        {"host address", {0, 1, 2}, plain(qbobj_validate_ip)},
        {"user name", {0, 1, 2, 3, 4, 5, 6}, echoing(check_user_name)},
        {"user name with blanks", {0, 1, 2, 3, 4, 5}, echoing(check_user_name_with_blanks)},
        {"group name", {0, 1, 2, 3}, echoing(check_group_name)},
        {"device name", {0, -1, 1, 2, 3}, plain(check_device_name)},
        {"short name", {0, -1, 1, 2, 3}, plain(check_short_name)},
        {"host name", {0, -11, 1, 2, 3}, plain(check_host_name)},
        {"ups name", {0, -1, 1, 2, 3}, plain(check_ups_name)},
        {"sync name", {0, -1, 1}, plain(check_sync_name)},
        {"e-mail address",
         {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 20, 21, 22, 23, 24, 25, 26},
         echoing(check_email)},
        {"mail domain", {0, 1, 20, 21, 22, 23, 24, 25, 26}, plain(check_mail_domain)},
        {"read-write-disabled", {0, 1}, word_map(map_read_write_disabled)},
        {"read-disabled", {0, 1}, word_map(map_read_disabled)},
        {"enabled-disabled", {0, 1}, word_map(map_enabled_disabled)},
        {"access flags", {0, 1}, run_access_flags},
        {"access bits",
         {0, 1},
         number_map<int32_t>([](const char *value, const char *fallback, int32_t *out) {
             return map_access_bits(value, fallback, false, out);
         })},
        {"access bits of folders",
         {0, 1},
         number_map<int32_t>([](const char *value, const char *fallback, int32_t *out) {
             return map_access_bits(value, fallback, true, out);
         })},
        {"removed bits",
         {0, 1},
         number_map<int32_t>([](const char *value, const char *fallback, int32_t *out) {
             return map_access_removed_bits(value, fallback, false, out);
         })},
        {"removed bits of folders",
         {0, 1},
         number_map<int32_t>([](const char *value, const char *fallback, int32_t *out) {
             return map_access_removed_bits(value, fallback, true, out);
         })},
        {"switch", {0, 1}, number_map<int32_t>(parse_switch)},
        {"integer",
         {0, 1},
         number_map<long>([](const char *value, const char *fallback, long *out) {
             return parse_integer(value, fallback, -100, 65535, out);
         })},
        {"one of", {0, 1}, run_one_of},
        {"protocol name", {0, 1}, plain(check_protocol_name)},
        {"media type", {0, 1}, number_map<int32_t>(parse_media_type)},
        {"resource id", {0, 1}, run_resource_id},
        {"literal list", {0, 1}, plain(check_literal_list)},
        {"password mask", {0, 1}, run_mask},
        {"hardware address", {0, 1, 2}, plain(check_mac)},
        {"dotted address", {0, -1, 1, 2}, plain(check_ipv4)},
        {"parsed address", {0, 1, 2}, plain(check_inet_address)},
        {"network", {0, -1, 1}, run_network},
        {"host or address", {0, -11, 1, 2, 3}, plain(check_host_or_address)},
        {"host or network", {0, -11, -1, 1, 2, 3}, run_host_or_network},
    };
    return list;
}

/// The row named \p name.
inline const Check &named(const std::string &name)
{
    for (const Check &check : all())
        if (name == check.name)
            return check;
    std::abort();
}

/// Relations between the checks that hold for every text; null, or the one that is broken.
inline const char *broken_relation(const char *text)
{
    using namespace qb;
    if (qbobj_validate_sharename(text, nullptr) == 0 && qbobj_validate_snapshotname(text) != 0)
        return "a share name is a snapshot name";
    if (check_user_name(text, nullptr) == 0 && check_user_name_with_blanks(text, nullptr) != 0)
        return "a user name is a user name with blanks";
    if (check_user_name(text, nullptr) == 0 && check_group_name(text, nullptr) != 0)
        return "a user name is a group name";
    if (check_ups_name(text) == 0 && (check_device_name(text) != 0 || check_short_name(text) != 0))
        return "a ups name is a device name and a short name";
    if (qbobj_validate_myhostname(text) == 0 && check_host_name(text) != 0)
        return "a name for the appliance is a host name";
    if ((check_host_name(text) == 0 || qbobj_validate_ip(text) == 0) != (check_host_or_address(text) == 0))
        return "a host or address is either of them";
    if (check_inet_address(text) == 0 &&
        (check_ipv4(text) != 0 || qbobj_validate_ip(text) != 0 || run_host_or_network(text).output != text))
        return "an address is one to all checks and stays as it is";

    const Outcome network = run_network(text);
    if (network.result == 0 && !(run_network(network.output.c_str()) == network))
        return "the form of a network is final";
    const Outcome host = run_host_or_network(text);
    if (host.result == 0 && !(run_host_or_network(host.output.c_str()) == host))
        return "the form of a host list entry is final";

    if (check_email(text, nullptr) == 0) {
        const char *at = std::strrchr(text, '@');
        if (at == nullptr || check_mail_domain(at + 1) != 0 || std::strlen(at + 1) > 255 || std::strlen(text) > 319)
            return "what follows the @ of an e-mail address is a mail domain";
    }
    if (run_share_type(text).result == 0 && *text != '\0' && std::strlen(text) != run_share_type(text).output.size())
        return "a share type keeps its length";
    return nullptr;
}

} // namespace checks
// SPDX-License-Identifier: Apache-2.0
