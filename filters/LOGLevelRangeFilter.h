#ifndef FILTERS_LOGLEVELRANGEFILTER_H
#define FILTERS_LOGLEVELRANGEFILTER_H

#include "filters/LOGFilter.h"
#include "platform/ZEBList.h"

class LOGLevel;

/// Denies the events outside a range of levels, whose bounds belong to it; a bound that is not set
/// does not bound. On events inside it is neutral, or accepts them when told so.
class LOG4ZEB_EXPORT LOGLevelRangeFilter : public LOGFilter {
 public:
  static const I18NString LEVEL_MIN_OPTION;
  static const I18NString LEVEL_MAX_OPTION;
  static const I18NString ACCEPT_ON_MATCH_OPTION;

  LOGLevelRangeFilter();
  /// Throws ZEBAssertError for a null event, or one without level, when a bound is set.
  int decide(LOGLoggingEvent* event) override;
  LOGObject* clone() const override;

  // The levels are not owned; null takes the bound away.
  LOGLevel* getLevelMin() const { return levelMin; }
  void setLevelMin(LOGLevel* level) { levelMin = level; }
  LOGLevel* getLevelMax() const { return levelMax; }
  void setLevelMax(LOGLevel* level) { levelMax = level; }
  /// 1 accepts events inside the range, 0 (the default) is neutral on them.
  int getAcceptOnMatch() const { return acceptOnMatch; }
  void setAcceptOnMatch(int accept) { acceptOnMatch = accept; }

  ZEBList<I18NString> getOptionStrings() const;
  /// Deliberate: "LevelMin" sets the lower bound, "LevelMax" the truth value of accepting, and
  /// every other name, "AcceptOnMatch" included, the upper bound.
  void setOption(const I18NString& option, const I18NString& value);

 protected:
  int acceptOnMatch = 0;
  LOGLevel* levelMin = nullptr;
  LOGLevel* levelMax = nullptr;
};

#endif
