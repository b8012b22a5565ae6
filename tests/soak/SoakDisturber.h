#ifndef SOAK_SOAKDISTURBER_H
#define SOAK_SOAKDISTURBER_H

#include <memory>
#include <string>
#include <vector>

#include "appenders/LOGFileAppender.h"
#include "layouts/LOGLayout.h"
#include "soak/SoakRandom.h"
#include "soak/SoakReceiver.h"

/// Does to a logging program what its operator, its own code and its machine may do to it, one
/// random thing at a time.
class SoakDisturber {
 public:
  /// It vanishes, and an empty one comes.
  static constexpr const char* LOST_DIRECTORY = "lost";
  /// It vanishes, and it or an empty one comes. Not for files that roll over: one that is full and
  /// cannot be renamed is emptied, so much may be lost when it is back too soon.
  static constexpr const char* MOVED_DIRECTORY = "moved";

  /// The disturber logs by itself, as that source.
  SoakDisturber(unsigned seed, int source, SoakReceiver& syslog, SoakReceiver& records);
  /// REQUIRES: the library is shut down, because loggers may hold the disturber's appenders.
  ~SoakDisturber() = default;

  void disturb();
  /// Gives loggers every level that they may get here, so that they keep no further copies later.
  static void prime();
  /// What the source has logged: all of it is in "added.log".
  long sent() const { return m_sent; }
  long vanishings() const { return m_vanishings; }
  long daemonStops() const { return m_daemonStops; }

 private:
  void changeLevel();
  void changeThreshold();
  void resizeQueue();
  void logThroughAnAddedAppender();
  void addOrRemoveGuest();
  void toggle(SoakReceiver& daemon) { m_daemonStops += daemon.toggle() ? 0 : 1; }
  void letDirectoryVanish(const std::string& directory);

  SoakRandom m_random;
  const int m_source;
  SoakReceiver& m_syslog;
  SoakReceiver& m_records;
  long m_sent = 0;
  long m_vanishings = 0;
  long m_daemonStops = 0;
  LOGLayout m_layout;
  std::vector<std::unique_ptr<LOGFileAppender>> m_guests;  // the last one is attached, perhaps
  bool m_guestIsAttached = false;
};

#endif
