// SPDX-License-Identifier: MIT
#pragma once

namespace NPOSValidatorImpl {

// Registers the interfaces of POSValidatorInterfaceSet in its order; false at the first that the
// binder refuses, and the one before it stays registered.
bool RegisterPOSValidatorImpl();
void UnregisterPOSValidatorImpl();

}  // namespace NPOSValidatorImpl
