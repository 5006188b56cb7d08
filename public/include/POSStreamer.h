// SPDX-License-Identifier: MIT
#pragma once

// Property objects as documents on streams.

#include "kap/KAPClient.h"
#include "pos/POSStreamerClient.h"
#include "pos/POSStreamerInterfaces.h"
