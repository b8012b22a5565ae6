#ifndef FUZZ_SUPPORT_PATTERNWIDTHS_H
#define FUZZ_SUPPORT_PATTERNWIDTHS_H

#include <algorithm>

#include "layouts/LOGPatternConverter.h"

/// Reaches the widths that all converters of conversion patterns share.
class PatternWidths : public LOGPatternConverter {
 public:
  /// A pattern may ask for gigabytes of blanks and gets them. That is its business, but would end
  /// the fuzzer.
  static void limit() { m_min = std::min(m_min.load(), LARGEST_MINIMUM); }
  static long minimum() { return m_min; }
  static long maximum() { return m_max; }

 private:
  static constexpr int LARGEST_MINIMUM = 4096;
};

#endif
