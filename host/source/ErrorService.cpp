#include <atomic>
#include <mutex>
#include <new>
#include <string>
#include <system_error>

#include "AtomTable.h"
#include "Counting.h"
#include "Errors.h"
#include "Gate.h"
#include "HostState.h"
#include "Services.h"

// The procedures of KAPErrorInterface, and the errors.

struct KAPError {
  std::atomic<long> fCount{1};
  const char* fCoreMessage = nullptr;  // of a core error, which lives forever
  KAPStringAtom* fMessage = nullptr;
  KAPStringAtom* fComponent = nullptr;
  long fCode = 0;
  void* fClientData = nullptr;
  KAPDeleteProc fFreeClientData = nullptr;
  KAPError* fPrevious = nullptr;
  KAPError* fNext = nullptr;
};

namespace KAPHost {

namespace {

constexpr const char* kComponent = "KAP";

constinit KAPError gCoreErrors[] = {{.fCoreMessage = "unknown error"},
                                    {.fCoreMessage = "out of memory", .fCode = 1}};

// The live errors; of interest to the books only.
constinit std::mutex gErrorMutex;
constinit KAPError* gErrors = nullptr;

void Link(KAPError& error) noexcept {
  const ThreadLock lock(gErrorMutex);
  error.fNext = gErrors;
  if (gErrors != nullptr) gErrors->fPrevious = &error;
  gErrors = &error;
}

void Unlink(const KAPError& error) noexcept {
  const ThreadLock lock(gErrorMutex);
  (error.fPrevious != nullptr ? error.fPrevious->fNext : gErrors) = error.fNext;
  if (error.fNext != nullptr) error.fNext->fPrevious = error.fPrevious;
}

// A text that could not be made into an atom.
bool IsLost(const char* text, const KAPStringAtom* atom) {
  return text != nullptr && atom == nullptr;
}

KAPError* MakeError(const char* message, const char* component, long code, void* clientData,
                    KAPDeleteProc freeClientData) noexcept {
  auto* error = new (std::nothrow) KAPError;
  if (error == nullptr) return nullptr;
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
  Link(*error);
  return error;
}

// When there is no error, the client data stays the caller's. A null text gives a null atom.
KAPError* NewError(const char* message, const char* component, long code, void* clientData,
                   KAPDeleteProc freeClientData) noexcept {
  if (Fails(KAPFault::kError)) return nullptr;
  return MakeError(message, component, code, clientData, freeClientData);
}

// Whatever is no core error is unknown.
KAPError* GetCoreError(int id) noexcept { return &gCoreErrors[id == 1 ? 1 : 0]; }

bool IsCounted(const KAPError* error) { return error != nullptr && error->fCoreMessage == nullptr; }

void AddRef(KAPError* error) noexcept {
  if (IsCounted(error)) Increment(error->fCount);
}

// Without a host the component whose procedure would free the client data may be gone as well.
void Release(KAPError* error) noexcept {
  if (!IsCounted(error) || IsClosed() || Decrement(error->fCount) != 0) return;
  Unlink(*error);
  if (error->fFreeClientData != nullptr) error->fFreeClientData(error->fClientData);
  gAtoms.Release(error->fMessage);
  gAtoms.Release(error->fComponent);
  delete error;
}

// A new reference to the text. A core error makes it when it is first asked for and keeps it from
// then on, as every error keeps its texts.
KAPStringAtom* TextOf(const KAPError* error, KAPStringAtom*& atom, const char* coreText) noexcept {
  if (error->fCoreMessage == nullptr) {
    gAtoms.AddRef(atom);
    return atom;
  }
  KAPStringAtom* text = gAtoms.Intern(coreText);
  KAPStringAtom* none = nullptr;
  if (std::atomic_ref(atom).compare_exchange_strong(none, text)) gAtoms.AddRef(text);
  return text;
}

KAPStringAtom* GetErrorMessage(KAPError* error) noexcept {
  if (error == nullptr) return nullptr;
  return TextOf(error, error->fMessage, error->fCoreMessage);
}

KAPStringAtom* GetComponent(KAPError* error) noexcept {
  if (error == nullptr) return nullptr;
  return TextOf(error, error->fComponent, kComponent);
}

long GetID(KAPError* error) noexcept { return error == nullptr ? 0 : error->fCode; }

void* GetErrorInfo(KAPError* error) noexcept {
  return error == nullptr ? nullptr : error->fClientData;
}

void RegisterErrors(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPErrorInterface>(binder, &NewError, &GetCoreError, &AddRef, &Release,
                                             &GetErrorMessage, &GetComponent, &GetID,
                                             &GetErrorInfo);
}

std::string_view View(const KAPStringAtom* atom) {
  return atom != nullptr ? std::string_view(atom->Text(), atom->fLength) : "(no text)";
}

// An error's own references on its texts are not the components'.
void LeaveOutTexts(Snapshot& books, KAPError& error) {
  for (KAPStringAtom** text : {&error.fMessage, &error.fComponent}) {
    const KAPStringAtom* atom = std::atomic_ref(*text).load();
    if (atom != nullptr) books.Add(KAPResource::kAtom, View(atom), {-1, 0});
  }
}

void CountErrors(Snapshot& books) {
  const std::lock_guard lock(gErrorMutex);
  for (KAPError* error = gErrors; error != nullptr; error = error->fNext) {
    books.Add(KAPResource::kError, View(error->fMessage),
              {1, error->fCount.load(std::memory_order_relaxed)});
    LeaveOutTexts(books, *error);
  }
  for (KAPError& error : gCoreErrors) LeaveOutTexts(books, error);
}

}  // namespace

KAPError* MakeError(const char* message, long code) noexcept {
  KAPError* error = MakeError(message, kComponent, code, nullptr, nullptr);
  return error != nullptr ? error : MemoryError();
}

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
  if (error == nullptr) return;
  KAPStringAtom* message = GetErrorMessage(error);
  Report(message != nullptr ? message->Text() : "(an error without a message)");
  gAtoms.Release(message);
  Release(error);
}

KAPError* MemoryError() noexcept { return &gCoreErrors[1]; }

const Service kErrorService = {&RegisterErrors, &CountErrors};

}  // namespace KAPHost
