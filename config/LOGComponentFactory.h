#ifndef CONFIG_LOGCOMPONENTFACTORY_H
#define CONFIG_LOGCOMPONENTFACTORY_H

#include <memory>
#include <string>
#include <vector>

#include "core/LOGObject.h"

/// Makes the components that a configuration document may name, whose list is closed. A kind of
/// component is known by the tag of its element: "appender", "layout", "filter" or "errorHandler".
class LOG4ZEB_EXPORT LOGComponentFactory {
 public:
  /// Null when no component of the kind has that class name. REQUIRES: Component is the base of the
  /// kind.
  template <typename Component>
  static std::unique_ptr<Component> make(const I18NString& tag, const I18NString& className) {
    return std::unique_ptr<Component>(static_cast<Component*>(make(tag, className).release()));
  }
  /// The class names of a kind.
  static std::vector<std::string> classes(const I18NString& tag);

 private:
  static std::unique_ptr<LOGObject> make(const I18NString& tag, const I18NString& className);
};

#endif
