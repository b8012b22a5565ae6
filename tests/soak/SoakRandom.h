#ifndef SOAK_SOAKRANDOM_H
#define SOAK_SOAKRANDOM_H

#include <chrono>
#include <random>
#include <thread>

/// A thread's own chances, which follow from the seed.
class SoakRandom {
 public:
  explicit SoakRandom(unsigned seed) : m_engine(seed) {}

  unsigned below(std::size_t limit) { return static_cast<unsigned>(m_engine() % limit); }
  bool oneIn(unsigned chances) { return below(chances) == 0; }
  /// Sleeps for less than that.
  void nap(unsigned milliseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(below(1000 * milliseconds)));
  }

 private:
  std::mt19937 m_engine;
};

#endif
