// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "kaphost/KAPHost.h"

// Aborts the process unless `isTrue`. `what` is the expectation.
void Expect(bool isTrue, const char* what);

// Runs the function. Fails if it leaks anything of the host.
void ExpectBalanced(KAPHost::Host& host, const std::function<void()>& run);
