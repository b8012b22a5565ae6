#include "core/LOGLoggerIndex.h"

#include <utility>

#include "core/LOGProvisionNode.h"

namespace {

constexpr std::size_t FIRST_SIZE = 64;

}  // namespace

LOGLoggerIndex::Entry::Entry(const I18NString& entryName) : Entry(entryName, nullptr) {}

LOGLoggerIndex::Entry::Entry(const I18NString& entryName, std::unique_ptr<LOGProvisionNode> node)
    : name(entryName), hash(name.quickHash()), provision(std::move(node)) {}

LOGLoggerIndex::Entry::~Entry() = default;

LOGLoggerIndex::LOGLoggerIndex() : m_current(nullptr) {
  m_tables.push_back(std::make_unique<Table>(FIRST_SIZE));
  m_current.store(m_tables.back().get(), std::memory_order_release);
}

LOGLoggerIndex::~LOGLoggerIndex() { clear(); }

LOGLoggerIndex::Entry* LOGLoggerIndex::find(const I18NString& name) const noexcept {
  const Table& table = *m_current.load(std::memory_order_acquire);
  const std::size_t mask = table.slots.size() - 1;
  const std::uint32_t hash = name.quickHash();
  for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
    Entry* const entry = table.slots[i].load(std::memory_order_acquire);
    if (entry == nullptr || (entry->hash == hash && entry->name == name)) {
      return entry;
    }
  }
}

void LOGLoggerIndex::enter(Table& table, Entry* entry) noexcept {
  const std::size_t mask = table.slots.size() - 1;
  std::size_t i = entry->hash & mask;
  while (table.slots[i].load(std::memory_order_relaxed) != nullptr) {
    i = (i + 1) & mask;
  }
  table.slots[i].store(entry, std::memory_order_release);
  ++table.used;
}

void LOGLoggerIndex::add(std::unique_ptr<Entry> entry) noexcept {
  enter(*m_tables.back(), entry.release());
}

void LOGLoggerIndex::reserve(std::size_t more) {
  const Table& current = *m_tables.back();
  std::size_t size = current.slots.size();
  while (2 * (current.used + more) > size) {
    size *= 2;
  }
  if (size != current.slots.size()) {
    auto grown = std::make_unique<Table>(size);
    for (const Slot& slot : current.slots) {
      if (Entry* const entry = slot.load(std::memory_order_relaxed)) {
        enter(*grown, entry);
      }
    }
    m_tables.push_back(std::move(grown));
    m_current.store(m_tables.back().get(), std::memory_order_release);
  }
}

void LOGLoggerIndex::clear() noexcept {
  Table& current = *m_tables.back();
  for (Slot& slot : current.slots) {
    delete slot.exchange(nullptr, std::memory_order_relaxed);
  }
  current.used = 0;
}
