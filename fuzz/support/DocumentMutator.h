#ifndef FUZZ_SUPPORT_DOCUMENTMUTATOR_H
#define FUZZ_SUPPORT_DOCUMENTMUTATOR_H

#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <vector>

/// Changes a document so that it mostly stays well-formed: bytes changed anywhere nearly always end
/// in the parser, and never reach what reads the document.
class DocumentMutator {
 public:
  /// Changes bytes in any way.
  using BytesMutator = std::function<std::string(const std::string&)>;

  DocumentMutator(unsigned int seed, BytesMutator changeBytes)
      : m_random(seed), m_changeBytes(std::move(changeBytes)) {}

  std::string mutate(const std::string& document);

 private:
  struct Range {
    std::size_t begin;
    std::size_t end;
  };

  std::size_t below(std::size_t limit) { return m_random() % limit; }
  /// What stands between quotes, and whole elements from their first to their last bracket.
  static std::vector<Range> values(const std::string& document);
  static std::vector<Range> elements(const std::string& document);
  static std::size_t endOfElement(const std::string& document, std::size_t begin);
  std::string changeValue(const std::string& document);
  std::string changeElements(const std::string& document);

  std::minstd_rand m_random;
  BytesMutator m_changeBytes;
};

#endif
