#ifndef TOOLS_SYSLOGDECODER_H
#define TOOLS_SYSLOGDECODER_H

#include <optional>
#include <string>
#include <string_view>

/// Reads the priority in front of a syslog datagram (RFC 3164), which anyone may have sent.
class SyslogDecoder {
 public:
  struct Message {
    /// 0 to 191; nothing when the datagram does not begin with one.
    std::optional<int> priority;
    /// What follows the priority, in UTF-8; bytes that are not UTF-8 have become U+FFFD.
    std::string text;
  };

  static Message decode(std::string_view bytes);
  /// "local3.info" or, for a facility without a name, "12.info".
  static std::string facilityAndSeverity(int priority);
  static std::string facility(int priority);
  static std::string severity(int priority);
};

#endif
