#include "layouts/LOGXMLLayout.h"

#include <cstdint>
#include <string_view>
#include <utility>

#include "core/LOGLevel.h"
#include "core/LOGLogLog.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGOptionConverter.h"
#include "layouts/LOGLocationInfo.h"
#include "platform/ZEBUtConvert.h"

using namespace std::string_view_literals;

namespace {

constexpr std::uint64_t MILLISECONDS_PER_SECOND = 1000;

I18NString millisecondsOf(const LOGLoggingEvent& event) {
  return ZEBUtConvert::handleCvt(static_cast<std::uint64_t>(event.getTimeStamp()) *
                                 MILLISECONDS_PER_SECOND);
}

}  // namespace

const I18NString LOGXMLLayout::LOCATION_INFO_OPTION = "LocationInfo";

LOGXMLLayout::LOGXMLLayout() { instance("LOGXMLLayout"); }

const I18NString& LOGXMLLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeBuffer();
  if (event != nullptr) {
    appendEvent(text, *event);
  }
  return keep(std::move(text));
}

void LOGXMLLayout::appendEvent(I18NString& text, LOGLoggingEvent& event) {
  text.append("<log4j:event category=\""sv).append(event.getLoggerName());
  text.append("\" timestamp=\""sv).append(millisecondsOf(event));
  if (const LOGLevel* const level = event.getLevel()) {
    text.append("\" level=\""sv).append(std::string_view(level->toString()));
  }
  text.append("\" thread=\""sv).append(event.getThreadName()).append("\">\r\n"sv);

  text.append("<log4j:message><![CDATA["sv);
  if (!event.appendRenderedMessage(text)) {
    LOGLogLog::debug("LOGXMLLayout::format ---- getRenderedMessage returned NULL\n");
  }
  text.append("]]></log4j:message>\r\n"sv);

  // Meant as it stands: an event without context gets the element, and a context is not shown.
  if (event.getNDC().isEmpty()) {
    text.append("<log4j:NDC><![CDATA[]]></log4j:NDC>\r\n"sv);
  }
  if (const I18NString& throwable = event.getThrowableStrRep(); !throwable.isEmpty()) {
    text.append("<log4j:throwable><![CDATA["sv).append(throwable);
    text.append("]]></log4j:throwable>\r\n"sv);
  }
  if (m_locationInfo != 0) {
    const LOGLocationInfo& location = *event.getLocationInformation();
    text.append("<log4j:locationInfo class=\""sv).append(location.getClassName());
    text.append("\" method=\""sv).append(location.getMethodName());
    text.append("\" file=\""sv).append(location.getFileName());
    text.append("\" line=\""sv).append(location.getLineNumber()).append("\"/>\r\n"sv);
  }
  text.append("</log4j:event>\r\n\r\n"sv);
}

void LOGXMLLayout::setOption(const I18NString& name, const I18NString& value) {
  if (name == LOCATION_INFO_OPTION) {
    m_locationInfo = LOGOptionConverter::toBoolean(value, m_locationInfo);
  }
}

ZEBList<I18NString> LOGXMLLayout::getOptionStrings() const {
  ZEBList<I18NString> options;
  options.add("m_LOCATION_INFO_OPTION");
  return options;
}
