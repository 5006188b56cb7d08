// SPDX-License-Identifier: MIT
#include "component/Exports.h"

#include <fcntl.h>
#include <gelf.h>
#include <libelf.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <set>

#include "base/Failure.h"
#include "base/Printable.h"
#include "files/Descriptor.h"

namespace KAPCheck {

namespace {

using PosUtil::Failure;

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
    fElf.reset(elf_begin(fFile.Get(), ELF_C_READ, nullptr));
    GElf_Ehdr header;
    if (!fElf || elf_kind(fElf.get()) != ELF_K_ELF || !gelf_getehdr(fElf.get(), &header)) {
      ThrowFailure("not a shared library");
    }
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_machine != EM_X86_64) {
      ThrowFailure("a library for another machine");
    }
    if (header.e_type != ET_DYN || IsProgram()) ThrowFailure("not a shared library");
  }

  std::vector<std::string> Exports() {
    GElf_Shdr header;
    Elf_Data* const symbols = Section(SHT_DYNSYM, header);
    if (!symbols) ThrowFailure("a shared library without a table of symbols");
    const std::size_t count = header.sh_entsize == 0 ? 0 : header.sh_size / header.sh_entsize;
    const std::set<std::string> versions = Versions();
    std::set<std::string> names;  // one name may have several versions
    GElf_Sym symbol;
    for (int i = 0; static_cast<std::size_t>(i) < count && gelf_getsym(symbols, i, &symbol); ++i) {
      const bool isLocal = GELF_ST_BIND(symbol.st_info) == STB_LOCAL;
      const int visibility = GELF_ST_VISIBILITY(symbol.st_other);
      const bool isHidden = visibility == STV_HIDDEN || visibility == STV_INTERNAL;
      if (symbol.st_shndx == SHN_UNDEF || isLocal || isHidden) continue;
      const char* const name = elf_strptr(fElf.get(), header.sh_link, symbol.st_name);
      const bool isVersion = symbol.st_shndx == SHN_ABS && name && versions.contains(name);
      if (name && !isVersion) names.insert(name);
    }
    return {names.begin(), names.end()};
  }

 private:
  struct Close {
    void operator()(Elf* elf) const { elf_end(elf); }
  };

  [[noreturn]] void ThrowFailure(const std::string& why) const {
    throw Failure(PosUtil::Printable(fPath) + ": " + why);
  }

  // The first section of a type; null when there is none.
  Elf_Data* Section(unsigned type, GElf_Shdr& header) {
    for (Elf_Scn* section = nullptr; (section = elf_nextscn(fElf.get(), section));) {
      if (gelf_getshdr(section, &header) && header.sh_type == type) {
        return elf_getdata(section, nullptr);
      }
    }
    return nullptr;
  }

  // The names of the versions that the library defines. Each may have a symbol.
  std::set<std::string> Versions() {
    std::set<std::string> versions;
    GElf_Shdr header;
    Elf_Data* const definitions = Section(SHT_GNU_verdef, header);
    GElf_Verdef definition;
    GElf_Verdaux names;
    for (int at = 0; definitions && gelf_getverdef(definitions, at, &definition);) {
      const int place = at + static_cast<int>(definition.vd_aux);
      const char* const name = gelf_getverdaux(definitions, place, &names)
                                   ? elf_strptr(fElf.get(), header.sh_link, names.vda_name)
                                   : nullptr;
      if (name) versions.insert(name);
      if (definition.vd_next == 0 || at > static_cast<int>(header.sh_size)) break;
      at += static_cast<int>(definition.vd_next);
    }
    return versions;
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
