#ifndef TOOLS_DATAGRAMLINE_H
#define TOOLS_DATAGRAMLINE_H

#include <string>
#include <string_view>

/// What `log4zeb listen` prints for a datagram: one line, without its end. As text, what could
/// spoil the line or the terminal is escaped and a line end that closes the message is left out; as
/// JSON, the line is one object with the message exactly as it came.
class DatagramLine {
 public:
  enum class Form { Text, Json };

  static std::string ofRecord(std::string_view bytes, const std::string& sender, Form form);
  static std::string ofSyslog(std::string_view bytes, const std::string& sender, Form form);
};

#endif
