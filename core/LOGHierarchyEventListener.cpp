#include "core/LOGHierarchyEventListener.h"

LOGHierarchyEventListener::~LOGHierarchyEventListener() = default;
