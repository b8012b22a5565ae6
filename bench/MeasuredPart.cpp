#include "bench/MeasuredPart.h"

void measuredPart(const std::function<void()>& operation, int times) {
  for (int i = 0; i < times; ++i) {
    operation();
  }
}
