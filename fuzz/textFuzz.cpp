// I18NString and its conversions. The bytes are read as UTF-8, as ISO 8859-1 and as UTF-16 code
// units, and compared with the system's iconv; operations on the texts are compared with those of
// std::u16string.

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/I18NConverter.h"
#include "platform/I18NString.h"
#include "posix/Iconv.h"
#include "support/Expect.h"

namespace {

constexpr const char* REPLACEMENT = "\xEF\xBF\xBD";

/// Whether some character begins with the bytes: with the lowest or the highest continuation.
bool beginsCharacter(const Iconv& converter, std::string_view bytes) {
  for (std::string lowest(bytes), highest(bytes); lowest.size() < 4;) {
    lowest += '\x80';
    highest += '\xBF';
    if (converter.convert(lowest).taken == lowest.size() ||
        converter.convert(highest).taken == highest.size()) {
      return true;
    }
  }
  return false;
}

/// How many bytes at the front, which are not a character, are replaced together: the beginning of
/// a character as far as it goes, or one byte.
std::size_t unreadablePrefix(const Iconv& converter, std::string_view bytes) {
  std::size_t size = 1;
  while (size < bytes.size() && beginsCharacter(converter, bytes.substr(0, size + 1))) {
    ++size;
  }
  return size;
}

/// The bytes as UTF-8, what is not UTF-8 replaced.
std::string repaired(std::string_view bytes) {
  static const Iconv converter("UTF-16LE", "UTF-8");
  std::string text;
  while (!bytes.empty()) {
    const std::size_t good = converter.convert(bytes).taken;
    text += bytes.substr(0, good);
    bytes.remove_prefix(good);
    if (!bytes.empty()) {
      text += REPLACEMENT;
      bytes.remove_prefix(unreadablePrefix(converter, bytes));
    }
  }
  return text;
}

std::u16string unitsOf(std::string_view bytes) {
  std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
  if (!units.empty()) {
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
  }
  return units;
}

/// Code units as UTF-8, surrogates without a partner replaced.
std::string utf8Of(const std::u16string& units) {
  static const Iconv converter("UTF-8", "UTF-16LE");
  std::string_view bytes(reinterpret_cast<const char*>(units.data()),
                         units.size() * sizeof(char16_t));
  std::string text;
  while (!bytes.empty()) {
    const Iconv::Result result = converter.convert(bytes);
    text += result.bytes;
    bytes.remove_prefix(result.taken);
    if (!bytes.empty()) {
      text += REPLACEMENT;
      bytes.remove_prefix(sizeof(char16_t));
    }
  }
  return text;
}

void tryUtf8(std::string_view bytes) {
  static const Iconv toUnits("UTF-16LE", "UTF-8");
  const I18NString text = I18NString::fromUtf8(bytes);
  const std::string expected = repaired(bytes);
  expect(text.toStdString() == expected, "bytes that are not UTF-8 are replaced");
  expect(text.toUtf16() == unitsOf(toUnits.convert(expected).bytes), "UTF-8 becomes UTF-16");
  expect(I18NString(std::string(bytes), "utf-8") == text, "one encoding gives one text");
  std::size_t cut = expected.size() / 2;
  while (cut < expected.size() && (static_cast<unsigned char>(expected[cut]) & 0xC0) == 0x80) {
    ++cut;  // characters are not cut
  }
  I18NString halves = expected.substr(0, cut);
  halves.append(std::string_view(expected).substr(cut));
  expect(halves == text, "UTF-8 appended in pieces is the whole");
}

void tryLatin1(std::string_view bytes) {
  static const Iconv toUtf8("UTF-8", "ISO-8859-1");
  static const I18NConverter converter("iso-8859-1");
  const I18NString text = converter.toText(bytes);
  expect(text.toStdString() == toUtf8.convert(bytes).bytes, "ISO 8859-1 becomes UTF-8");
}

/// Whether two numbers are both negative, both 0 or both positive.
bool haveSameSign(int a, int b) { return (a < 0) == (b < 0) && (a > 0) == (b > 0); }

long found(std::size_t position) {
  return position == std::u16string::npos ? I18NString::NOT_FOUND : static_cast<long>(position);
}

void compareOperations(const std::u16string& a, const std::u16string& b, std::size_t position) {
  const I18NString textA(a.data(), a.size());
  const I18NString textB(b.data(), b.size());
  expect(textA.toUtf16() == a && textA.length() == a.size(), "code units come back");
  expect(textA.toStdString() == utf8Of(a), "UTF-16 becomes UTF-8");
  expect(textA.at(position) == (position < a.size() ? a[position] : u'\0'), "at");
  expect(haveSameSign(textA.compare(textB), a.compare(b)), "compare");
  expect((textA == textB) == (a == b), "equality");
  expect(textA.startsWith(textB) == (a.compare(0, b.size(), b) == 0), "startsWith");
  expect(textA.indexOf(textB, position) == found(a.find(b, position)), "indexOf");
  expect(textA.lastIndexOf(textB, position) == found(a.rfind(b, position)), "lastIndexOf");

  const I18NString sum = textA + textB;
  const std::u16string sumOfUnits = a + b;
  const I18NString whole(sumOfUnits.data(), sumOfUnits.size());
  expect(sum == whole && sum.quickHash() == whole.quickHash() && sum.hash() == whole.hash(),
         "parts put together are the whole");
  const std::size_t cut = std::min(position, sumOfUnits.size());
  expect(sum.substring(0, cut) + sum.substring(cut) == whole, "a text cut in two is the whole");
  expect(sum.substring(cut, cut + b.size()).toUtf16() == sumOfUnits.substr(cut, b.size()),
         "substring");
  I18NString twice = sum;
  twice.append(twice);
  expect(twice.toUtf16() == sumOfUnits + sumOfUnits, "a text appended to itself");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  tryUtf8(bytes);
  tryLatin1(bytes);
  // The first byte says where to cut and to look, so that the units after it are where they are.
  const std::size_t position = size == 0 ? 0 : data[0];
  const std::u16string units = unitsOf(bytes.substr(std::min<std::size_t>(size, 2)));
  const std::size_t middle = std::min(position, units.size());
  compareOperations(units.substr(0, middle), units.substr(middle), position / 2);
  const std::u16string needle = units.substr(middle, 2);
  compareOperations(units, needle, position);
  const std::u16string wide = I18NString::fromUtf8(bytes).toUtf16();
  compareOperations(wide, wide.substr(std::min(middle, wide.size()), 2), position);
  return 0;
}
