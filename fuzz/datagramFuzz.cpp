// Datagrams that anyone may have sent, as `log4zeb listen` reads and prints them.
//
// Expected beyond not failing: a printed line is UTF-8 without control characters, and as JSON an
// object whose message is exactly what came.

#include <algorithm>
#include <map>
#include <string>
#include <string_view>

#include "platform/I18NString.h"
#include "posix/Iconv.h"
#include "support/Expect.h"
#include "tools/DatagramLine.h"
#include "tools/RecordDecoder.h"
#include "tools/SyslogDecoder.h"

namespace {

constexpr const char* SENDER = "127.0.0.1:514";

using Members = std::map<std::string, std::string>;

/// Reads a flat JSON object of strings, numbers and null, and stops at what is none.
class JsonReader {
 public:
  static Members read(std::string_view json) {
    JsonReader reader(json);
    return reader.object();
  }

 private:
  explicit JsonReader(std::string_view json) : m_rest(json) {}

  char next() {
    expect(!m_rest.empty(), "JSON is complete");
    const char c = m_rest.front();
    m_rest.remove_prefix(1);
    return c;
  }
  void skip(char expected) { expect(next() == expected, "JSON has its punctuation"); }

  Members object() {
    Members members;
    skip('{');
    for (char separator = ','; separator == ',';) {
      const std::string name = string();
      skip(':');
      members[name] = m_rest.front() == '"' ? string() : word();
      separator = next();
      expect(separator == ',' || separator == '}', "members are separated");
    }
    expect(m_rest.empty(), "an object is all of the line");
    return members;
  }

  std::string word() {
    const std::size_t end = std::min(m_rest.find_first_of(",}"), m_rest.size());
    std::string taken(m_rest.substr(0, end));
    m_rest.remove_prefix(end);
    expect(taken == "null" || (!taken.empty() && taken.size() <= 3 &&
                               taken.find_first_not_of("0123456789") == std::string::npos),
           "a value is null or a number");
    return taken;
  }

  std::string string() {
    std::string text;
    skip('"');
    for (char c = next(); c != '"'; c = next()) {
      expect(static_cast<unsigned char>(c) >= ' ', "a string has no control characters");
      text += c == '\\' ? escaped() : c;
    }
    return text;
  }

  char escaped() {
    const char kind = next();
    if (kind == 'u') {
      const std::string digits{next(), next(), next(), next()};
      return static_cast<char>(std::stoi(digits, nullptr, 16));
    }
    constexpr std::string_view KINDS = "\"\\/bfnrt";
    constexpr std::string_view MEANINGS = "\"\\/\b\f\n\r\t";
    const std::size_t found = KINDS.find(kind);
    expect(found != std::string_view::npos, "an escape is one of JSON's");
    return MEANINGS[found];
  }

  std::string_view m_rest;
};

void expectUtf8(const std::string& line) {
  static const Iconv converter("UTF-16LE", "UTF-8");
  expect(converter.convert(line).taken == line.size(), "a line is UTF-8");
}

void expectPrintable(const std::string& line) {
  expectUtf8(line);
  for (const char16_t unit : I18NString(line).toUtf16()) {
    expect(unit >= u' ' && (unit < 0x7F || unit > 0x9F), "a line has no control characters");
  }
}

Members readJson(const std::string& line) {
  expectUtf8(line);
  return JsonReader::read(line);
}

void tryRecord(std::string_view bytes) {
  expectPrintable(DatagramLine::ofRecord(bytes, SENDER, DatagramLine::Form::Text));
  const Members members = readJson(DatagramLine::ofRecord(bytes, SENDER, DatagramLine::Form::Json));
  const auto record = RecordDecoder::decode(bytes);
  expect(members.at("kind") == (record ? "record" : "unreadable"), "the kind is told");
  if (record) {
    expect(members.at("logger") == record->logger && members.at("class") == record->className,
           "the logger is told");
    expect(record->message ? members.at("message") == *record->message
                           : members.at("content").size() == 2 * record->content.size(),
           "the message is told");
  } else {
    expect(members.at("content").size() == 2 * bytes.size(), "what cannot be read is shown");
  }
}

void trySyslog(std::string_view bytes) {
  expectPrintable(DatagramLine::ofSyslog(bytes, SENDER, DatagramLine::Form::Text));
  const Members members = readJson(DatagramLine::ofSyslog(bytes, SENDER, DatagramLine::Form::Json));
  const SyslogDecoder::Message message = SyslogDecoder::decode(bytes);
  expect(members.at("message") == message.text, "the message is told");
  expect(members.at("priority") == (message.priority ? std::to_string(*message.priority) : "null"),
         "the priority is told");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  tryRecord(bytes);
  trySyslog(bytes);
  return 0;
}
