#ifndef PLATFORM_ZEBIDOM_DOCUMENT_H
#define PLATFORM_ZEBIDOM_DOCUMENT_H

#include "platform/ZEBIDOM_Node.h"

class ZEBIDOM_Element;

/// A handle on a document, the root of its tree of nodes, or a null handle.
class LOG4ZEB_EXPORT ZEBIDOM_Document : public ZEBIDOM_Node {
 public:
  ZEBIDOM_Document() noexcept = default;
  /// The document of `data`, for the other classes of the tree; see ZEBIDOM_DOMImplementation.
  explicit ZEBIDOM_Document(std::shared_ptr<const ZEBIDOM_DocumentData> data) noexcept;

  /// The outermost element; null while nothing was parsed into the document.
  ZEBIDOM_Element getDocumentElement() const;
  /// The elements that have the name, all for "*", in document order.
  using ZEBIDOM_Node::getElementsByTagName;
};

#endif
