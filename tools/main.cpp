// The command log4zeb: logging for shell scripts and by hand, one subcommand per purpose.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/LOG4ZEBVersion.h"
#include "platform/ZEBUtTerminal.h"
#include "tools/CommandSupport.h"
#include "tools/Subcommand.h"

namespace {

/// The first word that looks like an option and was not understood; empty when there is none.
std::string unknownOption(const CLI::App& app) {
  for (const std::string& word : app.remaining(true)) {
    if (word.size() > 1 && word[0] == '-' && word != "--") {
      return word.substr(0, word.find('='));
    }
  }
  return "";
}

int run(std::vector<std::string> arguments) {
  CLI::App app("Logs through the configuration documents of LOG4ZEB", "log4zeb");
  app.set_version_flag("--version", "log4zeb " LOG4ZEB_VERSION);
  app.require_subcommand(1);
  std::map<std::string, std::unique_ptr<Subcommand>> commands;
  commands["log"] = Subcommand::log(app);
  commands["listen"] = Subcommand::listen(app);
  commands["page"] = Subcommand::page(app);
  commands["check"] = Subcommand::check(app);
  if (arguments.size() > 1 && arguments[1].rfind('-', 0) != 0 &&
      commands.count(arguments[1]) == 0) {
    // The parser would complain that there is no subcommand, and not of the word that is none.
    CommandSupport::say("there is no subcommand '" + arguments[1] + "'; see log4zeb --help");
    return Subcommand::BAD_ARGUMENTS;
  }
  // The parser takes them from the end, without the name of the program.
  std::reverse(arguments.begin(), arguments.end());
  if (!arguments.empty()) {
    arguments.pop_back();
  }
  try {
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& end) {
    const std::string unknown = unknownOption(app);
    if (end.get_exit_code() != 0 && !unknown.empty()) {
      // The parser would complain first of what is missing, perhaps because of that very word.
      const auto subcommands = app.get_subcommands();
      CommandSupport::say("there is no option '" + unknown + "'; see log4zeb " +
                          (subcommands.empty() ? "" : subcommands.front()->get_name() + " ") +
                          "--help");
      return Subcommand::BAD_ARGUMENTS;
    }
    // Help and version end here too, with the code 0.
    return app.exit(end) == 0 ? 0 : Subcommand::BAD_ARGUMENTS;
  }
  return commands.at(app.get_subcommands().front()->get_name())->run();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  try {
    ZEBUtTerminal::passBytesUnchanged();
    ZEBUtTerminal::outliveReaders();
    std::ios::sync_with_stdio(false);
    const int code = run(ZEBUtTerminal::arguments(argumentCount, arguments));
    if (!std::cout.flush() && code != Subcommand::BAD_OUTPUT) {  // with that code it has been said
      CommandSupport::say("cannot write to standard output");
      return Subcommand::BAD_OUTPUT;
    }
    return code;
  } catch (const std::exception& failure) {
    std::cerr << "log4zeb: " << failure.what() << '\n';
    return Subcommand::UNEXPECTED_FAILURE;
  }
}
