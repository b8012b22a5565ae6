// The command log4zeb: logging for shell scripts and by hand, one subcommand per purpose.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "core/LOG4ZEBVersion.h"
#include "platform/ZEBUtTerminal.h"
#include "tools/CheckCommand.h"
#include "tools/CommandSupport.h"
#include "tools/ListenCommand.h"
#include "tools/LogCommand.h"
#include "tools/PageCommand.h"

namespace {

constexpr int UNEXPECTED_FAILURE = 1;
constexpr int BAD_ARGUMENTS = 2;
constexpr int BAD_OUTPUT = 5;

bool isSubcommand(CLI::App& app, const std::string& word) {
  return !app.get_subcommands([&](CLI::App* known) { return known->check_name(word); }).empty();
}

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
  const LogCommand log(app);
  const ListenCommand listen(app);
  const PageCommand page(app);
  const CheckCommand check(app);
  if (arguments.size() > 1 && arguments[1].rfind('-', 0) != 0 && !isSubcommand(app, arguments[1])) {
    // The parser would complain that there is no subcommand, and not of the word that is none.
    CommandSupport::say("there is no subcommand '" + arguments[1] + "'; see log4zeb --help");
    return BAD_ARGUMENTS;
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
      return BAD_ARGUMENTS;
    }
    // Help and version end here too, with the code 0.
    return app.exit(end) == 0 ? 0 : BAD_ARGUMENTS;
  }
  if (app.got_subcommand("check")) {
    return check.run();
  }
  if (app.got_subcommand("listen")) {
    return listen.run();
  }
  if (app.got_subcommand("page")) {
    return page.run();
  }
  return log.run();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  try {
    ZEBUtTerminal::passBytesUnchanged();
    ZEBUtTerminal::outliveReaders();
    std::ios::sync_with_stdio(false);
    const int code = run(ZEBUtTerminal::arguments(argumentCount, arguments));
    if (!std::cout.flush() && code != BAD_OUTPUT) {  // with that code it has been said
      CommandSupport::say("cannot write to standard output");
      return BAD_OUTPUT;
    }
    return code;
  } catch (const std::exception& failure) {
    std::cerr << "log4zeb: " << failure.what() << '\n';
    return UNEXPECTED_FAILURE;
  }
}
