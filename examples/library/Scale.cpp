#include "Scale.h"

void Scale::weigh(const std::string& parcel, int grams) {
  LOG4ZEB_INFO(m_logger, "parcel " << parcel << " weighs " << grams << " g");
  if (grams > HEAVIEST) {
    LOG4ZEB_WARN(m_logger, "parcel " << parcel << " is too heavy");
  }
}
