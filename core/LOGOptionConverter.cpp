#include "core/LOGOptionConverter.h"

#include "core/LOGLevel.h"
#include "core/LOGLogLog.h"
#include "platform/I18NLocale.h"

// NOLINTNEXTLINE(performance-unnecessary-value-param): so is the published interface
int LOGOptionConverter::toBoolean(I18NString value, int defaultValue) {
  const I18NLocale locale;
  if (locale.compareIgnoreCase(value, "TRUE") == 0) {
    return 1;
  }
  if (locale.compareIgnoreCase(value, "FALSE") == 0) {
    return 0;
  }
  return defaultValue;
}

LOGLevel* LOGOptionConverter::toLevel(const I18NString& value, LOGLevel* defaultLevel) {
  if (value.isEmpty()) {
    return defaultLevel;
  }
  // The look-up with a default finds only levels that exist; this makes them exist.
  LOGLevel::toLevel(LOGLevel::DEBUG_RANK);
  const I18NLocale locale;
  const long hash = value.lastIndexOf("#");
  if (hash == I18NString::NOT_FOUND) {
    return locale.compareIgnoreCase(value, "NULL") == 0 ? nullptr
                                                        : LOGLevel::toLevel(value, defaultLevel);
  }
  const auto position = static_cast<std::size_t>(hash);
  const I18NString className = value.substring(position + 1);
  const I18NString levelName = value.substring(0, position);
  if (locale.compareIgnoreCase(levelName, "NULL") == 0) {
    return nullptr;
  }
  LOGLogLog::debug("toLevel:class=[" + className + "]:pri=[" + levelName + "]");
  return className == "LOGLevel" ? LOGLevel::toLevel(levelName) : nullptr;
}
