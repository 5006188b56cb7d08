// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace KAPHost {

// A file that a host writes what it has seen to. "-" is standard error; "%p" in the path stands for
// the number of the process. The first host of a process empties the file, later ones append to it.
//
// The file belongs to the process that has opened it. A child that was forked since goes on in one
// of its own: the path with ".PID" at the end, or before an ending ".json".
//
// Not thread-safe.
class OutputFile {
 public:
  // Throws std::runtime_error, also when the path is that of a directory and the like. `onLost` is
  // called once when something cannot be written; what follows is dropped. If it is empty, standard
  // error has the message.
  OutputFile(const std::string& path, std::function<void(const std::string& message)> onLost);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  // Closes the file; a failure of that is reported as well.
  ~OutputFile();

  // Whether the process is a child that was forked since the last call; then the file is its own
  // from now on. Standard error of the parent is not the child's: what the child writes is dropped.
  bool IsForked() noexcept;
  // The size of what a former host of the process has written.
  off_t SizeBefore() const noexcept { return fSizeBefore; }
  // Whether it is the file of this process, or the process writes nothing.
  bool IsOwn() const noexcept;
  // Removes the last bytes of a file that a former host has written.
  void RemoveLast(off_t size) noexcept;

  // Waits for a pipe or terminal that is full. A closed pipe is a failure, not the end of the
  // process.
  void Write(const std::string& text) noexcept;

 private:
  void Open(const std::string& path);
  void Close() noexcept;
  void Lose(int number) noexcept;
  bool WaitForPlace(int number) const noexcept;

  const std::string fPath;
  const std::function<void(const std::string&)> fOnLost;
  std::string fOwnPath;  // in this process
  pid_t fProcess = 0;
  int fFile = -1;
  off_t fSizeBefore = 0;
  bool fIsPipe = false;
};

}  // namespace KAPHost
