// SPDX-License-Identifier: MIT
#include "BenchDocument.h"

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <utility>
#include <vector>

namespace Bench {

namespace {

using Json = nlohmann::json;

class Maker {
 public:
  explicit Maker(Content content) : fContent(content) {
    for (std::string& word : fWords) word = Letters(4, 12);
  }

  Json NewDocument(std::int64_t count) {
    Json document = Json::array();
    for (std::int64_t made = 1; made < count; made += Count(document.back())) {
      document.push_back(NewValue());
    }
    return document;
  }

  static std::int64_t Count(const Json& value) {
    std::int64_t count = 1;
    if (value.is_structured()) {
      for (const Json& member : value) count += Count(member);
    }
    return count;
  }

 private:
  Json NewValue() {
    switch (fContent) {
      case Content::kIntegers:
        return Below(1'000'000'000);
      case Content::kReals:
        return Real();
      case Content::kStrings:
        return Letters(4, 10) + std::to_string(fSerial++ % 1'000'000);
      case Content::kWords:
        return Word();
      case Content::kRecords:
        return NewRecord();
    }
    return nullptr;
  }

  Json NewRecord() {
    Json record = {{"id", fSerial++}, {"name", Letters(4, 10)}, {"category", Word()}};
    Json& tags = record["tags"] = Json::array();
    for (unsigned left = 1 + Below(3); left > 0; --left) tags.push_back(Word());
    if (Below(2) != 0) record["price"] = Real();
    if (Below(2) != 0) record["position"] = {{"x", Real()}, {"y", Below(1000)}};
    return record;
  }

  unsigned Below(unsigned limit) { return static_cast<unsigned>(fRandom() % limit); }
  double Real() { return Below(1'000'000) + Below(1'000'000) / 1e6; }
  const std::string& Word() { return fWords[Below(1000)]; }
  std::string Letters(unsigned least, unsigned most) {
    std::string letters(least + Below(most - least + 1), ' ');
    for (char& letter : letters) letter = "abcdefghijklmnopqrstuvwxyz"[Below(26)];
    return letters;
  }

  Content fContent;
  std::mt19937 fRandom;
  std::vector<std::string> fWords{1000};
  unsigned fSerial = 0;
};

// The values need no escapes and no exponents in either notation.
void Write(const Json& value, std::string& text) {
  if (value.is_array()) {
    text += '[';
    for (const Json& element : value) Write(element, text += text.back() == '[' ? "" : " ");
    text += ']';
  } else if (value.is_object()) {
    text += '<';
    for (const auto& [key, member] : value.items()) Write(member, text += ' ' + key + ' ');
    text += '>';
  } else if (value.is_string()) {
    text += value.get_ref<const std::string&>();
  } else {
    text += value.dump();
  }
}

Document NewDocument(Content content, std::int64_t count) {
  const Json json = Maker(content).NewDocument(count);
  Document document{{}, json.dump(), Maker::Count(json)};
  Write(json, document.fText);
  return document;
}

}  // namespace

const Document& GetDocument(Content content, std::int64_t count) {
  static std::map<std::pair<Content, std::int64_t>, std::unique_ptr<Document>> documents;
  std::unique_ptr<Document>& document = documents[{content, count}];
  if (!document) document = std::make_unique<Document>(NewDocument(content, count));
  return *document;
}

Reference Parsed(const Document& document) {
  return Made(Statics::Call<"CreateFromText">(document.fText.c_str(), nullptr));
}

}  // namespace Bench
