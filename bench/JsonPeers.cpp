// SPDX-License-Identifier: MIT
#include "JsonPeers.h"

#include <rapidjson/document.h>

#include <boost/json.hpp>
#include <nlohmann/json.hpp>

namespace Bench {

namespace {

template <class Value>
void Use(const Value& value) {
  benchmark::DoNotOptimize(&value);
  benchmark::ClobberMemory();
}

void ParseNlohmann(const std::string& json) { Use(nlohmann::json::parse(json)); }

void ParseBoost(const std::string& json) { Use(boost::json::parse(json)); }

template <class Allocator>
void ParseRapid(const std::string& json) {
  rapidjson::GenericDocument<rapidjson::UTF8<>, Allocator> document;
  document.template Parse<rapidjson::kParseFullPrecisionFlag>(json.data(), json.size());
  Use(document);
}

constexpr JsonPeer kPeers[] = {
    {"nlohmann", &ParseNlohmann},
    {"boost_json", &ParseBoost},
    {"rapidjson_arena", &ParseRapid<rapidjson::MemoryPoolAllocator<>>},
    {"rapidjson_malloc", &ParseRapid<rapidjson::CrtAllocator>},
};

}  // namespace

std::span<const JsonPeer> JsonPeers() { return kPeers; }

void ParseWithPeer(benchmark::State& state, const Document& document, const JsonPeer& peer) {
  peer.fParse(document.fJson);
  for (auto _ : state) peer.fParse(document.fJson);
  SetItems(state, document.fCount);
}

}  // namespace Bench
