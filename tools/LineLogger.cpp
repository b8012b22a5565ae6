#include "tools/LineLogger.h"

#include "log4zeb.h"
#include "tools/LineLevel.h"

void LineLogger::log(std::string_view line) {
  ++m_read;
  const int rank = m_levelFromLine ? LineLevel::firstIn(line).value_or(m_rank) : m_rank;
  LOGLevel* const level = LOGLevel::toLevel(rank);
  if (m_logger->isEnabledFor(level) != 0) {
    m_logger->log(level, I18NString::fromUtf8(line));
    ++m_logged;
  }
}
