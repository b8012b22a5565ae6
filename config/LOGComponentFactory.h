#ifndef CONFIG_LOGCOMPONENTFACTORY_H
#define CONFIG_LOGCOMPONENTFACTORY_H

#include <memory>
#include <string>
#include <vector>

#include "platform/I18NString.h"

class LOGAppenderSkeleton;
class LOGErrorHandler;
class LOGFilter;
class LOGLayout;

/// Makes the components that a configuration document may name. The lists of class names are
/// closed; a new component is one line in its list.
class LOG4ZEB_EXPORT LOGComponentFactory {
 public:
  /// Each returns null when no component of the kind has that class name.
  static std::unique_ptr<LOGAppenderSkeleton> newAppender(const I18NString& className);
  static std::unique_ptr<LOGLayout> newLayout(const I18NString& className);
  static std::unique_ptr<LOGFilter> newFilter(const I18NString& className);
  static std::unique_ptr<LOGErrorHandler> newErrorHandler(const I18NString& className);

  /// The class names of each kind.
  static std::vector<std::string> appenderClasses();
  static std::vector<std::string> layoutClasses();
  static std::vector<std::string> filterClasses();
  static std::vector<std::string> errorHandlerClasses();
};

#endif
