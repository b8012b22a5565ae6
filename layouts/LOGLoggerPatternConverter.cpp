#include "layouts/LOGLoggerPatternConverter.h"

#include "core/LOGLoggingEvent.h"

LOGLoggerPatternConverter::LOGLoggerPatternConverter(LOGFormattingInfo* formattingInfo,
                                                     int precision)
    : LOGNamedPatternConverter(formattingInfo, precision) {}

LOG4ZEB_HOT const I18NString& LOGLoggerPatternConverter::getFullyQualifiedName(
    LOGLoggingEvent* event) {
  return event->getLoggerName();
}
