/**
 * @file qbobj/legacy.h
 * The older single-purpose entry points: key/value settings, folder attributes.
 */
#ifndef QBOBJ_LEGACY_H
#define QBOBJ_LEGACY_H

#include "qbobj/types.h"

#ifdef __cplusplus
extern "C" {
#endif

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
