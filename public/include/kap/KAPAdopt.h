#pragma once

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

struct KAPAdopt {};  // says that a reference passes over

}  // namespace KAP_T_MT
