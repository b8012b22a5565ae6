#ifndef LAYOUTS_LOGXMLLAYOUT_H
#define LAYOUTS_LOGXMLLAYOUT_H

#include "layouts/LOGLayout.h"
#include "platform/ZEBList.h"

/// Writes each event as one log4j:event element. A file of them is a fragment: it has no root
/// element. Nothing is escaped; message, context and throwable stand in CDATA sections, which a
/// "]]>" in them ends early.
class LOG4ZEB_EXPORT LOGXMLLayout : public LOGLayout {
 public:
  static const I18NString LOCATION_INFO_OPTION;

  LOGXMLLayout();
  LOGXMLLayout(const LOGXMLLayout&) = delete;

  /// Empty for a null event. What the rendering of the message throws goes on to the caller.
  const I18NString& format(LOGLoggingEvent* event) override;
  /// 0: the layout writes the throwable itself.
  int ignoresThrowable() override { return 0; }
  void activateOptions() override {}

  /// Sets the option "LocationInfo" to "true" or "false", in any case. Other values, and other
  /// names, also in another case, are ignored.
  void setOption(const I18NString& name, const I18NString& value);
  /// Whether a location element is written: 0, as at first, or 1.
  void setLocationInfo(int locationInfo) { m_locationInfo = locationInfo; }
  int getLocationInfo() const { return m_locationInfo; }
  /// One entry, which is not the option's name but the text "m_LOCATION_INFO_OPTION"; that is
  /// meant.
  ZEBList<I18NString> getOptionStrings() const;

 private:
  void appendEvent(I18NString& text, LOGLoggingEvent& event);

  int m_locationInfo = 0;
};

#endif
