#ifndef PLATFORM_ZEBIDOM_DOMIMPLEMENTATION_H
#define PLATFORM_ZEBIDOM_DOMIMPLEMENTATION_H

#include "platform/LOG4ZEBExport.h"

class ZEBIDOM_Document;

/// Makes documents for a ZEBIDOM_Parser to fill.
class LOG4ZEB_EXPORT ZEBIDOM_DOMImplementation {
 public:
  static const ZEBIDOM_DOMImplementation& getInstance() noexcept;
  /// A document without any element.
  ZEBIDOM_Document createDocument() const;
};

#endif
