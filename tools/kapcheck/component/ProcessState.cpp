// SPDX-License-Identifier: MIT
#include "component/ProcessState.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <memory>

namespace KAPCheck {

namespace {

constexpr char kOpenFile[] = "open file ";

void AddFiles(ProcessState& state) {
  namespace fs = std::filesystem;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc/self/fd"), &::closedir);
  if (!folder) return;
  const std::string own = std::to_string(::dirfd(folder.get()));
  while (const dirent* const entry = ::readdir(folder.get())) {
    const std::string number = entry->d_name;
    if (number == own || number[0] == '.') continue;
    std::error_code ignored;
    state[kOpenFile + number] = fs::read_symlink("/proc/self/fd/" + number, ignored).string();
  }
}

void AddSignals(ProcessState& state) {
  sigset_t blocked;
  ::sigprocmask(SIG_BLOCK, nullptr, &blocked);
  for (int signal = 1; signal < NSIG; ++signal) {
    const std::string name = std::to_string(signal);
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) != 0) continue;
    const auto handler = reinterpret_cast<std::uintptr_t>(action.sa_handler);
    if (action.sa_handler != SIG_DFL) state["handler of signal " + name] = std::to_string(handler);
    if (sigismember(&blocked, signal) == 1) state["blocked signal " + name] = "blocked";
  }
}

}  // namespace

ProcessState TakeProcessState() {
  ProcessState state;
  AddFiles(state);
  AddSignals(state);
  std::error_code ignored;
  state["working folder"] = std::filesystem::current_path(ignored).string();
  state["locale"] = std::setlocale(LC_ALL, nullptr);
  const mode_t mask = ::umask(0);
  ::umask(mask);
  state["mask for new files"] = std::to_string(mask);
  for (char** each = environ; each && *each; ++each) {
    const std::string entry = *each;
    const std::size_t end = entry.find('=');
    if (end != std::string::npos) {
      state["environment variable " + entry.substr(0, end)] = entry.substr(end + 1);
    }
  }
  return state;
}

ProcessState WithoutFiles(ProcessState state) {
  std::erase_if(state, [](const auto& entry) { return entry.first.starts_with(kOpenFile); });
  return state;
}

std::string Difference(const ProcessState& before, const ProcessState& after) {
  const auto valueIn = [](const ProcessState& state, const std::string& name) {
    const auto found = state.find(name);
    return found == state.end() ? "nothing" : '"' + found->second + '"';
  };
  ProcessState all = before;
  all.insert(after.begin(), after.end());
  for (const auto& [name, value] : all) {
    const std::string was = valueIn(before, name), is = valueIn(after, name);
    if (was != is) return name + ": " + was + " became " + is;
  }
  return "";
}

}  // namespace KAPCheck
