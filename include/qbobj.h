/**
 * @file qbobj.h
 * The interface of libqbobj, the object library of the appliance: one header that pulls in the rest.
 * Start with qbobj/types.h for the conventions and qbdb.h for opening a database.
 */
#ifndef QBOBJ_H
#define QBOBJ_H

#include "qbobj/accounts.h"
#include "qbobj/backup.h"
#include "qbobj/codes.h"
#include "qbobj/legacy.h"
#include "qbobj/operations.h"
#include "qbobj/services.h"
#include "qbobj/shares.h"
#include "qbobj/storage.h"
#include "qbobj/system.h"
#include "qbobj/types.h"
#include "qbobj/validate.h"

#endif
/* SPDX-License-Identifier: Apache-2.0 */
