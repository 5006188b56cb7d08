// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <vector>

namespace PosUtil {

// A base class for static objects that a list of all of them finds: adding one means adding the
// file that defines it. No other file changes.
template <class T>
class Registered {
 public:
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;

  // Sorted by `order`. Call it only after main has started: the statics exist then.
  static std::vector<T*> All() {
    std::vector<T*> all;
    for (Registered* each : List()) all.push_back(static_cast<T*>(each));
    std::sort(all.begin(), all.end(), [](const T* a, const T* b) { return a->fOrder < b->fOrder; });
    return all;
  }

 protected:
  // `order` is the position in lists that users see.
  explicit Registered(int order) : fOrder(order) { List().push_back(this); }
  ~Registered() = default;

 private:
  // A function-local static exists before the first object that registers itself.
  static std::vector<Registered*>& List() {
    static std::vector<Registered*> list;
    return list;
  }

  const int fOrder;
};

}  // namespace PosUtil
