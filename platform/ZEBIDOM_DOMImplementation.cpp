#include "platform/ZEBIDOM_DOMImplementation.h"

#include <utility>

#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_DocumentData.h"

const ZEBIDOM_DOMImplementation& ZEBIDOM_DOMImplementation::getInstance() noexcept {
  static const ZEBIDOM_DOMImplementation implementation{};
  return implementation;
}

ZEBIDOM_Document ZEBIDOM_DOMImplementation::createDocument() const {
  auto data = std::make_shared<ZEBIDOM_DocumentData>();
  ZEBIDOM_DocumentData::Entry& root = data->entries.emplace_back();
  root.type = ZEBIDOM_Node::DOCUMENT_NODE;
  root.name = "#document";
  root.end = 1;
  return ZEBIDOM_Document(std::move(data));
}
