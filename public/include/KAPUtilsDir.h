// SPDX-License-Identifier: MIT
#pragma once

// Directories and temporary files. Start reading with dir/KAPUtilsDirClient.h;
// dir/KAPUtilsDirInterfaces.h has the plain procedures and their contracts.

#include "dir/KAPUtilsDirClient.h"
#include "dir/KAPUtilsDirInterfaces.h"
