#include "appenders/LOGWriterAppender.h"

#include <utility>

#include "appenders/LOGQuietWriter.h"
#include "core/LOGFailures.h"
#include "platform/ZEBThreadGuard.h"

LOGWriterAppender::LOGWriterAppender() { instance("LOGWriterAppender"); }

LOGWriterAppender::LOGWriterAppender(const LOGWriterAppender& other)
    : LOGAppenderSkeleton(other),
      immediateFlush(other.immediateFlush.load()),
      encoding(other.encoding) {
  m_closeRequested = false;  // the copy has a destination of its own, not opened yet
}

LOGWriterAppender::~LOGWriterAppender() = default;

LOG4ZEB_HOT void LOGWriterAppender::append(LOGLoggingEvent* event) {
  if (checkEntryConditions() != 0) {
    subappend(event);
  }
}

void LOGWriterAppender::close() {
  logReportingFailures(LOGFailureTexts::same("LOGWriterAppender::close -- unable to lock mutex"),
                       [this] {
                         const ZEBThreadGuard guard(getCriticalSection());
                         m_closeRequested = true;
                         if (m_closed.exchange(1) != 1) {
                           resetWriter();
                         }
                       });
}

void LOGWriterAppender::setWriter(LOGQuietWriter* writer) {
  logReportingFailures(
      LOGFailureTexts::same("LOGWriterAppender::setWriter -- unable to lock mutex"), [&] {
        const ZEBThreadGuard guard(getCriticalSection());
        resetWriter();
        LOGQuietWriter* const replaced = std::exchange(m_qw, writer);
        if (replaced != writer) {
          delete replaced;
        }
      });
}

void LOGWriterAppender::setErrorHandler(LOGErrorHandler* eh) {
  logReportingFailures(
      LOGFailureTexts::same("LOGWriterAppender::setErrorHandler -- unable to lock mutex"), [&] {
        const ZEBThreadGuard guard(getCriticalSection());
        if (eh == nullptr) {
          return;
        }
        takeIntoUse(eh);
        if (m_qw != nullptr) {
          m_qw->setErrorHandler(eh);
        }
      });
}

void LOGWriterAppender::takeIntoUse(LOGErrorHandler* handler) {
  if (handler == m_errorHandler) {
    return;
  }
  for (auto& replaced : m_replacedErrorHandlers) {
    if (replaced.get() == handler) {
      replaced = exchangeErrorHandler(std::move(replaced));
      return;
    }
  }
  std::unique_ptr<LOGErrorHandler> owned(handler);  // from here on, whatever fails
  m_replacedErrorHandlers.emplace_back();
  m_replacedErrorHandlers.back() = exchangeErrorHandler(std::move(owned));
}
