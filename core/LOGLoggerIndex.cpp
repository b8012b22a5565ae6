#include "core/LOGLoggerIndex.h"

#include "core/LOGLogger.h"

namespace {

constexpr std::size_t FIRST_SIZE = 64;

}  // namespace

LOGLoggerIndex::LOGLoggerIndex() : m_current(nullptr) {
  m_tables.push_back(std::make_unique<Table>(FIRST_SIZE));
  m_current.store(m_tables.back().get(), std::memory_order_release);
}

LOGLoggerIndex::~LOGLoggerIndex() = default;

LOGLogger* LOGLoggerIndex::find(const I18NString& name) const noexcept {
  const Table& table = *m_current.load(std::memory_order_acquire);
  const std::size_t mask = table.slots.size() - 1;
  const std::uint32_t hash = name.quickHash();
  for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
    const Slot& slot = table.slots[i];
    LOGLogger* const logger = slot.logger.load(std::memory_order_acquire);
    if (logger == nullptr) {
      return nullptr;
    }
    if (slot.hash.load(std::memory_order_relaxed) == hash && logger->getName() == name) {
      return logger;
    }
  }
}

void LOGLoggerIndex::enter(Table& table, LOGLogger* logger) noexcept {
  const std::size_t mask = table.slots.size() - 1;
  const std::uint32_t hash = logger->getName().quickHash();
  std::size_t i = hash & mask;
  while (table.slots[i].logger.load(std::memory_order_relaxed) != nullptr) {
    i = (i + 1) & mask;
  }
  table.slots[i].hash.store(hash, std::memory_order_relaxed);
  table.slots[i].logger.store(logger, std::memory_order_release);
  ++table.used;
}

void LOGLoggerIndex::add(LOGLogger* logger) {
  if (2 * (m_tables.back()->used + 1) > m_tables.back()->slots.size()) {
    grow();
  }
  enter(*m_tables.back(), logger);
}

void LOGLoggerIndex::grow() {
  auto grown = std::make_unique<Table>(2 * m_tables.back()->slots.size());
  for (const Slot& slot : m_tables.back()->slots) {
    LOGLogger* const logger = slot.logger.load(std::memory_order_relaxed);
    if (logger != nullptr) {
      enter(*grown, logger);
    }
  }
  m_tables.push_back(std::move(grown));
  m_current.store(m_tables.back().get(), std::memory_order_release);
}

void LOGLoggerIndex::clear() noexcept {
  for (Slot& slot : m_tables.back()->slots) {
    slot.logger.store(nullptr, std::memory_order_release);
  }
  m_tables.back()->used = 0;
}
