// SPDX-License-Identifier: MIT
#include "commands/changes/MergePatch.h"

#include <string>
#include <vector>

#include "POSDict.h"
#include "commands/values/StepTree.h"
#include "commands/values/Values.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

// A dictionary, and that of the patch to merge into it; neither is escaped.
struct Merge {
  CPOSDict fTarget;
  CPOSDict fPatch;
  StepTree::Node fNode;
  CPOSDict fParent;  // of the target
  std::string fKey;
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
    fMerges.push_back({DictIn(document), DictIn(fPatch.Object()), StepTree::kRoot, {}, {}});
    for (std::size_t next = 0; next < fMerges.size(); ++next) {
      const Merge merge = fMerges[next];
      for (CPOSDictIterator i(merge.fPatch); !i.IsDone(); i.Next()) Step(merge, i.CurKey());
    }
    if (fPatch.KeepsValues()) EscapeTargets(document);
  }

 private:
  // A kept value is a dictionary only for the library.
  bool IsDict(const CPOSObject& value) const {
    return CPOSDict(value, true).Handle() && !(fPatch.KeepsValues() && IsKeptValue(value));
  }

  CPOSDict DictIn(const CPOSObject& value) const {
    return CPOSDict(fPatch.KeepsValues() ? Unescaped(value) : value);
  }

  // A merge may have made a dictionary look kept, or no longer so. The inner ones come first.
  void EscapeTargets(CPOSObject& document) {
    for (std::size_t i = fMerges.size(); i-- > 1;) {
      fMerges[i].fParent.Put(fMerges[i].fKey, Escaped(fMerges[i].fTarget));
    }
    document = Escaped(fMerges.front().fTarget);
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
    fMerges.push_back({DictIn(old), DictIn(value), node, target, key});
  }

  Change& fPatch;
  StepTree fSteps;
  std::vector<Merge> fMerges;
};

}  // namespace

void ApplyMergePatch(CPOSObject& document, Change& patch) { Merger(patch).Run(document); }

}  // namespace PosUtil
