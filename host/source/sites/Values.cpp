// SPDX-License-Identifier: MIT
#include "sites/Values.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>

#include "atoms/Atom.h"
#include "base/Quoted.h"
#include "containers/Containers.h"
#include "errors/Errors.h"

namespace KAPHost {

namespace {

constexpr const char* kNull = "null";

// Whatever the locale says.
std::string Decimal(double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.begin(), text.end(), value, std::chars_format::general, 12);
  return {text.data(), end.ptr};
}

std::string Hexadecimal(const char* prefix, std::uint64_t value) {
  std::array<char, 16> text{};
  const auto end = std::to_chars(text.begin(), text.end(), value, 16);
  return prefix + std::string(text.data(), end.ptr);
}

template <class Type>
std::uint64_t Extended(std::uint64_t bits) {
  return static_cast<std::uint64_t>(static_cast<long>(static_cast<Type>(bits)));
}

std::string DescribeContainer(KAPContainer* container, const ContainerKind& kindOf) {
  if (!container->fCount.IsAlive()) return "dying container";
  const char* const signature = container->fSignature;
  std::string kind = kindOf ? kindOf(signature, container) : std::string();
  if (!kind.empty()) return kind;
  return signature ? "container " + Quoted(signature) : "container";
}

}  // namespace

std::string DescribeValue(const WatchedValue& value, const ContainerKind& kindOf) {
  const bool isNull = value.fBits == 0;
  switch (value.fKind) {
    case ValueKind::kNothing:
      return "";
    case ValueKind::kBool:
      return value.fBits != 0 ? "true" : "false";
    case ValueKind::kSigned:
      return std::to_string(static_cast<long>(value.fBits));
    case ValueKind::kUnsigned:
      return std::to_string(value.fBits);
    case ValueKind::kReal:
      return Decimal(std::bit_cast<double>(value.fBits));
    case ValueKind::kOther:
      return "...";
    case ValueKind::kText:
      return isNull ? kNull : Quoted(value.As<const char*>());
    case ValueKind::kAtom:
      return isNull ? kNull : Quoted(value.As<KAPStringAtom*>()->Text());
    case ValueKind::kError:
      return isNull ? kNull : "error " + Quoted(MessageOf(*value.As<KAPError*>()));
    case ValueKind::kContainer:
      return isNull ? kNull : DescribeContainer(value.As<KAPContainer*>(), kindOf);
    case ValueKind::kBuffer:
      return isNull ? kNull : "buffer";
    case ValueKind::kPlace:
      return isNull ? kNull : Hexadecimal("&", value.fBits);
    case ValueKind::kPointer:
      return isNull ? kNull : Hexadecimal("0x", value.fBits);
  }
  return {};
}

WatchedValue ValueAt(const WatchedValue& place) noexcept {
  WatchedValue value{.fKind = place.fPlaced};
  if (place.fBits == 0) return {};
  std::memcpy(&value.fBits, place.As<const void*>(), std::min<std::size_t>(place.fSize, 8));
  if (place.fPlaced == ValueKind::kReal && place.fSize == sizeof(float)) {
    value.fBits = std::bit_cast<std::uint64_t>(
        static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(value.fBits))));
  }
  if (place.fPlaced == ValueKind::kSigned) {
    if (place.fSize == sizeof(int)) value.fBits = Extended<int>(value.fBits);
    if (place.fSize == sizeof(short)) value.fBits = Extended<short>(value.fBits);
    if (place.fSize == sizeof(char)) value.fBits = Extended<signed char>(value.fBits);
  }
  return value;
}

}  // namespace KAPHost
