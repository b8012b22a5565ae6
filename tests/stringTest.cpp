#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "platform/I18NConverter.h"
#include "platform/I18NLocale.h"
#include "platform/I18NRuntimeError.h"
#include "platform/I18NString.h"

namespace {

constexpr char32_t UNKNOWN = 0xFFFD;

// The other side of the comparisons: slow, written without the library's tables and ranges.

std::string encode(char32_t c) {
  const auto tail = [c](int shift) { return static_cast<char>(0x80 | ((c >> shift) % 64)); };
  if (c < 0x80) {
    return {static_cast<char>(c)};
  }
  if (c < 0x800) {
    return {static_cast<char>(0xC0 | (c >> 6)), tail(0)};
  }
  if (c < 0x10000) {
    return {static_cast<char>(0xE0 | (c >> 12)), tail(6), tail(0)};
  }
  return {static_cast<char>(0xF0 | (c >> 18)), tail(12), tail(6), tail(0)};
}

/// The character that exactly these bytes encode, in its shortest form.
std::optional<char32_t> decodeWhole(const std::string& bytes) {
  char32_t c =
      static_cast<unsigned char>(bytes[0]) & (bytes.size() == 1 ? 0xFF : 0x7F >> bytes.size());
  for (std::size_t i = 1; i < bytes.size(); ++i) {
    c = c * 64 + (static_cast<unsigned char>(bytes[i]) & 0x3F);
  }
  const bool isCharacter = c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
  return isCharacter && encode(c) == bytes ? std::optional<char32_t>(c) : std::nullopt;
}

/// Whether some character begins with these bytes: with the lowest or the highest continuation.
bool beginsCharacter(const std::string& bytes) {
  for (std::size_t size = bytes.size() + 1; size <= 4; ++size) {
    for (const char filling : {'\x80', '\xBF'}) {
      if (decodeWhole(bytes + std::string(size - bytes.size(), filling))) {
        return true;
      }
    }
  }
  return false;
}

std::u16string toUnits(const std::vector<char32_t>& characters) {
  std::u16string units;
  for (const char32_t c : characters) {
    if (c >= 0x10000) {
      units += static_cast<char16_t>(0xD7C0 + (c >> 10));
      units += static_cast<char16_t>(0xDC00 + c % 0x400);
    } else {
      units += static_cast<char16_t>(c);
    }
  }
  return units;
}

/// Invalid bytes give one unknown character for each longest beginning of a valid one.
std::u16string decodeAll(const std::string& bytes) {
  std::vector<char32_t> characters;
  for (std::size_t i = 0; i < bytes.size();) {
    std::size_t taken = 1;
    char32_t c = UNKNOWN;
    for (std::size_t size = 1; size <= 4 && i + size <= bytes.size(); ++size) {
      const std::string part = bytes.substr(i, size);
      if (const auto whole = decodeWhole(part)) {
        c = *whole;
        taken = size;
        break;
      }
      if (beginsCharacter(part)) {
        taken = size;
      }
    }
    characters.push_back(c);
    i += taken;
  }
  return toUnits(characters);
}

/// Pairs count as one character, a surrogate without partner as the unknown one.
std::string encodeAll(const std::u16string& units) {
  std::string bytes;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t c = units[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
        units[i + 1] < 0xE000) {
      c = 0x10000 + (c - 0xD800) * 0x400 + (units[++i] - 0xDC00);
    } else if (c >= 0xD800 && c < 0xE000) {
      c = UNKNOWN;
    }
    bytes += encode(c);
  }
  return bytes;
}

I18NString text(const std::u16string& units) { return I18NString(units.data(), units.size()); }

long found(std::size_t position) {
  return position == std::u16string::npos ? I18NString::NOT_FOUND : static_cast<long>(position);
}

int sign(int value) { return (value > 0) - (value < 0); }

class RandomText {
 public:
  std::size_t below(std::size_t bound) { return m_engine() % bound; }
  /// Few different units, so that searches find something; `kinds` of them may occur.
  std::u16string units(std::size_t longest, std::size_t kinds) {
    static const std::u16string ALPHABET = u"ab\u00E9\u20AC\xD83D\xDE00\xD800\xDFFF\uFFFD";
    std::u16string result;
    for (std::size_t i = below(longest + 1); i > 0; --i) {
      result += ALPHABET[below(std::min(kinds, ALPHABET.size()))];
    }
    return result;
  }
  std::string bytes(std::size_t longest) {
    static const std::string EDGES =
        "aZ\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0\xF1\xF3\xF4"
        "\xF5\xFF";
    std::string result;
    for (std::size_t i = below(longest + 1); i > 0; --i) {
      result += EDGES[below(EDGES.size())];
    }
    return result;
  }

 private:
  std::mt19937 m_engine{20231};
};

constexpr std::size_t KINDS[] = {2, 3, 4, 6, 9};  // ASCII only, two bytes, three, pairs, all

}  // namespace

TEST(I18NString, ReadsLikeItsCodeUnits) {
  RandomText random;
  for (int round = 0; round < 20000; ++round) {
    const std::u16string units = random.units(12, KINDS[round % 5]);
    const I18NString subject = text(units);
    ASSERT_EQ(subject.length(), units.size());
    ASSERT_EQ(subject.toUtf16(), units);
    ASSERT_EQ(subject.toStdString(), encodeAll(units));
    std::uint32_t hash = 0;
    for (std::size_t i = 0; i < units.size(); ++i) {
      ASSERT_EQ(subject.at(i), units[i]);
      hash = hash * 31 + units[i];
    }
    ASSERT_EQ(subject.at(units.size()), 0);
    ASSERT_EQ(subject.hash(), hash);
    const std::size_t begin = random.below(14);
    const std::size_t end = random.below(14);
    const std::size_t cut = std::min(begin, units.size());
    const std::u16string part = units.substr(cut, end > cut ? end - cut : 0);
    ASSERT_EQ(subject.substring(begin, end).toUtf16(), part);
    ASSERT_EQ(subject.substring(begin, end), text(part)) << "equal texts are stored alike";
  }
}

TEST(I18NString, SearchesAndComparesLikeItsCodeUnits) {
  RandomText random;
  for (int round = 0; round < 40000; ++round) {
    const std::size_t kinds = KINDS[round % 5];
    const std::u16string a = random.units(12, kinds);
    const std::u16string b = random.units(round % 2 == 0 ? 2 : 12, KINDS[round % 3 + 2]);
    const I18NString textA = text(a);
    const I18NString textB = text(b);
    const std::size_t from = random.below(14);
    ASSERT_EQ(textA.indexOf(textB, from), found(a.find(b, from)));
    ASSERT_EQ(textA.lastIndexOf(textB, from), found(a.rfind(b, from)));
    ASSERT_EQ(textA.lastIndexOf(textB), found(a.rfind(b)));
    ASSERT_EQ(textA.startsWith(textB), a.compare(0, b.size(), b) == 0);
    ASSERT_EQ(sign(textA.compare(textB)), sign(a.compare(b)));
    ASSERT_EQ(textA == textB, a == b);
    ASSERT_EQ(textA < textB, a < b);
  }
}

TEST(I18NString, GrowsLikeItsCodeUnits) {
  RandomText random;
  for (int round = 0; round < 10000; ++round) {
    std::u16string units;
    I18NString subject;
    for (int i = 0; i < 5; ++i) {
      const std::u16string more = random.units(1 + round % 40, KINDS[round % 5]);
      const std::string bytes = random.bytes(4);
      subject += text(more);
      units += more;
      if (round % 3 == 0) {
        const I18NString two[] = {text(random.units(70, KINDS[i])), text(more)};
        I18NWriter writer(subject);
        writer.append(two[0]);
        writer.append(two[1]);
        units += two[0].toUtf16() + more;
      }
      if (round % 2 == 0) {
        subject.append(std::string_view(bytes)).append(2, '.');
        units += decodeAll(bytes) + u"..";
      }
    }
    ASSERT_EQ(subject.toUtf16(), units);
    ASSERT_EQ(subject, text(units)) << "halves of a pair must have joined";
    ASSERT_EQ(subject.toStdString(), encodeAll(units));
    subject.append(subject);
    ASSERT_EQ(subject, text(units + units));
    I18NString moved = std::move(subject);
    ASSERT_EQ(moved.length(), 2 * units.size());
    ASSERT_TRUE(subject.isEmpty());  // NOLINT: a moved-from text is empty
    ASSERT_EQ(subject.append(1, 'x').toStdString(), "x");
  }
}

TEST(I18NString, ReplacesInvalidBytesAndKeepsValidOnes) {
  RandomText random;
  for (int round = 0; round < 40000; ++round) {
    const std::string bytes = random.bytes(9);
    const std::u16string units = decodeAll(bytes);
    const I18NString subject = I18NString::fromUtf8(bytes);
    ASSERT_EQ(subject.toUtf16(), units);
    ASSERT_EQ(subject, text(units));
  }
  for (std::size_t length = 1; length < 110; ++length) {
    std::string ascii;
    for (std::size_t i = 0; i < length; ++i) {
      ascii += static_cast<char>('!' + i % 90);
    }
    ASSERT_EQ(I18NString(ascii).toStdString(), ascii);
    for (std::size_t i = 0; i < length; ++i) {
      std::string broken = ascii;
      broken[i] = '\xFF';
      ASSERT_EQ(I18NString(broken).toUtf16(), decodeAll(broken)) << i << " of " << length;
    }
  }
  for (char32_t c = 1; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 251) {
    if (c < 0xD800 || c > 0xDFFF) {
      ASSERT_EQ(I18NString(encode(c)).toUtf16(), toUnits({c}));
    }
  }
}

TEST(I18NString, TakesNullAndEmbeddedZeros) {
  EXPECT_TRUE(I18NString(static_cast<const char*>(nullptr)).isEmpty());
  const I18NString withZero(std::string("a\0b", 3));
  EXPECT_EQ(withZero.length(), 3U);
  EXPECT_EQ(withZero.indexOf("b"), 2);
  std::ostringstream out;
  out << withZero;
  EXPECT_EQ(out.str(), std::string("a\0b", 3));
}

TEST(I18NConverter, KnowsItsEncodingsInAnyCase) {
  for (const char* const name : {"ascii", "US-ASCII", "utf-8", "UTF8"}) {
    EXPECT_EQ(I18NString("\xC3\xA9", name).toUtf16(), u"\u00E9") << name;
  }
  for (const char* const name : {"ISO-8859-1", "latin1"}) {
    EXPECT_EQ(I18NString("\xC3\xA9", name).toUtf16(), u"\u00C3\u00A9") << name;
  }
  EXPECT_THROW(I18NString("x", "ebcdic"), I18NRuntimeError);
  EXPECT_THROW(I18NString("x", nullptr), I18NRuntimeError);
}

TEST(I18NLocale, FoldsAsciiLettersOnly) {
  EXPECT_TRUE(I18NLocale::equalIgnoreCase(I18NString("WARN"), "wArn"));
  EXPECT_FALSE(I18NLocale::equalIgnoreCase(I18NString("\xC3\x89"), "\xC3\xA9"));
  EXPECT_FALSE(I18NLocale::equalIgnoreCase(I18NString("k"), "\xE2\x84\xAA")) << "the kelvin sign";
  EXPECT_FALSE(I18NLocale::equalIgnoreCase(I18NString("["), "{"));
  EXPECT_LT(I18NLocale().compareIgnoreCase("Abc", "aBD"), 0);
  EXPECT_GT(I18NLocale().compareIgnoreCase("abcd", "ABC"), 0);
}
