#ifndef SOAK_SOAKDOCUMENT_H
#define SOAK_SOAKDOCUMENT_H

#include <string>

#include "soak/SoakRandom.h"

/// The configuration document of the soak, which describes every appender and layout that there is.
/// Each edit differs in levels, threshold and patterns; where appenders write never changes.
struct SoakDocument {
  static constexpr const char* FILE = "soak.xml";
  static constexpr unsigned LEVEL_COUNT = 5;
  /// Levels at which ERROR and FATAL are logged.
  static const char* const LEVELS[LEVEL_COUNT];

  /// An address of this machine that no other process uses for its daemon.
  static std::string syslogHost();
  /// The appenders of "soak.even" are shared between it and the root; "soak.odd" has all of them.
  static std::string text(int recordPort, SoakRandom& random);
  /// Puts a text in the place of the document, in one step.
  static void replace(const std::string& text);
};

#endif
