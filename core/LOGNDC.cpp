#include "core/LOGNDC.h"

#include <atomic>
#include <memory>
#include <utility>

#include "core/LOGHashtable.h"
#include "core/LOGStack.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBOutOfMemoryError.h"
#include "platform/ZEBThread.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtConvert.h"

namespace {

constexpr const char* SOURCE = "LOGNDC";

/// Counts how often all stacks were deleted at once; pointers from before must not be used.
std::atomic<unsigned> g_generation{0};

/// What a thread knows of its stack, which the table owns. Without a destructor, because static
/// destructors may still push and pop after a thread's variables were destroyed.
struct ThreadState {
  LOGStack* stack;
  unsigned generation;
  const LOGDiagnosticContext* popped;  // owned; what pop() returned is part of it
  bool isArmed;                        // to be freed at the thread's end
};
thread_local ThreadState t_state = {nullptr, 0, nullptr, false};

void endThread(void*) {
  t_state.isArmed = false;
  LOGNDC::remove();
  delete std::exchange(t_state.popped, nullptr);
}

/// Has the thread leave nothing behind, also after destructors that use it while the thread ends.
void arm() {
  if (!t_state.isArmed) {
    ZEBThread::atEnd(&endThread, nullptr);
    t_state.isArmed = true;
  }
}

I18NString currentThreadKey() { return ZEBUtConvert::handleCvt(ZEBThread::currentThreadId()); }

}  // namespace

LOGHashtable& LOGNDC::table() {
  static auto* const table = new LOGHashtable;
  return *table;
}

LOGHashtable& LOGNDC::s_table = table();

LOGStack* LOGNDC::currentStack() {
  return t_state.generation == g_generation.load(std::memory_order_relaxed) ? t_state.stack
                                                                            : nullptr;
}

LOGStack& LOGNDC::adopt(std::unique_ptr<LOGStack> stack) {
  arm();
  const ZEBThreadGuard guard(table().getCriticalSection());
  if (table().put(stack->toString(), stack.get()) == 0) {
    throw ZEBOutOfMemoryError(SOURCE, __LINE__);
  }
  remove();
  t_state.stack = stack.release();
  t_state.generation = g_generation.load(std::memory_order_relaxed);
  return *t_state.stack;
}

void LOGNDC::push(const I18NString& message) {
  zebTranslate(SOURCE, __LINE__, [&] {
    LOGStack* stack = currentStack();
    if (stack == nullptr) {
      stack = &adopt(std::make_unique<LOGStack>(currentThreadKey()));
    }
    stack->push(std::make_unique<LOGDiagnosticContext>(message, stack->peek()));
  });
}

const I18NString& LOGNDC::pop() {
  LOGStack* const stack = currentStack();
  if (stack == nullptr || stack->isEmpty() != 0) {
    return I18NString::none();
  }
  std::unique_ptr<LOGDiagnosticContext> popObj = stack->pop();
  ZEB_ASSERT(popObj, SOURCE, __LINE__);
  delete std::exchange(t_state.popped, popObj.release());
  arm();
  return t_state.popped->toString();
}

const I18NString& LOGNDC::peek() {
  const LOGStack* const stack = currentStack();
  if (stack == nullptr || stack->isEmpty() != 0) {
    return I18NString::none();
  }
  const LOGObject* const peekObj = stack->peek();
  ZEB_ASSERT(peekObj, SOURCE, __LINE__);
  return peekObj->toString();
}

LOG4ZEB_HOT const I18NString& LOGNDC::get() {
  const LOGStack* const stack = currentStack();
  if (stack == nullptr || stack->isEmpty() != 0) {
    return I18NString::none();
  }
  const LOGDiagnosticContext* const peekObj = stack->peek();
  ZEB_ASSERT(peekObj, SOURCE, __LINE__);
  return peekObj->getFullMessage();
}

int LOGNDC::getDepth() {
  const LOGStack* const stack = currentStack();
  return stack == nullptr ? 0 : stack->size();
}

void LOGNDC::setMaxDepth(int maxDepth) {
  LOGStack* const stack = currentStack();
  if (stack != nullptr && maxDepth < stack->size()) {
    stack->setSize(maxDepth);
  }
}

void LOGNDC::remove() {
  LOGStack* const stack = currentStack();
  if (stack != nullptr) {
    t_state.stack = nullptr;
    const ZEBThreadGuard guard(table().getCriticalSection());
    // The stack itself, not the newest of its key: the number of a thread that is gone, or that
    // forked, may be another's by now.
    table().removeValue(stack->toString(), stack);
  }
}

void LOGNDC::lazyRemove() {
  const ZEBThreadGuard guard(table().getCriticalSection());
  ++g_generation;
  table().clear();
}

LOGStack* LOGNDC::cloneStack() {
  const LOGStack* const stack = currentStack();
  return zebTranslate(SOURCE, __LINE__,
                      [stack] { return stack == nullptr ? nullptr : new LOGStack(*stack); });
}

void LOGNDC::inherit(LOGStack* stack) {
  if (stack != nullptr) {
    zebTranslate(SOURCE, __LINE__,
                 [&] { adopt(std::make_unique<LOGStack>(currentThreadKey(), *stack)); });
  }
}
