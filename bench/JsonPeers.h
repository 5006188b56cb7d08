// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>

#include "BenchDocument.h"

namespace Bench {

// A library that parses JSON into a document of its own.
struct JsonPeer {
  const char* fName;
  // Parses a text and releases the document. Thread-safe.
  void (*fParse)(const std::string& json);
};

// nlohmann::json comes first: the goals of parsing are ratios to it.
//
// RapidJSON appears twice: with its arena, which releases a document as a whole but cannot release
// a value alone, and with malloc, which can, like ours. It reads numbers exactly, like nlohmann and
// ours. Boost.JSON may err in the last bit of a real; it uses its default memory resource.
std::span<const JsonPeer> JsonPeers();

// An iteration parses the document with a peer and releases it.
void ParseWithPeer(benchmark::State& state, const Document& document, const JsonPeer& peer);

}  // namespace Bench
