#ifndef TOOLS_CHECKJSONREPORT_H
#define TOOLS_CHECKJSONREPORT_H

#include <string>

#include "tools/CheckFindings.h"
#include "tools/CheckSummary.h"

/// Tells programs what was found and what a document will do, as one JSON object.
class CheckJsonReport {
 public:
  /// Without a summary, loggers and appenders are left out. The text ends with a line end.
  static std::string make(const std::string& fileName, const CheckFindings& findings, int exitCode,
                          const CheckSummary* summary);
};

#endif
