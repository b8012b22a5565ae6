#ifndef CORE_LOGLOGGERINDEX_H
#define CORE_LOGLOGGERINDEX_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/I18NString.h"

class LOGLogger;

/// Remembers loggers by name for look-ups that take no lock and write nothing that another thread
/// reads. It knows what it was told and nothing else: what is not found here may exist all the
/// same.
class LOGLoggerIndex {
 public:
  LOGLoggerIndex();
  LOGLoggerIndex(const LOGLoggerIndex&) = delete;
  LOGLoggerIndex& operator=(const LOGLoggerIndex&) = delete;
  ~LOGLoggerIndex();

  /// The logger of that name, or null. Any thread may call at any time, while the loggers live.
  LOGLogger* find(const I18NString& name) const noexcept;

  // Calls of these are serialised by the caller.
  /// Remembers a logger that is not known yet under its name.
  void add(LOGLogger* logger);
  void clear() noexcept;

 private:
  struct Slot {
    std::atomic<std::uint32_t> hash{0};
    std::atomic<LOGLogger*> logger{nullptr};
  };
  /// Open addressing; at most half of the slots are used, so that every search ends.
  struct Table {
    explicit Table(std::size_t size) : slots(size) {}
    std::vector<Slot> slots;  // a power of two
    std::size_t used = 0;
  };

  static void enter(Table& table, LOGLogger* logger) noexcept;
  void grow();

  std::atomic<Table*> m_current;
  // The current table is the last. The others stay, because somebody may be reading them; together
  // they are smaller than the last.
  std::vector<std::unique_ptr<Table>> m_tables;
};

#endif
