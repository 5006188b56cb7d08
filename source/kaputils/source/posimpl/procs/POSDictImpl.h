#pragma once

namespace NPOSObjectImpl {

// Registers the interfaces of property objects, in a fixed order; false at the first that is
// refused, and those before it stay registered.
bool RegisterPOSDictImpl();
void UnregisterPOSDictImpl();

// One interface each, beside its procedures.
bool RegisterObjectProcs();
bool RegisterStaticsProcs();
bool RegisterNumberProcs();
bool RegisterStringProcs();
bool RegisterUnicodeStringProcs();
bool RegisterBinDataProcs();
bool RegisterRawPointerProcs();
bool RegisterArrayProcs();
bool RegisterDictProcs();
bool RegisterDictIteratorProcs();

}  // namespace NPOSObjectImpl
