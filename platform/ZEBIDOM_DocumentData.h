#ifndef PLATFORM_ZEBIDOM_DOCUMENTDATA_H
#define PLATFORM_ZEBIDOM_DOCUMENTDATA_H

#include <cstdint>
#include <vector>

#include "platform/ZEBIDOM_Node.h"

/// What a document holds, shared by all handles on it and constant once they exist. The nodes stand
/// in one array in document order: the document itself first, an element right before its
/// attributes, these before its children. So a subtree is a run of the array, and neither search
/// nor destruction recurses.
struct ZEBIDOM_DocumentData {
  static constexpr std::uint32_t ROOT = 0;

  struct Entry {
    int type = 0;
    std::uint32_t parent = 0;
    std::uint32_t end = 0;  // the index behind the last entry of the subtree
    std::uint32_t attributeCount = 0;
    int line = 0;
    int column = 0;
    I18NString name;
    I18NString value;
  };

  /// A document without any element.
  ZEBIDOM_DocumentData() : entries(1) {
    entries[ROOT].type = ZEBIDOM_Node::DOCUMENT_NODE;
    entries[ROOT].end = 1;
    entries[ROOT].name = "#document";
  }

  std::vector<Entry> entries;
};

#endif
