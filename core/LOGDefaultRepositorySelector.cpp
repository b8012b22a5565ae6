#include "core/LOGDefaultRepositorySelector.h"

LOGDefaultRepositorySelector::LOGDefaultRepositorySelector(LOGLoggerRepository* repository)
    : m_repository(repository) {}
