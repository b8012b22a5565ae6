#ifndef FILTERS_LOGDENYALLFILTER_H
#define FILTERS_LOGDENYALLFILTER_H

#include "filters/LOGFilter.h"
#include "platform/ZEBList.h"

/// Denies every event; it stands behind filters that accept what should pass.
class LOG4ZEB_EXPORT LOGDenyAllFilter : public LOGFilter {
 public:
  LOGDenyAllFilter();
  int decide(LOGLoggingEvent*) override { return m_DENY; }
  LOGObject* clone() const override;
  /// There are no options: the list is empty, and setting one does nothing.
  ZEBList<I18NString> getOptionStrings() const { return {}; }
  void setOption(const I18NString&, const I18NString&) {}
};

#endif
