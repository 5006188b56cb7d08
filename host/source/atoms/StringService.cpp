// SPDX-License-Identifier: MIT
#include <mutex>

#include "accounting/Accounting.h"
#include "atoms/AtomCredits.h"
#include "atoms/AtomTable.h"
#include "binder/Registration.h"
#include "kap/KAPStringInterface.h"

// The procedures of KAPStringInterface.

namespace KAPHost {

namespace {

// The key is a copy: the look-up in the cache keeps its own in registers.
[[gnu::noinline]] KAPStringAtom* Intern(TextKey key) noexcept {
  const auto [atom, isNew] = gAtoms.Intern(key);
  if (!isNew) AtomCredits::Missed(*atom, key);
  return atom;
}

KAPStringAtom* NewStringAtom(const char* text) noexcept {
  if (!text) return nullptr;
  const TextKey key(text);
  KAPStringAtom* const cached = AtomCredits::Take(key);
  return cached ? cached : Intern(key);
}

void DeleteStringAtom(KAPStringAtom* atom) noexcept {
  if (atom) AtomCredits::Release(*atom);
}

const char* GetCString(KAPStringAtom* atom) noexcept { return atom ? atom->Text() : nullptr; }

void AddRef(KAPStringAtom* atom) noexcept {
  if (atom && !AtomCredits::TakeFor(*atom)) gAtoms.AddRef(atom);
}

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPStringInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPStringInterface, &NewStringAtom, &DeleteStringAtom, &GetCString,
                &AddRef>(binder);
}

template <>
void AddNamed<KAPResource::kAtom>(HoldingSum& sum) {
  const std::lock_guard lock(AtomCredits::Mutex());
  const auto credits = AtomCredits::All();
  gAtoms.ForEach([&](const KAPStringAtom& atom) {
    long references = atom.fCount.load(std::memory_order_relaxed);
    const auto cached = credits.find(&atom);
    if (cached != credits.end()) references -= cached->second;
    if (references != 0) sum.Add(KAPResource::kAtom, atom.Text(), {references, 0});
  });
}

}  // namespace KAPHost
