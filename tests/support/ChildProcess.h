#ifndef TESTS_SUPPORT_CHILDPROCESS_H
#define TESTS_SUPPORT_CHILDPROCESS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A program that a test runs in its own working directory, as a process of its own. What it writes
/// to standard error goes to a file.
class ChildProcess {
 public:
  /// How the process ended: with an exit code, or by a signal. One that was killed has neither
  /// where there are no signals.
  struct End {
    int exitCode = -1;
    int signal = 0;
  };

  /// The name of an input that is empty.
#ifdef _WIN32
  static constexpr const char* NO_INPUT = "NUL";
#else
  static constexpr const char* NO_INPUT = "/dev/null";
#endif

  /// Starts the program. Standard input is the named file, or, when `input` is empty, a pipe that
  /// send() writes to; standard output is a pipe that receive() reads from.
  /// Throws std::system_error when it cannot be started.
  ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
               const std::string& input = NO_INPUT);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  /// Kills the process if it still runs.
  ~ChildProcess();

  void send(const std::string& text);
  /// Closes the pipe to standard input.
  void endInput();
  /// What came on standard output, at least `bytes` unless it ended before.
  const std::string& receive(std::size_t bytes = SIZE_MAX);

  /// Ends the process on the spot.
  void kill();
#ifndef _WIN32
  void signal(int number);
#endif
  /// Reads standard output to its end and waits for the process.
  End wait();
  /// What the process wrote to standard error so far.
  std::string errors() const;

 private:
  static std::string nextErrorFile();
  /// The number of bytes that were read, 0 at the end.
  long readOutput(char* buffer, std::size_t size);

  // The operating system's numbers of the process and of this end of the pipes.
  static constexpr std::intptr_t NONE = -1;
  const std::string m_errorFile;
  std::intptr_t m_process = NONE;
  std::intptr_t m_input = NONE;
  std::intptr_t m_output = NONE;
  std::string m_received;
};

#endif
