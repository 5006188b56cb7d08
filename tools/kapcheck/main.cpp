// SPDX-License-Identifier: MIT
#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "base/Failure.h"
#include "base/Printable.h"
#include "component/ComponentCheck.h"
#include "host/HostCheck.h"
#include "process/ChildProcess.h"

namespace KAPCheck {

namespace {

using PosUtil::Failure;

// What the user asks for.
struct Options {
  std::string fLibrary, fName, fScenario;
  std::string fProbe, fHost;
  std::vector<std::string> fOnly;
  unsigned long fSeed = 1;
  double fTimeLimit = 60;
  std::string fFormat = "text";
  bool fIsList = false;
};

void AddOutputOptions(CLI::App& app, Options& options) {
  const auto check = [](const std::string& text) -> std::string {
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    const bool isRight = *end == '\0' && seconds >= 0.001 && seconds <= 1e6;  // false for "nan"
    return isRight ? "" : "--time-limit: not a number of seconds from 0.001 to 1000000";
  };
  app.add_option("--time-limit", options.fTimeLimit,
                 "Seconds that a step of a test may take; default: 60")
      ->check(check)
      ->option_text("SECONDS");
  app.add_option("--format", options.fFormat, "\"text\" (the default) or \"json\"")
      ->check(CLI::IsMember({"text", "json"}))
      ->option_text("FORMAT");
}

CLI::App* DeclareComponent(CLI::App& app, Options& options) {
  CLI::App* const own = app.add_subcommand("component", "Checks a component");
  own->add_option("LIBRARY", options.fLibrary, "The shared library of the component")
      ->option_text(" ");
  own->add_flag("--list", options.fIsList, "Lists the tests instead of running them");
  own->add_option("--only", options.fOnly, "Runs only these tests, a comma between two names")
      ->delimiter(',')
      ->option_text("NAMES");
  own->add_option("--name", options.fName,
                  "The component's name; default: NAME of a library libNAME.so")
      ->option_text("NAME");
  own->add_option("--scenario", options.fScenario, "A plug-in that uses the component")
      ->option_text("PLUGIN");
  own->add_option("--seed", options.fSeed, "The seed of random calls; default: 1")
      ->check([](const std::string& text) -> std::string {
        const bool isZero = text.find_first_not_of('0') == std::string::npos;
        return isZero ? "--seed: not a positive number" : "";
      })
      ->option_text("NUMBER");
  AddOutputOptions(*own, options);
  own->footer(
      "Each test runs in a process of its own.\n\nExample:\n"
      "  kapcheck component --only leaks,registrations libTotals.so");
  return own;
}

// An empty name comes from a variable that is not set.
std::string RefuseEmpty(const std::string& name) { return name.empty() ? "the name is empty" : ""; }

CLI::App* DeclareHost(CLI::App& app, Options& options) {
  CLI::App* const own = app.add_subcommand("host", "Checks a host");
  own->add_option("--host", options.fHost, "A plug-in with the host; default: the reference host")
      ->check(RefuseEmpty)
      ->option_text("PLUGIN");
  own->add_option("--probe", options.fProbe,
                  "Path of libkapprobe.so; default: the installed one, then ../lib")
      ->check(RefuseEmpty)
      ->option_text("FILE");
  AddOutputOptions(*own, options);
  own->footer("Example:\n  kapcheck host --host ./libmyhost.so");
  return own;
}

// The processes of the tests work in another folder.
std::string Absolute(const std::string& path) {
  return path.empty() ? "" : std::filesystem::absolute(path).string();
}

std::chrono::milliseconds LimitOf(const Options& options) {
  return std::chrono::milliseconds(std::lround(std::ceil(options.fTimeLimit * 1000)));
}

Results RunComponent(const Options& options) {
  if (options.fLibrary.empty()) throw Failure("LIBRARY is required", PosUtil::kExitUsage);
  const std::string name = options.fName.empty() ? NameFromFile(options.fLibrary) : options.fName;
  if (!IsComponentName(name)) {
    const std::string why = options.fName.empty()
                                ? "cannot tell the component's name from the file name; use --name"
                                : "not a component's name: " + PosUtil::Printable(name);
    throw Failure(PosUtil::Printable(options.fLibrary) + ": " + why, PosUtil::kExitUsage);
  }
  const Target target{Absolute(options.fLibrary), name, Absolute(options.fScenario), options.fSeed};
  return CheckComponent(target, options.fOnly, LimitOf(options));
}

Results RunHost(const Options& options) {
  return CheckHost(options.fProbe.empty() ? LocateProbe() : Absolute(options.fProbe),
                   Absolute(options.fHost), LimitOf(options));
}

// Ends this process as the signal would have done, with what there is.
[[noreturn]] void EndBy(int signal) {
  std::cout.flush();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::_Exit(PosUtil::kExitFailure);
}

PosUtil::ExitStatus Print(const Options& options, const Results& results) {
  options.fFormat == "json" ? PrintJson(std::cout, results) : PrintText(std::cout, results);
  if (results.fSignal != 0) EndBy(results.fSignal);
  return results.Count(Outcome::kFailed) == 0 ? PosUtil::kExitSuccess : PosUtil::kExitNegative;
}

PosUtil::ExitStatus Run(const CLI::App& app, const Options& options) {
  CatchInterrupts();
  if (app.got_subcommand("host")) return Print(options, RunHost(options));
  if (!options.fIsList) return Print(options, RunComponent(options));
  options.fFormat == "json" ? ListJson(std::cout, ListedTests())
                            : ListText(std::cout, ListedTests());
  return PosUtil::kExitSuccess;
}

// The processes that kapcheck starts are kapcheck again.
[[noreturn]] void RunChild(const std::vector<std::string>& arguments) {
  if (arguments.at(1) == "run-probe") {
    RunProbe(arguments.at(2), arguments.at(4), std::stoi(arguments.at(3)));
  }
  RunComponentTest(arguments.at(2), {arguments.at(3), arguments.at(4), arguments.at(6),
                                     std::stoul(arguments.at(5))});
}

PosUtil::ExitStatus ParseAndRun(int argc, char** argv) {
  Options options;
  CLI::App app("Checks components and hosts.", "kapcheck");
  app.set_help_flag("--help,-h", "Prints this help");
  app.require_subcommand(1);
  app.footer(
      "kapcheck COMMAND --help describes a command.\n\n"
      "Exit status: 0 all passed, 1 something failed, 2 wrong usage, 3 not a library, or\n"
      "lost output.");
  DeclareComponent(app, options);
  DeclareHost(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success&) {
    std::cout << app.help();
    return PosUtil::kExitSuccess;
  } catch (const CLI::ParseError& error) {
    throw Failure(std::string(error.what()) + "\nSee kapcheck --help.", PosUtil::kExitUsage);
  }
  return Run(app, options);
}

int Main(int argc, char** argv) {
  try {
    if (IsChild()) RunChild({argv, argv + argc});
    const PosUtil::ExitStatus status = ParseAndRun(argc, argv);
    if (!std::cout.flush()) throw Failure("<stdout>: cannot write");
    return status;
  } catch (const Failure& failure) {
    std::cerr << "kapcheck: " << failure.what() << '\n';
    return failure.Status();
  } catch (const Interrupted& interrupted) {
    EndBy(interrupted.Signal());
  } catch (const std::exception& error) {
    std::cerr << "kapcheck: " << error.what() << '\n';
  }
  return PosUtil::kExitFailure;
}

}  // namespace

}  // namespace KAPCheck

int main(int argc, char** argv) {
  // A closed pipe is an error of writing. Crashes are expected: their memory is of no use.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
  const rlimit none = {0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
  return KAPCheck::Main(argc, argv);
}
