#include "tools/FilterView.h"

#include <memory>

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGManager.h"
#include "filters/LOGDenyAllFilter.h"
#include "filters/LOGLevelMatchFilter.h"
#include "filters/LOGLevelRangeFilter.h"
#include "filters/LOGStringMatchFilter.h"
#include "tools/CheckWords.h"

std::optional<int> FilterView::decision(LOGLevel& level) const {
  const auto* const text = dynamic_cast<const LOGStringMatchFilter*>(m_filter);
  const bool isOfLevels = dynamic_cast<const LOGDenyAllFilter*>(m_filter) != nullptr ||
                          dynamic_cast<const LOGLevelMatchFilter*>(m_filter) != nullptr ||
                          dynamic_cast<const LOGLevelRangeFilter*>(m_filter) != nullptr;
  if (!isOfLevels && (text == nullptr || !text->getStringToMatch().isEmpty())) {
    return std::nullopt;
  }
  const I18NString message;
  LOGLoggingEvent event(LOGManager::getRootLogger(), &level, LOGMessageText{message});
  return m_filter->decide(&event);
}

std::string FilterView::condition() const {
  const auto* const text = dynamic_cast<const LOGStringMatchFilter*>(m_filter);
  return text == nullptr
             ? std::string("the filter ") + LOADED_FILTER + " lets it"
             : "the message contains \"" + text->getStringToMatch().toStdString() + "\"";
}

std::string FilterView::action() const {
  if (m_filter == nullptr) {
    return "decides by the code of its library";
  }
  if (const auto* const range = dynamic_cast<const LOGLevelRangeFilter*>(m_filter)) {
    std::vector<std::string> denied;
    if (range->getLevelMin() != nullptr) {
      denied.push_back(std::string("below ") + range->getLevelMin()->toString());
    }
    if (range->getLevelMax() != nullptr) {
      denied.push_back(std::string("above ") + range->getLevelMax()->toString());
    }
    return denied.empty() ? "" : "denies what is " + CheckWords::either(denied);
  }
  if (const auto* const level = dynamic_cast<const LOGLevelMatchFilter*>(m_filter)) {
    const std::unique_ptr<I18NString> wanted(level->getLevelToMatch());
    return wanted == nullptr ? "" : "accepts " + wanted->toStdString();
  }
  if (const auto* const text = dynamic_cast<const LOGStringMatchFilter*>(m_filter)) {
    const std::string wanted = text->getStringToMatch().toStdString();
    return wanted.empty() ? "" : "accepts messages that contain \"" + wanted + "\"";
  }
  return "denies everything";
}
