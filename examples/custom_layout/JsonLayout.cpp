#include "JsonLayout.h"

#include <string>
#include <utility>

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"

namespace {

/// The text as a JSON string.
std::string quoted(const I18NString& text) {
  constexpr const char* DIGITS = "0123456789abcdef";
  std::string json = "\"";
  for (const char c : text.toStdString()) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20) {
      json += {'\\', 'u', '0', '0', DIGITS[byte >> 4], DIGITS[byte & 15]};
    } else {
      if (c == '"' || c == '\\') {
        json += '\\';
      }
      json += c;
    }
  }
  return json + "\"";
}

}  // namespace

JsonLayout::JsonLayout() { instance("JsonLayout"); }

const I18NString& JsonLayout::format(LOGLoggingEvent* event) {
  I18NString message;
  event->appendRenderedMessage(message);
  I18NString line = takeBuffer();
  line += "{\"time\":" + std::to_string(event->getTimeStamp());
  line += ",\"level\":" + quoted(event->getLevel()->getText());
  line += ",\"logger\":" + quoted(event->getLoggerName());
  line += ",\"context\":" + quoted(event->getNDC());
  line += ",\"message\":" + quoted(message);
  if (!event->getThrowableStrRep().isEmpty()) {
    line += ",\"exception\":" + quoted(event->getThrowableStrRep());
  }
  line += "}" + getLineSeparator();
  return keep(std::move(line));
}

const I18NString& JsonLayout::getContentType() { return keep("application/x-ndjson"); }
