#include "frame/field_table.h"

namespace qb {

QB_RECORD(FolderAttribute, 0, F(ShareFlags), F(MediaType), F(Comment), F(IsHome), F(IsSubfolder))

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
