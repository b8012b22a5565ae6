#ifndef PLATFORM_ZEBLISTNODE_H
#define PLATFORM_ZEBLISTNODE_H

/// A link of a ZEBList's ring; a node by itself is a ring of one, such as the list's sentinel.
class ZEBListNode {
 public:
  ZEBListNode() noexcept : m_next(this), m_previous(this) {}
  ZEBListNode(const ZEBListNode&) = delete;
  ZEBListNode& operator=(const ZEBListNode&) = delete;

  ZEBListNode* getNext() const noexcept { return m_next; }
  ZEBListNode* getPrevious() const noexcept { return m_previous; }

  /// REQUIRES: this node is a ring of one.
  void linkBefore(ZEBListNode* other) noexcept {
    m_next = other;
    m_previous = other->m_previous;
    m_previous->m_next = this;
    other->m_previous = this;
  }
  void unlink() noexcept {
    m_previous->m_next = m_next;
    m_next->m_previous = m_previous;
    m_next = this;
    m_previous = this;
  }

 private:
  ZEBListNode* m_next;
  ZEBListNode* m_previous;
};

#endif
