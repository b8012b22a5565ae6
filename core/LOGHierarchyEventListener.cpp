#include "core/LOGHierarchyEventListener.h"

LOGHierarchyEventListener::~LOGHierarchyEventListener() = default;

void LOGHierarchyEventListener::addAppenderEvent(LOGLogger*, LOGAppenderSkeleton*) {}

void LOGHierarchyEventListener::removeAppenderEvent(LOGLogger*, LOGAppenderSkeleton*) {}
