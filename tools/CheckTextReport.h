#ifndef TOOLS_CHECKTEXTREPORT_H
#define TOOLS_CHECKTEXTREPORT_H

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/CheckFindings.h"

/// Tells people what was found and what a document will do. With colours it uses the escape
/// sequences of terminals.
class CheckTextReport {
 public:
  CheckTextReport(std::ostream& out, bool hasColours) : m_out(out), m_hasColours(hasColours) {}

  void write(const std::string& fileName, const CheckFindings& findings);
  /// The members of a CheckSummary.
  void write(const nlohmann::ordered_json& summary);

 private:
  enum class Style { Bold, Warning, Error, Quiet };

  std::string styled(Style style, const std::string& text) const;
  void writeLogger(const nlohmann::ordered_json& logger);
  void writeAppender(const nlohmann::ordered_json& appender);
  /// Nothing for null.
  void writeField(const char* name, const nlohmann::ordered_json& text);

  std::ostream& m_out;
  const bool m_hasColours;
};

#endif
