#include "RepetitionFilter.h"

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"

RepetitionFilter::RepetitionFilter() { instance("RepetitionFilter"); }

int RepetitionFilter::decide(LOGLoggingEvent* event) {
  I18NString said = event->getLoggerName() + " " + event->getLevel()->getText() + " ";
  event->appendRenderedMessage(said);
  if (said == m_last) {
    ++m_denied;
    return m_DENY;
  }
  m_last = said;
  return m_NEUTRAL;
}
