#pragma once

// The text format of documents, with its version 1.0:
//
//   document  := "POSStreamerTypeA_Version1.0" " " value
//   value     := "#" number " "  |  '"' text '"'  |  "`" 4 hexadecimal digits for each unit "`"
//              | "{" type-name length bytes in hexadecimal "}"  |  "$" pointer " "
//              | "[" value* "]"  |  "<" (key value)* ">"
//
// A backslash and three octal digits stand for a byte that cannot be printed, a backslash and a
// letter for what would end the value. White space may stand before any value.

#include "posimpl/streamer/ICharStream.h"
#include "posimpl/streamer/OCharStream.h"
#include "posimpl/streamer/TypeAStreamer.h"
#include "posimpl/streamer/Version10.h"
