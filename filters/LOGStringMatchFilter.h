#ifndef FILTERS_LOGSTRINGMATCHFILTER_H
#define FILTERS_LOGSTRINGMATCHFILTER_H

#include "filters/LOGFilter.h"
#include "platform/ZEBList.h"

/// Accepts the events whose message holds a text, or denies them when told so; neutral on all
/// others, and while no text is set. Case matters.
class LOG4ZEB_EXPORT LOGStringMatchFilter : public LOGFilter {
 public:
  static const I18NString STRING_TO_MATCH_OPTION;
  static const I18NString ACCEPT_ON_MATCH_OPTION;

  LOGStringMatchFilter();
  /// Throws ZEBAssertError for a null event.
  int decide(LOGLoggingEvent* event) override;
  LOGObject* clone() const override;

  const I18NString& getStringToMatch() const { return stringToMatch; }
  void setStringToMatch(const I18NString& text) { stringToMatch = text; }
  /// 1 (the default) accepts on a match, 0 denies.
  int getAcceptOnMatch() const { return acceptOnMatch; }
  void setAcceptOnMatch(int accept) { acceptOnMatch = accept; }

  ZEBList<I18NString> getOptionStrings() const;
  /// Sets an option by its name, whatever its case; other names are ignored, and so is a truth
  /// value that is neither "true" nor "false".
  void setOption(const I18NString& option, const I18NString& value);

 protected:
  int acceptOnMatch = 1;
  I18NString stringToMatch;
};

#endif
