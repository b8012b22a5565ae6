#ifndef CUSTOM_LAYOUT_JSONLAYOUT_H
#define CUSTOM_LAYOUT_JSONLAYOUT_H

#include "layouts/LOGLayout.h"

/// Writes each event as one line with one JSON object.
class JsonLayout : public LOGLayout {
 public:
  JsonLayout();
  const I18NString& format(LOGLoggingEvent* event) override;
  const I18NString& getContentType() override;
  /// The exception of an event is in its line, so the appender need not care for it.
  int ignoresThrowable() override { return 0; }
};

#endif
