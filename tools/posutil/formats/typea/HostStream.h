#pragma once

#include <utility>

#include "kap/KAPStream.h"
#include "kap/KAPStreamFactory.h"

namespace PosUtil {

// The host's stream over one of our own, which it owns from now on.
inline KAP_T_MT::CKAPPositionableStream HostStream(
    KAP_T_MT::TKAPClientObject<KAP_T_MT::KAPClientPositionableStream> client) {
  using namespace KAP_T_MT;
  return {CKAPStreamFactory::NewClientPositionableStream(std::move(client)), KAPAdopt()};
}

}  // namespace PosUtil
