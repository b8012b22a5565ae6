#ifndef LAYOUTS_LOGHTMLLAYOUT_H
#define LAYOUTS_LOGHTMLLAYOUT_H

#include <initializer_list>
#include <string_view>

#include "layouts/LOGLayout.h"

/// Writes each event as a row of an HTML table, followed by a row for its diagnostic context and
/// one for its throwable where it has them. Header and footer, which make a page of such rows, are
/// written by whoever makes the page, not by the appenders.
class LOG4ZEB_EXPORT LOGHTMLLayout : public LOGLayout {
 public:
  static const I18NString TITLE_OPTION;
  static const I18NString LOCATION_INFO_OPTION;

  LOGHTMLLayout();
  LOGHTMLLayout(const LOGHTMLLayout&) = delete;

  /// Empty for a null event. Throws ZEBAssertError for an event without a level, and what the
  /// rendering of the message throws.
  const I18NString& format(LOGLoggingEvent* event) override;
  const I18NString& getContentType() override { return keep("text/html"); }
  /// The page up to the first row, with the title in force and the present time. It has a buffer of
  /// its own, so that a formatted row stays valid.
  const I18NString& getHeader() override;
  const I18NString& getFooter() override;
  /// 0: the layout writes the throwable itself.
  int ignoresThrowable() override { return 0; }
  void activateOptions() override {}

  /// The title is markup: it is written to the header as it is.
  void setTitle(const I18NString& title) { m_title = title; }
  const I18NString& getTitle() const { return m_title; }
  /// Whether there is a column for file and line: 0, as at first, or 1.
  void setLocationInfo(int locationInfo) { m_locationInfo = locationInfo; }
  int getLocationInfo() const { return m_locationInfo; }
  /// Appends the text of a throwable to `buf`, escaped, as it stands in its row.
  void appendThrowableAsHTML(const I18NString& trace, I18NString& buf) const;

 private:
  template <typename... Pieces>
  void appendLine(I18NString& text, const Pieces&... pieces) const;
  void appendLines(I18NString& text, std::initializer_list<std::string_view> lines) const;
  void appendCells(I18NString& text, LOGLoggingEvent& event) const;
  I18NString escapeHTMLTags(const I18NString& text) const;

  I18NString m_title;
  I18NString m_header;
  int m_locationInfo = 0;
};

#endif
