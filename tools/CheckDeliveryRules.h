#ifndef TOOLS_CHECKDELIVERYRULES_H
#define TOOLS_CHECKDELIVERYRULES_H

#include <string>
#include <vector>

#include "tools/CheckFindings.h"
#include "tools/CheckRehearsal.h"
#include "tools/CheckedDocument.h"

/// Finds what only shows when the document's parts are seen together: events that arrive nowhere or
/// twice, filters that decide nothing, levels below the threshold, widths of one pattern that are
/// those of all.
class CheckDeliveryRules {
 public:
  CheckDeliveryRules(const CheckedDocument& document, const CheckRehearsal& rehearsal,
                     CheckFindings& findings)
      : m_document(document), m_rehearsal(rehearsal), m_findings(findings) {}

  void checkAll();

 private:
  using Logger = CheckRehearsal::Logger;
  using Appender = CheckRehearsal::Appender;

  void checkLoggersWithoutAppender();
  void checkThreshold(const Logger& logger);
  bool arrivesTwice(const Logger& logger, const LOGAppenderSkeleton* appender) const;
  void checkDuplicates(const Logger& logger);
  void checkCircles();
  void checkLeftOut(const ZEBIDOM_Element& holder, const std::set<std::string>& built);
  void checkFilters(const Appender& appender);
  bool checkFilter(const Appender& appender, std::size_t index, const ZEBIDOM_Element& element,
                   std::vector<std::string>& arriving);
  bool checkMatch(const Appender& appender, std::size_t index, const ZEBIDOM_Element& element,
                  std::vector<std::string>& arriving);
  bool hasReportedParam(const ZEBIDOM_Element& filter) const;
  bool passesTheRest(const Appender& appender, std::size_t index, const std::string& level) const;
  void checkReached();
  void checkWidths();

  const CheckedDocument& m_document;
  const CheckRehearsal& m_rehearsal;
  CheckFindings& m_findings;
};

#endif
