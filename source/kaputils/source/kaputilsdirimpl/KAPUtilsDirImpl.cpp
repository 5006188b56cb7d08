// SPDX-License-Identifier: MIT

// The procedures of "KAPUtilsDirInterface" and "KAPUtilsTempFileStreamFactory".

#include "kaputilsdirimpl/KAPUtilsDirImpl.h"

#include "dir/KAPUtilsDirInterfaces.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "kapimpl/base/ContainedObject.h"
#include "kapimpl/base/KAPUtilsAtoms.h"
#include "kapimpl/base/Required.h"
#include "kaputilsdirimpl/TempFileStream.h"
#include "kaputilsdirimpl/UnixKAPUtilsDirImpl.h"
#include "posimpl/procs/RegisteredSet.h"

namespace NKAPUtilsDirImpl {

using KAP_T_MT::KAPNewClient;
using KAP_T_MT::KAPReturningError;

void DeleteKAPUtilsDirImpl(void* instance) noexcept {
  KAP_T_MT::KAPDeleteVirtualClientBase(instance);
}

namespace {

// Deliberate: directories use the instance name of validators, so the type is checked too.
KAPUtilsDir* Contain(TKAPClientObject<KAPUtilsDirImpl> directory) {
  const KAPUtilsAtoms& atoms = KAPUtilsAtoms::Get();
  return KAPContain(KAPInstanceOwner(std::move(directory)), atoms.POSValidatorImpl,
                    atoms.POSValidatorInterface, &DeleteKAPUtilsDirImpl);
}

const KAPUtilsDirImpl& Instance(KAPUtilsDir* handle) {
  return KAPInstanceOf<KAPUtilsDirImpl>(handle, KAPUtilsAtoms::Get().POSValidatorImpl);
}

// A reference for the duration of the call.
CKAPStringAtom Atom(KAPStringAtom* atom) { return CKAPStringAtom(Required(atom)); }

// Stores what `body` returns. Without a place for it nothing is done.
template <class Result, class Body>
KAPError* KAPReturningResult(Result* out, Body body) noexcept {
  return KAPReturningError([&] {
    *Required(out) = Result();
    *out = body();
  });
}

KAPError* KAPUtilsDirGetTempDir(KAPUtilsDir** out) noexcept {
  return KAPReturningResult(out, [] { return Contain(KAPUtilsDirImpl::GetTempDir()); });
}

KAPError* KAPUtilsDirGetCurrent(KAPUtilsDir** out) noexcept {
  return KAPReturningResult(out, [] { return Contain(KAPUtilsDirImpl::GetCurrent()); });
}

KAPError* KAPUtilsDirNewKAPUtilsDir(KAPUtilsDir** out, KAPStringAtom* path) noexcept {
  return KAPReturningResult(out,
                            [=] { return Contain(KAPNewClient<KAPUtilsDirImpl>(Atom(path))); });
}

KAPError* KAPUtilsDirFileExists(unsigned char* out, KAPUtilsDir* directory,
                                KAPStringAtom* name) noexcept {
  return KAPReturningResult(out, [=] { return Instance(directory).FileExists(Atom(name)); });
}

KAPError* KAPUtilsDirDelete(KAPUtilsDir* directory, KAPStringAtom* name) noexcept {
  return KAPReturningError([=] { Instance(directory).Delete(Atom(name)); });
}

KAPError* KAPUtilsDirRename(KAPUtilsDir* directory, KAPStringAtom* from,
                            KAPStringAtom* to) noexcept {
  return KAPReturningError([=] { Instance(directory).Rename(Atom(from), Atom(to)); });
}

KAPError* KAPUtilsDirGetFilePathSpec(KAPStringAtom** out, KAPUtilsDir* directory,
                                     KAPStringAtom* name) noexcept {
  return KAPReturningResult(
      out, [=] { return Instance(directory).GetFilePathSpec(Atom(name)).Detach(); });
}

KAPError* KAPUtilsDirCreateUniqueFilename(KAPStringAtom** out, KAPUtilsDir* directory,
                                          KAPStringAtom* prefix, KAPStringAtom* second) noexcept {
  return KAPReturningResult(out, [=] {
    return Instance(directory).CreateUniqueFilename(Atom(prefix), CKAPStringAtom(second)).Detach();
  });
}

KAPError* KAPUtilsNewTempFileStream(KAPPositionableStream** out, const char* prefix,
                                    const char* /*second*/, const char* mode) noexcept {
  return KAPReturningResult(out, [=] {
    return TempFileStream::New(CKAPStringAtom(Required(prefix)), CKAPStringAtom(Required(mode)));
  });
}

}  // namespace
}  // namespace NKAPUtilsDirImpl

template <>
bool NPOSObjectImpl::RegisterProcs<KAP_T_MT::KAPUtilsDirInterface>() {
  using namespace NKAPUtilsDirImpl;
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::KAPUtilsDirInterface>(
      &KAPUtilsDirGetTempDir, &KAPUtilsDirGetCurrent, &KAPUtilsDirNewKAPUtilsDir,
      &KAPUtilsDirFileExists, &KAPUtilsDirDelete, &KAPUtilsDirRename, &KAPUtilsDirGetFilePathSpec,
      &KAPUtilsDirCreateUniqueFilename);
}

template <>
bool NPOSObjectImpl::RegisterProcs<KAP_T_MT::KAPUtilsTempFileStreamFactory>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::KAPUtilsTempFileStreamFactory>(
      &NKAPUtilsDirImpl::KAPUtilsNewTempFileStream);
}

namespace NKAPUtilsDirImpl {

bool RegisterKAPUtilsDirImpl() {
  return NPOSObjectImpl::RegisterSet<KAP_T_MT::KAPUtilsDirInterfaceSet>();
}

void UnregisterKAPUtilsDirImpl() {
  NPOSObjectImpl::UnregisterSet<KAP_T_MT::KAPUtilsDirInterfaceSet>();
}

}  // namespace NKAPUtilsDirImpl
