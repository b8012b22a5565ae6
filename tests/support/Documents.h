#ifndef TESTS_SUPPORT_DOCUMENTS_H
#define TESTS_SUPPORT_DOCUMENTS_H

#include <string>
#include <vector>

/// Elements of configuration documents.
namespace documents {

inline std::string param(const std::string& name, const std::string& value) {
  return "<param name='" + name + "' value='" + value + "'/>";
}

inline std::string appender(const std::string& name, const std::string& type,
                            const std::string& inside = "") {
  return "<appender name='" + name + "' class='" + type + "'>" + inside + "</appender>";
}

inline std::string layout(const std::string& type, const std::string& inside = "") {
  return "<layout class='" + type + "'>" + inside + "</layout>";
}

inline std::string pattern(const std::string& pattern) {
  return layout("LOGPatternLayout", param("ConversionPattern", pattern));
}

/// A LOGFileAppender, which writes messages alone unless another layout is given.
inline std::string file(const std::string& name, const std::string& file,
                        const std::string& inside = layout("LOGSimpleLayout")) {
  return appender(name, "LOGFileAppender", param("File", file) + inside);
}

inline std::string references(const std::vector<std::string>& names) {
  std::string all;
  for (const std::string& name : names) {
    all += "<appender-ref ref='" + name + "'/>";
  }
  return all;
}

inline std::string async(const std::string& name, const std::vector<std::string>& names) {
  return appender(name, "LOGAsyncAppender", references(names));
}

inline std::string logger(const std::string& name, const std::vector<std::string>& names,
                          const std::string& attributes = "") {
  return "<logger name='" + name + "' " + attributes + ">" + references(names) + "</logger>";
}

inline std::string root(const std::vector<std::string>& names, const std::string& level = "") {
  return "<root>" + (level.empty() ? "" : "<level value='" + level + "'/>") + references(names) +
         "</root>";
}

inline std::string whole(const std::string& children) {
  return "<log4j:configuration>" + children + "</log4j:configuration>";
}

}  // namespace documents

#endif
