#ifndef PLATFORM_ZEBLISTITERATOR_H
#define PLATFORM_ZEBLISTITERATOR_H

#include <cstddef>
#include <iterator>

#include "platform/ZEBListDataNode.h"

/// A position in a ZEBList: on an element, or on the sentinel behind the last one. It stays valid
/// until its own element is removed.
template <typename T>
class ZEBListIterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = T;
  using difference_type = std::ptrdiff_t;
  using pointer = T*;
  using reference = T&;

  ZEBListIterator() = default;
  ZEBListIterator(std::size_t index, const ZEBListNode* sentinel, ZEBListNode* node) noexcept
      : m_index(index), m_sentinel(sentinel), m_node(node) {}

  /// REQUIRES: not atEnd().
  T& operator*() const noexcept { return static_cast<ZEBListDataNode<T>*>(m_node)->getValue(); }
  T* operator->() const noexcept { return &**this; }
  /// Moves to the next element; at the end it stays where it is.
  ZEBListIterator& operator++() noexcept {
    if (!atEnd()) {
      m_node = m_node->getNext();
      ++m_index;
    }
    return *this;
  }

  bool atEnd() const noexcept { return m_node == m_sentinel; }
  /// How many times the position was moved on from the first element.
  std::size_t getIndex() const noexcept { return m_index; }
  ZEBListNode* getNode() const noexcept { return m_node; }

  friend bool operator==(const ZEBListIterator& a, const ZEBListIterator& b) noexcept {
    return a.m_node == b.m_node;
  }
  friend bool operator!=(const ZEBListIterator& a, const ZEBListIterator& b) noexcept {
    return !(a == b);
  }

 private:
  std::size_t m_index = 0;
  const ZEBListNode* m_sentinel = nullptr;
  ZEBListNode* m_node = nullptr;
};

#endif
