#pragma once

#include <gtest/gtest.h>

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

// Runs the program with these arguments and this standard input.
Outcome RunPosutil(const std::vector<std::string>& arguments, const std::string& input = "",
                   const Setting& setting = {});

// A file that is gone at the end.
class TemporaryFile {
 public:
  TemporaryFile(const std::string& ending, const std::string& content);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  const std::string& Name() const { return fName; }

 private:
  std::string fName;
};
