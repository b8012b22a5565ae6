#ifndef SOAK_SOAKLINE_H
#define SOAK_SOAKLINE_H

#include <optional>
#include <string>
#include <string_view>

/// A message of the soak: it says who logged it and as the how-manieth, and its whole text follows
/// from that, so that a reader sees whether all of it is there.
struct SoakLine {
  int source = 0;
  long number = 0;

  std::string text() const;
  /// The one message in a record; nothing when there is none, a torn one, or more than one.
  static std::optional<SoakLine> in(std::string_view record);
};

#endif
