// SPDX-License-Identifier: MIT
#pragma once

#include "pos/POSInterfaceSets.h"
#include "posimpl/procs/RegisteredSet.h"

namespace NPOSObjectImpl {

// Registers the interfaces of POSInterfaceSet in its order. Returns false at the first registration
// that fails; those before it stay registered.
bool RegisterPOSDictImpl();
void UnregisterPOSDictImpl();

// Defined beside the procedures.
template <>
bool RegisterProcs<KAP_T_MT::POSObjectInterface>();
template <>
bool RegisterProcs<KAP_T_MT::POSObjectStatics>();
template <>
bool RegisterProcs<KAP_T_MT::POSNumberInterface>();
template <>
bool RegisterProcs<KAP_T_MT::POSStringInterface>();
template <>
bool RegisterProcs<KAP_T_MT::POSUnicodeStringInterface>();
template <>
bool RegisterProcs<KAP_T_MT::POSBinDataInterface>();
template <>
bool RegisterProcs<KAP_T_MT::POSRawPointerInterface>();
template <>
bool RegisterProcs<KAP_T_MT::POSArrayInterface>();
template <>
bool RegisterProcs<KAP_T_MT::POSDictInterface>();
template <>
bool RegisterProcs<KAP_T_MT::POSDictIteratorInterface>();

}  // namespace NPOSObjectImpl
