#ifndef CORE_LOGGROWINGLIST_H
#define CORE_LOGGROWINGLIST_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

/// A list that grows at its end while other threads read it without a lock. Elements never move.
template <typename T>
class LOGGrowingList {
 public:
  /// Any thread may ask for the size, and for the elements below it.
  std::size_t size() const noexcept { return m_size.load(std::memory_order_acquire); }
  /// REQUIRES: position < size().
  const T& operator[](std::size_t position) const noexcept {
    const Place place(position);
    return m_chunks[place.chunk][place.offset];
  }

  // Calls of these are serialised by the caller.
  /// Makes room for that many more. Throws std::bad_alloc.
  void reserve(std::size_t more) {
    const std::size_t chunks = Place(m_size.load(std::memory_order_relaxed) + more).chunk + 1;
    for (std::size_t i = 0; i < chunks; ++i) {
      if (m_chunks[i] == nullptr) {
        m_chunks[i] = std::make_unique<T[]>(FIRST_CHUNK << i);
      }
    }
  }
  /// REQUIRES: there is room.
  void add(T element) noexcept {
    const std::size_t size = m_size.load(std::memory_order_relaxed);
    const Place place(size);
    m_chunks[place.chunk][place.offset] = std::move(element);
    m_size.store(size + 1, std::memory_order_release);
  }
  /// REQUIRES: no other thread reads.
  void clear() noexcept {
    m_size.store(0, std::memory_order_relaxed);
    for (std::unique_ptr<T[]>& chunk : m_chunks) {
      chunk.reset();
    }
  }

 private:
  static constexpr std::size_t FIRST_CHUNK = 64;
  static constexpr std::size_t CHUNKS = 40;  // each twice as large as the one before

  struct Place {
    explicit Place(std::size_t position) noexcept {
      for (offset = position; offset >= FIRST_CHUNK << chunk; ++chunk) {
        offset -= FIRST_CHUNK << chunk;
      }
    }
    std::size_t chunk = 0;
    std::size_t offset = 0;
  };

  std::unique_ptr<T[]> m_chunks[CHUNKS];  // written before the size that reaches into them
  std::atomic<std::size_t> m_size{0};
};

#endif
