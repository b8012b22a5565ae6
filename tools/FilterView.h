#ifndef TOOLS_FILTERVIEW_H
#define TOOLS_FILTERVIEW_H

#include <optional>
#include <string>

class LOGFilter;
class LOGLevel;

/// What a filter does, as far as that can be told without the events that come to it.
class FilterView {
 public:
  /// The class of filters that a library makes, whose decisions nobody knows.
  static constexpr const char* LOADED_FILTER = "LOGLogUVDDyeTraceFilter";

  /// Null is a filter that a library would make.
  explicit FilterView(LOGFilter* filter) : m_filter(filter) {}

  /// The filter's decision about every event of the level; nothing when it depends on the event.
  std::optional<int> decision(LOGLevel& level) const;
  /// When an event passes about which it does not decide by the level.
  std::string condition() const;
  /// What it has been told to look for, such as "accepts FATAL"; empty when that is nothing.
  std::string action() const;

 private:
  LOGFilter* m_filter;
};

#endif
