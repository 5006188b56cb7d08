// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "formats/Format.h"

namespace PosUtil {

// One document whose nulls have a meaning of their own, as in a patch: without --loss=keep, they
// are null marks (see NullMark.h), not losses. With it, they are kept like in any document. The
// text is kept. Throws Failure.
std::unique_ptr<Documents> OpenJsonWithNulls(const std::string& fileName, Session& session);
// The same for a text of the command line; `name` is its name in messages.
std::unique_ptr<Documents> OpenJsonText(std::string name, std::string_view text, Session& session);

}  // namespace PosUtil
