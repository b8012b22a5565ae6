#include "platform/ZEBIDOM_DOMImplementation.h"

#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_DocumentData.h"

const ZEBIDOM_DOMImplementation& ZEBIDOM_DOMImplementation::getInstance() noexcept {
  static const ZEBIDOM_DOMImplementation implementation{};
  return implementation;
}

ZEBIDOM_Document ZEBIDOM_DOMImplementation::createDocument() const {
  return ZEBIDOM_Document(std::make_shared<ZEBIDOM_DocumentData>());
}
