// SPDX-License-Identifier: MIT
#include "sites/Values.h"

#include <array>
#include <bit>
#include <cstdio>
#include <cstring>

#include "atoms/Atom.h"
#include "containers/Containers.h"
#include "errors/Errors.h"

namespace KAPHost {

namespace {

constexpr std::size_t kLongestText = 60;

template <class... Args>
std::string Printed(const char* format, Args... args) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), format, args...);
  return text.data();
}

std::string DescribeContainer(KAPContainer* container, const ContainerKind& kindOf) {
  if (!container->fCount.IsAlive()) return "dying container";
  const char* const signature = container->fSignature;
  const std::string kind = kindOf ? kindOf(signature, container) : std::string();
  if (!kind.empty()) return kind;
  return signature ? "container " + Quoted(signature) : "container";
}

}  // namespace

std::string Quoted(const char* text) {
  std::string quoted = "\"";
  const std::size_t size = ::strnlen(text, kLongestText + 1);
  for (std::size_t i = 0; i < std::min(size, kLongestText); ++i) {
    const auto letter = static_cast<unsigned char>(text[i]);
    if (letter == '"' || letter == '\\') {
      quoted.append(1, '\\').append(1, text[i]);
    } else if (letter == '\n') {
      quoted += "\\n";
    } else if (letter < 0x20 || letter >= 0x7f) {
      quoted += Printed("\\x%02x", unsigned{letter});
    } else {
      quoted += text[i];
    }
  }
  return quoted + (size > kLongestText ? "\"..." : "\"");
}

std::string DescribeValue(const WatchedValue& value, const ContainerKind& kindOf) {
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
      return Printed("%.12g", std::bit_cast<double>(value.fBits));
    case ValueKind::kOther:
      return "...";
    default:
      break;
  }
  if (value.fBits == 0) return "null";
  switch (value.fKind) {
    case ValueKind::kText:
      return Quoted(value.As<const char*>());
    case ValueKind::kAtom:
      return Quoted(value.As<KAPStringAtom*>()->Text());
    case ValueKind::kError:
      return "error " + Quoted(MessageOf(*value.As<KAPError*>()));
    case ValueKind::kContainer:
      return DescribeContainer(value.As<KAPContainer*>(), kindOf);
    case ValueKind::kBuffer:
      return "buffer";
    case ValueKind::kPlace:
      return Printed("&%lx", value.fBits);
    default:
      return Printed("0x%lx", value.fBits);
  }
}

WatchedValue ValueAt(const WatchedValue& place) noexcept {
  WatchedValue value{.fKind = place.fPlaced};
  if (place.fBits == 0) return {};
  std::memcpy(&value.fBits, place.As<const void*>(), std::min<std::size_t>(place.fSize, 8));
  if (place.fPlaced == ValueKind::kReal && place.fSize == sizeof(float)) {
    value.fBits = std::bit_cast<std::uint64_t>(
        static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(value.fBits))));
  }
  if (place.fPlaced == ValueKind::kSigned && place.fSize == sizeof(int)) {
    value.fBits = static_cast<std::uint64_t>(static_cast<long>(static_cast<int>(value.fBits)));
  }
  return value;
}

}  // namespace KAPHost
