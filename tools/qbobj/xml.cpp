#include "xml.h"

#include <libxml/tree.h>

namespace qbcli {

std::string xml_text(void *node)
{
    if (!node) return "";
    xmlBufferPtr buffer = xmlBufferCreate();
    if (!buffer) throw std::bad_alloc();
    auto *element = static_cast<xmlNodePtr>(node);
    xmlNodeDump(buffer, element->doc, element, 0, 1);
    const auto *content = reinterpret_cast<const char *>(xmlBufferContent(buffer));
    std::string text(content, static_cast<size_t>(xmlBufferLength(buffer)));
    xmlBufferFree(buffer);
    return text;
}

void free_xml(void *node)
{
    if (!node) return;
    auto *element = static_cast<xmlNodePtr>(node);
    if (element->doc && xmlDocGetRootElement(element->doc) == element) {
        xmlFreeDoc(element->doc);
        return;
    }
    xmlUnlinkNode(element);
    xmlFreeNode(element);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
