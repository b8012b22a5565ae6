#ifndef LIBRARY_SCALE_H
#define LIBRARY_SCALE_H

#include <string>

#include "log4zeb.h"

/// A part of a library that logs: it asks for a logger and leaves everything else to the program,
/// also whether anybody reads it.
class Scale {
 public:
  /// In grams.
  static constexpr int HEAVIEST = 31500;

  void weigh(const std::string& parcel, int grams);

 private:
  LOGLogger* const m_logger = LOGManager::getLogger("parcels.scale");
};

#endif
