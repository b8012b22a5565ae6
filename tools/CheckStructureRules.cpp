#include "tools/CheckStructureRules.h"

#include <algorithm>
#include <map>

#include "config/LOGDOMConfigurator.h"
#include "config/LOGParameterTable.h"
#include "platform/ZEBIDOM_NamedNodeMap.h"
#include "tools/CheckWords.h"

namespace {

using Words = std::vector<std::string>;

struct Entry {
  const char* tag;
  Words parents;
  Words attributes;
};

constexpr const char* ROOT_ELEMENT = "log4j:configuration";

/// Where elements are read, and which attributes of theirs.
const std::vector<Entry>& vocabulary() {
  static const std::vector<Entry> entries{
      {ROOT_ELEMENT, {}, {"threshold", "debug", "configDebug"}},
      {"appender", {ROOT_ELEMENT}, {"name", "class", "addProcID"}},
      {"logger", {ROOT_ELEMENT}, {"name", "class", "additivity"}},
      {"category", {ROOT_ELEMENT}, {"name", "class", "additivity"}},
      {"root", {ROOT_ELEMENT}, {}},
      {"renderer", {ROOT_ELEMENT}, {"renderedClass", "renderingClass"}},
      {"categoryFactory", {ROOT_ELEMENT}, {"class"}},
      {"level", {"logger", "category", "root"}, {"value", "class"}},
      {"priority", {"logger", "category", "root"}, {"value", "class"}},
      {"appender-ref", {"logger", "category", "root", "appender", "errorHandler"}, {"ref"}},
      {"param",
       {"appender", "layout", "filter", "logger", "category", "root", "errorHandler",
        "categoryFactory"},
       {"name", "value"}},
      {"layout", {"appender"}, {"class"}},
      {"filter", {"appender"}, {"class"}},
      {"errorHandler", {"appender"}, {"class"}},
      {"logger-ref", {"errorHandler"}, {"ref"}},
      {"root-ref", {"errorHandler"}, {}},
  };
  return entries;
}

const Entry* entryOf(const std::string& tag) {
  for (const Entry& entry : vocabulary()) {
    if (tag == entry.tag) {
      return &entry;
    }
  }
  return nullptr;
}

bool contains(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

Words childrenOf(const std::string& parent) {
  Words tags;
  for (const Entry& entry : vocabulary()) {
    if (contains(entry.parents, parent)) {
      tags.emplace_back(entry.tag);
    }
  }
  return tags;
}

/// The param of the component that is called so, but for case; empty when there is none.
std::string paramOf(const ZEBIDOM_Element& component, const std::string& name) {
  for (const LOGParameterTable::Param& known :
       LOGParameterTable::paramsOf(CheckedDocument::classOf(component))) {
    if (CheckWords::lower(known.name) == CheckWords::lower(name)) {
      return known.name;
    }
  }
  return "";
}

std::string inAngles(const std::string& tag) { return "<" + tag + ">"; }

/// Whether the element means nothing, or not what it should, without the attribute.
bool isNeeded(const std::string& attribute, const std::string& tag) {
  return contains({"name", "value", "ref"}, attribute) ||
         (attribute == "class" && !contains({"logger", "category", "level", "priority"}, tag));
}

std::string assignment(const std::string& name, const std::string& value) {
  return name + "=" + CheckWords::quoted(value);
}

/// The name with dots where other languages and paths have "::" and "/".
std::string withDots(std::string name) {
  for (const std::string separator : {"::", "/"}) {
    for (std::size_t at; (at = name.find(separator)) != std::string::npos;) {
      name.replace(at, separator.size(),
                   at == 0 || at + separator.size() == name.size() ? "" : ".");
    }
  }
  return name;
}

}  // namespace

bool CheckStructureRules::checkRoot() {
  const ZEBIDOM_Element root = m_document.root();
  const std::string tag = CheckedDocument::tag(root);
  if (tag == ROOT_ELEMENT) {
    return true;
  }
  const CheckPlace place = CheckedDocument::placeOf(root);
  if (tag == "configuration") {
    m_findings.warn("old-root", root, "", "the root element <configuration> is out of date",
                    inAngles(ROOT_ELEMENT));
    return true;
  }
  m_findings.fail("wrong-root", place,
                  "the root element is " + inAngles(tag) + ", so nothing of the document is used",
                  inAngles(ROOT_ELEMENT));
  return false;
}

void CheckStructureRules::checkAll() {
  checkRootAttributes();
  checkAttributes(m_document.root());
  checkText(m_document.root());
  for (const ZEBIDOM_Element& child : CheckedDocument::children(m_document.root())) {
    checkElement(child, ROOT_ELEMENT);
  }
  checkNames("appender", m_document.elements("appender"),
             "references mean the first one, and this one is never built");
  std::vector<ZEBIDOM_Element> loggers = CheckedDocument::children(m_document.root(), "logger");
  for (const ZEBIDOM_Element& old : CheckedDocument::children(m_document.root(), "category")) {
    loggers.push_back(old);
  }
  std::sort(loggers.begin(), loggers.end(), [](const auto& a, const auto& b) {
    return a.getLine() != b.getLine() ? a.getLine() < b.getLine() : a.getColumn() < b.getColumn();
  });
  checkNames("logger", loggers, "the appenders given here replace those given before");
  checkOrder(loggers);
  const auto roots = CheckedDocument::children(m_document.root(), "root");
  for (std::size_t i = 1; i < roots.size(); ++i) {
    m_findings.warn(
        "duplicate-root", roots[i], "",
        "there is a <root> before this one; the appenders given here replace those given there",
        "one <root> with everything in it");
  }
}

void CheckStructureRules::checkElement(const ZEBIDOM_Element& element, const std::string& parent) {
  const std::string tag = CheckedDocument::tag(element);
  const Entry* const entry = entryOf(tag);
  if (entry == nullptr) {
    // No element but the root has a prefix, and there are no elements around all of a kind.
    const auto meant = CheckWords::nearest(tag.substr(tag.rfind(':') + 1), childrenOf(parent));
    const auto inside = CheckedDocument::children(element);
    const bool isWrapper = std::any_of(inside.begin(), inside.end(), [&](const auto& child) {
      return contains(childrenOf(parent), CheckedDocument::tag(child));
    });
    m_findings.warn(
        "unknown-element", element, "",
        "the element " + inAngles(tag) + " is not known: it is skipped with all that is in it",
        isWrapper ? "what is in it, without " + inAngles(tag) + " around it"
        : meant   ? inAngles(*meant)
                  : CheckWords::oneOf(childrenOf(parent)));
    return;
  }
  if (!contains(entry->parents, parent)) {
    const bool isFoundAnyway = tag == "appender";
    m_findings.warn("misplaced-element", element, "",
                    "the element " + inAngles(tag) +
                        (isFoundAnyway ? " is found, but belongs elsewhere than"
                                       : " is skipped with all that is in it: it is not read") +
                        " in " + inAngles(parent),
                    entry->parents.empty() ? "leave it out"
                                           : inAngles(tag) + " inside of " +
                                                 inAngles(CheckWords::either(entry->parents)));
    if (!isFoundAnyway) {
      return;
    }
  }
  checkAttributes(element);
  checkText(element);
  if (tag == "logger" || tag == "category" || tag == "root") {
    checkLogger(element);
  } else if (tag == "appender") {
    checkAppender(element);
  } else if (tag == "appender-ref") {
    checkReference(element, parent);
  }
  checkLibraries(element, tag);
  for (const ZEBIDOM_Element& child : CheckedDocument::children(element)) {
    checkElement(child, tag);
  }
}

void CheckStructureRules::checkAttributes(const ZEBIDOM_Element& element) {
  const ZEBIDOM_NamedNodeMap attributes = element.getAttributes();
  for (std::size_t i = 0; i < attributes.getLength(); ++i) {
    checkAttribute(element, attributes.item(i));
  }
}

void CheckStructureRules::checkAttribute(const ZEBIDOM_Element& element,
                                         const ZEBIDOM_Node& attribute) {
  const std::string name = attribute.getNodeName().toStdString();
  const std::string value = attribute.getNodeValue().toStdString();
  const std::string tag = CheckedDocument::tag(element);
  const Entry* const entry = entryOf(element == m_document.root() ? ROOT_ELEMENT : tag);
  if (name == "xmlns" || name.find(':') != std::string::npos) {
    return;
  }
  const Words& known = entry->attributes;
  if (!contains(known, name)) {
    const auto missing = std::find_if(known.begin(), known.end(), [&](const std::string& other) {
      return isNeeded(other, tag) && !element.hasAttribute(other);
    });
    std::string instead = known.empty() ? "leave it out" : CheckWords::oneOf(known);
    if (CheckWords::lower(name) == "level" && !contains(known, "value")) {
      instead = "<level value=" + CheckWords::quoted(value) + "/> inside of the element";
    } else if (const std::string param = paramOf(element, name); !param.empty()) {
      instead = "<param " + assignment("name", param) + " " + assignment("value", value) +
                "/> inside of it";
    } else if (const auto meant = CheckWords::nearest(name, known)) {
      instead = assignment(*meant, value);
    } else if (CheckWords::lower(name) == "threshold") {
      instead = "a <filter class=\"LOGLevelRangeFilter\"> with LevelMin";
    } else if (missing != known.end()) {
      instead = assignment(*missing, value);
    }
    m_findings.warn("unknown-attribute", element, name.c_str(),
                    "the attribute " + CheckWords::quoted(name) + " is ignored: " + inAngles(tag) +
                        " has none of that name",
                    instead);
    return;
  }
  if (value.find("${") != std::string::npos) {
    m_findings.warn("variable", element, name.c_str(),
                    "nothing is put in the place of a variable: " + CheckWords::quoted(value) +
                        " is taken as it stands",
                    "the text that is meant");
  }
  const bool isName = name == "name" && tag != "param";
  if ((isName || name == "ref") && CheckWords::trimmed(value) != value) {
    m_findings.warn("blanks", element, name.c_str(),
                    "the blanks around " + CheckWords::quoted(value) + " are part of the name",
                    assignment(name, CheckWords::trimmed(value)));
  }
}

void CheckStructureRules::checkText(const ZEBIDOM_Element& element) {
  for (ZEBIDOM_Node child = element.getFirstChild(); !child.isNull();
       child = child.getNextSibling()) {
    const std::string text = CheckWords::trimmed(child.getNodeValue().toStdString());
    if (child.getNodeType() == ZEBIDOM_Node::TEXT_NODE && !text.empty()) {
      const std::string tag = CheckedDocument::tag(element);
      const Entry* const entry = entryOf(tag);
      std::string instead = "a comment, or nothing";
      for (const char* const attribute : {"value", "ref"}) {
        if (entry != nullptr && contains(entry->attributes, attribute)) {
          const std::string name = CheckedDocument::attribute(element, "name");
          instead = "<" + tag + (name.empty() ? "" : " " + assignment("name", name)) + " " +
                    assignment(attribute, text) + "/>";
        }
      }
      m_findings.warn("text", element, "",
                      "the text " + CheckWords::quoted(text) + " in " + inAngles(tag) +
                          " is ignored: only attributes and elements are read",
                      instead);
    }
  }
}

void CheckStructureRules::checkRootAttributes() {
  const ZEBIDOM_Element root = m_document.root();
  const std::string debug = CheckedDocument::attribute(root, "debug");
  if (contains({"false", "no", "off", "0"}, CheckWords::lower(CheckWords::trimmed(debug)))) {
    m_findings.warn(
        "debug", root, "debug",
        assignment("debug", debug) +
            " turns the library's internal debugging on: every value does but an empty one and "
            "\"null\"",
        "no attribute debug");
  }
  const std::string configDebug = CheckedDocument::attribute(root, "configDebug");
  if (!configDebug.empty() && configDebug != "null") {
    m_findings.warn(
        "debug", root, "configDebug",
        "the attribute \"configDebug\" is out of date, and turns internal debugging on whatever "
        "it says",
        "debug=\"true\", or nothing");
  }
  const std::string threshold = CheckedDocument::attribute(root, "threshold");
  if (!threshold.empty() && threshold != "null" && !CheckWords::isLevel(threshold)) {
    m_findings.warn("unknown-level", root, "threshold",
                    CheckWords::quoted(threshold) +
                        " is no level: the threshold stays what it was, at first ALL",
                    assignment("threshold", CheckWords::probableLevel(threshold).value_or("INFO")));
  }
}

void CheckStructureRules::checkTruthValue(const ZEBIDOM_Element& element, const char* attribute,
                                          bool caseCounts) {
  const std::string value = CheckedDocument::attribute(element, attribute);
  const bool isMisspelt = caseCounts && value != "false" && CheckWords::lower(value) == "false";
  if (!value.empty() && (isMisspelt || !CheckWords::isTruthValue(value))) {
    m_findings.warn("truth-value", element, attribute,
                    assignment(attribute, value) + " means true: everything does but \"false\"",
                    assignment(attribute, "true") + " or " + assignment(attribute, "false"));
  }
}

void CheckStructureRules::checkLogger(const ZEBIDOM_Element& element) {
  checkLevels(element);
  for (const ZEBIDOM_Element& param : CheckedDocument::children(element, "param")) {
    m_findings.warn("param-without-effect", param, "", "a param of a logger has no effect",
                    "leave it out");
  }
  if (CheckedDocument::tag(element) == "root") {
    return;
  }
  checkTruthValue(element, "additivity");
  const std::string name = CheckedDocument::attribute(element, "name");
  if (CheckWords::lower(name) == "root") {
    m_findings.warn("logger-named-root", element, "name",
                    "this is a logger of the name " + CheckWords::quoted(name) +
                        " below the root logger, not the root logger itself",
                    "<root>");
  }
  if (!LOGDOMConfigurator::isReasonableLoggerName(element.getAttribute("name"))) {
    m_findings.warn("logger-name", element, "name",
                    "the element is skipped: the name of a logger has no more than 1024 characters "
                    "and 64 dots",
                    "a shorter name");
  } else if (name.find('*') != std::string::npos) {
    const std::string above = name.substr(0, name.find_last_not_of(".*") + 1);
    m_findings.warn("logger-name", element, "name",
                    "a \"*\" in the name of a logger stands for itself; a logger's settings go to "
                    "those below it anyway",
                    above.empty() ? "<root>" : assignment("name", above));
  } else if (!name.empty() &&
             (name.front() == '.' || name.back() == '.' || name.find("..") != std::string::npos)) {
    m_findings.warn(
        "logger-name", element, "name",
        "the dots in " + CheckWords::quoted(name) +
            " enclose an empty component, so that it is above no logger that it seems to be above",
        "a name whose components have a dot between them");
  } else if (const std::string dotted = withDots(name); dotted != name) {
    m_findings.warn("logger-name", element, "name",
                    "only dots separate the components of a name: no logger is above " +
                        CheckWords::quoted(name) + " or below it for its \"::\" or \"/\"",
                    assignment("name", dotted));
  }
  const std::string className = CheckedDocument::classOf(element);
  if (!className.empty() &&
      CheckedDocument::children(m_document.root(), "categoryFactory").empty()) {
    m_findings.warn("logger-class", element, "class",
                    "the element is skipped: a logger of class " + CheckWords::quoted(className) +
                        " needs a <categoryFactory>, and the document has none",
                    "no attribute class");
  }
}

void CheckStructureRules::checkLevels(const ZEBIDOM_Element& logger) {
  const bool isRoot = CheckedDocument::tag(logger) == "root";
  bool isFirst = true;
  for (const ZEBIDOM_Element& child : CheckedDocument::children(logger)) {
    const std::string tag = CheckedDocument::tag(child);
    if (tag != "level" && tag != "priority") {
      continue;
    }
    checkLevel(child, isRoot);
    if (!isFirst) {
      m_findings.warn("duplicate-level", child, "",
                      "there is a level before this one; the last one counts", "one <level>");
    }
    isFirst = false;
  }
}

void CheckStructureRules::checkLevel(const ZEBIDOM_Element& level, bool isRoot) {
  const std::string value = CheckedDocument::attribute(level, "value");
  if (!CheckedDocument::attribute(level, "class").empty()) {
    m_findings.warn("level-class", level, "class", "the class of a level has no effect",
                    "no attribute class");
  }
  if (value == "inherited" || value == "null") {
    if (isRoot) {
      m_findings.warn(
          "root-level", level, "value",
          "the root logger has nobody to inherit from: its level stays what it was, at first DEBUG",
          assignment("value", "INFO"));
    }
  } else if (!CheckWords::isLevel(value)) {
    const std::string word = CheckWords::lower(CheckWords::trimmed(value));
    const bool isInherited = !isRoot && (word == "inherited" || word == "null");
    m_findings.warn(
        "unknown-level", level, "value", CheckWords::quoted(value) + " is no level: it means DEBUG",
        assignment("value",
                   isInherited ? word : CheckWords::probableLevel(value).value_or("DEBUG")));
  }
}

void CheckStructureRules::checkAppender(const ZEBIDOM_Element& element) {
  const std::string name = CheckedDocument::attribute(element, "name");
  const bool counts = m_document.appender(name) == element;
  if (!name.empty() && counts && m_unused.count(name) > 0) {
    m_findings.warn(
        "unused-appender", element, "",
        "the appender " + CheckWords::quoted(name) +
            " is never built: no <appender-ref> of a logger leads to it, directly or through an "
            "asynchronous appender",
        "<appender-ref ref=" + CheckWords::quoted(name) + "/> in <root> or a <logger>");
  }
  checkTruthValue(element, "addProcID", true);
  const std::string className = CheckedDocument::classOf(element);
  if (element.hasAttribute("addProcID") && className != "LOGRollingFileAppender") {
    m_findings.warn("attribute-without-effect", element, "addProcID",
                    "addProcID has no effect: only LOGRollingFileAppender reads it",
                    "class=\"LOGRollingFileAppender\", or no addProcID");
  }
}

void CheckStructureRules::collectUnused() {
  std::multimap<std::string, std::string> references;  // from appenders to appenders
  std::set<std::string> reached;
  std::set<std::string> referredTo;
  const auto follow = [&](Words names) {
    while (!names.empty()) {
      const std::string name = names.back();
      names.pop_back();
      if (reached.insert(name).second) {
        const auto [begin, end] = references.equal_range(name);
        std::for_each(begin, end, [&](const auto& next) { names.push_back(next.second); });
      }
    }
  };
  Words fromLoggers;
  for (const ZEBIDOM_Element& reference : m_document.elements("appender-ref")) {
    const ZEBIDOM_Element holder(reference.getParentNode());
    const std::string name = CheckedDocument::attribute(reference, "ref");
    const std::string tag = CheckedDocument::tag(holder);
    const std::string holderName = CheckedDocument::attribute(holder, "name");
    if (tag == "appender" && holderName != name) {
      references.emplace(holderName, name);
      referredTo.insert(name);
    } else if (tag != "appender" && tag != "errorHandler") {
      fromLoggers.push_back(name);
    }
  }
  follow(fromLoggers);
  // Those that only an unused one refers to are no further mistake; some refer to each other.
  for (const bool isReferredTo : {false, true}) {
    for (const ZEBIDOM_Element& appender : m_document.elements("appender")) {
      const std::string name = CheckedDocument::attribute(appender, "name");
      if (reached.count(name) == 0 && (referredTo.count(name) > 0) == isReferredTo) {
        m_unused.insert(name);
        follow({name});
      }
    }
  }
}

void CheckStructureRules::checkReference(const ZEBIDOM_Element& reference,
                                         const std::string& parent) {
  const std::string name = CheckedDocument::attribute(reference, "ref");
  const ZEBIDOM_Element holder(reference.getParentNode());
  if (parent == "appender" && CheckedDocument::classOf(holder) != "LOGAsyncAppender") {
    m_findings.warn(
        "misplaced-element", reference, "",
        "the reference is ignored: only LOGAsyncAppender passes events on to other appenders",
        "class=\"LOGAsyncAppender\", or the reference in a logger");
    return;
  }
  if (m_document.appender(name).isNull()) {
    Words names;
    for (const ZEBIDOM_Element& appender : m_document.elements("appender")) {
      names.push_back(CheckedDocument::attribute(appender, "name"));
    }
    const auto meant = CheckWords::nearest(name, names);
    m_findings.warn(
        "unknown-appender", reference, "ref",
        "there is no appender " + CheckWords::quoted(name) + ", so the reference is left out",
        meant ? assignment("ref", *meant) : "the name of an appender of this document");
    return;
  }
  const auto siblings = CheckedDocument::children(holder, "appender-ref");
  for (const ZEBIDOM_Element& sibling : siblings) {
    if (sibling == reference) {
      break;
    }
    if (CheckedDocument::attribute(sibling, "ref") == name) {
      m_findings.warn(
          "duplicate-reference", reference, "ref",
          "the appender " + CheckWords::quoted(name) + " is referred to before; once counts",
          "one reference");
      break;
    }
  }
}

void CheckStructureRules::checkNames(const char* what, const std::vector<ZEBIDOM_Element>& elements,
                                     const std::string& consequence) {
  std::map<std::string, int> lines;
  for (const ZEBIDOM_Element& element : elements) {
    const std::string name = CheckedDocument::attribute(element, "name");
    if (name.empty()) {
      m_findings.warn("no-name", element, "", std::string("the ") + what + " has no name",
                      "name=\"...\"");
      continue;
    }
    const auto [known, isNew] = lines.insert({name, element.getLine()});
    if (!isNew) {
      m_findings.warn("duplicate-name", element, "name",
                      std::string("there is a") + (*what == 'a' ? "n " : " ") + what + " " +
                          CheckWords::quoted(name) + " in line " + std::to_string(known->second) +
                          " already; " + consequence,
                      "another name, or one element");
    }
  }
}

void CheckStructureRules::checkOrder(const std::vector<ZEBIDOM_Element>& loggers) {
  std::set<std::string> before;
  for (const ZEBIDOM_Element& logger : loggers) {
    const std::string name = CheckedDocument::attribute(logger, "name");
    const std::string start = name + ".";
    const auto below = before.lower_bound(start);
    if (!name.empty() && below != before.end() && below->compare(0, start.size(), start) == 0) {
      m_findings.warn("logger-order", logger, "name",
                      CheckWords::quoted(*below) + " is described before " +
                          CheckWords::quoted(name) +
                          ", which is above it: loggers below both that the program has asked for "
                          "already may inherit from " +
                          CheckWords::quoted(name) + " alone",
                      "this element before that one");
    }
    before.insert(name);
  }
}

void CheckStructureRules::checkLibraryName(const ZEBIDOM_Element& element, const char* attribute) {
  const std::string name = CheckedDocument::attribute(element, attribute);
  std::string base = name.substr(name.find_last_of("/\\:") + 1);
  for (const std::string end : {".so", ".dll"}) {
    if (base.size() > end.size() && base.compare(base.size() - end.size(), end.size(), end) == 0) {
      base.erase(base.size() - end.size());
      base.erase(0, base.compare(0, 3, "lib") == 0 ? 3 : 0);
    }
  }
  if (base != name) {
    m_findings.warn("library-name", element, attribute,
                    CheckWords::quoted(name) +
                        " is not loaded: a library is named without its directory and without what "
                        "the system puts around its name",
                    assignment(attribute, base));
  }
}

void CheckStructureRules::checkLibraries(const ZEBIDOM_Element& element, const std::string& tag) {
  const bool isRenderer = tag == "renderer";
  if (isRenderer || tag == "categoryFactory") {
    checkLibraryName(element, isRenderer ? "renderingClass" : "class");
  }
  if (isRenderer) {
    for (const char* const name : {"renderedClass", "renderingClass"}) {
      if (CheckedDocument::attribute(element, name).empty()) {
        m_findings.warn("no-class", element, "",
                        std::string("the renderer is not registered: it has no ") + name,
                        std::string(name) + "=\"...\"");
      }
    }
  } else if (tag == "categoryFactory" && CheckedDocument::classOf(element).empty()) {
    m_findings.warn("no-class", element, "",
                    "the factory has no class, so no logger factory is loaded",
                    "class=\"NAME_OF_THE_LIBRARY\"");
  }
}
