// SPDX-License-Identifier: MIT
#include "commands/values/MergePatch.h"

#include <utility>
#include <vector>

#include "POSDict.h"
#include "commands/values/StepTree.h"
#include "commands/values/Values.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

// A dictionary, and that of the patch to merge into it.
struct Merge {
  CPOSDict fTarget;
  CPOSDict fPatch;
  StepTree::Node fNode;
};

class Merger {
 public:
  explicit Merger(Change& patch) : fPatch(patch) {}

  void Run(CPOSObject& document) {
    if (!IsDict(fPatch.Object())) {
      document = fPatch.Settled(fPatch.Object(), {});
      return;
    }
    if (!IsDict(document)) document = CPOSDict::New();
    fMerges.push_back({CPOSDict(document), CPOSDict(fPatch.Object()), StepTree::kRoot});
    while (!fMerges.empty()) {
      const Merge merge = std::move(fMerges.back());
      fMerges.pop_back();
      for (CPOSDictIterator i(merge.fPatch); !i.IsDone(); i.Next()) Step(merge, i.CurKey());
    }
  }

 private:
  // A kept value is a dictionary only for the library.
  bool IsDict(const CPOSObject& value) const {
    return CPOSDict(value, true).Handle() && !(fPatch.KeepsValues() && IsKeptValue(value));
  }

  void Step(const Merge& merge, const char* key) {
    CPOSDict target = merge.fTarget;
    const CPOSObject value = merge.fPatch.Get(key, true);
    if (fPatch.IsNull(value)) return target.Remove(key);
    const StepTree::Node node = fSteps.Add(merge.fNode, PathStep(key));
    if (!IsDict(value)) return target.Put(key, fPatch.Settled(value, fSteps.PathTo(node)));
    CPOSObject old = target.Get(key, true);
    if (!IsDict(old)) {
      old = CPOSDict::New();
      target.Put(key, old);
    }
    fMerges.push_back({CPOSDict(old), CPOSDict(value), node});
  }

  Change& fPatch;
  StepTree fSteps;
  std::vector<Merge> fMerges;
};

}  // namespace

void ApplyMergePatch(CPOSObject& document, Change& patch) { Merger(patch).Run(document); }

}  // namespace PosUtil
