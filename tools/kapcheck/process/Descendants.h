// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>
#include <sys/wait.h>

#include <cstddef>
#include <vector>

namespace KAPCheck {

// Whether a child process has ended; it stays a zombie, so that its number is not given to another.
bool HasEnded(pid_t process);

// The processes that a child process starts in turn. As long as this object lives, those that lose
// their parent become children of this process, wherever they have moved to.
class Descendants {
 public:
  // Made before the child process.
  Descendants();
  Descendants(const Descendants&) = delete;
  Descendants& operator=(const Descendants&) = delete;
  ~Descendants();

  // How many processes the child process, which has ended, has left running.
  std::size_t CountLeft(pid_t child) const;
  // Kills the child process and all that it has left. Returns the child's status.
  int End(pid_t child);

 private:
  std::vector<pid_t> Others(pid_t child) const;

  std::vector<pid_t> fBefore;
};

}  // namespace KAPCheck
