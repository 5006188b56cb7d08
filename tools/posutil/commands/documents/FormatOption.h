// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "base/Loss.h"
#include "commands/declarations/Options.h"
#include "formats/Format.h"
#include "program/Session.h"

namespace PosUtil {

// Declares an option, such as --from, that takes the name of a format to read. `file` is the name
// of the argument that it describes.
void DeclareFrom(Options& options, const char* option, std::string& format, const char* file);

// Declares an option --to that takes the name of a format to write.
void DeclareTo(Options& options, std::string& format, const char* description);

// Declares an option --to for a file: it takes only formats that have a reader too.
void DeclareToOfFile(Options& options, std::string& format, const char* description);

// Declares --loss, which sets how JSON is read and written. Empty means the default.
void DeclareLoss(Options& options, std::string& loss);
LossMode LossModeOf(const std::string& loss, LossMode byDefault = LossMode::kWarn);

// The reader for the name of a format or, if the name is empty, for the ending of `file`; for an
// input, the content is the last resort. Throws Failure if none determines it; `option` is the
// option that the message suggests. With Extent::kAll an empty input holds no documents; otherwise
// it is an error of the input, not of the usage.
const Reader& FormatOfInput(const std::string& format, const std::string& file, const char* option,
                            Extent extent = Extent::kOne);
const Reader& FormatOfOutput(const std::string& format, const std::string& file,
                             const char* option);

// Opens a file. Next then also throws Failure for the reports of the library.
std::unique_ptr<Documents> OpenDocuments(const Reader& reader, const std::string& file,
                                         Extent extent, Session& session,
                                         Text text = Text::kDropped);

// The documents, whose Next also throws Failure for the reports of the library.
std::unique_ptr<Documents> WithReports(std::unique_ptr<Documents> documents,
                                       const std::string& name, Session& session);

}  // namespace PosUtil
