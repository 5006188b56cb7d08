#pragma once

#include <string_view>

#include "formats/TextCache.h"
#include "kap/KAPStringAtom.h"

namespace PosUtil {

// The atoms of dictionary keys: the host is asked once for a key that many dictionaries share.
class KeyAtoms {
 public:
  // `key` is zero-terminated. The atom stays valid until the next call.
  const KAP_T_MT::CKAPStringAtom& Get(std::string_view key) {
    return fCache.Get(key, [key] { return KAP_T_MT::CKAPStringAtom(key.data()); });
  }

 private:
  TextCache<KAP_T_MT::CKAPStringAtom> fCache;
};

}  // namespace PosUtil
