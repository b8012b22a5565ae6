#ifndef PLATFORM_ZEBIDOM_NODELIST_H
#define PLATFORM_ZEBIDOM_NODELIST_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/ZEBIDOM_Node.h"

/// Nodes of one document, in document order.
class LOG4ZEB_EXPORT ZEBIDOM_NodeList {
 public:
  ZEBIDOM_NodeList() = default;
  /// The nodes at `indexes` of `data`, for the other classes of the tree.
  ZEBIDOM_NodeList(std::shared_ptr<const ZEBIDOM_DocumentData> data,
                   std::vector<std::uint32_t> indexes) noexcept;

  std::size_t getLength() const noexcept { return m_indexes.size(); }
  /// The node at `position`, counted from 0; null beyond the end.
  ZEBIDOM_Node item(std::size_t position) const;

 private:
  std::shared_ptr<const ZEBIDOM_DocumentData> m_data;
  std::vector<std::uint32_t> m_indexes;
};

#endif
