#ifndef LAYOUTS_LOGFORMATTINGINFO_H
#define LAYOUTS_LOGFORMATTINGINFO_H

#include <atomic>

#include "platform/LOG4ZEBExport.h"

/// The widths and the alignment that a pattern parser reads from a specifier.
/// Deliberate: all objects share one set of fields; the parser's lock keeps parses apart.
class LOG4ZEB_EXPORT LOGFormattingInfo {
 public:
  /// No widths, aligned to the right.
  static void reset();
  /// Writes the fields to the diagnostics.
  static void dump();

  /// The minimum width; below 1 there is none.
  static std::atomic<int> m_min;
  /// The maximum width; 2147483647 is none.
  static std::atomic<int> m_max;
  /// 1 pads on the right, 0 on the left.
  static std::atomic<int> m_leftAlign;
};

#endif
