/**
 * @file qbobj/legacy.h
 * The older single-purpose entry points: key/value settings, folder attributes, the size of
 * a Time Machine backup.
 */
#ifndef QBOBJ_LEGACY_H
#define QBOBJ_LEGACY_H

#include "qbobj/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Settings by key, folder attributes ---------------------------------------------------------- */

/** FolderAttribute::ShareFlags: the folder is shared over SMB. */
#define QBOBJ_FOLDER_SHARED 1u
/** FolderAttribute::ShareFlags: its SMB share is hidden. */
#define QBOBJ_FOLDER_HIDDEN 2u

/**
 * What getFolderAttribute() tells of a folder. It is none of the types of qbobj_types(); its field table
 * is found in the row of the operation.
 */
typedef struct FolderAttribute {
    uint32_t ShareFlags;  /**< QBOBJ_FOLDER_SHARED and QBOBJ_FOLDER_HIDDEN, or 0. */
    uint32_t MediaType;   /**< DLNA media type of the share: 0 all or none, 1 music, 2 photo, 3 video. */
    const char *Comment;  /**< The share's comment; "" when there is none or the folder is not a share's own;
                               null when the folder is neither of a share nor of a home folder. */
    uint32_t IsHome;      /**< 1 for a user's home folder and for what lies in it. */
    uint32_t IsSubfolder; /**< 1 for a folder below that of a share, or below a home folder. */
} FolderAttribute;

/*
 * Each of these calls is one transaction of its own and, unlike the operations, reports a commit that
 * failed: the database's code is returned then and the error record stays zero. Null pointers end the
 * process unless the argument's text allows them. Strings live in the handle's pool.
 */

/**
 * Tells whether a folder is a share or a home folder, or lies in one. Shares go before home folders.
 * Stored paths are compared as patterns of LIKE when a folder is looked for inside them: case does not
 * matter, and "_" and "%" stand for any character and any text.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param path Absolute path of the folder, without a slash at the end; null matches nothing.
 * @param attr Out: the answer; all zero with a null comment when the folder is neither, and on failure.
 * @param err  Out: error record.
 * @return 0, also when the folder is neither; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t getFolderAttribute(qbdb_t *qbdb, sqlite3 *db, const char *path, FolderAttribute *attr,
                                      ErrorInfo *err);

/**
 * Reads a service setting.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param key  Name of the setting, case counts.
 * @param val  Out: its value; null when it has none; not written when the database fails.
 * @param err  Out: error record.
 * @return 0; 5 database failure; 6 the setting does not exist or has no value.
 */
QBOBJ_API uint32_t getServiceEntry(qbdb_t *qbdb, sqlite3 *db, const char *key, const char **val, ErrorInfo *err);

/**
 * Writes or removes a service setting. A setting that is mirrored into a column of a settings table is
 * written there, too, in every row. Removing a setting empties its row and unlinks the mirror for good.
 * "LANGUAGE" takes only a language that "LANGUAGES_SUPPORTED" lists.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param key  Name of the setting, case counts.
 * @param val  Its value; null removes it. A value for "LANGUAGE" becomes part of the statement as it is
 *             and must come from a trusted source.
 * @param err  Out: error record.
 * @return 0; 2 no memory; 5 database failure; 8 language not supported (also a null one).
 */
QBOBJ_API uint32_t setServiceEntry(qbdb_t *qbdb, sqlite3 *db, const char *key, const char *val, ErrorInfo *err);

/**
 * Reads an entry of the registry, where applications keep what they like.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param key  Name of the entry, case counts.
 * @param val  Out: its value; null when it has none; not written when the database fails.
 * @param err  Out: error record; may be null.
 * @return 0; 5 database failure; 6 the entry does not exist or has no value.
 */
QBOBJ_API uint32_t getRegistryEntry(qbdb_t *qbdb, sqlite3 *db, const char *key, const char **val, ErrorInfo *err);

/**
 * Writes an entry of the registry. Entries cannot be removed.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param key  Name of the entry, case counts.
 * @param val  Its value; null asks for removal, which always fails with 5.
 * @param err  Out: error record; may be null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t setRegistryEntry(qbdb_t *qbdb, sqlite3 *db, const char *key, const char *val, ErrorInfo *err);

/* ---- Time Machine -------------------------------------------------------------------------------- */

/**
 * Measures the space that a Time Machine backup takes: the number of bands of the first sparse bundle in
 * a folder, times the size of a band as the bundle's description gives it.
 * @param path Folder that holds the bundle; null measures nothing.
 * @return Megabytes of 1000000 bytes, rounded down; 0 when the folder, a bundle in it, its description,
 *         the size of a band or the bands are missing.
 */
QBOBJ_API uint64_t get_tm_used_mb(const char *path);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
