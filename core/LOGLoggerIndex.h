#ifndef CORE_LOGLOGGERINDEX_H
#define CORE_LOGLOGGERINDEX_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/I18NString.h"

class LOGLogger;
class LOGProvisionNode;

/// What a hierarchy knows by name: the loggers that were asked for, and the provision nodes of
/// names above them. It loses no name. Look-ups take no lock and write nothing that another thread
/// reads.
class LOGLoggerIndex {
 public:
  /// One name. It has a logger, a provision node that waits for one, or a logger that has replaced
  /// the node.
  struct Entry {
    /// An entry for a logger to come.
    explicit Entry(const I18NString& entryName);
    Entry(const I18NString& entryName, std::unique_ptr<LOGProvisionNode> node);
    ~Entry();

    const I18NString name;
    const std::uint32_t hash;
    const std::unique_ptr<LOGProvisionNode> provision;
    std::atomic<LOGLogger*> logger{nullptr};  // not owned
  };

  LOGLoggerIndex();
  LOGLoggerIndex(const LOGLoggerIndex&) = delete;
  LOGLoggerIndex& operator=(const LOGLoggerIndex&) = delete;
  ~LOGLoggerIndex();

  /// The entry of that name, or null. Any thread may call at any time.
  Entry* find(const I18NString& name) const noexcept;
  /// The logger of that name, or null; the same.
  LOGLogger* findLogger(const I18NString& name) const noexcept {
    const Entry* const entry = find(name);
    return entry == nullptr ? nullptr : entry->logger.load(std::memory_order_acquire);
  }

  // Calls of these are serialised by the caller.
  /// Makes room for that many more entries. Throws std::bad_alloc.
  void reserve(std::size_t more);
  /// Adds a name that is not known yet. REQUIRES: there is room.
  void add(std::unique_ptr<Entry> entry) noexcept;
  /// REQUIRES: no other thread uses the index or an entry.
  void clear() noexcept;

 private:
  using Slot = std::atomic<Entry*>;
  /// Open addressing; at most half of the slots are used, so that every search ends.
  struct Table {
    explicit Table(std::size_t size) : slots(size) {}
    std::vector<Slot> slots;  // a power of two
    std::size_t used = 0;
  };

  static void enter(Table& table, Entry* entry) noexcept;

  std::atomic<Table*> m_current;
  // The current table is the last, and its slots own the entries. The others stay, because somebody
  // may be reading them; together they are smaller than the last.
  std::vector<std::unique_ptr<Table>> m_tables;
};

#endif
