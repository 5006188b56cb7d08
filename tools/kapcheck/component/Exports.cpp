// SPDX-License-Identifier: MIT
#include "component/Exports.h"

#include <fcntl.h>
#include <gelf.h>
#include <libelf.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "base/Failure.h"
#include "files/Descriptor.h"

namespace KAPCheck {

namespace {

using PosUtil::Failure;

class ElfFile {
 public:
  explicit ElfFile(const std::string& path)
      : fPath(path), fFile(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (!fFile) Refuse(std::strerror(errno));
    // A device or a pipe may deliver bytes for ever.
    struct stat status = {};
    if (::fstat(fFile.Get(), &status) != 0 || !S_ISREG(status.st_mode)) Refuse("not a file");
    elf_version(EV_CURRENT);
    fElf.reset(elf_begin(fFile.Get(), ELF_C_READ, nullptr));
    GElf_Ehdr header;
    if (!fElf || elf_kind(fElf.get()) != ELF_K_ELF || !gelf_getehdr(fElf.get(), &header)) {
      Refuse("not a shared library");
    }
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_machine != EM_X86_64) {
      Refuse("a library for another machine");
    }
    if (header.e_type != ET_DYN || IsProgram()) Refuse("not a shared library");
  }

  std::vector<std::string> Exports() {
    std::vector<std::string> names;
    GElf_Shdr header;
    Elf_Data* const symbols = Section(SHT_DYNSYM, header);
    if (!symbols) Refuse("a shared library without a table of symbols");
    const std::size_t count = header.sh_entsize == 0 ? 0 : header.sh_size / header.sh_entsize;
    GElf_Sym symbol;
    for (int i = 0; static_cast<std::size_t>(i) < count && gelf_getsym(symbols, i, &symbol); ++i) {
      const bool isVersion = symbol.st_shndx == SHN_ABS;
      const bool isLocal = GELF_ST_BIND(symbol.st_info) == STB_LOCAL;
      const int visibility = GELF_ST_VISIBILITY(symbol.st_other);
      const bool isHidden = visibility == STV_HIDDEN || visibility == STV_INTERNAL;
      if (symbol.st_shndx == SHN_UNDEF || isVersion || isLocal || isHidden) continue;
      const char* const name = elf_strptr(fElf.get(), header.sh_link, symbol.st_name);
      if (name) names.emplace_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  struct Close {
    void operator()(Elf* elf) const { elf_end(elf); }
  };

  [[noreturn]] void Refuse(const std::string& why) const { throw Failure(fPath + ": " + why); }

  // The first section of a type; null when there is none.
  Elf_Data* Section(unsigned type, GElf_Shdr& header) {
    for (Elf_Scn* section = nullptr; (section = elf_nextscn(fElf.get(), section));) {
      if (gelf_getshdr(section, &header) && header.sh_type == type) {
        return elf_getdata(section, nullptr);
      }
    }
    return nullptr;
  }

  // A position independent program has the type of a library too.
  bool IsProgram() {
    GElf_Shdr header;
    Elf_Data* const entries = Section(SHT_DYNAMIC, header);
    GElf_Dyn entry;
    for (int i = 0; entries && gelf_getdyn(entries, i, &entry) && entry.d_tag != DT_NULL; ++i) {
      if (entry.d_tag == DT_FLAGS_1 && (entry.d_un.d_val & DF_1_PIE)) return true;
    }
    return false;
  }

  std::string fPath;
  PosUtil::Descriptor fFile;
  std::unique_ptr<Elf, Close> fElf;
};

}  // namespace

std::vector<std::string> ExportsOf(const std::string& path) { return ElfFile(path).Exports(); }

}  // namespace KAPCheck
