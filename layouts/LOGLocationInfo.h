#ifndef LAYOUTS_LOGLOCATIONINFO_H
#define LAYOUTS_LOGLOCATIONINFO_H

#include "platform/I18NString.h"

/// Where a logging call was made, as layouts ask for it. No caller location is gathered: every item
/// reads "?" and the full information is empty, whatever the object was made from.
class LOG4ZEB_EXPORT LOGLocationInfo {
 public:
  /// The argument is accepted and ignored.
  explicit LOGLocationInfo(const I18NString& /*fullInfo*/) {}
  LOGLocationInfo() = default;

  const I18NString& getClassName() const { return m_NA; }
  const I18NString& getFileName() const { return m_NA; }
  const I18NString& getLineNumber() const { return m_NA; }
  const I18NString& getMethodName() const { return m_NA; }
  const I18NString& getFullInfo() const { return I18NString::none(); }

 private:
  static const I18NString m_NA;
};

#endif
