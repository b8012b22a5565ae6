#include "platform/ZEBIDOM_NamedNodeMap.h"

ZEBIDOM_Node ZEBIDOM_NamedNodeMap::getNamedItem(const I18NString& name) const {
  for (std::size_t i = 0; i < getLength(); ++i) {
    if (item(i).getNodeName() == name) {
      return item(i);
    }
  }
  return {};
}
