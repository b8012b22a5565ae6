#ifndef TOOLS_CHECKFINDING_H
#define TOOLS_CHECKFINDING_H

#include <string>

/// A place in a document, counted from 1; 0 where there is none.
struct CheckPlace {
  int line = 0;
  int column = 0;
};

/// Something in a document that is probably not what its writer meant, or, as an error, that keeps
/// the whole document from being used.
struct CheckFinding {
  enum class Severity { Warning, Error };

  Severity severity = Severity::Warning;
  std::string rule;  // a short name for programs that read the report
  CheckPlace place;
  std::string text;
  std::string instead;  // what to write; may be empty
};

#endif
