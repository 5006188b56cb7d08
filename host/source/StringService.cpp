#include "AtomTable.h"
#include "ContainerTypes.h"
#include "Gate.h"
#include "Services.h"

// The procedures of KAPStringInterface.

namespace KAPHost {

namespace {

KAPStringAtom* NewStringAtom(const char* text) noexcept {
  return Fails(KAPFault::kAtom) ? nullptr : gAtoms.Intern(text);
}

void DeleteStringAtom(KAPStringAtom* atom) noexcept { gAtoms.Release(atom); }

const char* GetCString(KAPStringAtom* atom) noexcept {
  return atom != nullptr ? atom->Text() : nullptr;
}

void AddRef(KAPStringAtom* atom) noexcept { gAtoms.AddRef(atom); }

void RegisterStrings(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPStringInterface>(binder, &NewStringAtom, &DeleteStringAtom,
                                              &GetCString, &AddRef);
}

std::string_view View(const KAPStringAtom& atom) { return {atom.Text(), atom.fLength}; }

// Without the references that the types hold.
void CountAtoms(Snapshot& books) {
  gAtoms.ForEach([&](const KAPStringAtom& atom, long references) {
    books.Add(KAPResource::kAtom, View(atom), {references, 0});
  });
  gContainerTypes.ForEach([&](const ContainerType& type) {
    for (const KAPStringAtom* atom : {type.fInstanceName, type.fInterfaceName}) {
      if (atom != nullptr) books.Add(KAPResource::kAtom, View(*atom), {-1, 0});
    }
  });
}

}  // namespace

const Service kStringService = {&RegisterStrings, &CountAtoms};

}  // namespace KAPHost
