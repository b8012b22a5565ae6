#ifndef CONFIG_LOGXMLWATCHDOG_H
#define CONFIG_LOGXMLWATCHDOG_H

#include "config/LOGFileWatchdog.h"

/// Applies a configuration document whenever it has changed. Constructing one applies the document
/// at once, on the calling thread; start() begins the watching. A document that cannot be parsed,
/// perhaps because it is only half written, changes nothing and is read again when it changes
/// again; so does a pipe or a device.
class LOG4ZEB_EXPORT LOGXMLWatchdog : public LOGFileWatchdog {
 public:
  explicit LOGXMLWatchdog(const I18NString& fileName);
  ~LOGXMLWatchdog() override;

  void doOnChange() override;
  /// What the last configuration returned: 1 when the document was applied, else 0.
  int wasApplied() const { return m_applied; }

 private:
  std::atomic<int> m_applied{0};
};

#endif
