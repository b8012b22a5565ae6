#ifndef SOAK_SOAKLEDGER_H
#define SOAK_SOAKLEDGER_H

#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// What one destination holds of the soak's messages, and the complaints about it.
class SoakLedger {
 public:
  /// `sent` has, for each source, how many messages it has numbered.
  SoakLedger(std::string name, const std::vector<long>& sent);

  /// Enters a record, which is one whole message that is not there yet.
  void add(std::string_view record);
  /// Enters a file, a sequence of records that each begin and end so; the beginning may be empty.
  void addFile(const std::filesystem::path& file, std::string_view begin, std::string_view end);
  /// Enters every file below a directory whose name begins so. Returns how many there are.
  long addFiles(const std::string& directory, const std::string& name, std::string_view begin,
                std::string_view end);

  /// The messages of the source are all here.
  void requireAllOf(int source);
  /// They came in the order in which they were logged, as far as they came.
  void requireOrder();
  /// The same messages as there.
  void requireSameAs(const SoakLedger& other);
  void complain(const std::string& what);

  long count() const { return m_count; }
  const std::vector<std::string>& complaints() const { return m_complaints; }

 private:
  std::string m_name;
  std::vector<std::vector<bool>> m_seen;
  std::vector<long> m_latest;
  std::set<int> m_unordered;
  long m_count = 0;
  std::vector<std::string> m_complaints;
};

#endif
