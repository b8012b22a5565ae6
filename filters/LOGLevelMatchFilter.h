#ifndef FILTERS_LOGLEVELMATCHFILTER_H
#define FILTERS_LOGLEVELMATCHFILTER_H

#include "filters/LOGFilter.h"

class LOGLevel;

/// Accepts the events of one level, or denies them when told so; neutral on all others, and while
/// no level is set.
class LOG4ZEB_EXPORT LOGLevelMatchFilter : public LOGFilter {
 public:
  static const I18NString LEVEL_TO_MATCH_OPTION;
  static const I18NString ACCEPT_ON_MATCH_OPTION;

  LOGLevelMatchFilter();
  /// Throws ZEBAssertError for a null event, or one without level, when a level is set.
  int decide(LOGLoggingEvent* event) override;
  LOGObject* clone() const override;

  /// Sets the level by name; an unknown name sets none.
  void setLevelToMatch(const I18NString& level);
  /// The level's name in a new string that the caller deletes, null when no level is set.
  I18NString* getLevelToMatch() const;
  /// 1 (the default) accepts on a match, 0 denies.
  int getAcceptOnMatch() const { return acceptOnMatch; }
  void setAcceptOnMatch(int accept) { acceptOnMatch = accept; }

 protected:
  int acceptOnMatch = 1;
  LOGLevel* levelToMatch = nullptr;  // not owned
};

#endif
