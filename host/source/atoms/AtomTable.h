#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string_view>

#include "kap/KAPTypes.h"

// An interned text. The record and its text are one allocation.
struct KAPStringAtom {
  KAPStringAtom* fNext;
  std::size_t fHash;
  std::size_t fLength;
  std::atomic<long> fCount;

  const char* Text() const noexcept { return reinterpret_cast<const char*>(this + 1); }
  std::string_view View() const noexcept { return {Text(), fLength}; }
};

namespace KAPHost {

// All atoms of the process, each text once. It is never destroyed: components may release atoms
// until the process ends.
//
// References are counted without the table's lock, with two exceptions: a look-up adds its
// reference and a release drops the last one under the lock, so that no look-up finds a dying atom.
class AtomTable {
 public:
  constexpr AtomTable() = default;

  // A new reference; null when out of memory.
  KAPStringAtom* Intern(const char* text) noexcept;
  void AddRef(KAPStringAtom* atom) noexcept;
  void Release(KAPStringAtom* atom) noexcept;

  // Calls visit(atom, references) for every atom, under the lock.
  template <class Visit>
  void ForEach(Visit visit) {
    const std::lock_guard lock(fMutex);
    for (std::size_t i = 0; i <= fMask; ++i) {
      for (const KAPStringAtom* atom = fBuckets[i]; atom; atom = atom->fNext) {
        visit(*atom, atom->fCount.load(std::memory_order_relaxed));
      }
    }
  }

 private:
  static constexpr std::size_t kFirstSize = 1024;

  KAPStringAtom* Add(std::string_view text, std::size_t hash) noexcept;
  void ReleaseLast(KAPStringAtom* atom) noexcept;
  void Grow() noexcept;

  std::mutex fMutex;
  KAPStringAtom** fBuckets = fFirstBuckets;
  std::size_t fMask = kFirstSize - 1;
  std::size_t fSize = 0;
  KAPStringAtom* fFirstBuckets[kFirstSize] = {};
};

extern constinit AtomTable gAtoms;

}  // namespace KAPHost
