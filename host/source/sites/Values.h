// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "kaphost/Declared.h"

namespace KAPHost {

using ContainerKind = std::function<std::string(const char* signature, KAPContainer* container)>;

// An argument or result in a few words: numbers, texts and atoms as they are, shortened; an error
// by its message; a container by its kind. A place is "&" and its address. The handle must refer to
// something that exists. Throws std::bad_alloc.
std::string DescribeValue(const WatchedValue& value, const ContainerKind& kindOf);

// What a result place holds now.
WatchedValue ValueAt(const WatchedValue& place) noexcept;

}  // namespace KAPHost
