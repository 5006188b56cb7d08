// SPDX-License-Identifier: MIT
#include <atomic>
#include <mutex>
#include <new>
#include <string>
#include <system_error>
#include <utility>

#include "accounting/Accounting.h"
#include "atoms/AtomTable.h"
#include "base/Counting.h"
#include "base/IntrusiveList.h"
#include "base/RefCount.h"
#include "base/Reports.h"
#include "binder/Registration.h"
#include "errors/Errors.h"
#include "kap/KAPErrorInterface.h"
#include "quarantine/Quarantine.h"

// The errors, and the procedures of KAPErrorInterface.

struct KAPError {
  KAPHost::RefCount fCount = {};
  const char* fCoreMessage = nullptr;  // of a core error, which lives forever
  KAPStringAtom* fMessage = nullptr;
  KAPStringAtom* fComponent = nullptr;
  long fCode = 0;
  void* fClientData = nullptr;
  KAPDeleteProc fFreeClientData = nullptr;
  KAPHost::ListLinks<KAPError> fLinks = {};
};

namespace KAPHost {

namespace {

constexpr const char* kComponent = "KAP";

constinit KAPError gCoreErrors[] = {{.fCoreMessage = "unknown error"},
                                    {.fCoreMessage = "out of memory", .fCode = 1}};

// The live errors, kept for the accounting only.
constinit std::mutex gErrorMutex;
constinit IntrusiveList<KAPError> gErrors;

// Whether there was no memory for the atom of a text.
bool IsLost(const char* text, const KAPStringAtom* atom) { return text && !atom; }

KAPError* MakeError(const char* message, const char* component, long code, void* clientData,
                    KAPDeleteProc freeClientData) noexcept {
  auto* error = new (std::nothrow) KAPError;
  if (!error) return nullptr;
  error->fMessage = gAtoms.Intern(message);
  error->fComponent = gAtoms.Intern(component);
  if (IsLost(message, error->fMessage) || IsLost(component, error->fComponent)) {
    gAtoms.Release(error->fMessage);
    gAtoms.Release(error->fComponent);
    delete error;
    return nullptr;
  }
  error->fCode = code;
  error->fClientData = clientData;
  error->fFreeClientData = freeClientData;
  const ThreadLock lock(gErrorMutex);
  gErrors.Append(*error);
  return error;
}

// A null text is not an error: its atom is null.
KAPError* NewError(const char* message, const char* component, long code, void* clientData,
                   KAPDeleteProc freeClientData) noexcept {
  return MakeError(message, component, code, clientData, freeClientData);
}

// An unknown number returns the unknown error.
KAPError* GetCoreError(int id) noexcept { return &gCoreErrors[id == 1 ? 1 : 0]; }

bool IsCounted(const KAPError* error) { return error && !error->fCoreMessage; }

void AddRef(KAPError* error) noexcept {
  if (IsCounted(error) && !error->fCount.Add() && error->fCount.IsDead()) {
    ReportDead(error, "AddRef");
  }
}

void FreeRecord(void* error) noexcept { delete static_cast<KAPError*>(error); }

void Destroy(KAPError& error) noexcept {
  {
    const ThreadLock lock(gErrorMutex);
    gErrors.Remove(error);
  }
  if (error.fFreeClientData) error.fFreeClientData(error.fClientData);
  const bool isKept =
      KeepDead(&error, &FreeRecord, "error", error.fMessage ? error.fMessage->Text() : nullptr);
  KAPStringAtom* const message = std::exchange(error.fMessage, nullptr);
  KAPStringAtom* const component = std::exchange(error.fComponent, nullptr);
  error.fClientData = nullptr;
  // First kept, then marked: a release that sees the mark finds the record.
  isKept ? error.fCount.Bury() : FreeRecord(&error);
  gAtoms.Release(message);
  gAtoms.Release(component);
}

// Without a host, the component whose procedure frees the client data may be unloaded as well.
void Release(KAPError* error) noexcept {
  if (!IsCounted(error)) return;
  RefCount::Release found{};
  if (!HasGateBits(kGateClosed | kGateChecking)) {
    found = error->fCount.Drop();
  } else {
    if (IsClosed()) return;
    found = error->fCount.DropExactly();
  }
  if (found == RefCount::Release::kLast) Destroy(*error);
  if (found == RefCount::Release::kDestroyed && error->fCount.IsDead())
    ReportDead(error, "release");
}

// Returns a new reference to the text. A core error makes its texts on first use and keeps them.
KAPStringAtom* TextOf(const KAPError* error, KAPStringAtom*& atom, const char* coreText) noexcept {
  if (!error->fCoreMessage) {
    gAtoms.AddRef(atom);
    return atom;
  }
  KAPStringAtom* text = gAtoms.Intern(coreText);
  KAPStringAtom* none = nullptr;
  if (std::atomic_ref(atom).compare_exchange_strong(none, text)) gAtoms.AddRef(text);
  return text;
}

KAPStringAtom* GetErrorMessage(KAPError* error) noexcept {
  if (!error) return nullptr;
  return TextOf(error, error->fMessage, error->fCoreMessage);
}

KAPStringAtom* GetComponent(KAPError* error) noexcept {
  if (!error) return nullptr;
  return TextOf(error, error->fComponent, kComponent);
}

long GetID(KAPError* error) noexcept { return !error ? 0 : error->fCode; }

void* GetErrorInfo(KAPError* error) noexcept { return !error ? nullptr : error->fClientData; }

std::string_view View(const KAPStringAtom* atom) { return atom ? atom->Text() : "(no text)"; }

// An error's own references to its texts are not held by components.
void LeaveOutTexts(HoldingSum& sum, KAPError& error) {
  for (KAPStringAtom** text : {&error.fMessage, &error.fComponent}) {
    const KAPStringAtom* atom = std::atomic_ref(*text).load();
    if (atom) sum.Add(KAPResource::kAtom, atom->Text(), {-1, 0});
  }
}

}  // namespace

KAPError* MakeError(const char* message, long code) noexcept {
  KAPError* error = MakeError(message, kComponent, code, nullptr, nullptr);
  return error ? error : MemoryError();
}

const char* MessageOf(const KAPError& error) noexcept {
  if (error.fCoreMessage) return error.fCoreMessage;
  return error.fMessage ? error.fMessage->Text() : "";
}

bool IsCoreError(const KAPError& error) noexcept {
  return &error == &gCoreErrors[0] || &error == &gCoreErrors[1];
}

std::mutex& ErrorsMutex() noexcept { return gErrorMutex; }

KAPError* InvalidContainer() noexcept { return MakeError("invalid container"); }

KAPError* InvalidArgument() noexcept { return MakeError("invalid argument"); }

KAPError* SystemError(const char* action, const char* path, int number) noexcept {
  return ReturnError([&] {
    const std::string reason = std::generic_category().message(number);
    const std::string message = std::string("cannot ") + action + " \"" + path + "\": " + reason;
    return MakeError(message.c_str(), number);
  });
}

void ReportError(KAPError* error) noexcept {
  if (!error) return;
  if (IsFollowing()) NoteHostReleased(*error);
  KAPStringAtom* message = GetErrorMessage(error);
  Report(message ? message->Text() : "(an error without a message)");
  gAtoms.Release(message);
  Release(error);
}

KAPError* MemoryError() noexcept { return &gCoreErrors[1]; }

template <>
void RegisterService<KAP_T_MT::KAPErrorInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPErrorInterface, &NewError, &GetCoreError, &AddRef, &Release,
                &GetErrorMessage, &GetComponent, &GetID, &GetErrorInfo>(binder);
}

template <>
void AddNamed<KAPResource::kError>(HoldingSum& sum) {
  const std::lock_guard lock(gErrorMutex);
  gErrors.ForEach([&](KAPError& error) {
    sum.Add(KAPResource::kError, View(error.fMessage), {1, error.fCount.Get()});
    LeaveOutTexts(sum, error);
  });
  for (KAPError& error : gCoreErrors) LeaveOutTexts(sum, error);
}

}  // namespace KAPHost
