#pragma once

#include <algorithm>
#include <vector>

namespace PosUtil {

// A base for objects that are defined as statics, one per file, and found through All: to add one, add its file.
template <class T>
class Registered {
 public:
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;

  // In the order of fOrder. Not to be called before main.
  static std::vector<T*> All() {
    std::vector<T*> all;
    for (Registered* each = gFirst; each; each = each->fNext) all.push_back(static_cast<T*>(each));
    std::sort(all.begin(), all.end(), [](const T* a, const T* b) { return a->fOrder < b->fOrder; });
    return all;
  }

 protected:
  explicit Registered(int order) : fOrder(order), fNext(gFirst) { gFirst = this; }
  ~Registered() = default;

 private:
  inline static constinit Registered* gFirst = nullptr;

  const int fOrder;  // where it stands in lists for users
  Registered* const fNext;
};

}  // namespace PosUtil
