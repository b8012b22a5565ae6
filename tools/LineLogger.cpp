#include "tools/LineLogger.h"

#include "config/LOGDOMConfigurator.h"
#include "log4zeb.h"
#include "platform/ZEBUtTerminal.h"
#include "tools/LineLevel.h"
#include "tools/LogDestinations.h"

bool LineLogger::hasLostReader() const {
  bool isConsole = false;
  if (ZEBUtTerminal::hasLostReader()) {
    // A watchdog may be about to give the logger other appenders.
    LOGDOMConfigurator::runExclusively(
        [&] { isConsole = LogDestinations::includeConsole(m_logger); });
  }
  return isConsole;
}

void LineLogger::log(std::string_view line) {
  ++m_read;
  const int rank = m_levelFromLine ? LineLevel::firstIn(line).value_or(m_rank) : m_rank;
  LOGLevel* const level = LOGLevel::toLevel(rank);
  if (m_logger->isEnabledFor(level) != 0) {
    m_logger->log(level, I18NString::fromUtf8(line));
    ++m_logged;
  }
}
