#include "platform/ZEBIDOM_Document.h"

#include <utility>

#include "platform/ZEBIDOM_DocumentData.h"
#include "platform/ZEBIDOM_Element.h"

ZEBIDOM_Document::ZEBIDOM_Document(std::shared_ptr<const ZEBIDOM_DocumentData> data) noexcept
    : ZEBIDOM_Node(std::move(data), ZEBIDOM_DocumentData::ROOT) {}

ZEBIDOM_Element ZEBIDOM_Document::getDocumentElement() const {
  return ZEBIDOM_Element(getFirstChild());
}
