#include "tools/SyslogDecoder.h"

#include <algorithm>

#include "net/LOGSyslogAppender.h"
#include "platform/I18NString.h"

namespace {

constexpr int SEVERITIES = 8;
constexpr int MAXIMUM_PRIORITY = 191;
constexpr std::size_t MAXIMUM_DIGITS = 3;

constexpr const char* SEVERITY_NAMES[SEVERITIES] = {"emerg",   "alert",  "crit", "err",
                                                    "warning", "notice", "info", "debug"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

SyslogDecoder::Message SyslogDecoder::decode(std::string_view bytes) {
  Message message;
  const std::size_t end = bytes.substr(0, MAXIMUM_DIGITS + 2).find('>');
  if (!bytes.empty() && bytes.front() == '<' && end != std::string_view::npos && end > 1) {
    const std::string digits(bytes.substr(1, end - 1));
    if (std::all_of(digits.begin(), digits.end(), isDigit) &&
        std::stoi(digits) <= MAXIMUM_PRIORITY) {
      message.priority = std::stoi(digits);
      bytes.remove_prefix(end + 1);
    }
  }
  message.text = I18NString::fromUtf8(bytes).toStdString();
  return message;
}

std::string SyslogDecoder::facility(int priority) {
  const int number = priority / SEVERITIES;
  const std::string name = LOGSyslogAppender::getFacilityString(number * SEVERITIES).toStdString();
  return name.empty() ? std::to_string(number) : name;
}

std::string SyslogDecoder::severity(int priority) { return SEVERITY_NAMES[priority % SEVERITIES]; }

std::string SyslogDecoder::facilityAndSeverity(int priority) {
  return facility(priority) + "." + severity(priority);
}
