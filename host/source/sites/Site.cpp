// SPDX-License-Identifier: MIT
#include "sites/Site.h"

namespace KAPHost {

std::string DescribeSite(const char* what, const Site& site) {
  std::string text = std::string("\n  ") + what;
  if (site.fCaller) {
    text.append(" by ").append(site.fCaller).append(" in ").append(site.fInterface);
    text.append(".").append(site.fMethod);
    if (site.fCallee) text.append(" of ").append(site.fCallee);
  } else {
    text += " by the host";
  }
  if (!site.fStack) return text;
  for (const std::string& line : DescribeStack(*site.fStack)) text += "\n    " + line;
  return text;
}

}  // namespace KAPHost
