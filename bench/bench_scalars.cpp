// SPDX-License-Identifier: MIT

// Creating and releasing scalars of each kind; appending to an array.

#include <cstring>
#include <nlohmann/json.hpp>
#include <vector>

#include "BenchHost.h"
#include "posimpl/objects/Array.h"
#include "posimpl/objects/BinData.h"
#include "posimpl/objects/Number.h"
#include "posimpl/objects/RawPointer.h"
#include "posimpl/objects/String.h"
#include "posimpl/objects/UnicodeString.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;
using Json = nlohmann::json;
namespace Impl = NPOSObjectImpl;

constexpr double kTarget = 1.5;
constexpr double kAppendTarget = 1.4;
constexpr const char* kText = "temperature";
constexpr unsigned short kUnits[] = {'t', 'e', 'm', 'p', 'e', 'r', 'a', 't', 'u', 'r', 'e', 0};
constexpr unsigned char kBytes[64] = {1};

// ---- Scalars: an iteration creates and releases one ----

template <class Make>
void MakeScalars(State& state, Make make) {
  for (auto _ : state) {
    const Reference object(make(), KAPAdopt());
    DoNotOptimize(object.Handle());
  }
  SetItems(state);
}

void OurNumber(State& state) {
  MakeScalars(state, [] { return Numbers::Call<"NewPOSNumber">(1.5); });
}
void OurString(State& state) {
  MakeScalars(state, [] { return Strings::Call<"NewPOSString">(kText); });
}
void OurUnicodeString(State& state) {
  MakeScalars(state, [] { return UnicodeStrings::Call<"NewPOSUnicodeString">(kUnits); });
}
void OurBinData(State& state) {
  const CKAPStringAtom typeName(kText);
  MakeScalars(state, [] { return BinDatas::Call<"NewPOSBinData">(kText, kBytes, sizeof kBytes); });
}
void OurRawPointer(State& state) {
  MakeScalars(state, [] {
    return RawPointers::Call<"NewPOSRawPointer">(static_cast<void*>(nullptr), nullptr);
  });
}
void WrappedNumber(State& state) {
  for (auto _ : state) {
    const KAP_T_MT::CPOSNumber number(1.5);
    DoNotOptimize(number.Handle());
  }
  SetItems(state);
}

// The state that the deletion procedures of the floor need.
struct Held {
  KAPStringAtom* fAtom;
  void* fBlock;
};

void FreeWithAtom(void* instance) {
  Host().fDeleteAtom(static_cast<Held*>(instance)->fAtom);
  Host().fFree(instance);
}
void FreeWithBlock(void* instance) {
  Host().fFree(static_cast<Held*>(instance)->fBlock);
  Host().fFree(instance);
}
void FreeWithBoth(void* instance) {
  Host().fFree(static_cast<Held*>(instance)->fBlock);
  FreeWithAtom(instance);
}

// Creates and releases containers; `fill` creates the contents of an instance.
template <std::size_t Size, class Fill>
void MakeFloor(State& state, KAPDeleteProc deleteInstance, Fill fill) {
  const HostCalls host = Host();
  for (auto _ : state) {
    void* instance = host.fAlloc(Size);
    DoNotOptimize(instance);
    fill(host, *static_cast<Held*>(instance));
    KAPContainer* container = nullptr;
    host.fNewContainer(&container, instance, host.fInstanceName.Handle(),
                       host.fInterfaceName.Handle(), deleteInstance);
    host.fRelease(container);
  }
  SetItems(state);
  SetTarget(state, kTarget);
}

void NewAtom(const HostCalls& host, Held& held) { held.fAtom = host.fNewAtom(kText); }
void NewBlock(const HostCalls& host, Held& held, const void* bytes, std::size_t size) {
  held.fBlock = host.fAlloc(size);
  std::memcpy(held.fBlock, bytes, size);
}

void FloorNumber(State& state) {
  MakeFloor<sizeof(Impl::Number)>(state, Host().fFree, [](const HostCalls&, Held&) {});
}
void FloorString(State& state) { MakeFloor<sizeof(Impl::String)>(state, &FreeWithAtom, &NewAtom); }
void FloorUnicodeString(State& state) {
  MakeFloor<sizeof(Impl::UnicodeString)>(
      state, &FreeWithBlock,
      [](const HostCalls& host, Held& held) { NewBlock(host, held, kUnits, sizeof kUnits); });
}
void FloorBinData(State& state) {
  const CKAPStringAtom typeName(kText);
  MakeFloor<sizeof(Impl::BinData)>(state, &FreeWithBoth, [](const HostCalls& host, Held& held) {
    NewAtom(host, held);
    NewBlock(host, held, kBytes, sizeof kBytes);
  });
}
void FloorRawPointer(State& state) {
  MakeFloor<sizeof(Impl::RawPointer)>(state, Host().fFree, [](const HostCalls&, Held&) {});
}

template <class Make>
void MakeJson(State& state, Make make) {
  for (auto _ : state) {
    const Json value = make();
    DoNotOptimize(&value);
    benchmark::ClobberMemory();
  }
  SetItems(state);
}

void JsonNumber(State& state) {
  MakeJson(state, [] { return Json(1.5); });
}
void JsonString(State& state) {
  MakeJson(state, [] { return Json(kText); });
}
void JsonBinary(State& state) {
  MakeJson(state, [] { return Json::binary({kBytes, kBytes + sizeof kBytes}); });
}

// The text is an atom already.
template <void (*Measure)(State&)>
void WithAtom(State& state) {
  const CKAPStringAtom existing(kText);
  Measure(state);
}

// ---- Appending n values to a new array, including its release ----

std::vector<Reference> NewNumbers(std::int64_t count) {
  std::vector<Reference> numbers;
  for (std::int64_t i = 0; i < count; ++i) {
    numbers.push_back(Made(Numbers::Call<"NewPOSNumber">(static_cast<double>(i))));
  }
  return numbers;
}

void OurAppend(State& state) {
  const std::vector<Reference> values = NewNumbers(state.range(0));
  for (auto _ : state) {
    const Reference array(Arrays::Call<"NewPOSArray">(), KAPAdopt());
    for (const Reference& value : values) Arrays::Call<"Append">(array.Handle(), value.Handle());
  }
  SetItems(state, state.range(0));
}

struct FloorArray {
  KAPContainer** fElements;
  std::size_t fCount;
};

void FreeArray(void* instance) {
  const HostCalls& host = Host();
  const auto* array = static_cast<FloorArray*>(instance);
  for (std::size_t i = 0; i < array->fCount; ++i) host.fRelease(array->fElements[i]);
  host.fFree(array->fElements);
  host.fFree(instance);
}

void FloorAppend(State& state) {
  const std::vector<Reference> values = NewNumbers(state.range(0));
  const HostCalls& host = Host();
  for (auto _ : state) {
    auto* array = new (host.fAlloc(sizeof(Impl::Array))) FloorArray{nullptr, 0};
    KAPContainer* container = nullptr;
    host.fNewContainer(&container, array, host.fInstanceName.Handle(), host.fInterfaceName.Handle(),
                       &FreeArray);
    std::size_t capacity = 0;
    for (const Reference& value : values) {
      if (array->fCount == capacity) {
        capacity = capacity == 0 ? 4 : 2 * capacity;
        array->fElements = static_cast<KAPContainer**>(
            host.fRealloc(array->fElements, capacity * sizeof(KAPContainer*)));
      }
      host.fAddRef(value.Handle());
      array->fElements[array->fCount++] = value.Handle();
    }
    host.fRelease(container);
  }
  SetItems(state, state.range(0));
  SetTarget(state, kAppendTarget);
}

void JsonAppend(State& state) {
  const std::vector<Json> values(static_cast<std::size_t>(state.range(0)), Json(1.5));
  for (auto _ : state) {
    Json array = Json::array();
    for (const Json& value : values) array.push_back(value);
    DoNotOptimize(&array);
    benchmark::ClobberMemory();
  }
  SetItems(state, state.range(0));
}

}  // namespace

void RegisterBenchmarks() {
  using benchmark::RegisterBenchmark;
  RegisterBenchmark("number/ours", &OurNumber);
  RegisterBenchmark("number/nlohmann", &JsonNumber);
  RegisterBenchmark("number/floor", &FloorNumber);
  RegisterBenchmark("number_by_class/ours", &WrappedNumber);
  RegisterBenchmark("number_by_class/floor", &FloorNumber);
  RegisterBenchmark("string_existing/ours", &WithAtom<&OurString>);
  RegisterBenchmark("string_existing/nlohmann", &JsonString);
  RegisterBenchmark("string_existing/floor", &WithAtom<&FloorString>);
  RegisterBenchmark("string_new/ours", &OurString);
  RegisterBenchmark("string_new/nlohmann", &JsonString);
  RegisterBenchmark("string_new/floor", &FloorString);
  RegisterBenchmark("unicode/ours", &OurUnicodeString);
  RegisterBenchmark("unicode/floor", &FloorUnicodeString);
  RegisterBenchmark("binary/ours", &OurBinData);
  RegisterBenchmark("binary/nlohmann", &JsonBinary);
  RegisterBenchmark("binary/floor", &FloorBinData);
  RegisterBenchmark("raw_pointer/ours", &OurRawPointer);
  RegisterBenchmark("raw_pointer/floor", &FloorRawPointer);
  for (const std::int64_t count : {1'000, 100'000}) {
    RegisterBenchmark("append/ours", &OurAppend)->Arg(count);
    RegisterBenchmark("append/nlohmann", &JsonAppend)->Arg(count);
    RegisterBenchmark("append/floor", &FloorAppend)->Arg(count);
  }
}

}  // namespace Bench
