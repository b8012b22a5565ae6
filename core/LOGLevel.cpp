#include "core/LOGLevel.h"

#include <exception>

#include "platform/I18NLocale.h"
#include "platform/ZEBThreadGuard.h"

// Constant-initialised, so that levels work in static initialisers everywhere.
std::atomic<LOGLevel*> LOGLevel::ALL_OBJ{nullptr};
std::atomic<LOGLevel*> LOGLevel::DEBUG_OBJ{nullptr};
std::atomic<LOGLevel*> LOGLevel::INFO_OBJ{nullptr};
std::atomic<LOGLevel*> LOGLevel::WARN_OBJ{nullptr};
std::atomic<LOGLevel*> LOGLevel::ERROR_OBJ{nullptr};
std::atomic<LOGLevel*> LOGLevel::FATAL_OBJ{nullptr};
std::atomic<LOGLevel*> LOGLevel::OFF_OBJ{nullptr};

namespace {

ZEBThreadCriticalSection g_levelLock;

}  // namespace

LOGLevel::LOGLevel(int rank, const char* name, int syslogSeverity)
    : level(rank), levelStr(name), syslogEquivalent(syslogSeverity), m_text(name) {}

LOGLevel::LOGLevel() : level(FATAL_RANK), syslogEquivalent(FATAL_RANK) {}

LOGLevel::LOGLevel(const LOGLevel&) = default;
LOGLevel& LOGLevel::operator=(const LOGLevel&) = default;
LOGLevel::~LOGLevel() = default;

int LOGLevel::operator==(const LOGLevel& other) const {
  return level == other.level && syslogEquivalent == other.syslogEquivalent ? 1 : 0;
}

int LOGLevel::operator!=(const LOGLevel& other) const { return *this == other ? 0 : 1; }

int LOGLevel::isGreaterOrEqual(const LOGLevel* r) const {
  return r != nullptr && level >= r->level ? 1 : 0;
}

LOGLevel* LOGLevel::toLevel(const I18NString& sArg) {
  if (DEBUG_OBJ.load(std::memory_order_acquire) == nullptr) {
    initialize();
  }
  return toLevel(sArg, DEBUG_OBJ.load(std::memory_order_acquire));
}

LOGLevel* LOGLevel::toLevel(const I18NString& sArg, LOGLevel* defaultLevel) {
  static constexpr struct {
    const char* name;
    const std::atomic<LOGLevel*>& slot;
  } NAMES[] = {{"all", ALL_OBJ},     {"debug", DEBUG_OBJ}, {"info", INFO_OBJ}, {"warn", WARN_OBJ},
               {"error", ERROR_OBJ}, {"fatal", FATAL_OBJ}, {"off", OFF_OBJ}};
  if (sArg.isEmpty()) {
    return defaultLevel;
  }
  std::string scratch;
  const std::string_view text = sArg.narrow(scratch);
  for (const auto& candidate : NAMES) {
    LOGLevel* const found = candidate.slot.load(std::memory_order_acquire);
    if (found != nullptr && I18NLocale::equalIgnoreCase(text, candidate.name)) {
      return found;
    }
  }
  return defaultLevel;
}

LOG4ZEB_HOT LOGLevel* LOGLevel::toLevel(int val, LOGLevel* defaultLevel) {
  const std::atomic<LOGLevel*>* slot = nullptr;
  switch (val) {
    case ERROR_RANK:
      slot = &ERROR_OBJ;
      break;
    case FATAL_RANK:
      slot = &FATAL_OBJ;
      break;
    case OFF_RANK:
      slot = &OFF_OBJ;
      break;
    case WARN_RANK:
      slot = &WARN_OBJ;
      break;
    case ALL_RANK:
      slot = &ALL_OBJ;
      break;
    case DEBUG_RANK:
      slot = &DEBUG_OBJ;
      break;
    case INFO_RANK:
      slot = &INFO_OBJ;
      break;
    default:
      return defaultLevel;
  }
  LOGLevel* level = slot->load(std::memory_order_acquire);
  if (level == nullptr) {
    initialize();
    level = slot->load(std::memory_order_acquire);
  }
  return level == nullptr ? defaultLevel : level;
}

void LOGLevel::createIfMissing(std::atomic<LOGLevel*>& slot, int rank, const char* name,
                               int syslogSeverity) {
  if (slot.load(std::memory_order_relaxed) != nullptr) {
    return;
  }
  try {
    slot.store(new LOGLevel(rank, name, syslogSeverity), std::memory_order_release);
  } catch (const std::exception&) {
    // The level stays missing; the next initialize() tries again.
  }
}

void LOGLevel::initialize() {
  const ZEBThreadGuard guard(g_levelLock);
  createIfMissing(ALL_OBJ, ALL_RANK, "ALL", 7);
  createIfMissing(DEBUG_OBJ, DEBUG_RANK, "DEBUG", 7);
  createIfMissing(INFO_OBJ, INFO_RANK, "INFO", 6);
  createIfMissing(WARN_OBJ, WARN_RANK, "WARN", 4);
  createIfMissing(ERROR_OBJ, ERROR_RANK, "ERROR", 3);
  createIfMissing(FATAL_OBJ, FATAL_RANK, "FATAL", 0);
  createIfMissing(OFF_OBJ, OFF_RANK, "OFF", 0);
}
