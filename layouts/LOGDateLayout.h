#ifndef LAYOUTS_LOGDATELAYOUT_H
#define LAYOUTS_LOGDATELAYOUT_H

#include <memory>

#include "layouts/LOGLayout.h"
#include "platform/ZEBList.h"

class LOGDate;
class LOGDateFormat;
class LOGTimeZone;

/// The base of layouts that begin a line with a date. It chooses the date format by name: "NULL"
/// for none, "RELATIVE", "ABSOLUTE", "DATE" or "ISO8601" in any case, or a pattern of
/// LOGSimpleDateFormat. The setters of formats and activateOptions() take the layout's lock.
class LOG4ZEB_EXPORT LOGDateLayout : public LOGLayout {
 public:
  static const I18NString DATE_FORMAT_OPTION;
  static const I18NString TIMEZONE_OPTION;

  /// No date format.
  LOGDateLayout();
  LOGDateLayout(const LOGDateLayout&) = delete;
  ~LOGDateLayout() override;

  /// Sets the remembered format anew, if any, and gives it the time zone that was set, if any.
  void activateOptions() override;

  /// Sets the option "DateFormat" or "TimeZone"; other names, also in another case, are ignored.
  virtual void setOption(const I18NString& option, const I18NString& value);
  /// The name that setDateFormat() got last.
  virtual const I18NString& getDateFormat() const { return m_dateFormatOption; }
  /// The zone's ID is carried along and changes no output: dates are local to the process.
  virtual void setTimeZone(const I18NString& timeZone) { m_timeZoneID = timeZone; }
  virtual const I18NString& getTimeZone() const { return m_timeZoneID; }
  /// Sets `buf` to the date of the event and a blank; without a format leaves `buf` as it is.
  /// Throws ZEBAssertError for a null event.
  virtual void dateFormat(I18NString& buf, LOGLoggingEvent* event);
  /// Takes ownership of `timeZone`, which may be null.
  virtual void setDateFormat(const I18NString& dateFormat, LOGTimeZone* timeZone);
  /// The same with the default time zone.
  virtual void setDateFormat(const I18NString& dateFormat);

  /// The names of the options.
  ZEBList<I18NString> getOptionStrings() const;

 private:
  I18NString m_dateFormatOption;
  I18NString m_timeZoneID;
  std::unique_ptr<LOGTimeZone> m_timeZone;  // used by the format
  std::unique_ptr<LOGDateFormat> m_dateFormat;
  std::unique_ptr<LOGDate> m_date;
  I18NString m_dateText;  // of the second last asked for
};

#endif
