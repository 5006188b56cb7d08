#pragma once

namespace NPOSValidatorImpl {

// Registers the interfaces of validators, in a fixed order; false at the first that is refused, and
// the one before it stays registered.
bool RegisterPOSValidatorImpl();
void UnregisterPOSValidatorImpl();

}  // namespace NPOSValidatorImpl
