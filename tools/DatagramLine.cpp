#include "tools/DatagramLine.h"

#include <nlohmann/json.hpp>

#include "tools/RecordDecoder.h"
#include "tools/SyslogDecoder.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* HEX_DIGITS = "0123456789abcdef";
constexpr std::string_view SHORTLY_ESCAPED = "\n\r\t";
constexpr char DELETE = '\x7F';
// The control characters from U+0080 to U+009F are this byte and one up to that.
constexpr unsigned char C1_LEAD = 0xC2;
constexpr unsigned char C1_LAST = 0x9F;

std::string hex(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += HEX_DIGITS[byte >> 4];
    text += HEX_DIGITS[byte & 0x0F];
  }
  return text;
}

/// UTF-8 with control characters escaped and the line end at its end left out.
std::string readable(std::string_view text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
    text.remove_suffix(1);
  }
  std::string line;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
    if (const std::size_t escape = SHORTLY_ESCAPED.find(text[i]); escape != std::string::npos) {
      line += {'\\', "nrt"[escape]};
    } else if (byte < ' ' || byte == DELETE) {
      line += "\\x" + hex(text.substr(i, 1));
    } else if (byte == C1_LEAD && next <= C1_LAST) {
      line += "\\x" + hex(text.substr(++i, 1));
    } else {
      line += text[i];
    }
  }
  return line;
}

std::string textOf(const RecordDecoder::Record& record) {
  const std::string from = "record " + readable(record.logger);
  if (!record.message) {
    return from + " (" + readable(record.className) +
           "): " + std::to_string(record.content.size()) + " bytes: " + hex(record.content);
  }
  return from + ": " + readable(*record.message);
}

/// An object on one line. Bytes that are no UTF-8, and there should be none, become U+FFFD.
std::string lineOf(const Json& object) {
  std::string line = object.dump(-1, ' ', false, Json::error_handler_t::replace);
  // JSON lets it be, a terminal acts on it.
  for (std::size_t at; (at = line.find(DELETE)) != std::string::npos;) {
    line.replace(at, 1, "\\u007f");
  }
  return line;
}

}  // namespace

std::string DatagramLine::ofRecord(std::string_view bytes, const std::string& sender, Form form) {
  const auto record = RecordDecoder::decode(bytes);
  if (form == Form::Text) {
    return record
               ? textOf(*record)
               : "unreadable datagram of " + std::to_string(bytes.size()) + " bytes from " + sender;
  }
  if (!record) {
    return lineOf({{"kind", "unreadable"}, {"from", sender}, {"content", hex(bytes)}});
  }
  Json object{{"kind", "record"},
              {"from", sender},
              {"logger", record->logger},
              {"class", record->className}};
  if (record->message) {
    object["message"] = *record->message;
  } else {
    object["content"] = hex(record->content);
  }
  return lineOf(object);
}

std::string DatagramLine::ofSyslog(std::string_view bytes, const std::string& sender, Form form) {
  const SyslogDecoder::Message message = SyslogDecoder::decode(bytes);
  if (form == Form::Text) {
    return "syslog " +
           (message.priority ? SyslogDecoder::facilityAndSeverity(*message.priority)
                             : "without priority") +
           ": " + readable(message.text);
  }
  Json object{{"kind", "syslog"}, {"from", sender}, {"priority", nullptr}};
  if (message.priority) {
    object["priority"] = *message.priority;
    object["facility"] = SyslogDecoder::facility(*message.priority);
    object["severity"] = SyslogDecoder::severity(*message.priority);
  }
  object["message"] = message.text;
  return lineOf(object);
}
