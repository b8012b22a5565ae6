#include "tools/DatagramLine.h"

#include <initializer_list>
#include <utility>

#include "tools/RecordDecoder.h"
#include "tools/SyslogDecoder.h"

namespace {

constexpr const char* HEX_DIGITS = "0123456789abcdef";
constexpr unsigned char DELETE = 0x7F;
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

/// The escape for a character that has a short one, or null.
const char* shortEscape(char c) {
  switch (c) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return nullptr;
  }
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
    if (const char* const escape = shortEscape(text[i])) {
      line += escape;
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

std::string quoted(std::string_view text) {
  std::string json = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (const char* const escape = shortEscape(c)) {
      json += escape;
    } else if (c == '"' || c == '\\') {
      json += '\\';
      json += c;
    } else if (byte < ' ' || byte == DELETE) {
      json += "\\u00" + hex(std::string_view(&c, 1));
    } else {
      json += c;
    }
  }
  return json + '"';
}

/// A JSON object of the members, whose values are JSON already.
std::string object(std::initializer_list<std::pair<const char*, std::string>> members) {
  std::string json;
  for (const auto& [name, value] : members) {
    json += (json.empty() ? "{" : ",") + quoted(name) + ":" + value;
  }
  return json + "}";
}

std::string textOf(const RecordDecoder::Record& record) {
  const std::string from = "record " + readable(record.logger);
  if (!record.message) {
    return from + " (" + readable(record.className) +
           "): " + std::to_string(record.content.size()) + " bytes: " + hex(record.content);
  }
  return from + ": " + readable(*record.message);
}

std::string jsonOf(const RecordDecoder::Record& record, const std::string& sender) {
  return object({{"kind", quoted("record")},
                 {"from", quoted(sender)},
                 {"logger", quoted(record.logger)},
                 {"class", quoted(record.className)},
                 record.message ? std::pair{"message", quoted(*record.message)}
                                : std::pair{"content", quoted(hex(record.content))}});
}

}  // namespace

std::string DatagramLine::ofRecord(std::string_view bytes, const std::string& sender, Form form) {
  if (const auto record = RecordDecoder::decode(bytes)) {
    return form == Form::Json ? jsonOf(*record, sender) : textOf(*record);
  }
  if (form == Form::Json) {
    return object({{"kind", quoted("unreadable")},
                   {"from", quoted(sender)},
                   {"content", quoted(hex(bytes))}});
  }
  return "unreadable datagram of " + std::to_string(bytes.size()) + " bytes from " + sender;
}

std::string DatagramLine::ofSyslog(std::string_view bytes, const std::string& sender, Form form) {
  const SyslogDecoder::Message message = SyslogDecoder::decode(bytes);
  if (form == Form::Text) {
    return "syslog " +
           (message.priority ? SyslogDecoder::facilityAndSeverity(*message.priority)
                             : "without priority") +
           ": " + readable(message.text);
  }
  if (!message.priority) {
    return object({{"kind", quoted("syslog")},
                   {"from", quoted(sender)},
                   {"priority", "null"},
                   {"message", quoted(message.text)}});
  }
  return object({{"kind", quoted("syslog")},
                 {"from", quoted(sender)},
                 {"priority", std::to_string(*message.priority)},
                 {"facility", quoted(SyslogDecoder::facility(*message.priority))},
                 {"severity", quoted(SyslogDecoder::severity(*message.priority))},
                 {"message", quoted(message.text)}});
}
