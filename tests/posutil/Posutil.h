// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <string>
#include <vector>

// How posutil ended and what it wrote. A comparison of its messages also checks the accounting: the
// host's leak report is one. A build without assertions makes that report only after a failure.
struct Outcome {
  int fStatus = -1;  // the negative number of a signal that ended it
  std::string fOut;
  std::string fErr;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};

// The first line of the messages, without the line end.
inline std::string FirstMessage(const Outcome& outcome) {
  return outcome.fErr.substr(0, outcome.fErr.find('\n'));
}

std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

struct Setting {
  int fOut = -1;                               // the standard output; -1 collects it
  std::vector<std::string> fPrefix = {};       // a program that runs posutil, with arguments
  std::vector<std::string> fEnvironment = {};  // NAME=VALUE, added to the environment of the test
};

// Of clang's run time, where a build counts what it executes.
extern "C" int __llvm_profile_write_file() __attribute__((weak));

// Prefixes: a limit of processor time, of which a build that counts gets more; and another user, who
// cannot write the counts.
inline std::vector<std::string> WithinSeconds(int seconds) {
  if (__llvm_profile_write_file) seconds *= 20;
  return {"prlimit", "--cpu=" + std::to_string(seconds)};
}
inline std::vector<std::string> AsAnotherUser() {
  return {"env",           "LLVM_PROFILE_FILE=/dev/null",  //
          "setpriv",       "--reuid=65534",
          "--regid=65534", "--clear-groups"};
}

struct Descriptors {
  int fIn;
  int fOut;
  int fErr;
};

// A running posutil.
class Running {
 public:
  Running(const std::vector<std::string>& arguments, const Descriptors& descriptors,
          const std::vector<std::string>& extraEnvironment = {},
          const std::vector<std::string>& prefix = {});

  pid_t Process() const { return fProcess; }
  // Waits for the end and returns the status of waitpid.
  int Wait() const;

 private:
  pid_t fProcess = 0;
};

// Runs the program with these arguments and this standard input.
Outcome RunPosutil(const std::vector<std::string>& arguments, const std::string& input = "",
                   const Setting& setting = {});
