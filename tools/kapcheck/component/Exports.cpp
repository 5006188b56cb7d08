// SPDX-License-Identifier: MIT
#include "component/Exports.h"

#include <fcntl.h>
#include <gelf.h>
#include <libelf.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string_view>

#include "base/Failure.h"
#include "base/Printable.h"
#include "files/Descriptor.h"

namespace KAPCheck {

namespace {

using PosUtil::Failure;

// A library as the loader sees it: by its dynamic segment, because it need not have sections.
class ElfFile {
 public:
  explicit ElfFile(const std::string& path)
      // Opening a named pipe would wait for somebody who writes to it.
      : fPath(path), fFile(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (!fFile) ThrowFailure(std::strerror(errno));
    // A device or a pipe may deliver bytes for ever.
    struct stat status = {};
    if (::fstat(fFile.Get(), &status) != 0 || !S_ISREG(status.st_mode)) ThrowFailure("not a file");
    elf_version(EV_CURRENT);
    fElf.reset(elf_begin(fFile.Get(), ELF_C_READ_MMAP, nullptr));
    GElf_Ehdr header;
    if (!fElf || elf_kind(fElf.get()) != ELF_K_ELF || !gelf_getehdr(fElf.get(), &header)) {
      ThrowFailure("not a shared library");
    }
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_machine != EM_X86_64) {
      ThrowFailure("a library for another machine");
    }
    // The loader would not look, and crash.
    ForEachSegment([&](const GElf_Phdr& segment) {
      const auto size = static_cast<std::uint64_t>(status.st_size);
      const bool isWhole = segment.p_filesz <= size && segment.p_offset <= size - segment.p_filesz;
      if (segment.p_type == PT_LOAD && !isWhole) ThrowFailure("a shared library that is cut off");
    });
    ReadDynamicSegment();
    // A position independent program has the type of a library, too.
    const bool isProgram = (Value(DT_FLAGS_1) & DF_1_PIE) != 0;
    if (header.e_type != ET_DYN || isProgram) ThrowFailure("not a shared library");
  }

  std::vector<std::string> Exports() {
    const Bytes symbols = At(DT_SYMTAB);
    fStrings = At(DT_STRTAB);
    if (symbols.empty()) ThrowFailure("a shared library without a table of symbols");
    const std::set<std::string> versions = Versions();
    std::set<std::string> names;  // one name may have several versions
    for (std::size_t i = 0, count = SymbolCount(); i < count; ++i) {
      const auto symbol = Read<Elf64_Sym>(symbols, i * sizeof(Elf64_Sym));
      const bool isLocal = ELF64_ST_BIND(symbol.st_info) == STB_LOCAL;
      const int visibility = ELF64_ST_VISIBILITY(symbol.st_other);
      const bool isHidden = visibility == STV_HIDDEN || visibility == STV_INTERNAL;
      if (symbol.st_shndx == SHN_UNDEF || isLocal || isHidden) continue;
      const std::string name = Text(symbol.st_name);
      const bool isVersion = symbol.st_shndx == SHN_ABS && versions.contains(name);
      // clang gives them the default visibility, whatever the flags.
      const bool isTemplateParameter = name.starts_with("_ZTA");
      if (!isVersion && !isTemplateParameter) names.insert(name);
    }
    return {names.begin(), names.end()};
  }

 private:
  struct Close {
    void operator()(Elf* elf) const { elf_end(elf); }
  };
  using Bytes = std::string_view;

  [[noreturn]] void ThrowFailure(const std::string& why) const {
    throw Failure(PosUtil::Printable(fPath) + ": " + why);
  }

  template <class Type>
  Type Read(Bytes bytes, std::size_t offset) const {
    if (offset > bytes.size() || bytes.size() - offset < sizeof(Type)) {
      ThrowFailure("a shared library with a damaged table of symbols");
    }
    Type value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
  }
  std::uint32_t Word(Bytes bytes, std::size_t index) const {
    return Read<std::uint32_t>(bytes, index * sizeof(std::uint32_t));
  }

  // Empty if the file does not have them all.
  Bytes Chunk(std::uint64_t offset, std::uint64_t size) {
    Elf_Data* const data =
        elf_getdata_rawchunk(fElf.get(), static_cast<std::int64_t>(offset), size, ELF_T_BYTE);
    return data && data->d_buf ? Bytes(static_cast<const char*>(data->d_buf), data->d_size)
                               : Bytes();
  }

  template <class Visitor>
  void ForEachSegment(Visitor visit) {
    std::size_t count = 0;
    elf_getphdrnum(fElf.get(), &count);
    GElf_Phdr segment;
    for (int i = 0; i < static_cast<int>(count); ++i) {
      if (gelf_getphdr(fElf.get(), i, &segment)) visit(segment);
    }
  }

  void ReadDynamicSegment() {
    Bytes entries;
    ForEachSegment([&](const GElf_Phdr& segment) {
      if (segment.p_type == PT_DYNAMIC) entries = Chunk(segment.p_offset, segment.p_filesz);
    });
    for (; entries.size() >= sizeof(Elf64_Dyn); entries.remove_prefix(sizeof(Elf64_Dyn))) {
      const auto entry = Read<Elf64_Dyn>(entries, 0);
      if (entry.d_tag == DT_NULL) break;
      fDynamic[entry.d_tag] = entry.d_un.d_val;
    }
  }

  // 0 when there is none of the tag.
  std::uint64_t Value(std::int64_t tag) const {
    const auto found = fDynamic.find(tag);
    return found == fDynamic.end() ? 0 : found->second;
  }

  // The bytes from the address of a tag to the end of its segment; empty without the tag.
  Bytes At(std::int64_t tag) {
    const std::uint64_t address = Value(tag);
    Bytes bytes;
    ForEachSegment([&](const GElf_Phdr& segment) {
      const std::uint64_t offset = address - segment.p_vaddr;
      const bool isIn = address >= segment.p_vaddr && offset < segment.p_filesz;
      if (address == 0 || segment.p_type != PT_LOAD || !isIn) return;
      bytes = Chunk(segment.p_offset + offset, segment.p_filesz - offset);
    });
    return bytes;
  }

  std::string Text(std::size_t offset) const {
    const Bytes text = fStrings.substr(std::min(offset, fStrings.size()));
    return std::string(text.substr(0, text.find('\0')));
  }

  // Nothing says how many symbols there are but the tables for finding them.
  std::size_t SymbolCount() {
    if (const Bytes hash = At(DT_HASH); !hash.empty()) return Word(hash, 1);
    const Bytes hash = At(DT_GNU_HASH);
    if (hash.empty()) return 0;
    const std::size_t buckets = Word(hash, 0), first = Word(hash, 1), filterWords = Word(hash, 2);
    const std::size_t begin = 4 + 2 * filterWords, chains = begin + buckets;
    std::size_t last = 0;
    for (std::size_t i = begin; i < chains; ++i) last = std::max<std::size_t>(last, Word(hash, i));
    if (last < first) return 0;
    while ((Word(hash, chains + last - first) & 1) == 0) ++last;
    return last + 1;
  }

  // The names of the versions that the library defines. Each may have a symbol.
  std::set<std::string> Versions() {
    std::set<std::string> versions;
    const Bytes all = At(DT_VERDEF);
    std::size_t at = 0;
    for (std::uint64_t i = 0; i < Value(DT_VERDEFNUM); ++i) {
      const auto version = Read<Elf64_Verdef>(all, at);
      versions.insert(Text(Read<Elf64_Verdaux>(all, at + version.vd_aux).vda_name));
      if (version.vd_next == 0) break;
      at += version.vd_next;
    }
    return versions;
  }

  std::string fPath;
  PosUtil::Descriptor fFile;
  std::unique_ptr<Elf, Close> fElf;
  std::map<std::int64_t, std::uint64_t> fDynamic;  // by tag
  Bytes fStrings;
};

}  // namespace

std::vector<std::string> ExportsOf(const std::string& path) { return ElfFile(path).Exports(); }

}  // namespace KAPCheck
