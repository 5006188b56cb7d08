// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "kap/KAPHostInterfaces.h"
#include "kapcheck/HostPlugin.h"

// The reference host with one procedure replaced by one that breaks its contract. The environment
// variable KAP_FAULT names the fault: one of the table, or "nothing:INTERFACE, METHOD" for a
// procedure that does nothing.

namespace {

using namespace KAP_T_MT;

KAPGetProcAddressProc gReference = nullptr;

// The procedure of the reference host.
template <class Interface, TKAPName Method>
auto Base() {
  constexpr auto entry = Interface::kEntries[Interface::template kSlot<Method>];
  return reinterpret_cast<typename Interface::template Proc<Method>>(
      gReference(Interface::kName, entry.fMethodName, entry.fProcName));
}

struct Fault {
  const char* fName;
  const char* fInterface;
  const char* fMethod;
  void* (*fProc)();
};

// A row: `proc` has the type that the interface declares.
template <class Interface, TKAPName Method, auto proc>
constexpr Fault TFault(const char* name) {
  return {name, Interface::kName,
          Interface::kEntries[Interface::template kSlot<Method>].fMethodName, [] {
            const typename Interface::template Proc<Method> typed = proc;
            return reinterpret_cast<void*>(typed);
          }};
}

// A procedure that does nothing and returns 0; it sets its result place to 0.
template <class Proc>
struct TNothing;
template <class Result, class... Args>
struct TNothing<Result (*)(Args...)> {
  static Result Call(Args... args) {
    if constexpr (sizeof...(Args) != 0) {
      const auto first = std::get<0>(std::tuple(args...));
      using First = std::remove_const_t<decltype(first)>;
      using Value = std::remove_pointer_t<First>;
      constexpr bool isPlace = std::is_pointer_v<Value> || std::is_same_v<Value, unsigned long>;
      if constexpr (std::is_pointer_v<First> && isPlace) {
        if (first) *first = Value();
      }
    }
    return Result();
  }
};

template <class Interface, std::size_t... kSlots>
void AddNothings(std::vector<Fault>& all, std::index_sequence<kSlots...>) {
  (all.push_back({"nothing", Interface::kName, Interface::kEntries[kSlots].fMethodName,
                  [] {
                    using Proc = typename Interface::template ProcAt<kSlots>;
                    return reinterpret_cast<void*>(&TNothing<Proc>::Call);
                  }}),
   ...);
}

int NoRegistration(const char*, const char*, const char*, void*) { return 0; }

using Binder = KAPBinderInterface;
using Strings = KAPStringInterface;
using Errors = KAPErrorInterface;
using Memory = KAPMemoryInterface;
using Containers = KAPContainerInterface;
using Streams = KAPStreamFactoryInterface;
using Cache = KAPCacheInterface;
using Filters = KAPFilterInterface;

const Fault kFaults[] = {
    TFault<Binder, "KAPRegisterProcAddress", &NoRegistration>("no_registration"),
    TFault<Binder, "KAPRegisterProcAddress",
           [](const char* interfaceName, const char* method, const char* name, void* proc) {
             if (proc && interfaceName && gReference(interfaceName, method, name)) return 1;
             return Base<Binder, "KAPRegisterProcAddress">()(interfaceName, method, name, proc);
           }>("no_replacement"),
    TFault<Binder, "KAPGetUnregisterCountAddr",
           [] {
             static unsigned long counter = 0;
             return &counter;
           }>("still_counter"),
    TFault<Strings, "GetCString",
           [](KAPStringAtom* atom) -> const char* {
             const char* const text = Base<Strings, "GetCString">()(atom);
             return text ? ::strdup(text) : nullptr;
           }>("texts_not_interned"),
    TFault<Strings, "NewStringAtom",
           [](const char* text) { return Base<Strings, "NewStringAtom">()(text ? text : ""); }>(
        "atom_of_null"),
    TFault<Strings, "DeleteStringAtom", [](KAPStringAtom*) {}>("atoms_leak"),
    TFault<Errors, "GetComponent", [](KAPError*) -> KAPStringAtom* { return nullptr; }>(
        "no_component"),
    TFault<Errors, "GetID",
           [](KAPError* error) -> long {
             return static_cast<int>(Base<Errors, "GetID">()(error));
           }>("short_code"),
    TFault<Errors, "NewError",
           [](const char* message, const char* component, long code, void* data, KAPDeleteProc) {
             return Base<Errors, "NewError">()(message, component, code, data, nullptr);
           }>("data_not_freed"),
    TFault<Memory, "GetBlockSize", [](void*) -> std::size_t { return 16; }>("small_blocks"),
    TFault<Memory, "Realloc",
           [](void* block, std::size_t size) -> void* {
             void* const resized = Base<Memory, "Realloc">()(block, size);
             return resized ? std::memset(resized, 0, size) : nullptr;
           }>("bytes_lost"),
    TFault<Containers, "AddRef",
           [](KAPContainer* container) {
             Base<Containers, "AddRef">()(container);
             return true;
           }>("reference_always"),
    TFault<Containers, "CloneContainer",
           [](KAPContainer** out, KAPContainer* container) {
             if (!out || !container) return Base<Containers, "CloneContainer">()(out, container);
             Base<Containers, "AddRef">()(container);
             *out = container;
             return static_cast<KAPError*>(nullptr);
           }>("clone_is_itself"),
    TFault<Containers, "NGetInstance",
           [](void** out, KAPContainer* container, KAPStringAtom* name) {
             KAPError* const error = Base<Containers, "NGetInstance">()(out, container, name);
             return error || *out ? error : Base<Errors, "GetCoreError">()(0);
           }>("error_without_instance"),
    TFault<Containers, "DecrementWithoutDelete",
           [](KAPContainer* container) { Base<Containers, "Release">()(container); }>(
        "decrement_deletes"),
    TFault<Containers, "GetOffsetToPrimaryInstance",
           [] { return Base<Containers, "GetOffsetToPrimaryInstance">()() + 8; }>("wrong_offset"),
    TFault<Streams, "NewPositionableBufferStream",
           [](KAPPositionableStream** out, const unsigned char* data, std::size_t size) {
             KAPError* error = Base<Streams, "NewPositionableMemoryStream">()(out);
             if (!error) error = Base<KAPSimpleStreamInterface, "Write">()(*out, data, size);
             if (!error) error = Base<KAPRewindableStreamInterface, "Rewind">()(*out);
             return error;
           }>("writable_buffer"),
    TFault<Streams, "NewPositionableFileStream",
           [](KAPPositionableStream** out, const char* path, const char* mode) {
             KAPError* const error = Base<Streams, "NewPositionableFileStream">()(out, path, mode);
             if (!error) return error;
             Base<Errors, "Release">()(error);
             return Base<Streams, "NewPositionableMemoryStream">()(out);
           }>("file_out_of_nothing"),
    TFault<Streams, "NewClientSimpleStream",
           [](KAPSimpleStream** out, void* client, KAPClientReadProc read, KAPClientWriteProc write,
              KAPClientDeleteProc) {
             return Base<Streams, "NewClientSimpleStream">()(
                 out, client, read, write, [](void*) -> KAPError* { return nullptr; });
           }>("client_not_deleted"),
    TFault<KAPSharedBuffInterface, "NewBuffer",
           [](std::size_t size, void* data, KAPDeleteProc deleteData, KAPGrowProc grow,
              void* clientData) {
             const auto buffer = Base<KAPSharedBuffInterface, "NewBuffer">()(size, data, deleteData,
                                                                             grow, clientData);
             if (!data) std::memset(Base<KAPSharedBuffInterface, "GetBuffer">()(buffer), 7, size);
             return buffer;
           }>("buffer_not_zeroed"),
    TFault<Cache, "MarkNoPurge", [](KAPCacheID*, void*) { return true; }>("mark_ignored"),
    TFault<Cache, "UpdateCost", [](KAPCacheID*, void*, std::size_t) {}>("cost_ignored"),
    TFault<Cache, "RemoveClientPurge", [](KAPClientPurgeProc, int) {}>("purge_not_removed"),
    TFault<Cache, "PurgeNextBlock", [](KAPCachePurge*) -> bool { std::abort(); }>("purge_crashes"),
    TFault<Cache, "GetCacheTime",
           []() -> unsigned long {
             for (volatile bool isOver = false; !isOver;) {
             }
             return 0;
           }>("time_hangs"),
    TFault<Filters, "SetDataSink", [](KAPFilter*, KAPDataSink*) -> KAPError* { return nullptr; }>(
        "target_ignored"),
    TFault<Filters, "GetChainState",
           [](unsigned long* out, KAPFilter*) -> KAPError* {
             *out = 0;
             return nullptr;
           }>("chain_always_open"),
    TFault<Filters, "IsFilter",
           [](KAPDataSink*) -> bool { throw std::runtime_error("thrown by the host"); }>(
        "filter_throws"),
    TFault<KAPProgressInterface, "Update",
           [](KAPProgress* progress, float fraction, const char* text, int flag) {
             Base<Errors, "Release">()(
                 Base<KAPProgressInterface, "Update">()(progress, fraction, text, flag));
             return static_cast<KAPError*>(nullptr);
           }>("progress_never_stops")};

const Fault* FindFault(const std::string& name) {
  for (const Fault& fault : kFaults) {
    if (name == fault.fName) return &fault;
  }
  static std::vector<Fault> nothings;
  KAPHostInterfaceSet::ForEach([]<class Interface>() {
    AddNothings<Interface>(nothings, std::make_index_sequence<Interface::kCount>());
  });
  for (const Fault& fault : nothings) {
    if (name == std::string("nothing:") + fault.fInterface + ", " + fault.fMethod) return &fault;
  }
  return nullptr;
}

const Fault* gFault = nullptr;

void* GetProc(const char* interfaceName, const char* methodName, const char* procName) {
  const bool isFaulty = gFault && interfaceName && methodName &&
                        std::strcmp(interfaceName, gFault->fInterface) == 0 &&
                        std::strcmp(methodName, gFault->fMethod) == 0;
  return isFaulty ? gFault->fProc() : gReference(interfaceName, methodName, procName);
}

}  // namespace

extern "C" [[gnu::visibility("default")]] KAPGetProcAddressProc KAPCheckHost(
    KAPGetProcAddressProc reference) {
  gReference = reference;
  const char* const name = std::getenv("KAP_FAULT");
  gFault = name ? FindFault(name) : nullptr;
  return gFault ? &GetProc : nullptr;
}
