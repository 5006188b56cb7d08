#include "Source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "Failure.h"
#include "Printable.h"

namespace PosUtil {

namespace {

constexpr std::size_t kFirstRead = 64 * 1024;

[[noreturn]] void ThrowUnreadable(const std::string& name) {
  throw Failure(Printable(name) + ": " + std::strerror(errno));
}

class OpenFile {
 public:
  explicit OpenFile(const std::string& fileName)
      : fIsStandard(fileName == "-"), fName(fIsStandard ? "<stdin>" : fileName) {
    fDescriptor = fIsStandard ? STDIN_FILENO : ::open(fileName.c_str(), O_RDONLY | O_CLOEXEC);
    if (fDescriptor < 0) ThrowUnreadable(fName);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (!fIsStandard) ::close(fDescriptor);
  }

  const std::string& Name() const { return fName; }

  // What a regular file is expected to hold; a guess for anything else.
  std::size_t LikelySize() const {
    struct stat status {};
    if (::fstat(fDescriptor, &status) != 0 || !S_ISREG(status.st_mode)) return kFirstRead;
    return static_cast<std::size_t>(status.st_size);
  }

  // 0 at the end.
  std::size_t Read(char* to, std::size_t size) const {
    for (;;) {
      const ssize_t count = ::read(fDescriptor, to, size);
      if (count >= 0) return static_cast<std::size_t>(count);
      if (errno != EINTR) ThrowUnreadable(fName);
    }
  }

 private:
  bool fIsStandard;
  std::string fName;
  int fDescriptor = -1;
};

}  // namespace

void Source::Free::operator()(char* block) const noexcept { std::free(block); }

Source::Block Source::Resize(Block block, std::size_t size) {
  auto* resized = static_cast<char*>(std::realloc(block.get(), size));
  if (!resized) throw std::bad_alloc();
  static_cast<void>(block.release());  // it is part of the new one
  return Block(resized);
}

Source::Source(std::string name, Block bytes, std::size_t size)
    : fName(std::move(name)), fBytes(std::move(bytes)), fSize(size) {
  fBytes.get()[fSize] = '\0';
}

Source::Source(std::string name, std::string_view bytes)
    : Source(std::move(name), Resize(nullptr, bytes.size() + 1), bytes.size()) {
  std::memcpy(fBytes.get(), bytes.data(), bytes.size());
}

Source Source::Read(const std::string& fileName) {
  const OpenFile file(fileName);
  // Room for one byte more than expected, so that the end is seen without growing, and for the zero byte.
  std::size_t capacity = file.LikelySize() + 2;
  Block block = Resize(nullptr, capacity);
  std::size_t size = 0;
  while (const std::size_t count = file.Read(block.get() + size, capacity - size - 1)) {
    size += count;
    if (size + 1 < capacity) continue;
    capacity *= 2;
    block = Resize(std::move(block), capacity);
  }
  return {file.Name(), std::move(block), size};
}

}  // namespace PosUtil
