#ifndef LAYOUTS_LOGPATTERNCONVERTER_H
#define LAYOUTS_LOGPATTERNCONVERTER_H

#include <atomic>
#include <limits>
#include <memory>
#include <string_view>

#include "platform/I18NString.h"

class LOGDirectConverter;
class LOGFormattingInfo;
class LOGLoggingEvent;

/// Produces the text of one piece of a conversion pattern for an event, and knows the converter of
/// the next piece.
///
/// Deliberate: the widths and the alignment are those of the last converter built in the process,
/// apart from literals, and hold for all converters: in `%c %-5p` both texts are padded, in
/// `%-5p %c` none is, and a later pattern changes how every other layout pads. A format() reads
/// them once each, so it is safe while another thread parses.
class LOG4ZEB_EXPORT LOGPatternConverter {
 public:
  LOGPatternConverter(const LOGPatternConverter&) = delete;
  LOGPatternConverter& operator=(const LOGPatternConverter&) = delete;
  /// Leaves the next converter alone; Chain deletes them all.
  virtual ~LOGPatternConverter();

  /// The text in a new string that the caller deletes, or null.
  virtual I18NString* convert(LOGLoggingEvent* event) = 0;
  /// Sets `sbuf` to the converted text, padded to the minimum width or cut to the end that fits the
  /// maximum width. A null conversion counts as empty.
  virtual void format(I18NString& sbuf, LOGLoggingEvent* event);
  /// Appends to `text` what format() gives. `direct` is this converter's direct side, or null.
  void appendFormatted(I18NString& text, LOGLoggingEvent* event, LOGDirectConverter* direct);
  /// Whether the widths of the last converter built in the process pad or cut anything.
  static bool hasWidths() {
    return m_min.load(std::memory_order_relaxed) > 0 ||
           m_max.load(std::memory_order_relaxed) != NO_MAXIMUM;
  }
  /// Appends `length` blanks.
  virtual void spacePad(I18NString& sbuf, int length);
  /// Null at the end of the chain.
  virtual LOGPatternConverter* getNext() { return m_next; }
  void setNext(LOGPatternConverter* next) { m_next = next; }

  struct LOG4ZEB_EXPORT ChainDeleter {
    void operator()(LOGPatternConverter* head) const noexcept;
  };
  /// A larger minimum width counts as this one, because every event would fill memory.
  static constexpr int LARGEST_MINIMUM = 4096;
  /// Owns a converter and all that follow it.
  using Chain = std::unique_ptr<LOGPatternConverter, ChainDeleter>;

 protected:
  /// Leaves the class-wide widths as they are.
  LOGPatternConverter() = default;
  /// Makes the widths read last those of all converters. Throws ZEBAssertError when `fi` is null.
  explicit LOGPatternConverter(LOGFormattingInfo* fi);

  static std::atomic<int> m_min;
  static std::atomic<int> m_max;
  static std::atomic<int> m_leftAlign;
  static constexpr int NO_MAXIMUM = std::numeric_limits<int>::max();

  /// A text of blanks, constant-initialised so that static initialisers can use it.
  struct Blanks : std::string_view {
    using std::string_view::basic_string_view;
    operator I18NString() const { return I18NString::fromUtf8(*this); }  // NOLINT: implicit
  };
  /// 1, 2, 4, 8, 16 and 32 of them.
  static const Blanks SPACES[6];

 private:
  void appendPadded(I18NString& sbuf, const I18NString* s);

  LOGPatternConverter* m_next = nullptr;
};

#endif
