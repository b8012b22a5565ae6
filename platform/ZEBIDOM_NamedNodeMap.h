#ifndef PLATFORM_ZEBIDOM_NAMEDNODEMAP_H
#define PLATFORM_ZEBIDOM_NAMEDNODEMAP_H

#include <cstddef>

#include "platform/ZEBIDOM_Node.h"

/// The attributes of an element, in the order in which they are written.
class LOG4ZEB_EXPORT ZEBIDOM_NamedNodeMap {
 public:
  ZEBIDOM_NamedNodeMap() = default;
  /// The attributes of the element at `index` of `data`, for the other classes of the tree.
  ZEBIDOM_NamedNodeMap(std::shared_ptr<const ZEBIDOM_DocumentData> data,
                       std::uint32_t index) noexcept;

  std::size_t getLength() const noexcept;
  /// The attribute at `position`, counted from 0; null beyond the end.
  ZEBIDOM_Node item(std::size_t position) const;
  /// The attribute of that name, null when there is none.
  ZEBIDOM_Node getNamedItem(const I18NString& name) const;

 private:
  std::shared_ptr<const ZEBIDOM_DocumentData> m_data;
  std::uint32_t m_index = 0;
};

#endif
