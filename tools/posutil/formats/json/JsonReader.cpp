// JSON, read piece by piece: the document is never held in another form. See JsonForms.h for what
// JSON has no values for; true and false become strings, null an empty slot or an absent member.
// Several documents stand on a line each.

#include <nlohmann/json.hpp>

#include "base/Failure.h"
#include "base/Printable.h"
#include "base/SyntaxError.h"
#include "formats/SourceReader.h"
#include "formats/json/JsonBuilder.h"
#include "formats/json/JsonCursor.h"

namespace PosUtil {

namespace {

constexpr int kNumberOverflow = 406;  // the parser's number for that error

class Handler final : public nlohmann::json_sax<nlohmann::json> {
 public:
  // The text begins at byte `begin` of the source.
  Handler(const Source& source, std::size_t begin, JsonBuilder& builder)
      : fSource(source), fBegin(begin), fBuilder(builder) {}

  bool null() override { return fBuilder.Null(), true; }
  bool boolean(bool value) override { return fBuilder.String(value ? "true" : "false"), true; }
  bool number_integer(number_integer_t value) override {
    // Only what begins with "-" comes as a signed integer, so this is "-0".
    return value == 0 ? fBuilder.Number(-0.0) : fBuilder.Signed(value), true;
  }
  bool number_unsigned(number_unsigned_t value) override { return fBuilder.Unsigned(value), true; }
  bool number_float(number_float_t value, const string_t& text) override {
    const bool isInteger = text.find_first_of(".eE") == string_t::npos;
    return isInteger ? fBuilder.Integer(text, value) : fBuilder.Number(value), true;
  }
  bool string(string_t& text) override { return fBuilder.String(text), true; }
  bool binary(binary_t&) override { return false; }  // not in text

  bool start_object(std::size_t) override { return fBuilder.BeginObject(), true; }
  bool key(string_t& text) override { return fBuilder.Key(text), true; }
  bool end_object() override { return fBuilder.EndObject(), true; }
  bool start_array(std::size_t) override { return fBuilder.BeginArray(), true; }
  bool end_array() override { return fBuilder.EndArray(), true; }

  // `position` counts the bytes that were read.
  bool parse_error(std::size_t position, const std::string& token,
                   const nlohmann::detail::exception& error) override {
    const std::string path = fBuilder.Path();
    const std::string message = error.id == kNumberOverflow
                                    ? "the number " + token + " is too large"
                                    : Message(error.what());
    throw SyntaxError(fSource, fBegin + (position > 0 ? position - 1 : 0),
                      Printable(message) + (path.empty() ? "" : " (at " + Printable(path) + ")"));
  }

 private:
  // What the parser says, without its own name and place, and without the text that the excerpt
  // will show.
  static std::string Message(std::string text) {
    text.erase(0, std::min(text.find(": ", text.find(", column ")), text.size() - 2) + 2);
    const std::size_t token = text.find("; last read: '");
    const std::size_t expected = text.rfind("; expected ");
    if (token == std::string::npos) return text;
    const bool hasMore = expected != std::string::npos && expected > token;
    return text.substr(0, token) + (hasMore ? text.substr(expected) : "");
  }

  const Source& fSource;
  const std::size_t fBegin;
  JsonBuilder& fBuilder;
};

// `text` is a part of the source.
KAP_T_MT::CPOSObject ReadJson(const Source& source, std::string_view text, ReadingWatch& watch) {
  JsonBuilder builder;
  Handler handler(source, static_cast<std::size_t>(text.data() - source.Text()), builder);
  try {
    nlohmann::json::sax_parse(JsonCursor(text.data(), watch),
                              JsonCursor(text.data() + text.size(), watch), &handler);
  } catch (const ValueError& error) {
    throw error.At(source.Name(), builder.Path());
  }
  return builder.Take();
}

// Blank lines do not count.
class JsonLines final : public Documents {
 public:
  JsonLines(const std::string& fileName, Progress& progress)
      : fSource(Source::Read(fileName)), fRest(fSource.Bytes()), fWatch(fSource, progress) {
    progress.Begin("reading", fRest.size());
  }

  KAP_T_MT::CPOSObject Next() override {
    fRest.remove_prefix(std::min(fRest.find_first_not_of(" \t\r\n"), fRest.size()));
    if (fRest.empty() && fIsBegun) return {};
    fIsBegun = true;
    const std::string_view line = fRest.substr(0, fRest.find('\n'));
    fRest.remove_prefix(line.size());
    return ReadJson(fSource, line, fWatch);
  }

 private:
  Source fSource;
  std::string_view fRest;
  ReadingWatch fWatch;
  bool fIsBegun = false;
};

class JsonReader final : public SourceReader {
 public:
  JsonReader() : SourceReader(2, "json", ".json .jsonl") {}

  std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent,
                                  Session& session) const override {
    if (extent == Extent::kOne) return SourceReader::Open(fileName, extent, session);
    return std::make_unique<JsonLines>(fileName, session.TheProgress());
  }

 private:
  KAP_T_MT::CPOSObject Read(Source& source, Progress& progress) const override {
    ReadingWatch watch(source, progress);
    return ReadJson(source, source.Bytes(), watch);
  }
} gJsonReader;

}  // namespace

}  // namespace PosUtil
