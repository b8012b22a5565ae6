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
  /// How the process ended: with an exit code, or by a signal.
  struct End {
    int exitCode = -1;
    int signal = 0;
  };

  /// Starts the program. Standard input is the named file, or, when `input` is empty, a pipe that
  /// send() writes to; standard output is a pipe that receive() reads from.
  /// Throws std::system_error when it cannot be started.
  ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
               const std::string& input = "/dev/null");
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  /// Kills the process if it still runs.
  ~ChildProcess();

  void send(const std::string& text);
  /// Closes the pipe to standard input.
  void endInput();
  /// What came on standard output, at least `bytes` unless it ended before.
  const std::string& receive(std::size_t bytes = SIZE_MAX);

  void signal(int number);
  /// Reads standard output to its end and waits for the process.
  End wait();
  /// What the process wrote to standard error so far.
  std::string errors() const;

 private:
  const std::string m_errorFile;
  int m_process = -1;
  int m_input = -1;
  int m_output = -1;
  std::string m_received;
};

#endif
