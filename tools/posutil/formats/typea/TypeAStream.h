// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

#include "kap/KAPClientStream.h"
#include "kap/KAPStream.h"

namespace PosUtil {

// The host's stream over one of our own. It takes ownership of `client`.
KAP_T_MT::CKAPPositionableStream NewHostStream(
    KAP_T_MT::TKAPClientObject<KAP_T_MT::KAPClientPositionableStream> client);

// Throws Failure about the file `name` if `size` is too large for a TypeA document: the streamer
// counts positions in 32 bits.
void CheckTypeASize(std::size_t size, const std::string& name);

}  // namespace PosUtil
