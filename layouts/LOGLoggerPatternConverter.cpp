#include "layouts/LOGLoggerPatternConverter.h"

#include "core/LOGLoggingEvent.h"

LOGLoggerPatternConverter::LOGLoggerPatternConverter(LOGFormattingInfo* formattingInfo,
                                                     int precision)
    : LOGNamedPatternConverter(formattingInfo, precision) {}

const I18NString& LOGLoggerPatternConverter::getFullyQualifiedName(LOGLoggingEvent* event) {
  return event->getLoggerName();
}

LOGEventPart LOGLoggerPatternConverter::part() const {
  return isWhole() ? LOGEventPart::LOGGER_NAME : LOGEventPart::NONE;
}
