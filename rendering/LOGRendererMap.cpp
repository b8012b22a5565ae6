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
struct RendererTable {
  using Renderer = std::shared_ptr<LOGObjectRenderer>;

  static RendererTable& instance() {
    static auto* const table = new RendererTable;
    return *table;
  }

  /// Shares the ownership with the entry that has the renderer already. Called under the lock.
  Renderer owner(LOGObjectRenderer* renderer) const {
    for (const Renderer& candidate : {original, byDefault}) {
      if (candidate.get() == renderer) {
        return candidate;
      }
    }
    for (const Renderer& candidate : fromLibraries) {
      if (candidate.get() == renderer) {
        return candidate;
      }
    }
    for (const auto& entry : renderers) {
      if (entry.second.get() == renderer) {
        return entry.second;
      }
    }
    return Renderer(renderer);
  }

  ZEBThreadCriticalSection lock;  // guards all that is not constant
  const Renderer original = std::make_shared<LOGDefaultRenderer>();
  Renderer byDefault = original;
  std::map<I18NString, Renderer> renderers;
  // A library may hand out one object again and again: it is kept, so that it is recognised also
  // after it was replaced or cleared.
  std::vector<Renderer> fromLibraries;
};

using Renderer = RendererTable::Renderer;

/// Made when the library is loaded: a fork while another thread makes it would let the child wait
/// for ever.
[[maybe_unused]] const RendererTable* const TABLE = &RendererTable::instance();

}  // namespace

void LOGRendererMap::put(const I18NString& className, LOGObjectRenderer* renderer) {
  if (renderer == nullptr) {
    return;
  }
  RendererTable& table = RendererTable::instance();
  Renderer replaced;  // its destructor may be any code, and runs without the lock
  const ZEBThreadGuard guard(table.lock);
  Renderer entered = table.owner(renderer);
  if (className.isEmpty()) {
    replaced = std::move(entered);  // freed, unless it was entered otherwise
    return;
  }
  replaced = std::exchange(table.renderers[className], std::move(entered));
  g_isOriginal = false;
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
    return;
  }
  {
    RendererTable& table = RendererTable::instance();
    const ZEBThreadGuard guard(table.lock);
    Renderer entered = table.owner(renderer);
    auto& known = table.fromLibraries;
    if (std::find(known.begin(), known.end(), entered) == known.end()) {
      known.push_back(std::move(entered));
    }
  }
  put(className, renderer);
}

LOGObjectRenderer* LOGRendererMap::get(const I18NString& className) const {
  return share(className).get();
}

Renderer LOGRendererMap::share(const I18NString& className) const {
  RendererTable& table = RendererTable::instance();
  // Nearly every program renders with the default alone and need not wait for the lock.
  if (g_isOriginal) {
    return table.original;
  }
  const ZEBThreadGuard guard(table.lock);
  const auto found = table.renderers.find(className);
  return found == table.renderers.end() ? table.byDefault : found->second;
}

I18NString* LOGRendererMap::findAndRender(LOGObject* object) const {
  const Renderer renderer = object == nullptr ? nullptr : share(object->instanceOf());
  return renderer == nullptr ? nullptr : renderer->doRender(object);
}

bool LOGRendererMap::isRenderedByDefault(const I18NString& className) {
  return LOGRendererMap().share(className) == RendererTable::instance().original;
}

LOG4ZEB_HOT bool LOGRendererMap::isAllRenderedByDefault() noexcept {
  return g_isOriginal.load(std::memory_order_acquire);
}

void LOGRendererMap::clear() {
  RendererTable& table = RendererTable::instance();
  std::map<I18NString, Renderer> dropped;
  const ZEBThreadGuard guard(table.lock);
  dropped.swap(table.renderers);
  g_isOriginal = table.byDefault == table.original;
}

LOGObjectRenderer* LOGRendererMap::getDefaultRenderer() const {
  RendererTable& table = RendererTable::instance();
  const ZEBThreadGuard guard(table.lock);
  return table.byDefault.get();
}

void LOGRendererMap::setDefaultRenderer(LOGObjectRenderer* renderer) {
  RendererTable& table = RendererTable::instance();
  Renderer replaced;
  const ZEBThreadGuard guard(table.lock);
  replaced = std::exchange(table.byDefault, table.owner(renderer));
  g_isOriginal = false;
}
