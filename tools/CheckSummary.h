#ifndef TOOLS_CHECKSUMMARY_H
#define TOOLS_CHECKSUMMARY_H

#include <nlohmann/json_fwd.hpp>

#include "tools/CheckRehearsal.h"

/// What a document will do, as the members of the JSON report: the threshold, the loggers with
/// their levels and where their events go, and the appenders. docs/check.md has them all.
class CheckSummary {
 public:
  static nlohmann::ordered_json of(const CheckedDocument& document,
                                   const CheckRehearsal& rehearsal);
};

#endif
