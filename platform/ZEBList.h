#ifndef PLATFORM_ZEBLIST_H
#define PLATFORM_ZEBLIST_H

#include <cstddef>
#include <utility>

#include "platform/ZEBListDataNode.h"
#include "platform/ZEBListIterator.h"
#include "platform/ZEBListNode.h"

/// A doubly linked, circular list with a sentinel node. Iterators stay valid while other elements
/// come and go. The list owns its elements' values; a list of pointers owns nothing they point at.
/// Not synchronised.
template <typename T>
class ZEBList {
 public:
  ZEBList() = default;
  ZEBList(const ZEBList& other) : ZEBList() { addAll(other); }
  ZEBList& operator=(const ZEBList& other) {
    if (this != &other) {
      clear();
      addAll(other);
    }
    return *this;
  }
  ~ZEBList() { clear(); }

  /// Adds at the end.
  void add(T value) {
    (new ZEBListDataNode<T>(std::move(value)))->linkBefore(&m_sentinel);
    ++m_count;
  }
  /// Removes the element at `position` and returns the position of the next one.
  /// REQUIRES: position is on an element of this list.
  ZEBListIterator<T> remove(ZEBListIterator<T> position) {
    ZEBListNode* const node = position.getNode();
    const ZEBListIterator<T> following(position.getIndex(), &m_sentinel, node->getNext());
    node->unlink();
    delete static_cast<ZEBListDataNode<T>*>(node);
    --m_count;
    return following;
  }
  void clear() noexcept {
    while (m_sentinel.getNext() != &m_sentinel) {
      ZEBListNode* const node = m_sentinel.getNext();
      node->unlink();
      delete static_cast<ZEBListDataNode<T>*>(node);
    }
    m_count = 0;
  }

  std::size_t size() const noexcept { return m_count; }
  bool isEmpty() const noexcept { return m_count == 0; }

  ZEBListIterator<T> begin() const noexcept { return {0, &m_sentinel, m_sentinel.getNext()}; }
  /// REQUIRES: the list is not empty.
  ZEBListIterator<T> last() const noexcept {
    return {m_count - 1, &m_sentinel, m_sentinel.getPrevious()};
  }
  ZEBListIterator<T> end() const noexcept { return {m_count, &m_sentinel, &m_sentinel}; }

 private:
  void addAll(const ZEBList& other) {
    for (const T& value : other) {
      add(value);
    }
  }

  // A const list still hands out positions whose elements can be changed, like a list of pointers.
  mutable ZEBListNode m_sentinel;
  std::size_t m_count = 0;
};

#endif
