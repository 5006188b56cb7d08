#include "Posutil.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace {

// A file in memory: never full, so that nobody waits for a reader.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& content = "") : fDescriptor(::memfd_create("posutil", 0)) {
    const auto written = ::write(fDescriptor, content.data(), content.size());
    if (written != static_cast<ssize_t>(content.size())) throw std::runtime_error("memfd");
    ::lseek(fDescriptor, 0, SEEK_SET);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(fDescriptor); }

  int Descriptor() const { return fDescriptor; }

  std::string Content() const {
    ::lseek(fDescriptor, 0, SEEK_SET);
    std::string content;
    std::array<char, 65536> part;
    for (ssize_t size; (size = ::read(fDescriptor, part.data(), part.size())) > 0;) {
      content.append(part.data(), static_cast<std::size_t>(size));
    }
    return content;
  }

 private:
  int fDescriptor;
};

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << "status " << outcome.fStatus << "\n---- out ----\n"
             << outcome.fOut << "---- err ----\n"
             << outcome.fErr << "----";
}

Outcome RunPosutil(const std::vector<std::string>& arguments, const std::string& input,
                   const Setting& setting) {
  std::vector<std::string> texts = {POSUTIL_PATH};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = setting.fEnvironment;
  for (char** each = environ; *each; ++each) environment.emplace_back(*each);

  const MemoryFile in(input);
  const MemoryFile out;
  const MemoryFile err;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.Descriptor(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, setting.fOut < 0 ? out.Descriptor() : setting.fOut,
                                   STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.Descriptor(), STDERR_FILENO);
  pid_t child = 0;
  const int error = posix_spawn(&child, POSUTIL_PATH, &actions, nullptr, Pointers(texts).data(),
                                Pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start " POSUTIL_PATH);
  int status = 0;
  ::waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out.Content(), err.Content()};
}

TemporaryFile::TemporaryFile(const std::string& ending, const std::string& content)
    : fName(testing::TempDir() + "posutil-XXXXXX" + ending) {
  ::close(::mkstemps(fName.data(), static_cast<int>(ending.size())));
  std::ofstream(fName, std::ios::binary) << content;
}

TemporaryFile::~TemporaryFile() { ::unlink(fName.c_str()); }
