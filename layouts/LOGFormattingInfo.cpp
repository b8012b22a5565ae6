#include "layouts/LOGFormattingInfo.h"

#include <limits>

#include "core/LOGLogLog.h"
#include "platform/ZEBUtConvert.h"

constexpr int NO_MINIMUM = -1;
constexpr int NO_MAXIMUM = std::numeric_limits<int>::max();

std::atomic<int> LOGFormattingInfo::m_min{NO_MINIMUM};
std::atomic<int> LOGFormattingInfo::m_max{NO_MAXIMUM};
std::atomic<int> LOGFormattingInfo::m_leftAlign{1};

void LOGFormattingInfo::reset() {
  m_min = NO_MINIMUM;
  m_max = NO_MAXIMUM;
  m_leftAlign = 0;
}

void LOGFormattingInfo::dump() {
  LOGLogLog::debug("min=" + ZEBUtConvert::handleCvt(m_min) +
                   ", max=" + ZEBUtConvert::handleCvt(m_max) +
                   ", m_leftAlign=" + (m_leftAlign != 0 ? "TRUE" : "FALSE"));
}
