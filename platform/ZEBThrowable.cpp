#include "platform/ZEBThrowable.h"

ZEBThrowable::ZEBThrowable(const I18NString& description, const char* source, int line)
    : m_description(description),
      m_what(description.toStdString()),
      m_source(source),
      m_line(line) {}

ZEBThrowable::ZEBThrowable(const ZEBThrowable&) = default;
ZEBThrowable& ZEBThrowable::operator=(const ZEBThrowable&) = default;
ZEBThrowable::~ZEBThrowable() = default;

void ZEBThrowable::addBackTrace(const char* tag, const char* source, int line) noexcept {
  try {
    m_backTrace.push_back({tag, source, line});
  } catch (const std::exception&) {
    // An entry is not worth a second failure.
  }
}

void ZEBThrowable::raise() const { throw *this; }
