/**
 * @file qbobj/codes.h
 * The codes with which operations fail: one flat space of numbers. A code says the class of the failure, the message
 * in the error record says the particulars. Programs compare the numbers; there are no names for them.
 *
 * A call that could not begin its transaction returns what the database said (SQLite's primary result code, 5 when it
 * is locked) and leaves the error record zero: such a number is none of these codes.
 */
#ifndef QBOBJ_CODES_H
#define QBOBJ_CODES_H

#include "qbobj/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Applies the macro X to each code, in ascending order, and to its meaning: X(5, "a database statement failed"). */
#define QBOBJ_FOR_EACH_CODE(X)                                                                \
    X(1, "a file that the operation reads is missing or malformed, or an element is missing") \
    X(2, "out of memory, or an internal step failed")                                         \
    X(3, "an internal database step failed; the log says which")                              \
    X(5, "a database statement failed")                                                       \
    X(6, "nothing was found, or nothing changed")                                             \
    X(8, "an argument is missing, malformed, or refers to nothing")                           \
    X(800, "the share name is taken")                                                         \
    X(801, "the user name is taken")                                                          \
    X(802, "the user id is taken, or the system's own")                                       \
    X(803, "the group name is taken")                                                         \
    X(804, "the group id is taken")                                                           \
    X(806, "the name is too long")                                                            \
    X(807, "the backup job name is taken")                                                    \
    X(808, "the share name is reserved")                                                      \
    X(809, "the user name is reserved")                                                       \
    X(810, "the port is out of range")                                                        \
    X(811, "the port is used by another service")                                             \
    X(812, "the range of passive ports is malformed")                                         \
    X(813, "the authentication mode is neither anonymous nor user")                           \
    X(814, "the masquerade address is malformed")                                             \
    X(815, "another share is migrating")                                                      \
    X(816, "the allowed host is malformed")                                                   \
    X(817, "the community is malformed")                                                      \
    X(818, "the trap destination is malformed")                                               \
    X(819, "the workgroup is malformed")                                                      \
    X(820, "the realm is malformed")                                                          \
    X(821, "the SSH port is out of range")                                                    \
    X(822, "the group is the primary group of a user")                                        \
    X(825, "the UPS name has a character that is not allowed")                                \
    X(826, "too many UPS units are enabled")                                                  \
    X(827, "the additional HTTPS port is out of range")                                       \
    X(828, "the additional HTTPS port is in use")                                             \
    X(829, "the host of the SSL key is malformed")                                            \
    X(830, "the bandwidth is out of range")                                                   \
    X(831, "a reserved share name can neither be given nor taken away")                       \
    X(832, "the directory does not know the user")                                            \
    X(833, "the password server is malformed")                                                \
    X(834, "a remote user has the user name")                                                 \
    X(835, "the quota is larger than the free space")                                         \
    X(836, "there is no such user")                                                           \
    X(837, "the SSH public key is stored already")                                            \
    X(838, "there is no such SSH public key, or root's twin of it is missing")                \
    X(841, "Time Machine is not configured")                                                  \
    X(842, "there are too many SSH public keys")                                              \
    X(843, "there are too many Time Machine users")                                           \
    X(844, "the group is the default group")                                                  \
    X(845, "the user name is an alias of a remote user")                                      \
    X(901, "the share id is malformed")                                                       \
    X(902, "an application uses the share, so that it cannot go")                             \
    X(903, "an application uses the share, so that it cannot be renamed")

/** One row of the table of codes. */
typedef struct QbobjCode {
    uint32_t code;       /**< The code; 0 ends the table. */
    const char *meaning; /**< One line, without a full stop; null ends the table. */
} QbobjCode;

/**
 * The table of codes in ascending order, ended by a row of code 0.
 * @return A static table.
 */
QBOBJ_API const QbobjCode *qbobj_codes(void);

/**
 * Says what a code means.
 * @param code What an operation returned or stored in its error record.
 * @return One line (static), or null for 0 and for a number that is no code.
 */
QBOBJ_API const char *qbobj_code_meaning(uint32_t code);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
