#ifndef TOOLS_CHECKTEXTREPORT_H
#define TOOLS_CHECKTEXTREPORT_H

#include <iosfwd>
#include <string>

#include "tools/CheckFindings.h"
#include "tools/CheckSummary.h"

/// Tells people what was found and what a document will do. With colours it uses the escape
/// sequences of terminals.
class CheckTextReport {
 public:
  CheckTextReport(std::ostream& out, bool hasColours) : m_out(out), m_hasColours(hasColours) {}

  void write(const std::string& fileName, const CheckFindings& findings);
  void write(const CheckSummary& summary);

 private:
  enum class Style { Bold, Warning, Error, Quiet };

  std::string styled(Style style, const std::string& text) const;
  void writeLogger(const CheckSummary::Logger& logger);
  void writeAppender(const CheckSummary::Appender& appender);
  void writeField(const char* name, const std::string& text);

  std::ostream& m_out;
  const bool m_hasColours;
};

#endif
