#include "core/LOGStack.h"

#include <algorithm>
#include <utility>

#include "platform/ZEBTranslate.h"

LOGStack::LOGStack(const I18NString& threadKey) : LOGObject(threadKey) { instance("LOGStack"); }

LOGStack::LOGStack(const I18NString& threadKey, const LOGStack& other) : LOGStack(threadKey) {
  for (const auto& entry : other.m_entries) {
    m_entries.push_back(std::make_unique<LOGDiagnosticContext>(*entry));
  }
}

LOGStack::LOGStack(const LOGStack& other) : LOGStack(other.toString(), other) {}

void LOGStack::push(std::unique_ptr<LOGDiagnosticContext> entry) {
  m_entries.push_back(std::move(entry));
}

std::unique_ptr<LOGDiagnosticContext> LOGStack::pop() {
  if (m_entries.empty()) {
    return nullptr;
  }
  std::unique_ptr<LOGDiagnosticContext> top = std::move(m_entries.back());
  m_entries.pop_back();
  return top;
}

const LOGDiagnosticContext* LOGStack::peek() const {
  return m_entries.empty() ? nullptr : m_entries.back().get();
}

void LOGStack::setSize(int n) {
  const auto kept = static_cast<std::size_t>(std::max(n, 0));
  if (kept < m_entries.size()) {
    m_entries.resize(kept);
  }
}

LOGObject* LOGStack::clone() const {
  return zebTranslate("LOGStack", __LINE__, [this] { return new LOGStack(*this); });
}
