// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "component/Trial.h"

namespace KAPCheck {

// Makes `count` calls of the declared interfaces with random arguments and releases what they
// return. The calls depend on the seed alone. `beforeCall` gets a description of each. May run on
// several threads at once, each with objects of its own. Throws TestFailure when a declared
// procedure is not registered, lets an exception out, or returns an error together with a result.
void CallRandomly(Trial& trial, unsigned long seed, int count,
                  const std::function<void(const std::string&)>& beforeCall);

// A call of a declared procedure, found while the component was initialised.
struct LateCall {
  std::string fName;
  // Calls it with null and 0. Throws TestFailure when an exception leaves it.
  std::function<void()> Make;
};
std::vector<LateCall> LateCallsOf(Trial& trial);

}  // namespace KAPCheck
