#ifndef CORE_LOGDEFAULTREPOSITORYSELECTOR_H
#define CORE_LOGDEFAULTREPOSITORYSELECTOR_H

#include "core/LOGRepositorySelector.h"

/// Always answers with the one repository that it was given.
class LOG4ZEB_EXPORT LOGDefaultRepositorySelector : public LOGRepositorySelector {
 public:
  /// `repository` is not owned.
  explicit LOGDefaultRepositorySelector(LOGLoggerRepository* repository);
  LOGLoggerRepository* getLoggerRepository() override { return m_repository; }

 private:
  LOGLoggerRepository* m_repository;
};

#endif
