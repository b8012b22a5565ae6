#ifndef PLATFORM_ZEBTHROWABLE_H
#define PLATFORM_ZEBTHROWABLE_H

#include <exception>
#include <string>
#include <vector>

#include "platform/I18NString.h"
#include "platform/LOG4ZEBExport.h"

/// The root of the library's exceptions: a description, the place of origin, and a back trace that
/// grows while the exception passes through the library.
class LOG4ZEB_EXPORT ZEBThrowable : public std::exception {
 public:
  /// One station of the exception's way.
  struct BackTraceEntry {
    std::string tag;
    std::string source;
    int line;
  };

  /// `source` names the class or operation of origin, `line` the line there, 0 when not known.
  ZEBThrowable(const I18NString& description, const char* source, int line);
  ZEBThrowable(const ZEBThrowable&);
  ZEBThrowable& operator=(const ZEBThrowable&);
  ~ZEBThrowable() override;

  const I18NString& getDescription() const noexcept { return m_description; }
  const std::string& getSource() const noexcept { return m_source; }
  int getLine() const noexcept { return m_line; }
  /// The description as UTF-8; valid as long as the exception.
  const char* what() const noexcept override { return m_what.c_str(); }

  /// Adds an entry; without memory the entry is left out.
  void addBackTrace(const char* tag, const char* source, int line = 0) noexcept;
  const std::vector<BackTraceEntry>& getBackTrace() const noexcept { return m_backTrace; }

  /// Throws a copy of this exception that has its full type. A derived class overrides it with
  /// `throw *this;`.
  [[noreturn]] virtual void raise() const;

 private:
  I18NString m_description;
  std::string m_what;
  std::string m_source;
  int m_line;
  std::vector<BackTraceEntry> m_backTrace;
};

#endif
