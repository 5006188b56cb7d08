// SPDX-License-Identifier: MIT
#include "commands/changes/DeepCopy.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "POSDict.h"
#include "commands/values/Values.h"

namespace PosUtil {

using namespace KAP_T_MT;

CPOSObject DeepCopy(const CPOSObject& value) {
  struct Pair {
    CPOSObject fSource;
    CPOSObject fCopy;
  };
  std::vector<Pair> pairs;
  // The members of a container follow later. Nothing changes scalars, so they are shared.
  const auto copy = [&](const CPOSObject& source) {
    if (!IsContainer(source)) return source;
    CPOSObject target =
        source.GetType() == kPOSArray ? CPOSObject(CPOSArray::New()) : CPOSObject(CPOSDict::New());
    pairs.push_back({source, target});
    return target;
  };
  CPOSObject root = copy(value);
  while (!pairs.empty()) {
    const Pair pair = std::move(pairs.back());
    pairs.pop_back();
    if (const CPOSDict source(pair.fSource, true); !source.IsNull()) {
      CPOSDict target(pair.fCopy);
      for (CPOSDictIterator i(source); !i.IsDone(); i.Next()) {
        target.Put(i.CurKey(), copy(source.Get(i.CurKey(), true)));
      }
    } else {
      std::vector<CPOSObject> values = ValuesFrom(CPOSArray(pair.fSource), 0);
      std::transform(values.begin(), values.end(), values.begin(), copy);
      CPOSArray target(pair.fCopy);
      ReplaceFrom(target, 0, values);
    }
  }
  return root;
}

}  // namespace PosUtil
