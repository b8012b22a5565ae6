#ifndef PLATFORM_ZEBIDOM_NAMEDNODEMAP_H
#define PLATFORM_ZEBIDOM_NAMEDNODEMAP_H

#include "platform/ZEBIDOM_NodeList.h"

/// The attributes of an element, in the order in which they are written.
class LOG4ZEB_EXPORT ZEBIDOM_NamedNodeMap : public ZEBIDOM_NodeList {
 public:
  using ZEBIDOM_NodeList::ZEBIDOM_NodeList;
  /// The attribute of that name, null when there is none.
  ZEBIDOM_Node getNamedItem(const I18NString& name) const;
};

#endif
