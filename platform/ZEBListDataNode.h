#ifndef PLATFORM_ZEBLISTDATANODE_H
#define PLATFORM_ZEBLISTDATANODE_H

#include <utility>

#include "platform/ZEBListNode.h"

/// A node of a ZEBList that holds an element.
template <typename T>
class ZEBListDataNode : public ZEBListNode {
 public:
  explicit ZEBListDataNode(T value) : m_value(std::move(value)) {}
  T& getValue() noexcept { return m_value; }

 private:
  T m_value;
};

#endif
