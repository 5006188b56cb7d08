#include "accounting/Accounting.h"
#include "atoms/AtomTable.h"
#include "binder/Registration.h"
#include "kap/KAPStringInterface.h"

// The procedures of KAPStringInterface.

namespace KAPHost {

namespace {

KAPStringAtom* NewStringAtom(const char* text) noexcept { return gAtoms.Intern(text); }

void DeleteStringAtom(KAPStringAtom* atom) noexcept { gAtoms.Release(atom); }

const char* GetCString(KAPStringAtom* atom) noexcept { return atom ? atom->Text() : nullptr; }

void AddRef(KAPStringAtom* atom) noexcept { gAtoms.AddRef(atom); }

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPStringInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPStringInterface, &NewStringAtom, &DeleteStringAtom, &GetCString,
                &AddRef>(binder);
}

template <>
void AddNamed<KAPResource::kAtom>(Snapshot& snapshot) {
  gAtoms.ForEach([&](const KAPStringAtom& atom, long references) {
    snapshot.Add(KAPResource::kAtom, atom.View(), {references, 0});
  });
}

}  // namespace KAPHost
