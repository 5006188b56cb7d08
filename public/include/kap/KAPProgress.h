// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "kap/KAPClientBase.h"
#include "kap/KAPProgressInterface.h"
#include "kap/KAPReference.h"

// Progress: one side updates the progress of its work, the other shows it.
//
//   struct Bar : KAPClientProgress {
//     void Update(float fraction, const char* text, int) override { Draw(fraction, text); }
//   };
//   CKAPProgress progress(KAPNewClient<Bar>());
//   Convert(file, progress.Handle());           // another component: progress.Update(0.5f, "", 0)

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Base of the progress objects that a component implements itself and hands to the host.
// Errors: Update fails by throwing; the exception becomes the host error that the updating side
//   receives, which stops its work.
// Threads: the host calls one object from one thread at a time.
class KAPClientProgress : public CKAPVirtualClientBase {
 public:
  // `fraction` of the work, 0 to 1, is done. `text` may be null; what `flag` means is up to the two
  // sides.
  virtual void Update(float fraction, const char* text, int flag) = 0;
};

// A reference to a progress object of the host, or to none.
// Ownership: holds one reference, released on destruction; copies share the object. A client object
//   that is handed over belongs to the host afterwards; if the host makes no progress object for
//   it, it is deleted.
// Errors: CKAPError "couldn't construct CKAPProgress" when the host makes no object or a handle is
//   null, even one to adopt; the core unknown error for a null client object. Update throws the
//   error that the host returns, for an empty reference as well. A table that cannot be loaded
//   throws as KAPInterfaceClient.h says.
// Threads: one thread at a time per progress object.
class CKAPProgress : public TKAPReference<KAPProgressInterface, KAPProgress> {
 public:
  CKAPProgress() noexcept = default;        // none
  [[nodiscard]] static CKAPProgress New();  // ignores its updates
  // Forwards to the client object.
  explicit CKAPProgress(TKAPClientObject<KAPClientProgress> client);
  // Adds a reference; adopts the caller's, or that of a new handle.
  explicit CKAPProgress(KAPProgress* handle) : TKAPReference(handle) { FinishConstruct(); }
  CKAPProgress(KAPProgress* handle, KAPAdopt adopt) : TKAPReference(handle, adopt) {
    FinishConstruct();
  }
  explicit CKAPProgress(TKAPNewHandle<KAPProgress> made)
      : CKAPProgress(std::move(made), KAPAdopt()) {}

  // Updates the progress: `fraction` (0 to 1), a text (may be null) and a flag whose meaning the
  // two sides agree on. An exception asks the caller to stop.
  void Update(float fraction, const char* text, int flag);

  // As the constructor, but returns a handle with one reference for the caller, and null instead of
  // throwing when the host makes no object or the table cannot be loaded.
  static TKAPNewHandle<KAPProgress> _NewClientProgress(TKAPClientObject<KAPClientProgress> client);

 private:
  void FinishConstruct() const;
};

}  // namespace KAP_T_MT
