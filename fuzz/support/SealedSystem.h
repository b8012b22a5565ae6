#ifndef FUZZ_SUPPORT_SEALEDSYSTEM_H
#define FUZZ_SUPPORT_SEALEDSYSTEM_H

#include <string>
#include <vector>

/// Stands between the library and what a harness must not touch, because its bytes may name
/// anything: no library is loaded, no host but this machine is known, and no datagram is sent; each
/// is kept here instead.
class SealedSystem {
 public:
  /// The datagrams since the last call, oldest first.
  static std::vector<std::string> takeDatagrams();
};

#endif
