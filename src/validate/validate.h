/// @file
/// Checks of names, addresses and words that arrive in records, before a worker writes them.
///
/// All of them are pure: no allocation, no state, no database. They follow one scheme:
///
/// - The result is 0 when the value is accepted. Another result says what is wrong; each function lists its own.
/// - Text is NUL-terminated bytes. UTF-8 is accepted byte by byte and not decoded.
/// - An `out` argument may be null. One that names a text is null unless the check passes, and then points at the
///   caller's value or at static text, as the function says; one that takes a number is written only on success.
/// - A `fallback` stands in for a value that is null; it goes through the same check.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "qbobj/validate.h"

namespace qb {

/// @name Names
/// The tests run in this order: first character, following characters, length in bytes, reserved names. A name that
/// breaks several rules gets the result of the first.
/// @{

/// User name, up to 32 bytes: a letter, digit, "_", "&" or UTF-8 character, then also "-", "." and "@".
///
/// @param out  the name itself on success
/// @retval 0  valid
/// @retval 1  null, empty, or a bad first character
/// @retval 2  a bad following character
/// @retval 3  longer than 32 bytes
/// @retval 4  begins with a reserved prefix
/// @retval 5  is a reserved name
/// @retval 6  consists of digits only, so that it could be taken for an id
int32_t check_user_name(const char *name, const char **out);

/// Name of a user of a directory: as check_user_name(), but blanks may follow the first character and a name of digits
/// only is accepted, because the directory is not ours to rule.
///
/// @param out  the name itself on success
/// @retval 0,1,2,3,4,5  as check_user_name()
int32_t check_user_name_with_blanks(const char *name, const char **out);

/// Group name: the characters and the length of a user name; nothing is reserved and digits alone are accepted.
///
/// @param out  the name itself on success
/// @retval 0,1,2,3  as check_user_name()
int32_t check_group_name(const char *name, const char **out);

/// Device name (also SNMP communities), 1 to 32 bytes: a letter or digit, then also "_", "-", "." and "!".
///
/// @retval 0   valid
/// @retval -1  null
/// @retval 1   empty, or a bad first character
/// @retval 2   a bad following character
/// @retval 3   longer than 32 bytes
int32_t check_device_name(const char *name);

/// Short name (workgroups, network interfaces), 1 to 16 bytes: a letter or digit, then also "_", "-", "." and blank.
///
/// @retval 0   valid
/// @retval -1  null
/// @retval 1   empty, or a bad first character
/// @retval 2   a bad following character
/// @retval 3   longer than 16 bytes
int32_t check_short_name(const char *name);

/// Host name, up to 255 bytes: a letter or digit, then also "_", "-" and ".".
///
/// @retval 0    valid
/// @retval -11  null or empty
/// @retval 1    a bad first character
/// @retval 2    a bad following character
/// @retval 3    longer than 255 bytes
int32_t check_host_name(const char *name);

/// Name of an uninterruptible power supply, 1 to 15 bytes: a letter, then letters and digits. Here, and only here, the
/// length is tested before the following characters.
///
/// @retval 0   valid
/// @retval -1  null or empty
/// @retval 1   the first character is not a letter
/// @retval 2   a following character is neither letter nor digit
/// @retval 3   longer than 15 bytes
int32_t check_ups_name(const char *name);

/// Whether a name is kept for the file-sync feature, which manages a share of that name itself.
///
/// @retval 0   reserved
/// @retval 1   not reserved
/// @retval -1  null or empty
int32_t check_sync_name(const char *name);

/// @}
/// @name Mail addresses
/// @{

/// E-mail address, up to 319 bytes: a plain or a quoted local part, "@", and a domain as in check_mail_domain(). An
/// empty plain local part and an empty domain are accepted.
///
/// @param out  the address itself on success
/// @retval 0   valid
/// @retval 1   null or empty
/// @retval 2   longer than 319 bytes
/// @retval 3   quoted local part: a bad character, or the closing quote is missing
/// @retval 4   quoted local part: not 3 to 64 bytes with its quotes
/// @retval 5   quoted local part: no "@" after it
/// @retval 6   quoted local part: the domain is longer than 255 bytes
/// @retval 7   plain local part: two dots in a row
/// @retval 8   plain local part: ends otherwise than with "@"
/// @retval 9   plain local part: begins or ends with a dot
/// @retval 10  plain local part: longer than 64 bytes
/// @retval 11  plain local part: the domain is longer than 255 bytes
/// @retval 20,21,22,23,24,25,26  as check_mail_domain()
int32_t check_email(const char *address, const char **out);

/// What follows the "@" of an e-mail address: a domain name, or an IPv4 address in brackets. An empty domain is
/// accepted.
///
/// @retval 0   valid
/// @retval 1   null
/// @retval 20  address: a dot is missing
/// @retval 21  address: a digit is missing
/// @retval 22  address: a number above 255
/// @retval 23  address: the closing bracket is missing
/// @retval 24  address: text after the closing bracket
/// @retval 25  name: a character other than ASCII letters, digits, "-" and "."
/// @retval 26  name: begins with "-" or ".", or ends with "-"
int32_t check_mail_domain(const char *domain);

/// @}
/// @name Words and numbers
/// @{

/// Access word to its stored word: "ReadOnly" is "readonly", "ReadWrite" is "writeable", "Disabled" is "disabled".
/// Compared with case.
///
/// @param out  static text
/// @retval 0  known word
/// @retval 1  another word, or value and fallback both null
int32_t map_read_write_disabled(const char *value, const char *fallback, const char **out);

/// Access word of a protocol that never writes: "ReadOnly" is "readonly", "Disabled" is "disabled". Compared with case.
///
/// @param out  static text
/// @retval 0,1  as map_read_write_disabled()
int32_t map_read_disabled(const char *value, const char *fallback, const char **out);

/// "Enabled" is "enabled", "Disabled" is "disabled". Compared with case.
///
/// @param out  static text
/// @retval 0,1  as map_read_write_disabled()
int32_t map_enabled_disabled(const char *value, const char *fallback, const char **out);

/// Access word to a read and a write flag: "ReadOnly" is 1 and 0, "ReadWrite" 1 and 1, "Disabled" 0 and 0. Compared
/// with case.
///
/// @retval 0,1  as map_read_write_disabled()
int32_t map_access_flags(const char *value, const char *fallback, int32_t *read, int32_t *write);

/// Access word to permission bits: "ReadOnly" is 4, "ReadWrite" 6, "Disabled" 0. Compared with case.
///
/// @param folder  adds the execute bit to the first two, without which a folder cannot be entered
/// @retval 0,1  as map_read_write_disabled()
int32_t map_access_bits(const char *value, const char *fallback, bool folder, int32_t *out);

/// Access word to the permission bits that a creation mask takes away: "ReadOnly" is 2, "ReadWrite" 0, "Disabled" 6.
/// Compared with case.
///
/// @param folder  makes "Disabled" take the execute bit away too
/// @retval 0,1  as map_read_write_disabled()
int32_t map_access_removed_bits(const char *value, const char *fallback, bool folder, int32_t *out);

/// A switch: "0" or "off", "1" or "on"; the words without regard to case, no other way to write the numbers.
///
/// @retval 0  known; *out is 0 or 1
/// @retval 1  anything else, or value and fallback both null
int32_t parse_switch(const char *value, const char *fallback, int32_t *out);

/// An integer within bounds, both included. The text is read as strtol() does with base 0: blanks and a sign may lead,
/// 0x begins a hexadecimal and 0 an octal number, and reading stops at the first character that does not belong, so
/// that "12 MB" is 12 and a text without a number is 0.
///
/// @retval 0  within the bounds
/// @retval 1  outside, or value and fallback both null
int32_t parse_integer(const char *value, const char *fallback, long minimum, long maximum, long *out);

/// Whether ASCII letters are compared with regard to case.
enum class Case { exact, ignored };

/// Whether `value` is one of `words`.
///
/// @retval 0  it is
/// @retval 1  it is not, or it is null
int32_t check_one_of(const char *value, Case letters, std::span<const char *const> words);

/// @overload
inline int32_t check_one_of(const char *value, Case letters, std::initializer_list<const char *> words)
{
    return check_one_of(value, letters, std::span<const char *const>(words.begin(), words.size()));
}

/// Whether a text is what may stand between the brackets of IN (…): texts in single quotes with commas between, and
/// blanks around them. A quote inside a text is doubled.
///
/// @retval 0  it is
/// @retval 1  it is not, or it is null
int32_t check_literal_list(const char *text);

/// The protocols, in the order in which they are listed to callers.
inline constexpr std::array<const char *, 17> protocol_names = {
    "skyloft",      "anti-virus", "daap",  "bonjour", "replicate", "ssh", "snmp", "dlna", "upnpd",
    "smartnetwork", "rsync",      "https", "http",    "ftp",       "nfs", "afp",  "cifs",
};

/// Protocol word, compared with case.
///
/// @retval 0  one of #protocol_names
/// @retval 1  another word, or null
int32_t check_protocol_name(const char *name);

/// Media type that a share offers to media players, as its stored number: "All" 0, "Music" 1, "Photo" 2, "Video" 3,
/// compared with case. The number itself ("0" to "3") is accepted as well, because a share that is read carries the
/// number, and writing back what was read has to work.
///
/// @retval 0  known; *out is the number
/// @retval 1  another text, or value and fallback both null
int32_t parse_media_type(const char *value, const char *fallback, int32_t *out);

/// Resource id: nothing but decimal digits, at least 1 and at most 2147483647. Says nothing about whether a row with
/// that id exists.
///
/// @retval 0  valid; *out is the id
/// @retval 1  null, empty, another character, 0 or too large
int32_t parse_resource_id(const char *text, int32_t *out);

/// Whether a password is #masked_password, which on input means that the stored password stays. False for null.
bool is_password_mask(const char *password);

/// @}
/// @name Addresses
/// @{

/// Hardware address: six hexadecimal numbers of one or two digits with colons between them. Scanned as scanf() does:
/// blanks before a number and at the end do not matter.
///
/// @retval 0  valid
/// @retval 1  null, or not six numbers, or text after them
/// @retval 2  a number out of range, which only a minus sign can cause
int32_t check_mac(const char *address);

/// IPv4 address of four decimal numbers of up to three characters with dots between them. Scanned as scanf() does:
/// blanks before a number and at the end do not matter, a plus sign and leading zeros neither.
///
/// @retval 0   valid
/// @retval -1  null
/// @retval 1   not four numbers, or text after them
/// @retval 2   a number of 256 or more
int32_t check_ipv4(const char *address);

/// IPv4 address as the system's address parser takes it: no blanks, no signs, no leading zeros.
///
/// @retval 0  valid
/// @retval 1  not an address
/// @retval 2  null or empty
int32_t check_inet_address(const char *address);

/// Room for the longest network text, "255.255.255.255/32", and its terminator.
inline constexpr size_t network_text_size = 19;

/// Network of IPv4 addresses, brought into the form address/prefix.
///
///     10               10.0.0.0/8          1 to 3 numbers stand for the network of all addresses beginning with them
///     172.16           172.16.0.0/16
///     192.168.1        192.168.1.0/24
///     192.168.1.0/24   192.168.1.0/24      1 to 4 numbers with a prefix length of 0 to 32; missing numbers are 0
///     10/255.0.0.0     10.0.0.0/8          or with a mask, whose ones must come before its zeros
///
/// Bits of the address beyond the prefix are kept. Numbers are scanned as in check_ipv4(). Four numbers without a
/// prefix length are an address, not a network.
///
/// @param out  the network on success, else the empty text
/// @retval 0   valid
/// @retval -1  a number of the address or of the mask is 256 or more
/// @retval 1   null, or not one of these forms: text after it, a prefix above 32, a mask with holes
int32_t check_network(const char *text, char (&out)[network_text_size]);

/// Host name as in check_host_name(), or IPv4 address.
///
/// @retval 0            valid
/// @retval -11,1,2,3    as check_host_name()
int32_t check_host_or_address(const char *name);

/// Entry of a host access list: an IPv4 address, a network or a host name, tried in that order. Digits and dots that
/// are neither address nor network are a host name: 192.168.1.300, 999.
///
/// @param buffer  where a network is written
/// @param out     on success the entry as it is stored: `buffer` for a network, else `name` itself
/// @retval 0        valid
/// @retval -11      null or empty
/// @retval -1       a network with a number of 256 or more
/// @retval 1,2,3    the result of check_host_name()
int32_t check_host_or_network(const char *name, char (&buffer)[network_text_size], const char **out);

/// @}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
