#pragma once

#include "commands/documents/DocumentArgument.h"
#include "formats/Format.h"

namespace PosUtil {

// Writes the documents that are asked for, each on one line where there may be several and the
// format has lines for them. Throws Failure, also for what the library reports.
void WriteDocuments(const DocumentArgument& argument, const Writer& writer, Style style,
                    Session& session, Output& out);

}  // namespace PosUtil
