#include "rendering/LOGRendererMap.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "core/LOGLogLog.h"
#include "core/LOGObject.h"
#include "platform/ZEBSharedLibrary.h"
#include "rendering/LOGDefaultRenderer.h"

namespace {

/// The table of the process. Never destroyed, because static destructors log too.
class RendererTable {
 public:
  using Renderer = std::shared_ptr<LOGObjectRenderer>;

  static RendererTable& instance() {
    static auto* const table = new RendererTable;
    return *table;
  }

  void put(const I18NString& className, LOGObjectRenderer* renderer) {
    const std::lock_guard<std::mutex> guard(m_lock);
    for (const auto& entry : m_renderers) {
      if (entry.second.get() == renderer) {
        m_renderers[className] = entry.second;
        return;
      }
    }
    m_renderers[className] = Renderer(renderer);
    m_isEmpty = false;
  }

  Renderer find(const I18NString& className) const {
    // Nearly every program renders with the default alone and need not wait for the lock.
    if (m_isEmpty) {
      return m_default;
    }
    const std::lock_guard<std::mutex> guard(m_lock);
    const auto found = m_renderers.find(className);
    return found == m_renderers.end() ? m_default : found->second;
  }

  void clear() {
    std::map<I18NString, Renderer> dropped;
    const std::lock_guard<std::mutex> guard(m_lock);
    dropped.swap(m_renderers);
    m_isEmpty = true;
  }

 private:
  mutable std::mutex m_lock;
  std::map<I18NString, Renderer> m_renderers;  // guarded by m_lock
  std::atomic<bool> m_isEmpty{true};
  const Renderer m_default = std::make_shared<LOGDefaultRenderer>();
};

}  // namespace

void LOGRendererMap::put(const I18NString& className, LOGObjectRenderer* renderer) {
  if (!className.isEmpty() && renderer != nullptr) {
    RendererTable::instance().put(className, renderer);
  }
}

void LOGRendererMap::load(const I18NString& className, const I18NString& renderingClass) {
  ZEBSharedLibrary library;  // stays loaded beyond this object, as long as the process
  library.load(renderingClass);
  const auto makeRenderer = reinterpret_cast<LOGObjectRenderer* (*)()>(
      library.isLoaded() == 0 ? nullptr : library.getSymbol("getRenderer"));
  LOGObjectRenderer* const renderer = makeRenderer == nullptr ? nullptr : makeRenderer();
  if (renderer == nullptr) {
    LOGLogLog::debug("LOGRendererMap::load --- no renderer from library [" + renderingClass + "]");
  }
  put(className, renderer);
}

LOGObjectRenderer* LOGRendererMap::get(const I18NString& className) const {
  return RendererTable::instance().find(className).get();
}

I18NString* LOGRendererMap::findAndRender(LOGObject* object) const {
  if (object == nullptr) {
    return nullptr;
  }
  return RendererTable::instance().find(object->instanceOf())->doRender(object);
}

void LOGRendererMap::clear() { RendererTable::instance().clear(); }
