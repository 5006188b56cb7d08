// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <map>
#include <new>
#include <string_view>
#include <vector>

#include "base/Failure.h"
#include "base/Printable.h"
#include "commands/Command.h"
#include "commands/declarations/Declarations.h"
#include "commands/declarations/UsageMessage.h"
#include "program/Library.h"
#include "program/Session.h"
#include "program/Version.h"

namespace PosUtil {

namespace {

// Applied as soon as it is parsed: the arguments after it may be wrong, which takes a message.
void DeclareColour(CLI::App& options, Session& session) {
  static const std::map<std::string, ColourMode> kModes = {
      {"auto", ColourMode::kAuto}, {"always", ColourMode::kAlways}, {"never", ColourMode::kNever}};
  options
      .add_option_function<std::string>(
          "--color", [&session](const std::string& mode) { session.SetColours(kModes.at(mode)); },
          "Colours of the output and the messages; default: auto, on a terminal unless NO_COLOR is "
          "set")
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->trigger_on_parse()
      ->option_text("auto|always|never");
}

void DeclareCommand(CLI::App& options, Command& command) {
  CLI::App* const own = options.add_subcommand(command.kName, command.kDescription);
  own->fallthrough();
  Options declared(*own);
  command.Declare(declared);
}

// The command that the arguments start with, which is then the one to run; null for anything else.
Command* FirstArgument(int argc, char** argv) {
  for (Command* command : Command::All()) {
    if (argc > 1 && std::string_view(argv[1]) == command->kName) return command;
  }
  return nullptr;
}

// Declares all commands, or only `chosen`: the options of the others took a third of the
// instructions of a start.
void DeclareAll(CLI::App& options, Session& session, Command* chosen) {
  options.require_subcommand(1);
  options.set_help_flag("--help,-h", "Prints this help");
  Options common(options);
  common
      .Text("--library", session.LibraryPath(),
            "Path of libKAPUtils.so; default: the installed one, then ../lib")
      .File()
      .ShownAs("FILE");
  common
      .Text("--trace", session.TracePath(),
            "Writes the calls between host and library to FILE; a timeline if it ends in .json")
      .File()
      .ShownAs("FILE");
  DeclareColour(options, session);
  options.set_version_flag("--version", ProgramVersion(), "Prints the version of the program");
  common.Footer(
      "posutil COMMAND --help describes a command.\n\n"
      "Exit status: 0 success, 1 a negative result, 2 wrong usage, 3 unreadable or malformed\n"
      "input, lost output, or a report of the library.");
  if (chosen && !chosen->DescribesAll()) return DeclareCommand(options, *chosen);
  for (Command* command : Command::All()) DeclareCommand(options, *command);
}

// The parser requires one.
Command& ChosenCommand(const CLI::App& options) {
  const std::string name = options.get_subcommands().front()->get_name();
  const auto& commands = Command::All();
  return **std::find_if(commands.begin(), commands.end(),
                        [&](const Command* command) { return command->kName == name; });
}

std::vector<std::string> Arguments(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto& commands = Command::All();
  for (const std::string& argument : arguments) {
    const auto named = std::find_if(commands.begin(), commands.end(), [&](const Command* command) {
      return argument == command->kName;
    });
    if (named == commands.end()) continue;
    (*named)->Prepare(arguments);
    break;
  }
  return {arguments.rbegin(), arguments.rend()};  // CLI11 reads a vector from its end
}

// A trace is written from the start: a document of the same name would be lost before it is read.
void CheckTrace(const std::string& path, int argc, char** argv) {
  struct stat trace {};
  if (path.empty() || ::stat(path.c_str(), &trace) != 0 || !S_ISREG(trace.st_mode)) return;
  for (int i = 1; i < argc; ++i) {
    struct stat file {};
    if (argv[i - 1] == std::string_view("--trace") || ::stat(argv[i], &file) != 0) continue;
    if (file.st_dev != trace.st_dev || file.st_ino != trace.st_ino) continue;
    throw Failure("the trace would replace " + Printable(argv[i]), kExitUsage);
  }
}

ExitStatus Run(CLI::App& options, int argc, char** argv, Session& session) {
  try {
    options.parse(Arguments(argc, argv));
  } catch (const CLI::CallForVersion& version) {
    session.Out().Put(std::string(version.what()) + "\n");
    session.Finish();
    return kExitSuccess;
  } catch (const CLI::Success&) {
    session.Out().Put(options.help());
    session.Finish();
    return kExitSuccess;
  } catch (const CLI::ParseError& error) {
    throw Failure(UsageMessage(options, error), kExitUsage);
  }
  CheckTrace(session.TracePath(), argc, argv);
  const ExitStatus status = ChosenCommand(options).Run(session);
  session.Finish();
  return status;
}

// Catches inside the session: the library owns the text of some exceptions.
ExitStatus RunInSession(int argc, char** argv) {
  Session session;
  try {
    CLI::App options("Property objects on the command line.", "posutil");
    DeclareAll(options, session, FirstArgument(argc, argv));
    const ExitStatus status = Run(options, argc, argv, session);
    session.EndProcess(status);
    return status;
  } catch (const PlacedFailure& error) {
    session.ComplainPlainly(error.what());
    return error.Status();
  } catch (const Failure& failure) {
    session.Complain(failure.what());
    return failure.Status();
  } catch (const ClosedPipe&) {
    throw;  // to end the process after all that it holds
  } catch (const std::bad_alloc&) {
    throw;  // a message of the session needs memory
  } catch (const std::exception& error) {
    session.Complain(error.what());
  }
  return kExitFailure;
}

// What a closed pipe did when the program started. A parent may have it ignored.
void (*gOnClosedPipe)(int) = SIG_DFL;

// Ends the process as the signal does, so that a shell sees what it expects in a pipeline. Returns
// if the parent ignores the signal.
void EndByClosedPipe() {
  std::signal(SIGPIPE, gOnClosedPipe);
  std::raise(SIGPIPE);
}

int Main(int argc, char** argv) {
  try {
    const ExitStatus status = RunInSession(argc, argv);
    return status == kExitSuccess && IsTraceLost() ? kExitFailure : status;
  } catch (const ClosedPipe&) {
    EndByClosedPipe();
    return kExitFailure;
  } catch (const std::bad_alloc&) {
    static constexpr char kText[] = "posutil: out of memory\n";
    static_cast<void>(!::write(STDERR_FILENO, kText, sizeof kText - 1));
    return kExitFailure;
  }
}

// Otherwise a file that posutil opens takes the number of a closed one, and messages end up in it.
// Reads and writes fail as they do on a closed one, which /dev/null would hide.
void FillStandardDescriptors() {
  int descriptor = 0;
  do {
    descriptor = ::open("/", O_PATH);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) ::close(descriptor);
}

}  // namespace

}  // namespace PosUtil

int main(int argc, char** argv) {
  PosUtil::FillStandardDescriptors();
  // Makes a closed pipe and a limit on the size of files into errors of writing.
  PosUtil::gOnClosedPipe = std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  // A parent may have it ignored; then no exit status of a child would arrive.
  std::signal(SIGCHLD, SIG_DFL);
  return PosUtil::Main(argc, argv);
}
