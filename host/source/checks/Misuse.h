// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "kap/KAPInterface.h"

namespace KAPHost {

using KAP_T_MT::KAPResource;

// Used by code whose objects are checked, to report misuse and keep records. Every function is a
// no-op unless the host checks.

bool HasMisuseChecks() noexcept;

// Adds to the reports: the headline, the call under way with its stack, and where the thing was
// made and ended.
void ReportMisuse(const std::string& headline, const void* thing) noexcept;

// A thing of the caller of the call under way; its end; and that its address means nothing now.
void NoteThing(KAPResource resource, const void* thing) noexcept;
void EndThing(const void* thing, const std::string& what) noexcept;
void ForgetThing(const void* thing) noexcept;
bool IsDeadThing(const void* thing) noexcept;

}  // namespace KAPHost
