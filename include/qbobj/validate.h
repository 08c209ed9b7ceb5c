/**
 * @file
 * Checks of names and addresses that a caller can run before it fills a record, so that a form can be refused while it
 * is still on the screen. The operations run the same checks themselves.
 *
 * Text is NUL-terminated. Non-ASCII characters are UTF-8; they are accepted byte by byte and not decoded, and lengths
 * are counted in bytes. Nothing is allocated: an output points at the caller's own argument or at static text, and is
 * never to be freed. The checks without a database keep no state and may be called from any thread.
 */
#ifndef QBOBJ_VALIDATE_H
#define QBOBJ_VALIDATE_H

#include <stdint.h>

#include "qbobj/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Checks a share type and brings it into its stored spelling.
 *
 * The types are "share", "zvol" and "replicate", compared without regard to case.
 *
 * @param name       in: the type; null or empty stands for "share"
 * @param sharetype  out: the type in lower case (static text), or null when the result is 1. Must not be null: the
 *                   program is aborted.
 * @retval 0  known type
 * @retval 1  unknown type
 */
QBOBJ_API int32_t qbobj_validate_sharetype(const char *name, const char **sharetype);

/**
 * Checks the name of a snapshot: 1 to 50 bytes, a letter, digit, "$" or non-ASCII character, followed by letters,
 * digits, "_", "$", "-", "." and non-ASCII characters.
 *
 * The tests run in the order of the results; the first that fails decides.
 *
 * @param name  in: the name; may be null
 * @retval 0   valid
 * @retval -1  null or empty
 * @retval 1   the first character is not allowed there
 * @retval 2   a following character is not allowed
 * @retval 3   longer than 50 bytes
 */
QBOBJ_API int32_t qbobj_validate_snapshotname(const char *name);

/**
 * Checks the name of a share: 1 to 32 bytes, a letter, digit, "$" or non-ASCII character, followed by letters, digits,
 * "_", "$", "-" and non-ASCII characters, and not one of the names that the appliance keeps for itself ("home", "pool"
 * and others, or anything that begins with "c_", "usb_" and the like), compared without regard to case.
 *
 * The tests run in the order of the results; the first that fails decides. Whether a share of that name exists is a
 * question for qbobj_validate_db_sharename().
 *
 * @param name  in: the name; may be null
 * @param out   out: `name` itself when the result is 0, else null; may be null
 * @retval 0   valid
 * @retval -1  null or empty
 * @retval 1   the first character is not allowed there
 * @retval 2   a following character is not allowed
 * @retval 3   longer than 32 bytes
 * @retval 4   begins with a reserved prefix
 * @retval 5   is a reserved name
 */
QBOBJ_API int32_t qbobj_validate_sharename(const char *name, const char **out);

/**
 * Checks a name for the appliance itself: 1 to 16 bytes, a letter or digit, followed by letters, digits, "_" and "-".
 *
 * @param name  in: the name; may be null
 * @retval 0    valid
 * @retval -11  null or empty
 * @retval 2    a character is not allowed
 * @retval 3    longer than 16 bytes
 */
QBOBJ_API int32_t qbobj_validate_myhostname(const char *name);

/**
 * Checks the address of a host: an IPv4 address in dotted form, or a host name of up to 255 bytes, which is a letter or
 * digit followed by letters, digits, "_", "-" and ".".
 *
 * Digits and dots that are no address are a host name: 192.168.1.300 passes. No name is looked up.
 *
 * @param ip  in: the address or name; may be null
 * @retval 0  valid
 * @retval 1  neither an address nor a host name
 * @retval 2  null or empty
 */
QBOBJ_API int32_t qbobj_validate_ip(const char *ip);

/**
 * Checks the comment of a share: any text of up to 255 bytes without control characters (line breaks and tabs
 * included), since it becomes a line of the services' configuration files. An empty comment is fine.
 *
 * The operations that write a comment do not run this check; it is there for front ends.
 *
 * @param comment  in: the comment; may be null
 * @retval 0   valid
 * @retval -1  null
 * @retval 2   a control character
 * @retval 3   longer than 255 bytes
 */
QBOBJ_API int32_t qbobj_validate_share_comment(const char *comment);

/**
 * Looks up whether a share of a name exists; ASCII letters are compared without regard to case.
 *
 * Runs one query on the connection, outside or inside a transaction of the caller's; nothing is changed.
 *
 * @param qbdb  in: the handle; must not be null
 * @param db    in: the open connection
 * @param name  in: the name of the share; null matches no share
 * @param id    out: the id of the share, written only when the result is 0; may be null
 * @retval 0       the share exists
 * @retval others  no share of that name, or the query failed
 */
QBOBJ_API int32_t qbobj_validate_db_sharename(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *id);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
