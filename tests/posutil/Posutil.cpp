// SPDX-License-Identifier: MIT
#include "Posutil.h"

#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace {

// A file in memory. It never fills up, so the program never waits for a reader.
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

Running::Running(const std::vector<std::string>& arguments, const Descriptors& descriptors,
                 const std::vector<std::string>& extraEnvironment,
                 const std::vector<std::string>& prefix) {
  std::vector<std::string> texts = prefix;
  texts.emplace_back(POSUTIL_PATH);
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = extraEnvironment;
  for (char** each = environ; *each; ++each) environment.emplace_back(*each);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, descriptors.fIn, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, descriptors.fOut, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, descriptors.fErr, STDERR_FILENO);
  // The shell that started the tests may ignore signals.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t all;
  sigfillset(&all);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  const int error = posix_spawnp(&fProcess, texts.front().c_str(), &actions, &attributes,
                                 Pointers(texts).data(), Pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) throw std::runtime_error("cannot start " POSUTIL_PATH);
}

int Running::Wait() const {
  int status = 0;
  ::waitpid(fProcess, &status, 0);
  return status;
}

Outcome RunPosutil(const std::vector<std::string>& arguments, const std::string& input,
                   const Setting& setting) {
  const MemoryFile in(input);
  const MemoryFile out;
  const MemoryFile err;
  const int to = setting.fOut < 0 ? out.Descriptor() : setting.fOut;
  const int status = Running(arguments, {in.Descriptor(), to, err.Descriptor()},
                             setting.fEnvironment, setting.fPrefix)
                         .Wait();
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), out.Content(),
          err.Content()};
}
