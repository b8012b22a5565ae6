#include "core/LOGProvisionNode.h"

#include "platform/ZEBAssertError.h"

LOGProvisionNode::LOGProvisionNode(LOGLogger* logger) {
  ZEB_ASSERT(logger, "LOGProvisionNode", __LINE__);
  instance("LOGProvisionNode");
  addElement(logger);
}
