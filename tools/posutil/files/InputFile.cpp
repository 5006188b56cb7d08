// SPDX-License-Identifier: MIT
#include "files/InputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

#include "files/Descriptor.h"

namespace PosUtil {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The inputs that cannot be read twice and from which Peek has read, open at the next byte.
class PeekedInputs {
 public:
  struct Input {
    Descriptor fFile;
    std::string fBytes;
  };

  static PeekedInputs& TheOnly() {
    static PeekedInputs inputs;
    return inputs;
  }

  void Keep(const std::string& fileName, Input input) {
    const std::lock_guard lock(fMutex);
    fInputs.insert_or_assign(fileName, std::move(input));
  }
  // Returns an input without a file if there is none of this name.
  Input Take(const std::string& fileName) {
    const std::lock_guard lock(fMutex);
    const auto node = fInputs.extract(fileName);
    return node ? std::move(node.mapped()) : Input();
  }

 private:
  std::mutex fMutex;
  std::map<std::string, Input> fInputs;
};

Descriptor OpenInput(const std::string& fileName) {
  // A copy of the descriptor shares the position in the input.
  return Descriptor(fileName == "-" ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                    : ::open(fileName.c_str(), O_RDONLY | O_CLOEXEC));
}

}  // namespace

std::string InputName(const std::string& fileName) {
  return fileName == "-" ? "<stdin>" : fileName;
}

InputFile::InputFile(const std::string& fileName) : fName(InputName(fileName)) {
  PeekedInputs::Input peeked = PeekedInputs::TheOnly().Take(fileName);
  fFile = peeked.fFile ? std::move(peeked.fFile) : OpenInput(fileName);
  fPeeked = std::move(peeked.fBytes);
  if (!fFile) ThrowFileError(fName);
  struct stat status {};
  if (::fstat(fFile.Get(), &status) == 0 && S_ISREG(status.st_mode)) {
    fIsRegular = true;
    fSize = static_cast<std::size_t>(status.st_size);
  }
}

// A file in memory reads like any other; the texts of a command line are short.
InputFile::InputFile(std::string name, std::string_view text)
    : fName(std::move(name)), fFile(::memfd_create("text", MFD_CLOEXEC)), fSize(text.size()) {
  if (!fFile ||
      ::pwrite(fFile.Get(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
    ThrowFileError(fName);
  }
}

bool InputFile::MayWait() const {
  pollfd waiting = {fFile.Get(), POLLIN, 0};
  return fPeeked.empty() && ::poll(&waiting, 1, 0) == 0;
}

std::size_t InputFile::Read(char* to, std::size_t size) {
  std::size_t count = ReadNext(to, size);
  if (std::exchange(fHasStarted, true)) return count;
  while (count > 0 && count < kByteOrderMark.size() && kByteOrderMark.starts_with({to, count})) {
    const std::size_t more = ReadNext(to + count, size - count);
    if (more == 0) return count;
    count += more;
  }
  if (!std::string_view(to, count).starts_with(kByteOrderMark)) return count;
  count -= kByteOrderMark.size();
  std::memmove(to, to + kByteOrderMark.size(), count);
  return count > 0 ? count : ReadNext(to, size);
}

std::size_t InputFile::ReadNext(char* to, std::size_t size) {
  if (fPeeked.empty()) return ReadFile(to, size);
  const std::size_t count = std::min(size, fPeeked.size());
  std::memcpy(to, fPeeked.data(), count);
  fPeeked.erase(0, count);
  return count;
}

std::size_t InputFile::ReadFile(char* to, std::size_t size) const {
  for (;;) {
    const ssize_t count = ::read(fFile.Get(), to, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) ThrowFileError(fName);
  }
}

std::string InputFile::Peek(const std::string& fileName, std::size_t size) {
  InputFile file(fileName);
  std::string bytes = std::move(file.fPeeked);
  const off_t begin = file.fIsRegular ? ::lseek(file.fFile.Get(), 0, SEEK_CUR) : -1;
  char part[4096];
  const auto hasMark = [&] { return bytes.starts_with(kByteOrderMark); };
  while (bytes.size() < size + (hasMark() ? kByteOrderMark.size() : 0)) {
    const std::size_t count = file.ReadFile(part, sizeof part);
    if (count == 0) break;
    bytes.append(part, count);
  }
  if (begin < 0 || ::lseek(file.fFile.Get(), begin, SEEK_SET) < 0) {
    PeekedInputs::TheOnly().Keep(fileName, {std::move(file.fFile), bytes});
  }
  if (hasMark()) bytes.erase(0, kByteOrderMark.size());
  return bytes;
}

}  // namespace PosUtil
