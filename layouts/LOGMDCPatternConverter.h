#ifndef LAYOUTS_LOGMDCPATTERNCONVERTER_H
#define LAYOUTS_LOGMDCPATTERNCONVERTER_H

#include "layouts/LOGPatternConverter.h"

/// Stands for a value of a mapped diagnostic context. No such context is kept, so there is never a
/// value and only the minimum width shows.
class LOG4ZEB_EXPORT LOGMDCPatternConverter : public LOGPatternConverter {
 public:
  /// Throws ZEBAssertError when `formattingInfo` is null.
  LOGMDCPatternConverter(LOGFormattingInfo* formattingInfo, const I18NString& key);

  /// Null.
  I18NString* convert(LOGLoggingEvent*) override { return nullptr; }

 private:
  I18NString m_key;
};

#endif
