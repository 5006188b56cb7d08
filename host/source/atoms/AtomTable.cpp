#include "atoms/AtomTable.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "base/Counting.h"
#include "checks/Quarantine.h"

namespace KAPHost {

constinit AtomTable gAtoms;

namespace {

__extension__ using Wide = unsigned __int128;

std::uint64_t Mix(std::uint64_t a, std::uint64_t b) noexcept {
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

std::uint64_t Word(const char* bytes, std::size_t count) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, count);
  return word;
}

// Hashes eight bytes at a time. The seed is the address of the table, which differs from process to
// process, so that no document can be made of keys that collide.
std::size_t Hash(std::string_view text) noexcept {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
  const char* bytes = text.data();
  std::size_t left = text.size();
  std::uint64_t hash = reinterpret_cast<std::uintptr_t>(&gAtoms) ^ (left * kFactor);
  for (; left > 8; bytes += 8, left -= 8) hash = Mix(hash ^ Word(bytes, 8), kFactor);
  // The last one to eight bytes: two overlapping halves avoid a loop.
  std::uint64_t tail = 0;
  if (left >= 4) {
    tail = Word(bytes, 4) | Word(bytes + left - 4, 4) << 32;
  } else if (left > 0) {
    tail = Word(bytes, 1) | Word(bytes + left / 2, 1) << 8 | Word(bytes + left - 1, 1) << 16;
  }
  return Mix(hash ^ tail, kFactor);
}

bool HasText(const KAPStringAtom& atom, std::string_view text) noexcept {
  return atom.fLength == text.size() && std::memcmp(atom.Text(), text.data(), text.size()) == 0;
}

}  // namespace

KAPStringAtom* AtomTable::Intern(const char* text) noexcept {
  if (!text) return nullptr;
  const std::string_view view(text);
  const std::size_t hash = Hash(view);
  const ThreadLock lock(fMutex);
  for (KAPStringAtom* atom = fBuckets[hash & fMask]; atom; atom = atom->fNext) {
    if (atom->fHash == hash && HasText(*atom, view)) {
      Increment(atom->fCount);
      return atom;
    }
  }
  return Add(view, hash);
}

KAPStringAtom* AtomTable::Add(std::string_view text, std::size_t hash) noexcept {
  void* storage = std::malloc(sizeof(KAPStringAtom) + text.size() + 1);
  if (!storage) return nullptr;
  if (fSize > fMask) Grow();
  KAPStringAtom*& bucket = fBuckets[hash & fMask];
  auto* atom = new (storage) KAPStringAtom{bucket, hash, text.size(), 1};
  std::memcpy(static_cast<char*>(storage) + sizeof(KAPStringAtom), text.data(), text.size() + 1);
  bucket = atom;
  ++fSize;
  return atom;
}

// Without memory for a larger table, only the chains grow longer.
void AtomTable::Grow() noexcept {
  const std::size_t size = 2 * (fMask + 1);
  auto** buckets = new (std::nothrow) KAPStringAtom* [size] {};
  if (!buckets) return;
  for (std::size_t i = 0; i <= fMask; ++i) {
    for (KAPStringAtom *atom = fBuckets[i], *next; atom; atom = next) {
      next = atom->fNext;
      KAPStringAtom*& bucket = buckets[atom->fHash & (size - 1)];
      atom->fNext = bucket;
      bucket = atom;
    }
  }
  if (fBuckets != fFirstBuckets) delete[] fBuckets;
  fBuckets = buckets;
  fMask = size - 1;
}

void AtomTable::AddRef(KAPStringAtom* atom) noexcept {
  if (atom) Increment(atom->fCount);
}

void AtomTable::Release(KAPStringAtom* atom) noexcept {
  if (!atom) return;
  const long before =
      Update(atom->fCount, [](long count) { return count > 1 ? count - 1 : count; });
  if (before == 1) ReleaseLast(atom);
  if (before < 0) ReportDead(atom, "release");
}

void AtomTable::ReleaseLast(KAPStringAtom* atom) noexcept {
  {
    const ThreadLock lock(fMutex);
    if (Decrement(atom->fCount) != 0) return;  // a look-up came first
    KAPStringAtom** link = &fBuckets[atom->fHash & fMask];
    while (*link != atom) link = &(*link)->fNext;
    *link = atom->fNext;
    --fSize;
  }
  // Far below zero: references that are added to a dead atom do not revive it.
  atom->fCount.store(std::numeric_limits<long>::min() / 2, std::memory_order_relaxed);
  if (!KeepDead(atom, &std::free, "atom", atom->Text())) std::free(atom);
}

}  // namespace KAPHost
