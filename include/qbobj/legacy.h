/**
 * @file qbobj/legacy.h
 * The older single-purpose entry points: key/value settings, folder attributes.
 */
#ifndef QBOBJ_LEGACY_H
#define QBOBJ_LEGACY_H

#include "qbobj/types.h"

#endif
