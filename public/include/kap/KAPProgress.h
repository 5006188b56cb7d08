#pragma once

#include "kap/KAPClientBase.h"
#include "kap/KAPProgressInterface.h"
#include "kap/KAPReference.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Base of the progress objects that a component implements itself and hands to the host. The
// operation fails by raising: the exception becomes the host error that the reporting side gets.
class KAPClientProgress : public CKAPVirtualClientBase {
 public:
  virtual void Update(float fraction, const char* text, int flag) = 0;
};

// A reference to a progress object of the host.
// Ownership: holds one reference, released on destruction. A client object passes over in any case:
//   where there is no progress object for it, it is deleted.
// Errors: CKAPError "couldn't construct CKAPProgress" when the host gives no object, or the handle
//   is null. An error of the host is raised.
// Threads: as a plain value.
class CKAPProgress : public TKAPReference<KAPProgressInterface, KAPProgress> {
 public:
  CKAPProgress();  // one that nobody watches
  explicit CKAPProgress(TKAPClientObject<KAPClientProgress> client);
  explicit CKAPProgress(KAPProgress* handle) : TKAPReference(handle) { FinishConstruct(); }
  CKAPProgress(KAPProgress* handle, KAPAdopt adopt) : TKAPReference(handle, adopt) {
    FinishConstruct();
  }

  // What `flag` says is agreed between the two sides; the host passes it on.
  void Update(float fraction, const char* text, int flag);

  // Hands the object over. One reference for the caller; null when the host gives no object.
  static KAPProgress* _NewClientProgress(TKAPClientObject<KAPClientProgress> client);

 private:
  void FinishConstruct() const;
};

}  // namespace KAP_T_MT
