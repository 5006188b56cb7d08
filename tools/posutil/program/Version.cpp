// SPDX-License-Identifier: MIT
#include "program/Version.h"

#include "KAPUtilsVers.h"

namespace PosUtil {

std::string ProgramVersion() {
  return std::string("posutil ") + KAPUtils_BuildVersion() + " (build " + KAPUtils_BuildID() +
         ", " + KAPUtils_BuildDate() + ")";
}

}  // namespace PosUtil
