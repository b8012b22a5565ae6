#include "platform/ZEBForkHandler.h"

#include <mutex>

namespace {

ZEBForkHandler* g_first = nullptr;  // guarded by listLock()

/// Held while a fork is under way; nothing else is taken while it is held.
std::mutex& listLock() {
  static auto* const lock = new std::mutex;  // static objects have handlers, too
  return *lock;
}

}  // namespace

ZEBForkHandler::ZEBForkHandler(void* object, Renew renewObject, Prepare prepare)
    : m_object(object), m_renew(renewObject), m_prepare(prepare) {
  const std::lock_guard<std::mutex> lock(listLock());
  m_next = g_first;
  if (m_next != nullptr) {
    m_next->m_previous = this;
  }
  g_first = this;
}

ZEBForkHandler::~ZEBForkHandler() {
  const std::lock_guard<std::mutex> lock(listLock());
  (m_previous == nullptr ? g_first : m_previous->m_next) = m_next;
  if (m_next != nullptr) {
    m_next->m_previous = m_previous;
  }
}

void ZEBForkHandler::beforeFork() noexcept {
  listLock().lock();
  for (const ZEBForkHandler* handler = g_first; handler != nullptr; handler = handler->m_next) {
    if (handler->m_prepare != nullptr) {
      handler->m_prepare(handler->m_object);
    }
  }
}

void ZEBForkHandler::afterForkInParent() noexcept { listLock().unlock(); }

void ZEBForkHandler::afterForkInChild() noexcept {
  renew(listLock());
  for (const ZEBForkHandler* handler = g_first; handler != nullptr; handler = handler->m_next) {
    handler->m_renew(handler->m_object);
  }
}
