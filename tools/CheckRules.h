#ifndef TOOLS_CHECKRULES_H
#define TOOLS_CHECKRULES_H

#include <string>

#include "tools/CheckFindings.h"
#include "tools/CheckRehearsal.h"

/// The rules of `log4zeb check`, in sets of which each has a source file. A set adds what it finds
/// in a document to the findings.
class CheckRules {
 public:
  /// Returns false when the document cannot be used at all; the finding tells why.
  static bool checkRoot(CheckFindings& findings);
  /// What a document says in vain by its elements, attributes and names: what the library skips
  /// without a message, reads in another way than it looks, or refers to without finding it.
  static void checkStructure(CheckFindings& findings);
  /// What is wrong with single components: classes that are not known, layouts that are missing or
  /// do not suit the appender, appenders and handlers that do nothing, and odd params.
  static void checkComponents(CheckFindings& findings);
  /// Params that an appender, layout or filter does not read, values that mean something else than
  /// they seem to, and what is odd in conversion patterns.
  static void checkParams(const CheckElement& component, CheckFindings& findings);
  /// Says that the class does not read the param.
  static void warnOfIgnored(const CheckElement& param, const std::string& className,
                            CheckFindings& findings);
  /// Log files that cannot be written, that have another name than it seems, or that appenders take
  /// from each other. Nothing is opened. `directory` is the one that the program will run in.
  static void checkFiles(const std::string& directory, CheckFindings& findings);
  /// What only shows when the document's parts are seen together: events that arrive nowhere or
  /// twice, filters that decide nothing, levels below the threshold, widths of one pattern that are
  /// those of all. Looks at what the other sets have found.
  static void checkDelivery(const CheckRehearsal& rehearsal, CheckFindings& findings);
};

#endif
