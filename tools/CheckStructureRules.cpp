#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "config/LOGDOMConfigurator.h"
#include "config/LOGParameterTable.h"
#include "platform/ZEBIDOM_NamedNodeMap.h"
#include "tools/CheckRules.h"
#include "tools/CheckWords.h"

namespace {

using Words = std::vector<std::string>;
using Elements = std::vector<CheckElement>;

struct Entry {
  std::string tag;
  Words parents;
  Words attributes;
};

constexpr const char* ROOT_ELEMENT = "log4j:configuration";
constexpr const char* LEAVE_OUT = "leave it out";

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
  const auto known = std::find_if(vocabulary().begin(), vocabulary().end(),
                                  [&](const Entry& entry) { return entry.tag == tag; });
  return known == vocabulary().end() ? nullptr : &*known;
}

Words childrenOf(const std::string& parent) {
  Words tags;
  for (const Entry& entry : vocabulary()) {
    if (CheckWords::contains(entry.parents, parent)) {
      tags.push_back(entry.tag);
    }
  }
  return tags;
}

/// The param of the component that is called so, but for case; empty when there is none.
std::string paramOf(const CheckElement& component, const std::string& name) {
  for (const LOGParameterTable::Param& known : LOGParameterTable::paramsOf(component.className())) {
    if (CheckWords::lower(known.name) == CheckWords::lower(name)) {
      return known.name;
    }
  }
  return "";
}

std::string inAngles(const std::string& tag) { return "<" + tag + ">"; }

/// Whether the element means nothing, or not what it should, without the attribute.
bool isNeeded(const std::string& attribute, const std::string& tag) {
  return CheckWords::contains({"name", "value", "ref"}, attribute) ||
         (attribute == "class" &&
          !CheckWords::contains({"logger", "category", "level", "priority"}, tag));
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

/// Follows references from the named appenders to others, and adds all to those reached.
void reach(Words names, const std::multimap<std::string, std::string>& references,
           std::set<std::string>& reached) {
  while (!names.empty()) {
    const std::string name = names.back();
    names.pop_back();
    if (reached.insert(name).second) {
      const auto [begin, end] = references.equal_range(name);
      std::for_each(begin, end, [&](const auto& next) { names.push_back(next.second); });
    }
  }
}

/// The names of the appenders that no logger leads to.
std::set<std::string> unusedAppenders(const CheckedDocument& document) {
  std::multimap<std::string, std::string> references;  // from appenders to appenders
  std::set<std::string> reached;
  std::set<std::string> referredTo;
  for (const CheckElement& reference : document.elements("appender-ref")) {
    const CheckElement holder = reference.parent();
    const std::string name = reference.get("ref");
    if (holder.tag() == "appender" && holder.get("name") != name) {
      references.emplace(holder.get("name"), name);
      referredTo.insert(name);
    }
  }
  for (const CheckElement& reference : document.elements("appender-ref")) {
    if (!CheckWords::contains({"appender", "errorHandler"}, reference.parent().tag())) {
      reach({reference.get("ref")}, references, reached);
    }
  }
  // Those that only an unused one refers to are no further mistake; some refer to each other.
  std::set<std::string> unused;
  for (const bool isReferredTo : {false, true}) {
    for (const CheckElement& appender : document.elements("appender")) {
      const std::string name = appender.get("name");
      if (reached.count(name) == 0 && (referredTo.count(name) > 0) == isReferredTo) {
        unused.insert(name);
        reach({name}, references, reached);
      }
    }
  }
  return unused;
}

class StructureRules : CheckRuleSet {
 public:
  explicit StructureRules(CheckFindings& findings)
      : CheckRuleSet(findings), m_unused(unusedAppenders(findings.document())) {}

  void checkAll() {
    const CheckElement root = m_document.root();
    checkRootAttributes(root);
    checkAttributes(root);
    checkText(root);
    for (const CheckElement& child : root.children()) {
      checkElement(child, ROOT_ELEMENT);
    }
    checkNames("an appender", m_document.elements("appender"),
               "references mean the first one, and this one is never built");
    Elements loggers;
    for (const CheckElement& child : root.children()) {
      if (CheckWords::contains({"logger", "category"}, child.tag())) {
        loggers.push_back(child);
      }
    }
    checkNames("a logger", loggers, "the appenders given here replace those given before");
    checkOrder(loggers);
    const Elements roots = root.children("root");
    for (std::size_t i = 1; i < roots.size(); ++i) {
      warn("duplicate-root", roots[i], "",
           "there is a <root> before this one; the appenders given here replace those given there",
           "one <root> with everything in it");
    }
  }

 private:
  void checkElement(const CheckElement& element, const std::string& parent) {
    const std::string tag = element.tag();
    const Entry* const entry = entryOf(tag);
    if (entry == nullptr) {
      checkUnknown(element, childrenOf(parent));
      return;
    }
    if (!CheckWords::contains(entry->parents, parent)) {
      const bool isFoundAnyway = tag == "appender";
      warn("misplaced-element", element, "",
           isFoundAnyway
               ? "the element <{}> is found, but belongs elsewhere than in <{}>"
               : "the element <{}> is skipped with all that is in it: it is not read in <{}>",
           entry->parents.empty() ? LEAVE_OUT : "<{}> inside of <{}>",
           {tag, parent, tag, CheckWords::either(entry->parents)});
      if (!isFoundAnyway) {
        return;
      }
    }
    checkAttributes(element);
    checkText(element);
    if (CheckWords::contains({"logger", "category", "root"}, tag)) {
      checkLogger(element);
    } else if (tag == "appender") {
      checkAppender(element);
    } else if (tag == "appender-ref") {
      checkReference(element, parent);
    } else if (tag == "renderer") {
      checkRenderer(element);
    } else if (tag == "categoryFactory") {
      checkFactory(element);
    }
    for (const CheckElement& child : element.children()) {
      checkElement(child, tag);
    }
  }

  void checkUnknown(const CheckElement& element, const Words& known) {
    const std::string tag = element.tag();
    // No element but the root has a prefix, and there are no elements around all of a kind.
    const auto meant = CheckWords::nearest(tag.substr(tag.rfind(':') + 1), known);
    const Elements inside = element.children();
    const bool isWrapper = std::any_of(
        inside.begin(), inside.end(),
        [&](const CheckElement& child) { return CheckWords::contains(known, child.tag()); });
    warn("unknown-element", element, "",
         "the element <{}> is not known: it is skipped with all that is in it", "{}",
         {tag, isWrapper ? "what is in it, without <" + tag + "> around it"
               : meant   ? inAngles(*meant)
                         : CheckWords::oneOf(known)});
  }

  void checkAttributes(const CheckElement& element) {
    const ZEBIDOM_NamedNodeMap attributes = element.dom().getAttributes();
    for (std::size_t i = 0; i < attributes.getLength(); ++i) {
      checkAttribute(element, attributes.item(i).getNodeName().toStdString(),
                     attributes.item(i).getNodeValue().toStdString());
    }
  }

  void checkAttribute(const CheckElement& element, const std::string& name,
                      const std::string& value) {
    const std::string tag = element.tag();
    const Words& known = entryOf(element == m_document.root() ? ROOT_ELEMENT : tag)->attributes;
    if (name == "xmlns" || name.find(':') != std::string::npos) {
      return;
    }
    if (!CheckWords::contains(known, name)) {
      warn("unknown-attribute", element, name,
           "the attribute \"{}\" is ignored: <{}> has none of that name", "{}",
           {name, tag, insteadOf(element, name, value, known)});
      return;
    }
    if (value.find("${") != std::string::npos) {
      warn("variable", element, name,
           "nothing is put in the place of a variable: \"{}\" is taken as it stands",
           "the text that is meant", {value});
    }
    const bool isName = name == "ref" || (name == "name" && tag != "param");
    if (const std::string meant = CheckWords::trimmed(value); isName && meant != value) {
      warn("blanks", element, name, "the blanks around \"{}\" are part of the name", "{}=\"{}\"",
           {value, name, meant});
    }
  }

  /// What to write instead of an attribute that the element does not have.
  static std::string insteadOf(const CheckElement& element, const std::string& name,
                               const std::string& value, const Words& known) {
    const auto assigned = [&](const std::string& other) { return other + "=\"" + value + "\""; };
    if (CheckWords::lower(name) == "level" && !CheckWords::contains(known, "value")) {
      return "<level " + assigned("value") + "/> inside of the element";
    }
    if (const std::string param = paramOf(element, name); !param.empty()) {
      return "<param name=\"" + param + "\" " + assigned("value") + "/> inside of it";
    }
    if (const auto meant = CheckWords::nearest(name, known)) {
      return assigned(*meant);
    }
    if (CheckWords::lower(name) == "threshold") {
      return "a <filter class=\"LOGLevelRangeFilter\"> with LevelMin";
    }
    for (const std::string& other : known) {
      if (isNeeded(other, element.tag()) && !element.has(other)) {
        return assigned(other);
      }
    }
    return known.empty() ? LEAVE_OUT : CheckWords::oneOf(known);
  }

  void checkText(const CheckElement& element) {
    const std::string tag = element.tag();
    for (ZEBIDOM_Node child = element.dom().getFirstChild(); !child.isNull();
         child = child.getNextSibling()) {
      const std::string text = CheckWords::trimmed(child.getNodeValue().toStdString());
      if (child.getNodeType() != ZEBIDOM_Node::TEXT_NODE || text.empty()) {
        continue;
      }
      const Entry* const entry = entryOf(tag);
      const std::string name = element.get("name");
      std::string instead = "a comment, or nothing";
      for (const char* const attribute : {"value", "ref"}) {
        if (entry != nullptr && CheckWords::contains(entry->attributes, attribute)) {
          instead = "<" + tag + (name.empty() ? "" : " name=\"" + name + "\"") + " " + attribute +
                    "=\"" + text + "\"/>";
        }
      }
      warn("text", element, "",
           "the text \"{}\" in <{}> is ignored: only attributes and elements are read", "{}",
           {text, tag, instead});
    }
  }

  void checkRootAttributes(const CheckElement& root) {
    const std::string debug = root.get("debug");
    warnIf(CheckWords::contains({"false", "no", "off", "0"},
                                CheckWords::lower(CheckWords::trimmed(debug))),
           "debug", root, "debug",
           "debug=\"{}\" turns the library's internal debugging on: every value does but an empty "
           "one and \"null\"",
           "no attribute debug", {debug});
    warnIf(!CheckWords::contains({"", "null"}, root.get("configDebug")), "debug", root,
           "configDebug",
           "the attribute \"configDebug\" is out of date, and turns internal debugging on whatever "
           "it says",
           "debug=\"true\", or nothing");
    const std::string threshold = root.get("threshold");
    warnIf(!CheckWords::contains({"", "null"}, threshold) && !CheckWords::isLevel(threshold),
           "unknown-level", root, "threshold",
           "\"{}\" is no level: the threshold stays what it was, at first ALL", "threshold=\"{}\"",
           {threshold, CheckWords::probableLevel(threshold).value_or("INFO")});
  }

  void checkTruthValue(const CheckElement& element, const std::string& attribute,
                       const std::string& value, bool caseCounts) {
    const bool isMisspelt = caseCounts && value != "false" && CheckWords::lower(value) == "false";
    warnIf(!value.empty() && (isMisspelt || !CheckWords::isTruthValue(value)), "truth-value",
           element, attribute, "{}=\"{}\" means true: everything does but \"false\"",
           "{}=\"true\" or {}=\"false\"", {attribute, value, attribute, attribute});
  }

  void checkLogger(const CheckElement& element) {
    checkLevels(element);
    for (const CheckElement& param : element.children("param")) {
      warn("param-without-effect", param, "", "a param of a logger has no effect", LEAVE_OUT);
    }
    if (element.tag() == "root") {
      return;
    }
    checkTruthValue(element, "additivity", element.get("additivity"), false);
    checkLoggerName(element, element.get("name"));
    const std::string className = element.className();
    warnIf(!className.empty() && m_document.root().children("categoryFactory").empty(),
           "logger-class", element, "class",
           "the element is skipped: a logger of class \"{}\" needs a <categoryFactory>, and the "
           "document has none",
           "no attribute class", {className});
  }

  void checkLoggerName(const CheckElement& element, const std::string& name) {
    warnIf(CheckWords::lower(name) == "root", "logger-named-root", element, "name",
           "this is a logger of the name \"{}\" below the root logger, not the root logger itself",
           "<root>", {name});
    if (!LOGDOMConfigurator::isReasonableLoggerName(element.dom().getAttribute("name"))) {
      warn("logger-name", element, "name",
           "the element is skipped: the name of a logger has no more than 1024 characters and 64 "
           "dots",
           "a shorter name");
    } else if (name.find('*') != std::string::npos) {
      const std::string above = name.substr(0, name.find_last_not_of(".*") + 1);
      warn("logger-name", element, "name",
           "a \"*\" in the name of a logger stands for itself; a logger's settings go to those "
           "below it anyway",
           above.empty() ? "<root>" : "name=\"{}\"", {above});
    } else if (!name.empty() && (name.front() == '.' || name.back() == '.' ||
                                 name.find("..") != std::string::npos)) {
      warn("logger-name", element, "name",
           "the dots in \"{}\" enclose an empty component, so that it is above no logger that it "
           "seems to be above",
           "a name whose components have a dot between them", {name});
    } else if (const std::string dotted = withDots(name); dotted != name) {
      warn("logger-name", element, "name",
           "only dots separate the components of a name: no logger is above \"{}\" or below it for "
           "its \"::\" or \"/\"",
           "name=\"{}\"", {name, dotted});
    }
  }

  void checkLevels(const CheckElement& logger) {
    bool isFirst = true;
    for (const CheckElement& child : logger.children()) {
      if (!CheckWords::contains({"level", "priority"}, child.tag())) {
        continue;
      }
      checkLevel(child, logger.tag() == "root");
      warnIf(!isFirst, "duplicate-level", child, "",
             "there is a level before this one; the last one counts", "one <level>");
      isFirst = false;
    }
  }

  void checkLevel(const CheckElement& level, bool isRoot) {
    const Words inherited{"inherited", "null"};
    const std::string value = level.get("value");
    const std::string word = CheckWords::lower(CheckWords::trimmed(value));
    warnIf(!level.get("class").empty(), "level-class", level, "class",
           "the class of a level has no effect", "no attribute class");
    if (CheckWords::contains(inherited, value)) {
      warnIf(isRoot, "root-level", level, "value",
             "the root logger has nobody to inherit from: its level stays what it was, at first "
             "DEBUG",
             "value=\"INFO\"");
    } else if (!CheckWords::isLevel(value)) {
      warn("unknown-level", level, "value", "\"{}\" is no level: it means DEBUG", "value=\"{}\"",
           {value, !isRoot && CheckWords::contains(inherited, word)
                       ? word
                       : CheckWords::probableLevel(value).value_or("DEBUG")});
    }
  }

  void checkAppender(const CheckElement& element) {
    const std::string name = element.get("name");
    warnIf(!name.empty() && m_document.appender(name) == element && m_unused.count(name) > 0,
           "unused-appender", element, "",
           "the appender \"{}\" is never built: no <appender-ref> of a logger leads to it, "
           "directly or through an asynchronous appender",
           "<appender-ref ref=\"{}\"/> in <root> or a <logger>", {name, name});
    checkTruthValue(element, "addProcID", element.get("addProcID"), true);
    warnIf(element.has("addProcID") && element.className() != "LOGRollingFileAppender",
           "attribute-without-effect", element, "addProcID",
           "addProcID has no effect: only LOGRollingFileAppender reads it",
           "class=\"LOGRollingFileAppender\", or no addProcID");
  }

  void checkReference(const CheckElement& reference, const std::string& parent) {
    const std::string name = reference.get("ref");
    const CheckElement holder = reference.parent();
    if (parent == "appender" && holder.className() != "LOGAsyncAppender") {
      warn("misplaced-element", reference, "",
           "the reference is ignored: only LOGAsyncAppender passes events on to other appenders",
           "class=\"LOGAsyncAppender\", or the reference in a logger");
      return;
    }
    if (m_document.appender(name).isNull()) {
      Words names;
      for (const CheckElement& appender : m_document.elements("appender")) {
        names.push_back(appender.get("name"));
      }
      const auto meant = CheckWords::nearest(name, names);
      warn("unknown-appender", reference, "ref",
           "there is no appender \"{}\", so the reference is left out",
           meant ? "ref=\"{}\"" : "the name of an appender of this document",
           {name, meant.value_or("")});
      return;
    }
    for (const CheckElement& sibling : holder.children("appender-ref")) {
      if (sibling == reference) {
        return;
      }
      if (sibling.get("ref") == name) {
        warn("duplicate-reference", reference, "ref",
             "the appender \"{}\" is referred to before; once counts", "one reference", {name});
        return;
      }
    }
  }

  /// `what` has its article in front.
  void checkNames(const std::string& what, const Elements& elements,
                  const std::string& consequence) {
    std::map<std::string, int> lines;
    for (const CheckElement& element : elements) {
      const std::string name = element.get("name");
      if (name.empty()) {
        warn("no-name", element, "", "the {} has no name", "name=\"...\"",
             {what.substr(what.find(' ') + 1)});
      } else if (const auto [known, isNew] = lines.insert({name, element.line()}); !isNew) {
        warn("duplicate-name", element, "name", "there is {} \"{}\" in line {} already; {}",
             "another name, or one element",
             {what, name, std::to_string(known->second), consequence});
      }
    }
  }

  void checkOrder(const Elements& loggers) {
    std::set<std::string> before;
    for (const CheckElement& logger : loggers) {
      const std::string name = logger.get("name");
      const std::string start = name + ".";
      const auto below = before.lower_bound(start);
      if (!name.empty() && below != before.end() && below->compare(0, start.size(), start) == 0) {
        warn("logger-order", logger, "name",
             "\"{}\" is described before \"{}\", which is above it: loggers below both that the "
             "program has asked for already may inherit from \"{}\" alone",
             "this element before that one", {*below, name, name});
      }
      before.insert(name);
    }
  }

  void checkLibraryName(const CheckElement& element, const char* attribute) {
    const std::string name = element.get(attribute);
    std::string base = name.substr(name.find_last_of("/\\:") + 1);
    for (const std::string end : {".so", ".dll"}) {
      if (base.size() > end.size() &&
          base.compare(base.size() - end.size(), end.size(), end) == 0) {
        base.erase(base.size() - end.size());
        base.erase(0, base.compare(0, 3, "lib") == 0 ? 3 : 0);
      }
    }
    warnIf(base != name, "library-name", element, attribute,
           "\"{}\" is not loaded: a library is named without its directory and without what the "
           "system puts around its name",
           "{}=\"{}\"", {name, attribute, base});
  }

  void checkRenderer(const CheckElement& element) {
    checkLibraryName(element, "renderingClass");
    for (const char* const name : {"renderedClass", "renderingClass"}) {
      warnIf(element.get(name).empty(), "no-class", element, "",
             "the renderer is not registered: it has no {}", "{}=\"...\"", {name, name});
    }
  }

  void checkFactory(const CheckElement& element) {
    checkLibraryName(element, "class");
    warnIf(element.className().empty(), "no-class", element, "",
           "the factory has no class, so no logger factory is loaded",
           "class=\"NAME_OF_THE_LIBRARY\"");
  }

  const std::set<std::string> m_unused;
};

}  // namespace

bool CheckRules::checkRoot(CheckFindings& findings) {
  const CheckElement root = findings.document().root();
  const std::string tag = root.tag();
  if (tag == "configuration") {
    findings.add({false, "old-root", root.place(),
                  "the root element <configuration> is out of date", inAngles(ROOT_ELEMENT)});
  } else if (tag != ROOT_ELEMENT) {
    findings.add({true, "wrong-root", root.place(),
                  "the root element is <" + tag + ">, so nothing of the document is used",
                  inAngles(ROOT_ELEMENT)});
    return false;
  }
  return true;
}

void CheckRules::checkStructure(CheckFindings& findings) { StructureRules(findings).checkAll(); }
