// SPDX-License-Identifier: MIT
#pragma once

namespace NKAPUtilsDirImpl {

// What a container calls with its instance; null is ignored.
void DeleteKAPUtilsDirImpl(void* instance) noexcept;

// Registers directories, then temporary-file streams; false at the first that the binder refuses.
bool RegisterKAPUtilsDirImpl();
void UnregisterKAPUtilsDirImpl();

}  // namespace NKAPUtilsDirImpl
