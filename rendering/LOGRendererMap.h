#ifndef RENDERING_LOGRENDERERMAP_H
#define RENDERING_LOGRENDERERMAP_H

#include <memory>

#include "platform/I18NString.h"

class LOGObject;
class LOGObjectRenderer;

/// Finds the renderer of a message object by the object's tag. All maps of the process share one
/// table, which any thread may use and change; a renderer that is replaced or cleared stays until
/// no thread renders with it any more.
class LOG4ZEB_EXPORT LOGRendererMap {
 public:
  /// Takes ownership of `renderer`; entering an object a second time, under whatever tag, is
  /// harmless. Null changes nothing, and neither does an empty tag, whose renderer is freed.
  void put(const I18NString& className, LOGObjectRenderer* renderer);
  /// Puts the renderer that the shared library of the name `renderingClass` makes. A library that
  /// does not load or makes none leaves things as they are, with a debug note; with an empty tag it
  /// is loaded and not asked for one.
  void load(const I18NString& className, const I18NString& renderingClass);
  /// The renderer for that tag, the default one if there is none; valid until it is replaced.
  LOGObjectRenderer* get(const I18NString& className) const;
  /// The same, kept from being deleted while the result lives.
  std::shared_ptr<LOGObjectRenderer> share(const I18NString& className) const;
  /// The object's text in a new string that the caller deletes; null for a null object, and where
  /// there is no renderer.
  I18NString* findAndRender(LOGObject* object) const;
  /// Whether objects of that tag are rendered by the first default renderer, which is no code of a
  /// program and gives an object's own text.
  static bool isRenderedByDefault(const I18NString& className);
  /// Whether all objects are, as in nearly every program.
  static bool isAllRenderedByDefault() noexcept;
  /// Drops what was put. The default renderer stays.
  void clear();

  /// The renderer of objects whose tag has none: at first a LOGDefaultRenderer. May be
  /// null; valid until it is replaced.
  LOGObjectRenderer* getDefaultRenderer() const;
  /// Takes ownership of `renderer`. After null such objects are not rendered.
  void setDefaultRenderer(LOGObjectRenderer* renderer);
};

#endif
