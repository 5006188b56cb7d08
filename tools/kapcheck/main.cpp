// SPDX-License-Identifier: MIT
#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "base/Failure.h"
#include "base/Printable.h"
#include "component/ComponentCheck.h"
#include "component/ComponentTests.h"
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
  // Of a test's own process.
  std::string fTest;
  int fFirst = 0;
};

void AddOutputOptions(CLI::App& app, Options& options) {
  app.add_option("--time-limit", options.fTimeLimit, "Seconds that a process may take; default: 60")
      ->check(CLI::Range(0.001, 1e6))
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
      ->check(CLI::PositiveNumber)
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

// The processes that kapcheck starts are kapcheck again.
void DeclareOwnProcesses(CLI::App& app, Options& options) {
  CLI::App* const test = app.add_subcommand("run-component-test", "")->group("");
  test->add_option("test", options.fTest)->required();
  test->add_option("library", options.fLibrary)->required();
  test->add_option("name", options.fName)->required();
  test->add_option("seed", options.fSeed)->required();
  test->add_option("scenario", options.fScenario);
  CLI::App* const probe = app.add_subcommand("run-probe", "")->group("");
  probe->add_option("probe", options.fProbe)->required();
  probe->add_option("first", options.fFirst)->required();
  probe->add_option("host", options.fHost);
}

// The processes of the tests work in another folder.
std::string Absolute(const std::string& path) {
  return path.empty() ? "" : std::filesystem::absolute(path).lexically_normal().string();
}

std::chrono::milliseconds LimitOf(const Options& options) {
  return std::chrono::milliseconds(std::lround(std::ceil(options.fTimeLimit * 1000)));
}

void ListTests() {
  std::size_t width = 0;
  for (const ComponentTest& test : ComponentTests()) {
    width = std::max(width, std::string_view(test.fName).size() + 2);
  }
  for (const ComponentTest& test : ComponentTests()) {
    const std::string name = test.fName;
    std::cout << name << std::string(width - name.size(), ' ') << test.fDescription << '\n';
  }
}

Results RunComponent(const Options& options) {
  if (options.fLibrary.empty()) throw Failure("LIBRARY is required", PosUtil::kExitUsage);
  const std::string name = options.fName.empty() ? NameFromFile(options.fLibrary) : options.fName;
  if (name.empty()) {
    throw Failure(options.fLibrary +
                      ": cannot tell the component's name from the file name; use "
                      "--name",
                  PosUtil::kExitUsage);
  }
  for (const std::string& test : options.fOnly) {
    if (!FindComponentTest(test)) {
      throw Failure("there is no test \"" + test + "\"; see --list", PosUtil::kExitUsage);
    }
  }
  const Target target{Absolute(options.fLibrary), name, Absolute(options.fScenario), options.fSeed};
  return CheckComponent(target, options.fOnly, LimitOf(options));
}

Results RunHost(const Options& options) {
  return CheckHost(options.fProbe.empty() ? LocateProbe() : Absolute(options.fProbe),
                   Absolute(options.fHost), LimitOf(options));
}

PosUtil::ExitStatus Print(const Options& options, const Results& results) {
  options.fFormat == "json" ? PrintJson(std::cout, results) : PrintText(std::cout, results);
  return results.Count(Outcome::kFailed) == 0 ? PosUtil::kExitSuccess : PosUtil::kExitNegative;
}

PosUtil::ExitStatus Run(const CLI::App& app, const Options& options) {
  if (app.got_subcommand("run-component-test")) {
    EndWithParent();
    RunComponentTest(options.fTest,
                     {options.fLibrary, options.fName, options.fScenario, options.fSeed});
  }
  if (app.got_subcommand("run-probe")) {
    EndWithParent();
    RunProbe(options.fProbe, options.fHost, options.fFirst);
  }
  if (app.got_subcommand("host")) return Print(options, RunHost(options));
  if (!options.fIsList) return Print(options, RunComponent(options));
  ListTests();
  return PosUtil::kExitSuccess;
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
  DeclareOwnProcesses(app, options);
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
    const PosUtil::ExitStatus status = ParseAndRun(argc, argv);
    if (!std::cout.flush()) throw Failure("<stdout>: cannot write");
    return status;
  } catch (const Failure& failure) {
    std::cerr << "kapcheck: " << failure.what() << '\n';
    return failure.Status();
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
