#include "HoldingObject.h"

namespace NPOSObjectImpl {

// The rounds of releases that are under way on this thread.
class HoldingObject::Releases {
 public:
  void Delete(HoldingObject* object) noexcept {
    if (fDepth == kDepthLimit) {
      object->fNextToDelete = fToDelete;
      fToDelete = object;
      return;
    }
    ++fDepth;
    delete object;
    if (fDepth == 1) DeleteFiled();
    --fDepth;
  }

 private:
  static constexpr int kDepthLimit = 32;  // so that ordinary objects go in their natural order

  void DeleteFiled() noexcept {
    while (HoldingObject* object = fToDelete) {
      fToDelete = object->fNextToDelete;
      delete object;
    }
  }

  int fDepth = 0;
  HoldingObject* fToDelete = nullptr;
};

// Not inline: see build/kaputils/CMakeLists.txt on thread-local variables.
[[gnu::noinline]] void HoldingObject::DeleteOrFile(HoldingObject* object) noexcept {
  static thread_local constinit Releases onThisThread;
  onThisThread.Delete(object);
}

CPOSObject HoldingObject::CloneOf(const CPOSObject& held) {
  const BaseObject* own = OwnInstance(held.Handle());
  const bool isItsOwnClone = own ? own->GetType() < KAP_T_MT::kPOSArray : held.IsNull();
  return isItsOwnClone ? held : held.Clone();
}

bool HoldingObject::AreEqual(const CPOSObject& a, const CPOSObject& b) {
  if (a.IsNull() || b.IsNull()) return a.IsNull() && b.IsNull();
  const BaseObject* own = OwnInstance(a.Handle());
  if (!own) return a.IsEqual(b);
  const BaseObject* other = GetInstanceNoThrow(b.Handle());
  return other && own->IsEqual(*other);
}

}  // namespace NPOSObjectImpl
