// SPDX-License-Identifier: MIT

// The parts of posutil inside the test: every command with every call of the host failing in turn,
// which prints the right answer or says that it failed, and objects that no document holds.

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>

#include "Folder.h"
#include "POSDict.h"
#include "base/Failure.h"
#include "commands/Command.h"
#include "formats/Format.h"

namespace {

using namespace PosUtil;
using namespace KAP_T_MT;
using KAP_T_MT::KAPFault;

// Descriptors of a file in memory that takes the place of a standard one.
std::string ContentOf(int file) {
  std::string content(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
  EXPECT_EQ(::pread(file, content.data(), content.size(), 0), static_cast<ssize_t>(content.size()));
  ::close(file);
  return content;
}

struct Fault {
  unsigned long fFirst = 0;  // 0: none
  bool fAndAllAfterIt = false;
};

struct Result {
  int fStatus;
  bool fFired;
  std::string fOut;
  std::string fErr;
};

constexpr int kFired = 0x40;  // in the exit status of the child

// Runs a command and returns its exit status, with kFired added when a call of the host failed.
int RunHere(Command& command, const std::vector<std::string>& arguments, const Fault& fault) {
  Session session;
  session.LibraryPath() = KAP_LIBRARY_PATH;
  KAPHost::Host& host = session.TheLibrary().Host();
  int status = kExitFailure;
  try {
    CLI::App program;
    Options options(*program.add_subcommand(command.kName));
    command.Declare(options);
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    reversed.emplace_back(command.kName);
    program.parse(reversed);
    if (fault.fFirst > 0 && fault.fAndAllAfterIt) host.FailFrom(KAPFault::kAny, fault.fFirst);
    if (fault.fFirst > 0 && !fault.fAndAllAfterIt) host.FailCall(KAPFault::kAny, fault.fFirst);
    status = command.Run(session);
    session.Finish();
  } catch (const Failure& failure) {
    session.Complain(failure.what());
    status = failure.Status();
  } catch (const std::exception& error) {
    session.Complain(error.what());
    status = kExitFailure;
  }
  const bool fired = host.Fired();
  host.StopFaults();
  return status + (fired ? kFired : 0);
}

// The same in a process of its own: a command keeps its options.
Result RunAway(Command& command, const std::vector<std::string>& arguments, const Fault& fault) {
  const int out = ::memfd_create("out", 0), err = ::memfd_create("err", 0);
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    ::_exit(RunHere(command, arguments, fault));
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
  return {WEXITSTATUS(status) & ~kFired, (WEXITSTATUS(status) & kFired) != 0, ContentOf(out),
          ContentOf(err)};
}

class HostFaultTest : public testing::Test {
 protected:
  // Returns whether a call failed.
  bool RunOne(Command& command, const std::vector<std::string>& arguments, const Result& whole,
              const Fault& fault) {
    SCOPED_TRACE(testing::Message() << testing::PrintToString(arguments) << ", call "
                                    << fault.fFirst << (fault.fAndAllAfterIt ? " on" : ""));
    fFolder.Put("out.typea", "old");
    const Result result = RunAway(command, arguments, fault);
    const std::string file = fFolder.Content("out.typea");
    if (result.fStatus == kExitSuccess) {
      EXPECT_EQ(result.fOut, whole.fOut);
      EXPECT_EQ(result.fErr, whole.fErr);
      EXPECT_TRUE(file == fWholeFile);
    } else {
      // Every failure of "DeepGet" means that the path has no value, deliberately.
      const bool isQuiet = result.fErr.find("no value at") != std::string::npos;
      EXPECT_TRUE(result.fFired);
      EXPECT_TRUE(result.fStatus == kExitFailure || (isQuiet && result.fStatus == kExitNegative))
          << result.fErr;
      EXPECT_NE(("\n" + result.fErr).find("\nposutil: "), std::string::npos) << result.fErr;
      EXPECT_EQ(result.fErr.find("KAP host: "), std::string::npos) << result.fErr;
      EXPECT_TRUE(file == "old" || file == fWholeFile) << file;
    }
    return result.fFired && !HasFailure();
  }

  static bool UsesLibrary(const Command& command) {
    const std::string name = command.kName;
    return name != "completion" && name != "manual" && name != "version";
  }

  void Sweep(Command& command, const std::vector<std::string>& arguments) {
    fFolder.Put("out.typea", "old");
    const Result whole = RunAway(command, arguments, {});
    ASSERT_EQ(whole.fStatus, kExitSuccess) << whole.fErr;
    fWholeFile = fFolder.Content("out.typea");
    for (const bool andAllAfterIt : {false, true}) {
      // With all later calls failing, neighbouring numbers differ little.
      unsigned long n = 1;
      while (RunOne(command, arguments, whole, {n, andAllAfterIt}))
        n += andAllAfterIt ? 1 + n / 8 : 1;
      if (UsesLibrary(command)) {
        EXPECT_GT(n, 10u);
      }
    }
  }

  const Folder fFolder;
  std::string fWholeFile;
};

// One row or more for each command of the program.
TEST_F(HostFaultTest, NthCallFails) {
  const std::string json = fFolder.Put("in.json", R"({"a":[1,{"$unicode":"A"}],"b":"x"})");
  const std::string text = fFolder.Put("in.txt", "< a [1 `0041`] b (x) >");
  const std::string typea = fFolder.Put(
      "in.typea", "POSStreamerTypeA_Version1.0 <\"a\" [#1 \"x\" [] ] \"b\" {\"t\" #1 ff}>");
  const std::string schema = fFolder.Put(
      "schema.txt",
      "< T < category dict required < a A b string > > A < category array membertype any > >");
  const std::string mergePatch = fFolder.Put("merge.json", R"({"a":null,"b":{"c":[1]}})");
  const std::string jsonPatch = fFolder.Put(
      "patch.json",
      R"([{"op":"add","path":"/a/0","value":2},{"op":"copy","from":"/a","path":"/c"}])");
  const std::string out = fFolder.Path("out.typea");
  const std::multimap<std::string, std::vector<std::string>> rows = {
      {"print", {json}},
      {"print", {typea}},
      {"get", {text, "a[1]", "b", "a"}},
      {"paths", {json}},
      {"set", {json, "a[1]", R"([1,null])"}},
      {"remove", {json, "a[0]", "b"}},
      {"merge", {json, mergePatch}},
      {"patch", {json, jsonPatch}},
      {"diff", {text, json}},
      {"convert", {json, out}},
      {"convert", {text, out}},
      {"convert", {typea, out}},
      {"validate", {"--schema", schema, "--type", "T", text}},
      {"check-schema", {schema}},
      {"completion", {"bash"}},
      {"manual", {}},
      {"version", {}}};
  for (Command* command : Command::All()) {
    EXPECT_TRUE(rows.contains(command->kName)) << command->kName;
    const auto [begin, end] = rows.equal_range(command->kName);
    for (auto row = begin; row != end; ++row) Sweep(*command, row->second);
  }
}

// No reader makes such objects.
TEST(WriterTest, ObjectsWithoutAForm) {
  constexpr const char* kForeign = "ForeignKind";
  Session session;
  session.LibraryPath() = KAP_LIBRARY_PATH;
  KAPHost::Host& host = session.TheLibrary().Host();
  const auto entries = POSObjectInterface::Registration(
      [](POSObject* object) { return object; }, [](POSObject*, POSObject*) { return false; },
      [](POSObject*) { return 99; });
  for (const auto& entry : entries) {
    host.Register(kForeign, entry.fMethodName, entry.fProcName, entry.fProc);
  }
  CPOSArray pointer = CPOSArray::New(), foreign = CPOSArray::New();
  pointer.Append(CPOSRawPointer(&session, nullptr));
  const CKAPStringAtom name(kForeign);
  foreign.Append(
      CPOSObject(CKAPContainer::NewFullContainer(nullptr, name, name, nullptr), KAPAdopt()));
  const std::tuple<const char*, const CPOSArray*, const char*> rows[] = {
      {"json", &pointer, "JSON cannot hold a raw pointer"},
      {"text", &pointer, "text notation cannot hold a raw pointer"},
      {"typea", &pointer, "TypeA cannot hold a raw pointer"},
      {"tree", &pointer, ""},
      {"json", &foreign, "the value has an unknown kind"},
      {"tree", &foreign, "the value has an unknown kind"}};
  for (const auto& [format, object, part] : rows) {
    SCOPED_TRACE(std::string(format) + ": " + part);
    Output out(::memfd_create("out", 0));
    std::string message;
    try {
      FindFormat<Writer>(format)->Write(*object, "document", {}, out);
    } catch (const Failure& failure) {
      message = failure.what();
    }
    out.Finish();
    EXPECT_EQ(message.empty(), !*part) << message;
    EXPECT_NE(message.find(part), std::string::npos) << message;
  }
  host.Unregister(kForeign);
}

}  // namespace
