// SPDX-License-Identifier: MIT
#include "formats/typea/TypeAStream.h"

#include <cstdint>
#include <utility>

#include "base/Failure.h"
#include "base/Printable.h"
#include "kap/KAPStreamFactory.h"

namespace PosUtil {

using namespace KAP_T_MT;

CKAPPositionableStream NewHostStream(TKAPClientObject<KAPClientPositionableStream> client) {
  return {CKAPStreamFactory::NewClientPositionableStream(std::move(client)), KAPAdopt()};
}

void CheckTypeASize(std::size_t size, const std::string& name) {
  if (size > INT32_MAX) {
    throw Failure(Printable(name) + ": a TypeA document must be smaller than 2 GiB");
  }
}

}  // namespace PosUtil
