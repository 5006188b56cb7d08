// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace PosUtil {

// The message about arguments that `options`, those of the program, have rejected with `error`. It
// names the command, option or value that comes closest to an unknown one.
std::string UsageMessage(const CLI::App& options, const CLI::ParseError& error);

}  // namespace PosUtil
