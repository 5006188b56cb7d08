#include "Compound.h"

namespace NPOSObjectImpl {

// The rounds of releases that are under way on this thread.
class Compound::Releases {
 public:
  void Delete(Compound* object) noexcept {
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

  static thread_local constinit Releases gOnThisThread;

 private:
  static constexpr int kDepthLimit = 32;  // so that ordinary objects go in their natural order

  void DeleteFiled() noexcept {
    while (Compound* object = fToDelete) {
      fToDelete = object->fNextToDelete;
      delete object;
    }
  }

  int fDepth = 0;
  Compound* fToDelete = nullptr;
};

thread_local constinit Compound::Releases Compound::Releases::gOnThisThread;

KAPDeleteProc Compound::GetDeleteProc() const noexcept {
  return [](void* instance) {
    Releases::gOnThisThread.Delete(static_cast<Compound*>(static_cast<BaseObject*>(instance)));
  };
}

bool Compound::AreEqual(const CPOSObject& a, const CPOSObject& b) {
  if (a.IsNull() || b.IsNull()) return a.IsNull() && b.IsNull();
  return a.IsEqual(b);
}

}  // namespace NPOSObjectImpl
