// Names: one table row per kind of name, one function that walks them.

#include <algorithm>
#include <cstring>
#include <iterator>

#include "validate/charset.h"
#include "validate/validate.h"

namespace {

using namespace qb;

/// What one kind of name may look like and how a violation is reported.
struct NameRule {
    CharSet first;
    CharSet following;
    size_t max_length;  ///< in bytes
    int32_t null_result;
    int32_t empty_result;
    int32_t bad_first_result = 1;
    bool length_first = false;    ///< test the length before the following characters
    bool check_reserved = false;  ///< refuse the reserved account and share names
    bool refuse_number = false;   ///< refuse a name of digits only
};

constexpr int32_t bad_following = 2;
constexpr int32_t too_long = 3;
constexpr int32_t reserved_prefix = 4;
constexpr int32_t reserved_name = 5;
constexpr int32_t only_digits = 6;

constexpr CharSet account_first = alnum | chars("_&") | utf8_lead;
constexpr CharSet account_following = alnum | chars("_-.@&") | non_ascii;

constexpr NameRule share_rule = {
    .first = alnum | chars("$") | utf8_lead,
    .following = alnum | chars("_$-") | non_ascii,
    .max_length = 32,
    .null_result = -1,
    .empty_result = -1,
    .check_reserved = true,
};
constexpr NameRule snapshot_rule = {
    .first = alnum | chars("$") | utf8_lead,
    .following = alnum | chars("_$-.") | non_ascii,
    .max_length = 50,
    .null_result = -1,
    .empty_result = -1,
};
constexpr NameRule user_rule = {
    .first = account_first,
    .following = account_following,
    .max_length = 32,
    .null_result = 1,
    .empty_result = 1,
    .check_reserved = true,
    .refuse_number = true,
};
constexpr NameRule user_with_blanks_rule = {
    .first = account_first,
    .following = account_following | chars(" "),
    .max_length = 32,
    .null_result = 1,
    .empty_result = 1,
    .check_reserved = true,
};
constexpr NameRule group_rule = {
    .first = account_first,
    .following = account_following,
    .max_length = 32,
    .null_result = 1,
    .empty_result = 1,
};
constexpr NameRule device_rule = {
    .first = alnum,
    .following = alnum | chars("_-.!"),
    .max_length = 32,
    .null_result = -1,
    .empty_result = 1,
};
constexpr NameRule short_rule = {
    .first = alnum,
    .following = alnum | chars("_-. "),
    .max_length = 16,
    .null_result = -1,
    .empty_result = 1,
};
constexpr NameRule host_rule = {
    .first = alnum,
    .following = alnum | chars("_-."),
    .max_length = 255,
    .null_result = -11,
    .empty_result = -11,
};
constexpr NameRule own_host_rule = {
    .first = alnum,
    .following = alnum | chars("_-"),
    .max_length = 16,
    .null_result = -11,
    .empty_result = -11,
    .bad_first_result = bad_following,
};
constexpr NameRule ups_rule = {
    .first = alpha,
    .following = alnum,
    .max_length = 15,
    .null_result = -1,
    .empty_result = -1,
    .length_first = true,
};
constexpr NameRule comment_rule = {
    .first = byte_range(0x20, 0x7e) | non_ascii,
    .following = byte_range(0x20, 0x7e) | non_ascii,
    .max_length = 255,
    .null_result = -1,
    .empty_result = 0,
    .bad_first_result = bad_following,
};

/// A name that shares and accounts cannot have, because a folder, page or service of the appliance has it.
struct Reserved {
    const char *text;
    bool prefix;  ///< every name that begins with the text, not only the text itself
};

/// The first entry that matches decides. "usb_port_" never gets its turn after "usb_"; it is here so that the port
/// folders stay reserved should the shorter entry go.
constexpr Reserved reserved_names[] = {
    {"home", false},
    {"theme", false},
    {"password_recovery", false},
    {"my_password", false},
    {"html", false},
    {"aquota.user", false},
    {"css", false},
    {"extjs", false},
    {"legacy", false},
    {"raphael", false},
    {"recovery", false},
    {"xml", false},
    {"utest", false},
    {"cgi-bin", false},
    {"np", false},
    {"glassdeck", false},
    {"fsbroker", false},
    {"recover", false},
    {"mypasswd", false},
    {"stimg", false},
    {"fonts", false},
    {"aquota.group", false},
    {"shares", false},
    {"homes", false},
    {"printers", false},
    {"everyone", false},
    {"anyone", false},
    {"c_", true},
    {"m_", true},
    {"r_", true},
    {"b_", true},
    {"pool", false},
    {"zpool", false},
    {"zfs", false},
    {"usb", false},
    {"usb_", true},
    {"usb_port_", true},
    {"global", false},
    {"diag", false},
    {"purge", false},
    {"core", false},
    {"job_", true},
};

/// Names that belong to the file-sync feature.
constexpr const char *sync_names[] = {"ferrydock"};

// A name is compared with an entry only when it begins as that does, in lower case.
static_assert(std::all_of(std::begin(reserved_names), std::end(reserved_names),
                          [](const Reserved &entry) { return *entry.text == lower(*entry.text); }));

int32_t check_reserved_names(const char *name)
{
    const char first = lower(*name);
    for (const Reserved &entry : reserved_names) {
        if (*entry.text != first) continue;
        if (entry.prefix && begins_nocase(name, entry.text)) return reserved_prefix;
        if (!entry.prefix && equal_nocase(name, entry.text)) return reserved_name;
    }
    return 0;
}

const char *skip(const char *text, const CharSet &set)
{
    while (set.has(*text)) ++text;
    return text;
}

int32_t check_name(const NameRule &rule, const char *name)
{
    if (name == nullptr) return rule.null_result;
    if (*name == '\0') return rule.empty_result;
    if (!rule.first.has(*name)) return rule.bad_first_result;
    if (rule.length_first && std::strlen(name) > rule.max_length) return too_long;
    const char *end = skip(name + 1, rule.following);
    if (*end != '\0') return bad_following;
    if (static_cast<size_t>(end - name) > rule.max_length) return too_long;
    if (rule.check_reserved)
        if (int32_t result = check_reserved_names(name)) return result;
    if (rule.refuse_number && *skip(name, digits) == '\0') return only_digits;
    return 0;
}

int32_t check_name(const NameRule &rule, const char *name, const char **out)
{
    const int32_t result = check_name(rule, name);
    if (out != nullptr) *out = result == 0 ? name : nullptr;
    return result;
}

}  // namespace

int32_t qbobj_validate_sharename(const char *name, const char **out)
{
    return check_name(share_rule, name, out);
}

int32_t qbobj_validate_snapshotname(const char *name)
{
    return check_name(snapshot_rule, name);
}

int32_t qbobj_validate_myhostname(const char *name)
{
    return check_name(own_host_rule, name);
}

int32_t qbobj_validate_share_comment(const char *comment)
{
    return check_name(comment_rule, comment);
}

namespace qb {

int32_t check_user_name(const char *name, const char **out)
{
    return check_name(user_rule, name, out);
}

int32_t check_user_name_with_blanks(const char *name, const char **out)
{
    return check_name(user_with_blanks_rule, name, out);
}

int32_t check_group_name(const char *name, const char **out)
{
    return check_name(group_rule, name, out);
}

int32_t check_device_name(const char *name)
{
    return check_name(device_rule, name);
}

int32_t check_short_name(const char *name)
{
    return check_name(short_rule, name);
}

int32_t check_host_name(const char *name)
{
    return check_name(host_rule, name);
}

int32_t check_ups_name(const char *name)
{
    return check_name(ups_rule, name);
}

int32_t check_sync_name(const char *name)
{
    if (name == nullptr || *name == '\0') return -1;
    return check_one_of(name, Case::ignored, sync_names);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
