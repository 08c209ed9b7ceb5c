// XML nodes that operations hand out.
#pragma once

#include <string>

namespace qbcli {

/// A node's text; empty for null.
std::string xml_text(void *node);
/// Frees a node with everything below it, and the document that it is the root of.
void free_xml(void *node);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
