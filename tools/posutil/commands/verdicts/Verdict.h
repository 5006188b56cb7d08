#pragma once

#include <string>
#include <vector>

namespace PosUtil {

enum class Messages : bool { kUnwanted, kWanted };

// What a check came to. Of what is not valid there may be no message; of what is valid there is none.
struct Verdict {
  bool fIsValid = false;
  std::vector<std::string> fMessages;
};

// The message as the user reads it. `name` is that of the file.
std::string MessageLine(const std::string& name, const std::string& message);

}  // namespace PosUtil
