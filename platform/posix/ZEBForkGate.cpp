#include "platform/ZEBForkGate.h"

#include <pthread.h>

bool ZEBForkGate::watchForks() noexcept {
  return pthread_atfork(&ZEBForkGate::beforeFork, &ZEBForkGate::afterForkInParent,
                        &ZEBForkGate::afterForkInChild) == 0;
}
