#ifndef CORE_LOGNDC_H
#define CORE_LOGNDC_H

#include <memory>

#include "platform/I18NString.h"

class LOGHashtable;
class LOGStack;

/// The nested diagnostic context: for each thread a stack of messages that say what the thread is
/// working on. Application code pushes one on entering a unit of work and pops it on leaving; every
/// event carries the composed text. All operations concern the calling thread's own stack, which
/// goes when the thread ends.
class LOG4ZEB_EXPORT LOGNDC {
 public:
  static void push(const I18NString& message);
  /// Removes the top entry and returns its message, the empty text when there is none. The text
  /// stays valid until the thread's next pop.
  static const I18NString& pop();
  /// The message of the top entry, the empty text when there is none; valid until the stack
  /// changes.
  static const I18NString& peek();
  /// All messages from bottom to top, joined by blanks; valid until the stack changes.
  static const I18NString& get();
  static int getDepth();
  /// Drops the entries above the first `maxDepth`.
  static void setMaxDepth(int maxDepth);
  /// Drops all entries.
  static void clear() { setMaxDepth(0); }
  /// Drops the stack itself.
  static void remove();
  /// A copy of the stack for inherit(), owned by the caller; null when there is none.
  static LOGStack* cloneStack();
  /// Replaces the thread's stack by a copy of `stack`, which stays the caller's; null changes
  /// nothing, and neither does a lack of memory, of which it throws ZEBOutOfMemoryError.
  static void inherit(LOGStack* stack);

 private:
  static void lazyRemove();
  static LOGHashtable& table();
  static LOGHashtable& s_table;  // has it made when the library is loaded
  static LOGStack* currentStack();
  static LOGStack& adopt(std::unique_ptr<LOGStack> stack);
};

#endif
