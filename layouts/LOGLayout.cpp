#include "layouts/LOGLayout.h"

#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGDateLayout.h"
#include "platform/I18NRuntimeError.h"
#include "platform/ZEBAssertError.h"

namespace {

constexpr const char* SOURCE = "LOGLayout";

/// Unlike the reporting of output failures this passes every exception on, each with its own text.
void appendMessage(I18NString& text, LOGLoggingEvent& event) {
  try {
    event.appendRenderedMessage(text);
  } catch (I18NRuntimeError& failure) {
    logReportSwallowed("LOGLayout::format -- some i18nstring exception occurred", failure);
    throw;
  } catch (ZEBThrowable& failure) {
    logReportSwallowed("LOGLayout::format -- some ZEBThrowable exception occurred", failure);
    throw;
  } catch (...) {
    logReport("LOGLayout::format -- some generic error occurred");
    throw;
  }
}

}  // namespace

LOGObject* LOGLayoutObject::clone() const {
  if (dynamic_cast<const LOGDateLayout*>(this) != nullptr) {
    ZEBAssertError::fail("ZEB_ASSERT_NAMED(FALSE, \"Unable to clone LOGDateLayout object.\");",
                         "LOGDateLayout", __LINE__);
  }
  ZEBAssertError::fail("ZEB_ASSERT_NAMED(FALSE, \"Unable to clone LOGLayout + derived objects.\");",
                       SOURCE, 116);
}

LOGLayout::LOGLayout() : m_lineSeparator("\r\n") { instance(SOURCE); }

LOGLayout::LOGLayout(const LOGLayout&) : LOGLayout() {}

LOGLayout::~LOGLayout() = default;

const I18NString& LOGLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeBuffer();
  if (event != nullptr) {
    appendMessage(text, *event);
    text.append(m_lineSeparator);
  }
  return keep(std::move(text));
}

LOG4ZEB_HOT void LOGLayout::formatInto(I18NString& text, LOGLoggingEvent* event) {
  struct Untaken {  // by a layout of the program, or one that fails
    LOGLayout& layout;
    ~Untaken() { layout.takeTarget(); }
  };
  const Untaken untaken{*this};
  text.clear();
  m_target = &text;
  const I18NString& result = format(event);
  if (&result != &text) {
    text = result;
  }
}

I18NString LOGLayout::takeBuffer() noexcept {
  I18NString text = std::move(m_buffer);
  text.clear();
  return text;
}

const I18NString& LOGLayout::keep(I18NString text) noexcept {
  m_buffer = std::move(text);
  return m_buffer;
}
