#include "core/LOGDefaultRepositorySelector.h"

LOGDefaultRepositorySelector::LOGDefaultRepositorySelector(LOGLoggerRepository* repository)
    : m_repository(repository) {}

LOGLoggerRepository* LOGDefaultRepositorySelector::getLoggerRepository() { return m_repository; }
