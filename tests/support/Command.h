#ifndef TESTS_SUPPORT_COMMAND_H
#define TESTS_SUPPORT_COMMAND_H

#include <string>
#include <vector>

#include "support/ChildProcess.h"

/// How a program ended, and what it wrote.
struct Outcome {
  int exitCode;
  std::string output;
  std::string errors;
};

inline Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments,
                          const std::string& input = ChildProcess::NO_INPUT) {
  ChildProcess process(program, arguments, input);
  const int exitCode = process.wait().exitCode;
  return {exitCode, process.receive(), process.errors()};
}

#endif
