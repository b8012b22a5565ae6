#include "platform/ZEBIDOM_Parser.h"

#define XML_DTD 1  // without it, the limits on entity expansion are not declared
#include <expat.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/I18NConverter.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_DocumentData.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "ZEBIDOM_Parser";

constexpr std::size_t MEBIBYTE = 1024UL * 1024;
// What a document asks for may take two hundred times its size, such as a pattern of many
// specifiers.
constexpr std::size_t MAX_FILE_SIZE = 4 * MEBIBYTE;
// Documents in use nest below ten deep.
constexpr std::size_t MAX_DEPTH = 256;
// Ten thousand loggers with levels and appenders, and more than there is reason to wait for.
constexpr std::size_t MAX_ENTRIES = 250000;
// No path, pattern or name comes near; what reads a value may take many times its memory.
constexpr std::size_t MAX_ATTRIBUTE = 65536;
// The XML reader recurses through entities that name each other, and its work on attribute
// declarations grows with the square of their number.
constexpr int MAX_DECLARATIONS = 256;
// Entities may multiply the bytes that the XML reader sees by this, once it has seen the threshold.
constexpr float MAX_AMPLIFICATION = 8;
constexpr unsigned long long AMPLIFICATION_THRESHOLD = MEBIBYTE;
// Text may double when it becomes UTF-8; the rest is for entities and default attributes.
constexpr std::size_t MAX_TEXT_PER_BYTE = 4;
constexpr std::size_t FREE_TEXT = MEBIBYTE;

bool hasByteOrderMark(std::string_view bytes) {
  constexpr std::string_view MARKS[] = {"\xEF\xBB\xBF", "\xFE\xFF", "\xFF\xFE"};
  return std::any_of(std::begin(MARKS), std::end(MARKS), [bytes](std::string_view mark) {
    return bytes.substr(0, mark.size()) == mark;
  });
}

constexpr const char* OUTSIDE = "an entity outside of the document is not read: ";

/// Why a document is not read.
struct Refusal {
  I18NString reason;
  int line = 0;
  int column = 0;
};

[[noreturn]] void refuse(const I18NString& reason) { throw Refusal{reason}; }

/// A name for a reason, cut where it is unreasonably long.
std::string quoted(std::string_view name) {
  constexpr std::size_t LONGEST = 80;
  return "\"" + std::string(name.substr(0, LONGEST)) + "\"";
}

std::string readAll(std::istream& in) {
  constexpr std::size_t CHUNK = 65536;
  std::string bytes;
  while (in) {
    const std::size_t had = bytes.size();
    bytes.resize(had + CHUNK);
    in.read(&bytes[had], CHUNK);
    bytes.resize(had + static_cast<std::size_t>(in.gcount()));
    if (bytes.size() > MAX_FILE_SIZE) {
      refuse("the file is larger than 4 MiB");
    }
  }
  if (in.bad()) {
    refuse("the file cannot be read: " + std::generic_category().message(errno));
  }
  if (bytes.empty()) {
    refuse("the file is empty");
  }
  return bytes;
}

std::string readFile(const I18NString& fileName) {
  const auto path = std::filesystem::u8path(fileName.toStdString());
  std::error_code unknown;
  if (std::filesystem::is_directory(path, unknown)) {
    refuse("the file is a directory");
  }
  std::ifstream file;
  do {
    errno = 0;
    file.open(path, std::ios::binary);
  } while (!file.is_open() && errno == EINTR);  // a signal, while it waits for a pipe's writer
  if (!file) {
    refuse("the file cannot be opened: " + std::generic_category().message(errno));
  }
  return readAll(file);
}

/// Builds a document's data from its bytes.
class TreeBuilder {
 public:
  explicit TreeBuilder(std::string_view bytes)
      : m_bytes(bytes),
        m_parser(XML_ParserCreate(nullptr), &XML_ParserFree),
        m_data(std::make_shared<ZEBIDOM_DocumentData>()) {
    if (m_parser == nullptr) {
      throw std::bad_alloc();
    }
  }
  TreeBuilder(const TreeBuilder&) = delete;
  TreeBuilder& operator=(const TreeBuilder&) = delete;

  /// Throws a Refusal. Used once.
  std::shared_ptr<const ZEBIDOM_DocumentData> build() {
    const XML_Parser parser = m_parser.get();
    setHandlers();
    XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_NEVER);
    XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser, MAX_AMPLIFICATION);
    XML_SetBillionLaughsAttackProtectionActivationThreshold(parser, AMPLIFICATION_THRESHOLD);
    // One piece: the reader takes time that grows with the square of a long token's pieces.
    const XML_Status status =
        XML_Parse(parser, m_bytes.data(), static_cast<int>(m_bytes.size()), XML_TRUE);
    if (m_thrown != nullptr) {
      std::rethrow_exception(m_thrown);
    }
    if (status != XML_STATUS_OK) {
      throw syntaxError();
    }
    m_data->entries.front().end = static_cast<std::uint32_t>(m_data->entries.size());
    return m_data;
  }

 private:
  using Entry = ZEBIDOM_DocumentData::Entry;

  /// Exceptions must not cross the XML reader, which is C: the first one is kept and stops the
  /// reader, which may still call some handlers before it returns.
  template <typename Operation>
  static void guarded(void* self, Operation operation) noexcept {
    TreeBuilder& builder = *static_cast<TreeBuilder*>(self);
    if (builder.m_thrown != nullptr) {
      return;
    }
    try {
      operation(builder);
      return;
    } catch (Refusal& refusal) {
      refusal.line = builder.line();
      refusal.column = builder.column();
      builder.m_thrown = std::current_exception();
    } catch (...) {
      builder.m_thrown = std::current_exception();
    }
    XML_StopParser(builder.m_parser.get(), XML_FALSE);
  }

  void setHandlers() {
    const XML_Parser parser = m_parser.get();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(
        parser,
        [](void* self, const char* name, const char** attributes) {
          guarded(self, [&](TreeBuilder& builder) { builder.startElement(name, attributes); });
        },
        [](void* self, const char*) {
          guarded(self, [](TreeBuilder& builder) { builder.endElement(); });
        });
    XML_SetCharacterDataHandler(parser, [](void* self, const char* text, int size) {
      guarded(self, [&](TreeBuilder& builder) {
        builder.addText({text, static_cast<std::size_t>(size)});
      });
    });
    XML_SetXmlDeclHandler(parser, [](void* self, const char*, const char* encoding, int) {
      guarded(self, [&](TreeBuilder& builder) {
        builder.m_encoding = encoding == nullptr ? builder.m_encoding : encoding;
      });
    });
    setDtdHandlers();
    // Gets what no other handler does. In an element that is a reference whose entity is external,
    // or can only be declared in a DTD that is not loaded: reading it as nothing would lose
    // content.
    XML_SetDefaultHandlerExpand(parser, [](void* self, const char* text, int size) {
      guarded(self, [&](TreeBuilder& builder) {
        if (builder.m_depth > 0 && size > 0 && text[0] == '&') {
          refuse(OUTSIDE + quoted({text, static_cast<std::size_t>(size)}));
        }
      });
    });
  }

  void setDtdHandlers() {
    const XML_Parser parser = m_parser.get();
    XML_SetDoctypeDeclHandler(
        parser,
        [](void* self, const char*, const char*, const char*, int) {
          guarded(self, [](TreeBuilder& builder) { builder.m_hasDtd = true; });
        },
        [](void* self) { guarded(self, [](TreeBuilder& builder) { builder.endDtd(); }); });
    XML_SetEntityDeclHandler(
        parser, [](void* self, const char* name, int isParameter, const char* value, int size,
                   const char*, const char*, const char*, const char*) {
          guarded(self, [&](TreeBuilder& builder) {
            builder.countDeclaration();
            if (isParameter == 0 && value != nullptr) {
              builder.addEntity(name, {value, static_cast<std::size_t>(size)});
            }
          });
        });
    XML_SetAttlistDeclHandler(
        parser, [](void* self, const char*, const char*, const char*, const char* byDefault, int) {
          guarded(self, [&](TreeBuilder& builder) {
            builder.countDeclaration();
            if (byDefault != nullptr) {
              builder.checkDefault();
            }
          });
        });
  }

  Refusal syntaxError() const {
    const XML_Error code = XML_GetErrorCode(m_parser.get());
    if (code == XML_ERROR_NO_MEMORY) {
      throw std::bad_alloc();
    }
    I18NString reason = XML_ErrorString(code);
    if (code == XML_ERROR_NO_ELEMENTS && m_depth > 0) {
      reason = "the document ends inside of the element " +
               quoted(std::string_view(m_data->entries[m_open].name.toStdString()));
    }
    return {reason, line(), column()};
  }

  void startElement(const char* name, const char** attributes) {
    if (m_depth == MAX_DEPTH) {
      refuse("elements are nested more than 256 deep");
    }
    if (m_hasDtd) {
      const XML_Parser parser = m_parser.get();
      refuseUndeclared(
          fromDocument(m_bytes.substr(static_cast<std::size_t>(XML_GetCurrentByteIndex(parser)),
                                      static_cast<std::size_t>(XML_GetCurrentByteCount(parser)))));
    }
    const auto index = static_cast<std::uint32_t>(m_data->entries.size());
    add(ZEBIDOM_Node::ELEMENT_NODE, name, "");
    m_open = index;
    ++m_depth;
    for (; *attributes != nullptr; attributes += 2) {
      add(ZEBIDOM_Node::ATTRIBUTE_NODE, attributes[0], attributes[1]);
      ++m_data->entries[index].attributeCount;
    }
  }

  void endElement() {
    Entry& element = m_data->entries[m_open];
    element.end = static_cast<std::uint32_t>(m_data->entries.size());
    m_open = element.parent;
    --m_depth;
  }

  void addText(std::string_view text) {
    Entry& last = m_data->entries.back();
    if (last.type == ZEBIDOM_Node::TEXT_NODE && last.parent == m_open) {
      countText(text.size());
      last.value.append(text);
      return;
    }
    add(ZEBIDOM_Node::TEXT_NODE, "", text).name = "#text";
  }

  /// Adds a node below the element that is open; the result is valid until the next is added.
  Entry& add(int type, std::string_view name, std::string_view value) {
    if (m_data->entries.size() == MAX_ENTRIES) {
      refuse("the document has more than 250000 nodes");
    }
    if (type == ZEBIDOM_Node::ATTRIBUTE_NODE && value.size() > MAX_ATTRIBUTE) {
      refuse("the attribute " + quoted(name) + " is longer than 64 KiB");
    }
    countText(name.size() + value.size());
    Entry& entry = m_data->entries.emplace_back();
    entry.type = type;
    entry.parent = m_open;
    entry.end = static_cast<std::uint32_t>(m_data->entries.size());
    entry.line = line();
    entry.column = column();
    entry.name.append(name);
    entry.value.append(value);
    return entry;
  }

  void countText(std::size_t bytes) {
    m_textSize += bytes;
    if (m_textSize > FREE_TEXT + MAX_TEXT_PER_BYTE * m_bytes.size()) {
      refuse("entities or default attributes expand to too much text");
    }
  }

  void countDeclaration() {
    if (++m_declarations > MAX_DECLARATIONS) {
      refuse("the document declares more than 256 entities and attributes");
    }
  }

  void addEntity(const char* name, std::string_view value) {
    m_entities.insert(name);
    m_entityValues.append(value).append(1, '\n');
  }

  /// A default value is a token in quotes, at which the reader stands.
  void checkDefault() const {
    const auto begin = static_cast<std::size_t>(XML_GetCurrentByteIndex(m_parser.get()));
    const std::string token = fromDocument(m_bytes.substr(begin, 2 * MAX_ATTRIBUTE));
    refuseUndeclared(token.substr(0, token.find(token.front(), 1)));
  }

  /// The values are looked at here because they may name entities that are declared later.
  void endDtd() { refuseUndeclared(std::exchange(m_entityValues, {})); }

  /// The XML reader takes a reference in an attribute for nothing when only a DTD that is not read
  /// can declare the entity, and calls no handler; so references are looked for in what is written.
  void refuseUndeclared(const std::string& text) const {
    static const std::set<std::string_view> PREDEFINED{"amp", "apos", "gt", "lt", "quot"};
    for (std::size_t at = text.find('&'); at != std::string::npos; at = text.find('&', at + 1)) {
      const std::size_t end = text.find_first_of("&;<>\"' \t\r\n", at + 1);
      if (end == std::string::npos || text[end] != ';' || text[at + 1] == '#') {
        continue;
      }
      const std::string_view name(&text[at + 1], end - at - 1);
      if (PREDEFINED.count(name) == 0 && m_entities.find(name) == m_entities.end()) {
        refuse(OUTSIDE + quoted({&text[at], end - at + 1}));
      }
    }
  }

  /// A part of the document as UTF-8.
  std::string fromDocument(std::string_view bytes) const {
    const bool isBig = m_bytes.front() == '\xFE' || m_bytes.front() == '\0';
    if (!isBig && m_bytes.front() != '\xFF' && m_bytes[1] != '\0') {
      return I18NConverter(m_encoding.c_str()).toText(bytes).toStdString();
    }
    std::u16string units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      const auto first = static_cast<unsigned char>(bytes[i]);
      const auto second = static_cast<unsigned char>(bytes[i + 1]);
      units += static_cast<char16_t>(isBig ? first << 8 | second : second << 8 | first);
    }
    return I18NString(units.data(), units.size()).toStdString();
  }

  int line() const { return static_cast<int>(XML_GetCurrentLineNumber(m_parser.get())); }
  /// The byte order mark, which nobody sees, is no column.
  int column() const {
    const bool isBehindMark = line() == 1 && hasByteOrderMark(m_bytes);
    const auto columns = static_cast<int>(XML_GetCurrentColumnNumber(m_parser.get()));
    return std::max(columns - (isBehindMark ? 1 : 0), 0) + 1;
  }

  const std::string_view m_bytes;
  const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> m_parser;
  const std::shared_ptr<ZEBIDOM_DocumentData> m_data;
  std::uint32_t m_open = ZEBIDOM_DocumentData::ROOT;  // the element that nodes are added to
  std::size_t m_depth = 0;
  std::size_t m_textSize = 0;
  int m_declarations = 0;
  bool m_hasDtd = false;
  std::string m_encoding = "utf-8";
  std::set<std::string, std::less<>> m_entities;  // the names of those declared in the document
  std::string m_entityValues;
  std::exception_ptr m_thrown;  // by a handler
};

}  // namespace

ZEBIDOM_Parser::ZEBIDOM_Parser(int validation) { ZEB_ASSERT(validation == 0, SOURCE, __LINE__); }

void ZEBIDOM_Parser::setLoadExternalDTD(int load) { ZEB_ASSERT(load == 0, SOURCE, __LINE__); }

int ZEBIDOM_Parser::parse(const I18NString& fileName, ZEBIDOM_Document& document) {
  return parseAfter([&] { return readFile(fileName); }, document);
}

int ZEBIDOM_Parser::parse(std::istream& in, ZEBIDOM_Document& document) {
  return parseAfter([&] { return readAll(in); }, document);
}

template <typename Reading>
int ZEBIDOM_Parser::parseAfter(Reading read, ZEBIDOM_Document& document) {
  Refusal refusal;
  const int parsed = zebTranslate(SOURCE, __LINE__, [&] {
    try {
      m_text = read();
      document = ZEBIDOM_Document(TreeBuilder(m_text).build());
      return 1;
    } catch (const Refusal& caught) {
      refusal = caught;
      return 0;
    }
  });
  m_errorLine = refusal.line;
  m_errorColumn = refusal.column;
  m_errorReason = refusal.reason;
  return parsed;
}
