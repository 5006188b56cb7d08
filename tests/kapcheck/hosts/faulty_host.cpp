// SPDX-License-Identifier: MIT
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "kap/KAPHostInterfaces.h"
#include "kapcheck/HostPlugin.h"

// The reference host with one procedure replaced by one that breaks its contract. The environment
// variable KAP_FAULT names the fault: one of the table, "nothing:INTERFACE, METHOD" for a procedure
// that does nothing, or "only_binder" for a host without interfaces.

namespace {

using namespace KAP_T_MT;

KAPGetProcAddressProc gReference = nullptr;

void* FindInBinder(const char* interfaceName, const char* methodName, const char* procName) {
  const bool isBinder =
      std::strncmp(interfaceName, "KAP", 4) == 0 || std::strncmp(interfaceName, "KAPProbe", 8) == 0;
  return isBinder ? gReference(interfaceName, methodName, procName) : nullptr;
}

constexpr std::chrono::microseconds kPause{200};

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

// What a layer needs to remember.
bool gIsWiped = false;
const char* gKeptName = nullptr;
KAPClientReadProc gRead = nullptr;

// A new stream over a copy of the bytes of another one.
KAPError* Copy(KAPContainer** out, KAPContainer* stream) {
  using Simple = KAPSimpleStreamInterface;
  using Rewindable = KAPRewindableStreamInterface;
  using Positionable = KAPPositionableStreamInterface;
  long position = 0;
  KAPError* error = Base<KAPStreamFactoryInterface, "NewPositionableMemoryStream">()(out);
  if (!error) error = Base<Positionable, "Mark">()(&position, stream);
  if (!error) error = Base<Rewindable, "Rewind">()(stream);
  unsigned char byte = 0;
  for (std::size_t count = 1; !error && count != 0;) {
    error = Base<Simple, "Read">()(&count, stream, &byte, 1);
    if (!error) error = Base<Simple, "Write">()(*out, &byte, count);
  }
  if (!error) error = Base<Positionable, "Seek">()(stream, position, 0);
  return error;
}

int NoRegistration(const char*, const char*, const char*, void*) { return 0; }

using Binder = KAPBinderInterface;
using Strings = KAPStringInterface;
using Errors = KAPErrorInterface;
using Memory = KAPMemoryInterface;
using Containers = KAPContainerInterface;
using Streams = KAPStreamFactoryInterface;
using Cache = KAPCacheInterface;
using Simple = KAPSimpleStreamInterface;
using Rewindable = KAPRewindableStreamInterface;
using Positionable = KAPPositionableStreamInterface;
using Progresses = KAPProgressInterface;
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
    TFault<Binder, "KAPRegisterProcAddress",
           [](const char* interfaceName, const char* method, const char* name, void* proc) {
             if (method && std::strlen(method) == 1) gKeptName = method;
             return Base<Binder, "KAPRegisterProcAddress">()(interfaceName, method, name, proc);
           }>("name_kept"),
    TFault<Binder, "KAPRegisterProcAddress",
           [](const char* interfaceName, const char* method, const char* name, void* proc) {
             Base<Binder, "KAPRegisterProcAddress">()(interfaceName, method, name, proc);
             return 1;
           }>("null_registered"),
    TFault<Binder, "KAPUnregisterInterface", [](const char*) { gIsWiped = true; }>(
        "unregisters_all"),
    TFault<Binder, "KAPReportError", [](const char*) { std::abort(); }>("report_crashes"),
    TFault<Binder, "KAPIsMultiThreaded",
           [] {
             static int calls = 0;
             return ++calls % 2;
           }>("threads_now_and_then"),
    TFault<Strings, "GetCString",
           [](KAPStringAtom* atom) -> const char* {
             const char* const text = Base<Strings, "GetCString">()(atom);
             return text ? ::strdup(text) : nullptr;
           }>("texts_not_interned"),
    TFault<Strings, "GetCString",
           [](KAPStringAtom* atom) { return atom ? Base<Strings, "GetCString">()(atom) : ""; }>(
        "text_of_null"),
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
    TFault<Memory, "GetBlockSize", [](void*) { return std::size_t{1} << 40; }>("huge_blocks"),
    TFault<Memory, "Alloc",
           [](std::size_t size) { return Base<Memory, "Alloc">()(size >> 62 ? 16 : size); }>(
        "promised_blocks"),
    TFault<Memory, "Realloc",
           [](void* block, std::size_t size) {
             void* const resized = Base<Memory, "Realloc">()(block, size);
             if (!resized) std::memset(block, 0, 8);
             return resized;
           }>("block_changed"),
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
    // A count without atomic increments. The pauses make threads meet, also on a busy machine: all
    // of them read the first count, and each holds its reference when the others write theirs.
    TFault<Containers, "AddRef",
           [](KAPContainer* container) {
             auto* const count =
                 const_cast<volatile int*>(Base<Containers, "DebugGetRefCountAddr">()(container));
             if (!count || *count <= 0) return false;
             const int before = *count;
             std::this_thread::sleep_for(kPause);
             *count = before + 1;
             std::this_thread::sleep_for(kPause);
             return true;
           }>("references_race"),
    TFault<Containers, "NewFullContainer",
           [](KAPContainer** out, void* instance, KAPStringAtom* name, KAPStringAtom* interface,
              KAPDeleteProc free) {
             if (!free) free = [](void*) { std::abort(); };
             return Base<Containers, "NewFullContainer">()(out, instance, name, interface, free);
           }>("null_delete_called"),
    TFault<Containers, "GetInstance",
           [](KAPContainer* container, KAPStringAtom* name) -> void* {
             void* const found = Base<Containers, "GetInstance">()(container, name);
             return found ? found : &gIsWiped;
           }>("instance_out_of_nothing"),
    TFault<Containers, "GetSignature",
           [](KAPContainer* container) {
             KAPStringAtom* const found = Base<Containers, "GetSignature">()(container);
             return found ? found : Base<Strings, "NewStringAtom">()("");
           }>("signature_of_nothing"),
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
    TFault<Streams, "NewClientSimpleStream",
           [](KAPSimpleStream** out, void* client, KAPClientReadProc read, KAPClientWriteProc write,
              KAPClientDeleteProc deleteClient) {
             gRead = read;
             const auto readOnce = [](std::size_t* count, void* object, unsigned char* buffer,
                                      std::size_t size) {
               KAPError* const error = gRead ? gRead(count, object, buffer, size) : nullptr;
               if (!gRead) *count = 0;
               gRead = nullptr;
               return error;
             };
             return Base<Streams, "NewClientSimpleStream">()(out, client, readOnce, write,
                                                             deleteClient);
           }>("short_read_ends"),
    TFault<Simple, "Read",
           [](std::size_t* outCount, KAPContainer* stream, unsigned char* buffer,
              std::size_t count) {
             KAPError* const error = Base<Simple, "Read">()(outCount, stream, buffer, count);
             if (!error) *outCount = count + 1;
             return error;
           }>("read_too_much"),
    TFault<Simple, "Read",
           [](std::size_t* outCount, KAPContainer* stream, unsigned char* buffer,
              std::size_t count) {
             KAPError* const error = Base<Simple, "Read">()(outCount, stream, buffer, count);
             if (error && outCount) *outCount = count + 1;
             Base<Errors, "Release">()(error);
             return static_cast<KAPError*>(nullptr);
           }>("read_never_fails"),
    TFault<Rewindable, "Rewind", [](KAPContainer*) -> KAPError* { return nullptr; }>(
        "rewind_ignored"),
    TFault<Positionable, "CreateIndependentlyPositionableStream", &Copy>("view_is_copy"),
    TFault<Rewindable, "CreateIndependentlyRewindableStream",
           [](KAPContainer** out, KAPContainer* stream) -> KAPError* {
             Base<Containers, "AddRef">()(stream);
             *out = stream;
             return nullptr;
           }>("view_is_itself"),
    TFault<Positionable, "Seek",
           [](KAPContainer* stream, long offset, int) {
             return Base<Positionable, "Seek">()(stream, offset, 0);
           }>("seek_from_start"),
    TFault<KAPSharedBuffInterface, "DeleteUnowned",
           [](KAPSharedBuffer* buffer) { Base<KAPSharedBuffInterface, "Release">()(buffer); }>(
        "unowned_releases"),
    TFault<KAPSharedBuffInterface, "NewBuffer",
           [](std::size_t size, void* data, KAPDeleteProc deleteData, KAPGrowProc grow,
              void* clientData) {
             const auto buffer = Base<KAPSharedBuffInterface, "NewBuffer">()(size, data, deleteData,
                                                                             grow, clientData);
             if (!data) std::memset(Base<KAPSharedBuffInterface, "GetBuffer">()(buffer), 7, size);
             return buffer;
           }>("buffer_not_zeroed"),
    TFault<Cache, "MarkNoPurge", [](KAPCacheID*, void*) { return true; }>("mark_ignored"),
    TFault<Cache, "Attach",
           [](KAPCacheID* id) -> void* {
             void* const item = Base<Cache, "Attach">()(id);
             return item ? item : &gIsWiped;
           }>("purged_item"),
    TFault<Cache, "DeleteCacheSet",
           [](KAPCacheSet* set) { set ? Base<Cache, "DeleteCacheSet">()(set) : std::abort(); }>(
        "set_of_null_crashes"),
    TFault<Cache, "DeleteCachePurge",
           [](KAPCachePurge* purge) {
             purge ? Base<Cache, "DeleteCachePurge">()(purge) : std::abort();
           }>("purge_of_null_crashes"),
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
    TFault<Progresses, "NewClientProgress",
           [](void* client, KAPProgressUpdateProc update, KAPProgressDeleteProc deleteClient) {
             const auto made =
                 Base<Progresses, "NewClientProgress">()(client, update, deleteClient);
             return made ? made : Base<Progresses, "NewNullProgress">()();
           }>("progress_of_null"),
    TFault<Progresses, "Update",
           [](KAPProgress* progress, float fraction, const char* text, int flag) {
             Base<Errors, "Release">()(
                 Base<Progresses, "Update">()(progress, fraction, text, flag));
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

// Clients look the methods of streams up through the stream.
KAPError* GetMethod(void** out, KAPContainer* container, KAPStringAtom* method, KAPStringAtom* proc,
                    int optional) {
  KAPError* const error = Base<Containers, "GetMethod">()(out, container, method, proc, optional);
  const bool isFaulty =
      !error && *out && std::strcmp(Base<Strings, "GetCString">()(method), gFault->fMethod) == 0;
  if (isFaulty) *out = gFault->fProc();
  return error;
}

bool Is(const char* interfaceName, const char* methodName, const char* one, const char* other) {
  return std::strcmp(interfaceName, one) == 0 && std::strcmp(methodName, other) == 0;
}

void* GetProc(const char* interfaceName, const char* methodName, const char* procName) {
  if (gIsWiped) return nullptr;
  if (gKeptName && std::strcmp(methodName, "M") == 0) methodName = gKeptName;
  if (Is(interfaceName, methodName, gFault->fInterface, gFault->fMethod)) return gFault->fProc();
  const bool isOfStreams = std::strstr(gFault->fInterface, "StreamInterface");
  if (isOfStreams && Is(interfaceName, methodName, Containers::kName, "GetMethod")) {
    return reinterpret_cast<void*>(&GetMethod);
  }
  return gReference(interfaceName, methodName, procName);
}

}  // namespace

extern "C" [[gnu::visibility("default")]] KAPGetProcAddressProc KAPCheckHost(
    KAPGetProcAddressProc reference) {
  gReference = reference;
  const char* const name = std::getenv("KAP_FAULT");
  if (name && std::string(name) == "only_binder") return &FindInBinder;
  gFault = name ? FindFault(name) : nullptr;
  return gFault ? &GetProc : nullptr;
}
