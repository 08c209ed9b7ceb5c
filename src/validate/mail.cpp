// Mail addresses.

#include <cstring>

#include "validate/charset.h"
#include "validate/validate.h"

namespace {

using namespace qb;

constexpr size_t max_address = 319;
constexpr size_t max_local = 64;
constexpr size_t max_domain = 255;

constexpr CharSet plain_local = alnum | chars("!#$%&'*+-/=?^_`{|}~.");
constexpr CharSet quoted_local = plain_local | chars("()<>[]:;@, ");
constexpr CharSet domain_name = alnum | chars("-.");

/// Finds the domain behind a local part in quotes.
int32_t check_quoted_local(const char *address, const char **domain)
{
    const char *end = address + 1;
    while (quoted_local.has(*end)) ++end;
    if (*end != '"') return 3;
    ++end;
    const auto length = static_cast<size_t>(end - address);
    if (length < 3 || length > max_local) return 4;
    if (*end != '@') return 5;
    *domain = end + 1;
    return std::strlen(*domain) > max_domain ? 6 : 0;
}

/// Finds the domain behind a local part without quotes.
int32_t check_plain_local(const char *address, const char **domain)
{
    const char *end = address;
    for (; plain_local.has(*end); ++end)
        if (end[0] == '.' && end[1] == '.') return 7;
    if (*end != '@') return 8;
    if (*address == '.' || (end != address && end[-1] == '.')) return 9;
    if (static_cast<size_t>(end - address) > max_local) return 10;
    *domain = end + 1;
    return std::strlen(*domain) > max_domain ? 11 : 0;
}

/// Reads one number of an address; 0, or the result of check_mail_domain().
int32_t read_octet(const char **at)
{
    if (!digits.has(**at)) return 21;
    unsigned value = 0;
    for (; digits.has(**at); ++*at) {
        value = value * 10 + static_cast<unsigned>(**at - '0');
        if (value > 255) return 22;
    }
    return 0;
}

/// `at` is behind the opening bracket.
int32_t check_bracketed_address(const char *at)
{
    for (int octet = 0; octet < 4; ++octet) {
        if (octet > 0 && *at++ != '.') return 20;
        if (int32_t result = read_octet(&at)) return result;
    }
    if (*at != ']') return 23;
    return at[1] != '\0' ? 24 : 0;
}

int32_t check_domain_name(const char *domain)
{
    const char *end = domain;
    while (domain_name.has(*end)) ++end;
    if (*end != '\0') return 25;
    if (*domain == '-' || *domain == '.') return 26;
    return end != domain && end[-1] == '-' ? 26 : 0;
}

int32_t check_address(const char *address)
{
    if (address == nullptr || *address == '\0') return 1;
    if (std::strlen(address) > max_address) return 2;
    const char *domain = nullptr;
    const int32_t result = *address == '"' ? check_quoted_local(address, &domain) : check_plain_local(address, &domain);
    return result != 0 ? result : check_mail_domain(domain);
}

}  // namespace

namespace qb {

int32_t check_email(const char *address, const char **out)
{
    const int32_t result = check_address(address);
    if (out != nullptr) *out = result == 0 ? address : nullptr;
    return result;
}

int32_t check_mail_domain(const char *domain)
{
    if (domain == nullptr) return 1;
    return *domain == '[' ? check_bracketed_address(domain + 1) : check_domain_name(domain);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
