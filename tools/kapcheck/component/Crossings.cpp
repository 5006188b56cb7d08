// SPDX-License-Identifier: MIT
#include "component/Crossings.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <unwind.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <typeinfo>
#include <utility>

namespace KAPCheck {

namespace {

// The code of a library: from its first address to its last.
struct Code {
  std::uintptr_t fBegin = 0, fEnd = 0;
  bool Contains(std::uintptr_t address) const { return fBegin <= address && address < fEnd; }
};

Code CodeOf(const void* address) {
  dl_find_object found;
  if (!address || ::_dl_find_object(const_cast<void*>(address), &found) != 0) return {};
  return {reinterpret_cast<std::uintptr_t>(found.dlfo_map_start),
          reinterpret_cast<std::uintptr_t>(found.dlfo_map_end)};
}

// Written while no other thread runs code of the component.
Code gComponent, gClient;
std::atomic<bool> gIsWatching = false;
std::mutex gMutex;
std::string gCrossing;

// The exception that the thread has thrown last from the component; null when it was not.
thread_local constinit const void* tThrown = nullptr;

// Whether the component is what calls. Its calls may go through the C++ run time; what the client
// calls itself does not.
bool IsFromComponent() {
  bool isFrom = false;
  const auto visit = [](_Unwind_Context* context, void* result) {
    const auto address = static_cast<std::uintptr_t>(_Unwind_GetIP(context)) - 1;
    if (gClient.Contains(address)) return _URC_END_OF_STACK;
    if (!gComponent.Contains(address)) return _URC_NO_REASON;
    *static_cast<bool*>(result) = true;
    return _URC_END_OF_STACK;
  };
  _Unwind_Backtrace(visit, &isFrom);
  return isFrom;
}

void NoteThrow(const void* object) {
  if (gIsWatching) tThrown = IsFromComponent() ? object : nullptr;
}

std::string TextOf(void* object) {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (type && typeid(std::exception).__do_catch(type, &object, 1)) {
    return static_cast<const std::exception*>(object)->what();
  }
  return "(not a std::exception)";
}

// After the catch has begun. The object follows its header.
void NoteCatch(void* header, const void* caller) {
  void* const object = static_cast<_Unwind_Exception*>(header) + 1;
  if (!gIsWatching || object != tThrown) return;
  if (!gClient.Contains(reinterpret_cast<std::uintptr_t>(caller))) return;
  tThrown = nullptr;
  const std::string text = TextOf(object);
  const std::lock_guard lock(gMutex);
  if (gCrossing.empty()) gCrossing = text;
}

template <class Proc>
Proc* Original(const char* name) {
  return reinterpret_cast<Proc*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

void WatchCrossings(const void* component, const void* client) {
  gIsWatching = false;
  gComponent = CodeOf(component);
  gClient = CodeOf(client);
  gIsWatching = component && client;
}

std::string TakeCrossing() {
  const std::lock_guard lock(gMutex);
  return std::exchange(gCrossing, {});
}

}  // namespace KAPCheck

namespace __cxxabiv1 {

extern "C" [[gnu::visibility("default")]] void __cxa_throw(void* object, std::type_info* type,
                                                           void (*destroy)(void*)) {
  using Throw = void(void*, std::type_info*, void (*)(void*));
  static Throw* const original = KAPCheck::Original<Throw>("__cxa_throw");
  KAPCheck::NoteThrow(object);
  original(object, type, destroy);
  __builtin_unreachable();
}

extern "C" [[gnu::visibility("default")]] void* __cxa_begin_catch(void* exception) noexcept {
  static auto* const original = KAPCheck::Original<void*(void*)>("__cxa_begin_catch");
  void* const object = original(exception);
  KAPCheck::NoteCatch(exception, __builtin_return_address(0));
  return object;
}

}  // namespace __cxxabiv1
