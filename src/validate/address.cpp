// Hardware and IPv4 addresses, networks, hosts.

#include <arpa/inet.h>

#include <algorithm>
#include <bit>
#include <cstdio>

#include "validate/charset.h"
#include "validate/validate.h"

namespace {

using namespace qb;

/// Four numbers with dots between them, some of which may be missing at the end (and are 0 then).
struct Quad {
    unsigned number[4] = {};
    int count = 0;
};

/// Scans one number of up to `width` characters, its sign included; false when there is none.
bool scan_number(const char **at, unsigned width, unsigned *number)
{
    int used = 0;
    if (std::sscanf(*at, width == 3 ? "%3u%n" : "%2u%n", number, &used) != 1) return false;
    *at += used;
    return true;
}

/// Scans one to four numbers; false when one is missing.
bool scan_quad(const char **at, Quad *quad)
{
    do {
        if (!scan_number(at, 3, &quad->number[quad->count])) return false;
        ++quad->count;
    } while (quad->count < 4 && **at == '.' && ++*at);
    return true;
}

bool in_range(const Quad &quad)
{
    return std::ranges::all_of(quad.number, [](unsigned number) { return number < 256; });
}

/// Whether nothing but blanks is left.
bool at_end(const char *at)
{
    char rest[2];
    return std::sscanf(at, "%1s", rest) != 1;
}

/// The number of leading ones of a mask, or -1 when a one follows a zero.
int prefix_of(const Quad &mask)
{
    uint32_t bits = 0;
    for (unsigned number : mask.number) bits = bits << 8 | number;
    const int ones = std::countl_one(bits);
    return std::popcount(bits) == ones ? ones : -1;
}

/// Reads what follows the slash: a mask of four numbers, or a prefix length. False when it is neither; the prefix is -1
/// when the value makes no sense.
bool scan_prefix(const char *text, Quad *mask, int *prefix)
{
    const char *at = text;
    Quad quad;
    if (scan_quad(&at, &quad) && quad.count == 4) {
        *mask = quad;
        *prefix = prefix_of(quad);
        return at_end(at);
    }
    at = text;
    unsigned length = 0;
    if (!scan_number(&at, 2, &length) || !at_end(at)) return false;
    *prefix = length <= 32 ? static_cast<int>(length) : -1;
    return true;
}

}  // namespace

int32_t qbobj_validate_ip(const char *ip)
{
    const int32_t result = check_inet_address(ip);
    return result == 1 && check_host_name(ip) == 0 ? 0 : result;
}

namespace qb {

int32_t check_mac(const char *address)
{
    unsigned number[6];
    char rest[2];
    if (address == nullptr || std::sscanf(address, "%2x:%2x:%2x:%2x:%2x:%2x%1s", &number[0], &number[1], &number[2],
                                          &number[3], &number[4], &number[5], rest) != 6)
        return 1;
    return std::ranges::all_of(number, [](unsigned n) { return n < 256; }) ? 0 : 2;
}

int32_t check_ipv4(const char *address)
{
    if (address == nullptr) return -1;
    Quad quad;
    char rest[2];
    if (std::sscanf(address, "%3u.%3u.%3u.%3u%1s", &quad.number[0], &quad.number[1], &quad.number[2], &quad.number[3],
                    rest) != 4)
        return 1;
    return in_range(quad) ? 0 : 2;
}

int32_t check_inet_address(const char *address)
{
    if (address == nullptr || *address == '\0') return 2;
    in_addr parsed;
    return inet_pton(AF_INET, address, &parsed) == 1 ? 0 : 1;
}

int32_t check_network(const char *text, char (&out)[network_text_size])
{
    out[0] = '\0';
    if (text == nullptr) return 1;
    Quad network;
    if (!scan_quad(&text, &network)) return 1;
    Quad mask;
    int prefix = network.count * 8;
    const bool complete = *text == '/' ? scan_prefix(text + 1, &mask, &prefix) : network.count < 4 && at_end(text);
    if (!complete) return 1;
    if (!in_range(network) || !in_range(mask)) return -1;
    if (prefix < 0) return 1;
    std::snprintf(out, sizeof out, "%u.%u.%u.%u/%d", network.number[0], network.number[1], network.number[2],
                  network.number[3], prefix);
    return 0;
}

int32_t check_host_or_address(const char *name)
{
    // An address is spelled in characters of a host name, so that one test answers for both.
    return check_host_name(name);
}

int32_t check_host_or_network(const char *name, char (&buffer)[network_text_size], const char **out)
{
    buffer[0] = '\0';
    const char *entry = name;
    int32_t result = check_host_name(name);  // an address is spelled in characters of a host name
    if (check_inet_address(name) != 0) {
        const int32_t network = check_network(name, buffer);
        if (network == 0) entry = buffer;
        if (network == 0 || (network == -1 && result != 0)) result = network;
    }
    if (out != nullptr) *out = result == 0 ? entry : nullptr;
    return result;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
