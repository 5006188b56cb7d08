#pragma once

// Property objects as documents on streams.

#include "pos/POSStreamerClient.h"
#include "pos/POSStreamerInterfaces.h"
