#include "rendering/LOGRendererMap.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "core/LOGLogLog.h"
#include "core/LOGObject.h"
#include "platform/ZEBSharedLibrary.h"
#include "platform/ZEBThreadGuard.h"
#include "rendering/LOGDefaultRenderer.h"

namespace {

/// Whether everything is rendered by the first default renderer. Changed under the table's lock.
std::atomic<bool> g_isOriginal{true};

/// The table of the process. Never destroyed, because static destructors log too.
class RendererTable {
 public:
  using Renderer = std::shared_ptr<LOGObjectRenderer>;

  static RendererTable& instance() {
    static auto* const table = new RendererTable;
    return *table;
  }

  void put(const I18NString& className, LOGObjectRenderer* renderer) {
    Renderer replaced;  // its destructor may be any code, and runs without the lock
    const ZEBThreadGuard guard(m_lock);
    Renderer entered = owner(renderer);
    if (className.isEmpty()) {
      replaced = std::move(entered);  // freed, unless it was entered otherwise
      return;
    }
    replaced = std::exchange(m_renderers[className], std::move(entered));
    g_isOriginal = false;
  }

  /// The same for a renderer of a loaded library, which may hand out one object again and again:
  /// it is kept, so that it is recognised also after it was replaced or cleared.
  void putFromLibrary(const I18NString& className, LOGObjectRenderer* renderer) {
    {
      const ZEBThreadGuard guard(m_lock);
      Renderer entered = owner(renderer);
      if (std::find(m_fromLibraries.begin(), m_fromLibraries.end(), entered) ==
          m_fromLibraries.end()) {
        m_fromLibraries.push_back(std::move(entered));
      }
    }
    put(className, renderer);
  }

  void setDefault(LOGObjectRenderer* renderer) {
    Renderer replaced;
    const ZEBThreadGuard guard(m_lock);
    replaced = std::exchange(m_default, owner(renderer));
    g_isOriginal = false;
  }

  Renderer getDefault() const {
    const ZEBThreadGuard guard(m_lock);
    return m_default;
  }

  Renderer find(const I18NString& className) const {
    // Nearly every program renders with the default alone and need not wait for the lock.
    if (g_isOriginal) {
      return m_original;
    }
    const ZEBThreadGuard guard(m_lock);
    const auto found = m_renderers.find(className);
    return found == m_renderers.end() ? m_default : found->second;
  }

  /// Whether that is the first default renderer.
  bool isOriginal(const Renderer& renderer) const { return renderer == m_original; }

  void clear() {
    std::map<I18NString, Renderer> dropped;
    const ZEBThreadGuard guard(m_lock);
    dropped.swap(m_renderers);
    g_isOriginal = m_default == m_original;
  }

 private:
  /// Shares the ownership with the entry that has the renderer already.
  Renderer owner(LOGObjectRenderer* renderer) const {
    for (const Renderer& candidate : {m_original, m_default}) {
      if (candidate.get() == renderer) {
        return candidate;
      }
    }
    for (const Renderer& candidate : m_fromLibraries) {
      if (candidate.get() == renderer) {
        return candidate;
      }
    }
    for (const auto& entry : m_renderers) {
      if (entry.second.get() == renderer) {
        return entry.second;
      }
    }
    return Renderer(renderer);
  }

  mutable ZEBThreadCriticalSection m_lock;
  const Renderer m_original = std::make_shared<LOGDefaultRenderer>();
  Renderer m_default = m_original;             // guarded by m_lock
  std::map<I18NString, Renderer> m_renderers;  // guarded by m_lock
  std::vector<Renderer> m_fromLibraries;       // guarded by m_lock
};

/// Made when the library is loaded: a fork while another thread makes it would let the child wait
/// for ever.
[[maybe_unused]] const RendererTable* const TABLE = &RendererTable::instance();

}  // namespace

void LOGRendererMap::put(const I18NString& className, LOGObjectRenderer* renderer) {
  if (renderer != nullptr) {
    RendererTable::instance().put(className, renderer);
  }
}

void LOGRendererMap::load(const I18NString& className, const I18NString& renderingClass) {
  ZEBSharedLibrary library;  // stays loaded beyond this object, as long as the process
  library.load(renderingClass);
  const auto makeRenderer = reinterpret_cast<LOGObjectRenderer* (*)()>(
      library.isLoaded() == 0 ? nullptr : library.getSymbol("getRenderer"));
  if (makeRenderer != nullptr && className.isEmpty()) {
    return;  // nothing would be rendered by it
  }
  LOGObjectRenderer* const renderer = makeRenderer == nullptr ? nullptr : makeRenderer();
  if (renderer == nullptr) {
    LOGLogLog::debug("LOGRendererMap::load --- no renderer from library [" + renderingClass + "]");
  } else {
    RendererTable::instance().putFromLibrary(className, renderer);
  }
}

LOGObjectRenderer* LOGRendererMap::get(const I18NString& className) const {
  return share(className).get();
}

std::shared_ptr<LOGObjectRenderer> LOGRendererMap::share(const I18NString& className) const {
  return RendererTable::instance().find(className);
}

I18NString* LOGRendererMap::findAndRender(LOGObject* object) const {
  if (object == nullptr) {
    return nullptr;
  }
  const std::shared_ptr<LOGObjectRenderer> renderer = share(object->instanceOf());
  return renderer == nullptr ? nullptr : renderer->doRender(object);
}

bool LOGRendererMap::isRenderedByDefault(const I18NString& className) {
  const RendererTable& table = RendererTable::instance();
  return table.isOriginal(table.find(className));
}

LOG4ZEB_HOT bool LOGRendererMap::isAllRenderedByDefault() noexcept {
  return g_isOriginal.load(std::memory_order_acquire);
}

void LOGRendererMap::clear() { RendererTable::instance().clear(); }

LOGObjectRenderer* LOGRendererMap::getDefaultRenderer() const {
  return RendererTable::instance().getDefault().get();
}

void LOGRendererMap::setDefaultRenderer(LOGObjectRenderer* renderer) {
  RendererTable::instance().setDefault(renderer);
}
