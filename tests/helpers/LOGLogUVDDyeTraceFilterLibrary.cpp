// A library that a document loads for the dye-trace filter. It hands out one filter again and
// again, which denies what is not dyed.

#include <memory>

#include "core/LOGLoggingEvent.h"
#include "filters/LOGFilter.h"

namespace {

class DyeTraceFilter : public LOGFilter {
 public:
  DyeTraceFilter() { instance("LOGLogUVDDyeTraceFilter"); }
  int decide(LOGLoggingEvent* event) override {
    const std::unique_ptr<I18NString> message(event->getRenderedMessage());
    return message != nullptr && message->startsWith("dyed") ? m_NEUTRAL : m_DENY;
  }
};

}  // namespace

extern "C" LOG4ZEB_LIBRARY_EXPORT LOGFilter* getUVDDyeTraceFilter() {
  static LOGFilter* const filter = new DyeTraceFilter;
  return filter;
}
