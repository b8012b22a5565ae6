#ifndef APPENDERS_LOGROLLEDFILE_H
#define APPENDERS_LOGROLLEDFILE_H

#include <atomic>
#include <memory>

#include "platform/I18NString.h"
#include "platform/ZEBThreadCriticalSection.h"

/// What the rolling file appenders of this process that write to one file share, as an old and a
/// new one do while a document is read again: whose turn it is to open the file or to roll it over,
/// and how often that was done.
class LOGRolledFile {
 public:
  /// The one for the file of that name from the root, whichever way the name takes; it lives as
  /// long as somebody has it. Throws what memory and locks throw.
  static std::shared_ptr<LOGRolledFile> of(const I18NString& absoluteName);
  LOGRolledFile() = default;
  LOGRolledFile(const LOGRolledFile&) = delete;
  LOGRolledFile& operator=(const LOGRolledFile&) = delete;
  ~LOGRolledFile();

  /// Taken under an appender's lock, and no appender's lock under it.
  ZEBThreadCriticalSection& turn() { return m_turn; }
  unsigned int rollovers() const { return m_rollovers.load(std::memory_order_acquire); }
  void countRollover() { m_rollovers.fetch_add(1, std::memory_order_release); }

 private:
  ZEBThreadCriticalSection m_turn;
  std::atomic<unsigned int> m_rollovers{0};
};

#endif
