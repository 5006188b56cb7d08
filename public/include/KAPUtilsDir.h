#pragma once

// Directories and temporary files for clients. Begin with dir/KAPUtilsDirClient.h; the plain
// procedures are in dir/KAPUtilsDirInterfaces.h.

#include "dir/KAPUtilsDirClient.h"
#include "dir/KAPUtilsDirInterfaces.h"
