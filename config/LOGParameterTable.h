#ifndef CONFIG_LOGPARAMETERTABLE_H
#define CONFIG_LOGPARAMETERTABLE_H

#include <functional>
#include <string>
#include <vector>

#include "platform/I18NString.h"

class LOGObject;

/// The params that each class of component takes from a configuration document; a new one is one
/// line in the table.
class LOG4ZEB_EXPORT LOGParameterTable {
 public:
  /// Gives a file name the process id, when the configuration asks for it.
  using FileNameResolver = std::function<I18NString(const I18NString&)>;

  /// Sets the param on the object, whose class is found by its tag. What the class does not take,
  /// and an empty value, is ignored.
  static void apply(LOGObject& object, const I18NString& name, const I18NString& value,
                    const FileNameResolver& resolveFileName);

  /// What the value of a param is read as.
  enum class Kind {
    Text,
    Switch,  ///< everything but "false", in any case, means yes
    Number,
    Port,
    Backups,      ///< how many there are
    Bytes,        ///< a number without a unit
    Level,        ///< DEBUG where there is no such level
    LevelOrNone,  ///< no level where there is no such level
    Facility,
    Host,
    DateFormat,
    Pattern
  };
  /// A param that a class takes, and whether its name may be written in any case.
  struct Param {
    std::string name;
    bool isInAnyCase;
    Kind kind;
  };
  /// What apply() takes for a class, found by its tag.
  static std::vector<Param> paramsOf(const std::string& className);
};

#endif
