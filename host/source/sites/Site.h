// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "sites/Stack.h"

namespace KAPHost {

// The host among the names of components, which are compared by address.
inline constexpr char kHost[] = "host";

// Where something happened: in which call, by whom, and what led to it.
struct Site {
  const char* fCaller = nullptr;  // null: outside of every observed call
  const char* fInterface = "";
  const char* fMethod = "";
  const char* fCallee = nullptr;  // null for the host
  unsigned fThread = 0;
  std::shared_ptr<const Stack> fStack;  // null unless stacks are on
};

// Lines such as
//
//   made by Totals in POSNumberInterface.NewPOSNumber of KAPUtils
//     Totals::Sum (totals.cpp:41)
std::string DescribeSite(const char* what, const Site& site);

// Of the innermost observed call of the thread.
Site CurrentSite(bool withStack) noexcept;

}  // namespace KAPHost
