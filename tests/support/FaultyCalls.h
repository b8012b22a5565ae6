#ifndef SUPPORT_FAULTYCALLS_H
#define SUPPORT_FAULTYCALLS_H

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// While one lives, the operating system's calls that concern a directory, or one file, are
/// counted, and those that a plan names fail. What the calls destroy is kept. The program has to be
/// linked with `-Wl,--wrap` for each call; only those of statically linked code are seen.
class FaultyCalls {
 public:
  /// In place of an error's number: the call writes half of what it is given; it writes half, and
  /// then every call fails as on a full disk; it writes nothing and returns 0.
  static constexpr int SHORT = -1;
  static constexpr int SHORT_THEN_FULL = -2;
  static constexpr int NOTHING = -3;
  static constexpr int FOR_EVER = 1000000;

  /// Calls from the `first`, counted from 1, to fail.
  struct Fault {
    std::string call;
    int first;
    int count;
    int error;
  };
  /// What a file held when it was removed, replaced or emptied.
  struct Destroyed {
    std::string call;
    std::string path;
    std::string content;
  };

  /// `afterShort` is run after each write that the plan cut short.
  FaultyCalls(
      const std::string& directory, std::vector<Fault> plan,
      std::function<void()> afterShort = [] {});
  FaultyCalls(const FaultyCalls&) = delete;
  FaultyCalls& operator=(const FaultyCalls&) = delete;
  ~FaultyCalls();

  /// From here on nothing fails.
  void heal();
  /// How often each call was made. The opening of a file that is open already, for writing over
  /// it, counts as "reopen".
  std::map<std::string, int> made() const;
  /// How many of them failed or, by plan, did not do all.
  int injected() const;
  std::vector<Destroyed> destroyed() const;
};

#endif
