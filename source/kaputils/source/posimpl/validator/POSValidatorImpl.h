// SPDX-License-Identifier: MIT
#pragma once

namespace NPOSValidatorImpl {

// Registers the interfaces of POSValidatorInterfaceSet in its order. Returns false at the first
// registration that fails; those before it stay registered.
bool RegisterPOSValidatorImpl();
void UnregisterPOSValidatorImpl();

}  // namespace NPOSValidatorImpl
