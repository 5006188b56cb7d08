// SPDX-License-Identifier: MIT
#pragma once

namespace NKAPUtilsDirImpl {

// What a container calls with its instance; null is ignored.
void DeleteKAPUtilsDirImpl(void* instance) noexcept;

// Registers directories, then temporary-file streams. Returns false at the first registration that
// fails.
bool RegisterKAPUtilsDirImpl();
void UnregisterKAPUtilsDirImpl();

}  // namespace NKAPUtilsDirImpl
