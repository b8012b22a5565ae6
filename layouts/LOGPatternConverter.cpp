#include "layouts/LOGPatternConverter.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "layouts/LOGDirectConverter.h"
#include "layouts/LOGFormattingInfo.h"
#include "platform/ZEBAssertError.h"

std::atomic<int> LOGPatternConverter::m_min{-1};
std::atomic<int> LOGPatternConverter::m_max{NO_MAXIMUM};
std::atomic<int> LOGPatternConverter::m_leftAlign{0};

constexpr LOGPatternConverter::Blanks LOGPatternConverter::SPACES[6] = {
    " ", "  ", "    ", "        ", "                ", "                                "};

LOGPatternConverter::LOGPatternConverter(LOGFormattingInfo* fi) {
  ZEB_ASSERT(fi, "LOGPatternParserUtils", __LINE__);
  m_min = std::min(LOGFormattingInfo::m_min.load(), LARGEST_MINIMUM);
  m_max = LOGFormattingInfo::m_max.load();
  m_leftAlign = LOGFormattingInfo::m_leftAlign.load();
}

LOGPatternConverter::~LOGPatternConverter() = default;

void LOGPatternConverter::format(I18NString& sbuf, LOGLoggingEvent* event) {
  sbuf.clear();
  const std::unique_ptr<I18NString> s(convert(event));
  appendPadded(sbuf, s.get());
}

void LOGPatternConverter::appendFormatted(I18NString& text, LOGLoggingEvent* event,
                                          LOGDirectConverter* direct) {
  I18NString piece;
  if (direct == nullptr) {
    format(piece, event);
    text.append(piece);
  } else {
    appendPadded(text, direct->appendText(piece, event) ? &piece : nullptr);
  }
}

void LOGPatternConverter::appendPadded(I18NString& sbuf, const I18NString* s) {
  const int min = m_min.load(std::memory_order_relaxed);
  if (s == nullptr) {
    if (min > 0) {
      spacePad(sbuf, min);
    }
    return;
  }
  const int max = m_max.load(std::memory_order_relaxed);
  const auto length = static_cast<std::int64_t>(s->length());
  if (length > max) {
    sbuf.append(s->substring(static_cast<std::size_t>(length - max)));
    return;
  }
  const int missing = length < min ? static_cast<int>(min - length) : 0;
  if (missing == 0) {
    sbuf.append(*s);
  } else if (m_leftAlign.load(std::memory_order_relaxed) != 0) {
    sbuf.append(*s);
    spacePad(sbuf, missing);
  } else {
    spacePad(sbuf, missing);
    sbuf.append(*s);
  }
}

void LOGPatternConverter::spacePad(I18NString& sbuf, int length) {
  for (; length >= 32; length -= 32) {
    sbuf.append(SPACES[5]);
  }
  for (int i = 4; i >= 0; --i) {
    if ((length & (1 << i)) != 0) {
      sbuf.append(SPACES[i]);
    }
  }
}

void LOGPatternConverter::ChainDeleter::operator()(LOGPatternConverter* head) const noexcept {
  while (head != nullptr) {
    delete std::exchange(head, head->getNext());
  }
}
