// SPDX-License-Identifier: MIT
#include "kapimpl/base/KAPUtilsAtoms.h"

#include <utility>

#include "kap/TOQException.h"

constinit KAPUtilsAtoms* KAPUtilsAtoms::fInstAtoms = nullptr;

void KAPUtilsAtoms::Create() {
  if (!fInstAtoms) fInstAtoms = new KAPUtilsAtoms;
}

void KAPUtilsAtoms::Destroy() noexcept { delete std::exchange(fInstAtoms, nullptr); }

void KAPUtilsAtoms::ThrowNotInitialized() {
  throw KAP_T_MT::TOQException("KAPUtils is not initialized");
}
