#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <string>
#include <vector>

// How posutil ended and what it wrote. What leaks is told by its host on standard error, so that comparing that text
// compares the books too.
struct Outcome {
  int fStatus = -1;  // -1: not by itself
  std::string fOut;
  std::string fErr;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

struct Setting {
  int fOut = -1;                               // the standard output; -1: it is collected
  std::vector<std::string> fEnvironment = {};  // added to the test's own, as NAME=VALUE
};

struct Descriptors {
  int fIn;
  int fOut;
  int fErr;
};

// The program while it runs.
class Running {
 public:
  Running(const std::vector<std::string>& arguments, const Descriptors& descriptors,
          const std::vector<std::string>& extraEnvironment = {});

  pid_t Process() const { return fProcess; }
  // How it ended, as waitpid tells it.
  int Wait() const;

 private:
  pid_t fProcess = 0;
};

// Runs the program with these arguments and this standard input.
Outcome RunPosutil(const std::vector<std::string>& arguments, const std::string& input = "",
                   const Setting& setting = {});
