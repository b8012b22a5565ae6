// The document tree: what it makes of good files, and how it refuses bad and hostile ones.

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "platform/ZEBAssertError.h"
#include "platform/ZEBIDOM_DOMImplementation.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_Element.h"
#include "platform/ZEBIDOM_NamedNodeMap.h"
#include "platform/ZEBIDOM_NodeList.h"
#include "platform/ZEBIDOM_Parser.h"
#include "support/Texts.h"
#include "support/Workplace.h"

namespace {

/// What one parse came to.
struct Parsed {
  ZEBIDOM_Document document = ZEBIDOM_DOMImplementation::getInstance().createDocument();
  int result = 0;
  int line = 0;
  int column = 0;
  std::string reason;

  ZEBIDOM_Element root() const { return document.getDocumentElement(); }
};

Parsed parseFile(const std::string& name) {
  Parsed parsed;
  ZEBIDOM_Parser parser(0);
  parser.setLoadExternalDTD(0);
  parsed.result = parser.parse(name, parsed.document);
  parsed.line = parser.getErrorLine();
  parsed.column = parser.getErrorColumn();
  parsed.reason = parser.getErrorReason().toStdString();
  return parsed;
}

Parsed parseText(const std::string& text) {
  Workplace::write("document.xml", text);
  return parseFile("document.xml");
}

class Dom : public ::testing::Test {
 private:
  Workplace m_workplace;
};

}  // namespace

TEST_F(Dom, BuildsTheTreeOfADocument) {
  const Parsed parsed = parseText(
      "<?xml version=\"1.0\"?>\n"
      "<!DOCTYPE log4j:configuration SYSTEM \"absent.dtd\">\n"
      "<log4j:configuration debug='null'>text<!-- left out --> goes on<![CDATA[ <&>]]>\n"
      "  <appender name=\"A\" class=\"x &lt;&#233;&gt;\"><appender/></appender>\n"
      "  <?left out?><root>in</root>out\n"
      "</log4j:configuration>");
  ASSERT_EQ(parsed.result, 1) << parsed.reason;
  EXPECT_EQ(parsed.line, 0);
  EXPECT_EQ(parsed.reason, "");
  const ZEBIDOM_Element root = parsed.root();
  EXPECT_EQ(root.getTagName(), "log4j:configuration");
  EXPECT_EQ(root.getParentNode(), parsed.document);
  EXPECT_EQ(root.getOwnerDocument(), parsed.document);
  EXPECT_TRUE(root.getNextSibling().isNull());
  EXPECT_TRUE(parsed.document.getOwnerDocument().isNull());

  const ZEBIDOM_NodeList children = root.getChildNodes();
  ASSERT_EQ(children.getLength(), 5U);
  EXPECT_EQ(children.item(0).getNodeType(), 3);
  EXPECT_EQ(children.item(0).getNodeName(), "#text");
  EXPECT_EQ(children.item(0).getNodeValue(), "text goes on <&>\n  ");
  EXPECT_EQ(children.item(1).getNextSibling(), children.item(2));
  EXPECT_EQ(children.item(3).getNodeName(), "root");
  EXPECT_EQ(children.item(3).getParentNode(), root);
  EXPECT_EQ(children.item(3).getFirstChild().getNodeValue(), "in");
  EXPECT_TRUE(children.item(3).getFirstChild().getFirstChild().isNull());
  EXPECT_EQ(children.item(4).getNodeValue(), "out\n");
  EXPECT_TRUE(children.item(4).getNextSibling().isNull());
  EXPECT_TRUE(children.item(5).isNull());

  const ZEBIDOM_Element appender(children.item(1));
  EXPECT_EQ(appender.getLine(), 4);
  EXPECT_EQ(appender.getColumn(), 3);
  EXPECT_EQ(appender.getAttribute("class").toUtf16(), u"x <\u00E9>");
  EXPECT_TRUE(appender.hasAttribute("name"));
  EXPECT_FALSE(appender.hasAttribute("Name"));
  EXPECT_EQ(appender.getAttribute("absent"), "");
  const ZEBIDOM_NamedNodeMap attributes = appender.getAttributes();
  ASSERT_EQ(attributes.getLength(), 2U);
  EXPECT_EQ(attributes.item(0).getNodeName(), "name");
  EXPECT_EQ(attributes.item(1), attributes.getNamedItem("class"));
  EXPECT_EQ(attributes.item(0).getNodeType(), 2);
  EXPECT_TRUE(attributes.item(0).getParentNode().isNull());
  EXPECT_TRUE(attributes.item(0).getNextSibling().isNull());
  EXPECT_TRUE(attributes.item(2).isNull());

  EXPECT_TRUE(ZEBIDOM_Element(children.item(0)).isNull()) << "text is no element";
  EXPECT_EQ(parsed.document.getElementsByTagName("appender").getLength(), 2U);
  EXPECT_EQ(parsed.document.getElementsByTagName("*").getLength(), 4U);
  EXPECT_EQ(appender.getElementsByTagName("appender").item(0), appender.getFirstChild());
  EXPECT_EQ(appender.getElementsByTagName("root").getLength(), 0U);
}

TEST_F(Dom, NullHandlesAnswerWithNothing) {
  const ZEBIDOM_Element null;
  EXPECT_TRUE(null.isNull());
  EXPECT_EQ(null.getNodeType(), 0);
  EXPECT_EQ(null.getNodeName() + null.getNodeValue() + null.getAttribute("a"), "");
  EXPECT_TRUE(null.getParentNode().isNull());
  EXPECT_TRUE(null.getNextSibling().isNull());
  EXPECT_TRUE(null.getOwnerDocument().getDocumentElement().isNull());
  EXPECT_EQ(null.getChildNodes().getLength() + null.getElementsByTagName("*").getLength(), 0U);
  EXPECT_TRUE(null.getAttributes().item(0).isNull());
  EXPECT_EQ(null.getLine() + null.getColumn(), 0);
  EXPECT_EQ(null, ZEBIDOM_Element(ZEBIDOM_Node()));
}

TEST_F(Dom, NodesOutliveTheirDocumentAndParser) {
  ZEBIDOM_Element inner;
  {
    const Parsed parsed = parseText("<a><b name='" + std::string(100, 'n') + "'/></a>");
    inner = ZEBIDOM_Element(parsed.document.getElementsByTagName("b").item(0));
  }
  EXPECT_EQ(inner.getAttribute("name").length(), 100U);
  EXPECT_EQ(inner.getOwnerDocument().getDocumentElement().getTagName(), "a");
}

TEST_F(Dom, RefusedFilesChangeNothing) {
  Parsed parsed = parseText("<good/>");
  Workplace::write("bad.xml", "<bad>");
  ZEBIDOM_Parser parser(0);
  EXPECT_EQ(parser.parse("bad.xml", parsed.document), 0);
  EXPECT_NE(parser.getErrorLine(), 0);
  EXPECT_EQ(parsed.root().getTagName(), "good");
  EXPECT_EQ(parser.parse("document.xml", parsed.document), 1);
  EXPECT_EQ(parser.getErrorLine(), 0);
  EXPECT_EQ(parser.getErrorReason(), "");
}

TEST_F(Dom, TellsWhereAndWhyADocumentIsNotWellFormed) {
  const struct {
    const char* text;
    int line;
    int column;
    const char* reason;
  } cases[] = {
      {"<a>\n  <b></a>", 2, 8, "mismatched tag"},
      {"<a>\n<b>x", 2, 5, "the document ends inside of the element \"b\""},
      {"<a>\n<b nam", 2, 1, "unclosed token"},
      {"<a x='1' x='2'/>", 1, 10, "duplicate attribute"},
      {"<a/>\n<b/>", 2, 1, "junk after document element"},
      {"<a>&undeclared;</a>", 1, 4, "undefined entity"},
      {"  \n", 2, 1, "no element found"},
      {"plain text", 1, 1, "syntax error"},
      {"<a>\xC3(</a>", 1, 4, "not well-formed"},
      {"<?xml version='1.0' encoding='US-ASCII'?>\n<a>\xE9</a>", 2, 4, "not well-formed"},
      {"<?xml version='1.0' encoding='windows-1252'?>\n<a/>", 1, 31, "unknown encoding"},
  };
  for (const auto& expected : cases) {
    const Parsed parsed = parseText(expected.text);
    EXPECT_EQ(parsed.result, 0) << expected.text;
    EXPECT_EQ(parsed.line, expected.line) << expected.text;
    EXPECT_EQ(parsed.column, expected.column) << expected.text;
    EXPECT_NE(parsed.reason.find(expected.reason), std::string::npos) << parsed.reason;
  }
}

TEST_F(Dom, TellsWhyAFileCannotBeRead) {
  Workplace::write("empty.xml", "");
  const std::pair<const char*, const char*> cases[] = {
      {"absent.xml", "cannot be opened: No such file"},
      {"", "cannot be opened"},
      {".", "is a directory"},
      {"empty.xml", "is empty"},
      {"/proc/self/mem", "cannot be read: "},
      {"/dev/zero", "larger than 4 MiB"},
  };
  for (const auto& [name, reason] : cases) {
    const Parsed parsed = parseFile(name);
    EXPECT_EQ(parsed.result, 0) << name;
    EXPECT_NE(parsed.reason.find(reason), std::string::npos) << parsed.reason;
    EXPECT_EQ(parsed.line, 0) << name;
  }
}

TEST_F(Dom, ReadsItsEncodings) {
  const std::string head = "<?xml version='1.0' encoding='";
  std::string little = "\xFF\xFE";
  std::string big = "\xFE\xFF";
  for (const char16_t unit : std::u16string(u"<a>\u00E9\xD83D\xDE00</a>")) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    little += {low, high};
    big += {high, low};
  }
  const std::pair<std::string, std::u16string> cases[] = {
      {"<a>\xC3\xA9</a>", u"\u00E9"},
      {"\xEF\xBB\xBF<a>\xC3\xA9</a>", u"\u00E9"},
      {head + "ISO-8859-1'?><a>\xC3\xA9</a>", u"\u00C3\u00A9"},
      {head + "US-ASCII'?><a>&#233;</a>", u"\u00E9"},
      {little, u"\u00E9\xD83D\xDE00"},
      {big, u"\u00E9\xD83D\xDE00"},
  };
  for (const auto& [bytes, text] : cases) {
    const Parsed parsed = parseText(bytes);
    EXPECT_EQ(parsed.result, 1) << parsed.reason;
    EXPECT_EQ(parsed.root().getFirstChild().getNodeValue().toUtf16(), text) << bytes;
  }
}

TEST_F(Dom, ReadsEntitiesOfTheDocumentItself) {
  const Parsed parsed = parseText(
      "<!DOCTYPE a [<!ENTITY dir '/var/log'><!ENTITY item '<b f=\"&dir;/x\"/>'>]><a>&item;</a>");
  ASSERT_EQ(parsed.result, 1) << parsed.reason;
  EXPECT_EQ(ZEBIDOM_Element(parsed.root().getFirstChild()).getAttribute("f"), "/var/log/x");
}

TEST_F(Dom, TakesManyNodesAndLeavesOutDeclarationsOfOtherFiles) {
  const Parsed deepest = parseText(repeated("<a>", 256) + repeated("</a>", 256));
  EXPECT_EQ(deepest.document.getElementsByTagName("a").getLength(), 256U) << deepest.reason;
  const Parsed wide = parseText("<a>" + repeated("<b/>", 200000) + "</a>");
  EXPECT_EQ(wide.root().getChildNodes().getLength(), 200000U) << wide.reason;
  Workplace::write("other.dtd", "<!ATTLIST a leaked CDATA 'SECRET'>");
  for (const char* const type : {"SYSTEM 'other.dtd'", "[<!ENTITY % p SYSTEM 'other.dtd'> %p;]"}) {
    const Parsed parsed = parseText("<!DOCTYPE a " + std::string(type) + "><a/>");
    EXPECT_EQ(parsed.result, 1) << parsed.reason;
    EXPECT_EQ(parsed.root().getAttributes().getLength(), 0U);
  }
}

TEST_F(Dom, OffersNoValidation) {
  EXPECT_THROW(ZEBIDOM_Parser(1), ZEBAssertError);
  EXPECT_THROW(ZEBIDOM_Parser(0).setLoadExternalDTD(1), ZEBAssertError);
}
