#include "appenders/LOGAppenderSkeleton.h"

#include <utility>

#include "appenders/LOGAppenderClaim.h"
#include "core/LOGCallScope.h"
#include "core/LOGFailures.h"
#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "filters/LOGFilter.h"
#include "layouts/LOGLayout.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBThreadInlineGuard.h"

namespace {

constexpr const char* SOURCE = "LOGAppenderSkeleton";

}  // namespace

LOGAppenderSkeleton::LOGAppenderSkeleton() { instance(SOURCE); }

LOGAppenderSkeleton::LOGAppenderSkeleton(const LOGAppenderSkeleton& other)
    : LOGMutex(other),
      LOGAppender(other),
      LOGObject(other),
      m_name(other.m_name),
      m_closed(other.m_closed.load()),
      m_tailFilter(other.m_tailFilter),
      m_headFilter(other.m_headFilter),
      m_errorHandler(other.cloneOfErrorHandler()),
      m_layout(other.m_layout),
      m_threshold(other.m_threshold),
      m_stale(other.m_stale.load()),
      m_closeRequested(other.m_closeRequested.load()) {}

LOGAppenderSkeleton& LOGAppenderSkeleton::operator=(const LOGAppenderSkeleton& other) {
  if (this != &other) {
    m_errorHandler = other.cloneOfErrorHandler();
    LOGObject::operator=(other);
    m_name = other.m_name;
    m_closed = other.m_closed.load();
    m_tailFilter = other.m_tailFilter;
    m_headFilter = other.m_headFilter;
    m_layout = other.m_layout;
    m_threshold = other.m_threshold;
    m_stale = other.m_stale.load();
    m_closeRequested = other.m_closeRequested.load();
  }
  return *this;
}

LOGAppenderSkeleton::~LOGAppenderSkeleton() { LOGAppenderClaim::revoke(this); }

std::unique_ptr<LOGErrorHandler> LOGAppenderSkeleton::cloneOfErrorHandler() const {
  return std::unique_ptr<LOGErrorHandler>(
      m_errorHandler == nullptr ? nullptr : static_cast<LOGErrorHandler*>(m_errorHandler->clone()));
}

void LOGAppenderSkeleton::finalize() {
  if (m_closed != 1) {
    close();
  }
}

void LOGAppenderSkeleton::reportClosed() const {
  LOGLogLog::error("Attempted to append to closed appender named [" + m_name + "].");
}

LOG4ZEB_HOT void LOGAppenderSkeleton::doAppend(LOGLoggingEvent* event) {
  if (isClosedToAll()) {
    reportClosed();
    return;
  }
  ZEB_ASSERT(event, SOURCE, 203);
  static constexpr LOGFailureTexts TEXTS{
      "LOGAppenderSkeleton::doAppend -- RunTime Error in I18NString",
      "LOGAppenderSkeleton::doAppend -- ZEB Exception occured",
      "LOGAppenderSkeleton::doAppend -- An Exception occured"};
  logReportingFailures(TEXTS, [&]() LOG4ZEB_INLINE {
    if (LOGCallScope::outermost() == nullptr) {  // the program itself appends
      const LOGCallScope call;                   // ends after the lock
      appendLocked(event);
    } else {
      appendLocked(event);
    }
  });
}

LOG4ZEB_HOT inline void LOGAppenderSkeleton::appendLocked(LOGLoggingEvent* event) {
  const ZEBThreadInlineGuard guard(getCriticalSection());
  if (m_closed == 1) {
    reportClosed();
  } else if (isAsSevereAsThreshold(event->getLevel()) != 0 && filtersLetPass(event)) {
    append(event);
  }
}

bool LOGAppenderSkeleton::filtersLetPass(LOGLoggingEvent* event) const {
  LOGFilter* filter = m_headFilter;
  while (filter != nullptr) {
    const int decision = filter->decide(event);
    if (decision == LOGFilter::m_DENY) {
      return false;
    }
    if (decision == LOGFilter::m_ACCEPT) {
      return true;
    }
    // A filter that answers with none of the three constants is asked again, for ever: there is no
    // default, on purpose.
    if (decision == LOGFilter::m_NEUTRAL) {
      filter = filter->next;
    }
  }
  return true;
}

int LOGAppenderSkeleton::isAsSevereAsThreshold(const LOGLevel* level) const {
  const LOGLevel* const threshold = m_threshold;
  if (threshold == nullptr) {
    return 1;
  }
  return threshold->isGreaterOrEqual(level);
}

void LOGAppenderSkeleton::addFilter(LOGFilter* newFilter) {
  if (m_headFilter == nullptr) {
    m_tailFilter = newFilter;
    m_headFilter = newFilter;
    return;
  }
  ZEB_ASSERT(m_tailFilter, SOURCE, 162);
  m_tailFilter->next = newFilter;
  m_tailFilter = newFilter;
}

void LOGAppenderSkeleton::clearFilters() {
  m_headFilter = nullptr;
  m_tailFilter = nullptr;
}

void LOGAppenderSkeleton::setErrorHandler(LOGErrorHandler* errorHandler) {
  logReportingFailures(
      LOGFailureTexts::same("LOGAppenderSkeleton::setErrorHandler -- unable to lock mutex"), [&] {
        const ZEBThreadGuard guard(getCriticalSection());
        if (errorHandler != nullptr && errorHandler != m_errorHandler.get()) {
          exchangeErrorHandler(std::unique_ptr<LOGErrorHandler>(errorHandler));
        }
      });
}

void LOGAppenderSkeleton::setLayout(LOGLayout* layout) {
  if (layout != nullptr) {
    m_layout = layout;
  }
}

LOGObject* LOGAppenderSkeleton::clone() const {
  ZEBAssertError::fail(
      "ZEB_ASSERT_NAMED(FALSE, \"Unable to clone LOGAppenderSkeleton + derived objects.\");",
      SOURCE, 336);
}

int LOGAppenderSkeleton::operator==(const LOGAppenderSkeleton& other) const {
  if (this == &other) {
    return 1;  // also while another thread opens or closes it
  }
  return LOGObject::operator==(other) != 0 && m_name == other.m_name &&
                 m_closed == other.m_closed && m_layout == other.m_layout &&
                 m_headFilter == other.m_headFilter && m_tailFilter == other.m_tailFilter &&
                 m_threshold == other.m_threshold && hasEqualErrorHandler(other)
             ? 1
             : 0;
}

std::unique_ptr<LOGErrorHandler> LOGAppenderSkeleton::exchangeErrorHandler(
    std::unique_ptr<LOGErrorHandler> handler) {
  const ZEBThreadGuard guard(m_errorHandlerAccess);
  std::unique_ptr<LOGErrorHandler> replaced = std::move(m_errorHandler);
  m_errorHandler = std::move(handler);
  return replaced;
}

bool LOGAppenderSkeleton::hasEqualErrorHandler(const LOGAppenderSkeleton& other) const {
  const auto identityOf = [](const LOGAppenderSkeleton& appender) {
    const ZEBThreadGuard guard(appender.m_errorHandlerAccess);
    const LOGErrorHandler* const handler = appender.m_errorHandler.get();
    return std::make_pair(handler != nullptr,
                          handler == nullptr ? LOGObject() : LOGObject(*handler));
  };
  const auto own = identityOf(*this);
  const auto others = identityOf(other);
  return own.first == others.first && (own.second == others.second) != 0;
}

int LOGAppenderSkeleton::operator==(const LOGObject& other) const {
  const auto* const appender = dynamic_cast<const LOGAppenderSkeleton*>(&other);
  return appender != nullptr && *this == *appender ? 1 : 0;
}

int LOGAppenderSkeleton::operator!=(const LOGObject& other) const { return *this == other ? 0 : 1; }

I18NString LOGAppenderSkeleton::format(LOGLayout& layout, LOGLoggingEvent* event) {
  I18NString text;
  format(layout, event, text);
  return text;
}

LOG4ZEB_HOT void LOGAppenderSkeleton::format(LOGLayout& layout, LOGLoggingEvent* event,
                                             I18NString& text) {
  const ZEBThreadInlineGuard guard(layout.getCriticalSection());
  const unsigned memoryFailures = logMemoryFailures();
  layout.formatInto(text, event);
  logRequireMemorySince(memoryFailures);  // half a line is worse than none
}
