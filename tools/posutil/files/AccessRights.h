// SPDX-License-Identifier: MIT
#pragma once

namespace PosUtil {

// Gives the open file `to`, a new one, the owner, the group, the mode and the access control list
// of `from`, as far as the system allows it. Where it does not, `to` gets fewer rights: only its
// owner may have a right that `from` does not grant. An NFSv4 list is not copied: it leaves rights
// to the owner only. Set-user-ID and similar bits are cleared, as by a write. Returns false with
// errno on failure.
bool CopyAccessRights(int from, int to);

}  // namespace PosUtil
