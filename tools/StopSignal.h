#ifndef TOOLS_STOPSIGNAL_H
#define TOOLS_STOPSIGNAL_H

/// The user's or the system's wish that the command end (SIGINT, SIGTERM, SIGHUP), which the
/// command grants at a moment when nothing is half done. A second signal of the kind ends it on the
/// spot.
class StopSignal {
 public:
  /// Begins to watch; a signal that the process was started to ignore stays ignored.
  static void watch();
  /// The number of the signal that came, 0 while none did.
  static int received() noexcept;
};

#endif
