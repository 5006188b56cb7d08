// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

// A temporary folder.
class Folder {
 public:
  Folder() : fPath(testing::TempDir() + "posutil-XXXXXX") {
    if (!::mkdtemp(fPath.data())) throw std::runtime_error("mkdtemp");
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(fPath); }

  std::string Path(const std::string& name) const { return fPath + "/" + name; }
  // Writes a file and returns its path.
  std::string Put(const std::string& name, const std::string& content) const {
    std::ofstream(Path(name), std::ios::binary) << content;
    return Path(name);
  }
  std::string Content(const std::string& name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto& each : std::filesystem::directory_iterator(fPath)) {
      names.insert(each.path().filename().string());
    }
    return names;
  }

 private:
  std::string fPath;
};
