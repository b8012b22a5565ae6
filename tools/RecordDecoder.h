#ifndef TOOLS_RECORDDECODER_H
#define TOOLS_RECORDDECODER_H

#include <optional>
#include <string>
#include <string_view>

/// Reads the records that the local UDP appender sends, out of bytes that anyone may have sent.
class RecordDecoder {
 public:
  /// All text is UTF-8.
  struct Record {
    std::string logger;
    std::string className;
    /// The object's content as it came, and as a text where it is exactly one.
    std::string content;
    std::optional<std::string> message;
  };

  /// Nothing when the bytes are not one whole record of this form.
  static std::optional<Record> decode(std::string_view bytes);
};

#endif
