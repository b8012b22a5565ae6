#ifndef CUSTOM_FILTER_REPETITIONFILTER_H
#define CUSTOM_FILTER_REPETITIONFILTER_H

#include <atomic>

#include "filters/LOGFilter.h"

/// Denies an event that says the same as the one before: logger, level and message. It belongs to
/// one appender, under whose lock it is asked.
class RepetitionFilter : public LOGFilter {
 public:
  RepetitionFilter();
  int decide(LOGLoggingEvent* event) override;
  /// How many events were denied. Any thread may ask.
  int denied() const { return m_denied; }

 private:
  I18NString m_last;  // guarded by the appender's lock
  std::atomic<int> m_denied{0};
};

#endif
