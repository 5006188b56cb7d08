// The JSON reader. It goes piece by piece from the text to the property object, with no other form
// in between. See TaggedJson.h for values that JSON does not have; true and false become strings,
// null becomes an empty slot or no member. Several documents take a line each.

#include <nlohmann/json.hpp>

#include "base/Printable.h"
#include "base/SyntaxError.h"
#include "base/ValueError.h"
#include "formats/SourceReader.h"
#include "formats/json/JsonBuilder.h"
#include "formats/json/JsonCursor.h"

namespace PosUtil {

namespace {

constexpr int kNumberOverflow = 406;  // the parser's id of this error

class Handler final : public nlohmann::json_sax<nlohmann::json> {
 public:
  // The text starts at byte `begin` of the source.
  Handler(const Source& source, std::size_t begin, JsonBuilder& builder)
      : fSource(source), fBegin(begin), fBuilder(builder) {}

  bool null() override { return fBuilder.Null(), true; }
  bool boolean(bool value) override { return fBuilder.String(value ? "true" : "false"), true; }
  bool number_integer(number_integer_t value) override {
    // Only integers with a minus sign get here, so 0 is "-0".
    return value == 0 ? fBuilder.Number(-0.0) : fBuilder.Signed(value), true;
  }
  bool number_unsigned(number_unsigned_t value) override { return fBuilder.Unsigned(value), true; }
  bool number_float(number_float_t value, const string_t& text) override {
    const bool isInteger = text.find_first_of(".eE") == string_t::npos;
    return isInteger ? fBuilder.Integer(text, value) : fBuilder.Number(value), true;
  }
  bool string(string_t& text) override { return fBuilder.String(text), true; }
  bool binary(binary_t&) override { return false; }  // JSON text has none

  bool start_object(std::size_t) override { return fBuilder.BeginObject(), true; }
  bool key(string_t& text) override { return fBuilder.Key(text), true; }
  bool end_object() override { return fBuilder.EndObject(), true; }
  bool start_array(std::size_t) override { return fBuilder.BeginArray(), true; }
  bool end_array() override { return fBuilder.EndArray(), true; }

  // `position` is the number of bytes read.
  bool parse_error(std::size_t position, const std::string& token,
                   const nlohmann::detail::exception& error) override {
    const std::string path = fBuilder.Path();
    const std::string message = error.id == kNumberOverflow
                                    ? "the number " + token + " is too large"
                                    : Message(error.what());
    throw fSource.ErrorAt(
        fBegin + (position > 0 ? position - 1 : 0),
        Printable(message) + (path.empty() ? "" : " (at " + Printable(path) + ")"));
  }

 private:
  // The message of the parser, without its name and position, and without the text that the excerpt
  // shows anyway.
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
KAP_T_MT::CPOSObject ReadJson(const Source& source, std::string_view text,
                              ReadingMonitor& monitor) {
  JsonBuilder builder;
  Handler handler(source, static_cast<std::size_t>(text.data() - source.Text()), builder);
  try {
    nlohmann::json::sax_parse(JsonCursor(text.data(), monitor),
                              JsonCursor(text.data() + text.size(), monitor), &handler);
  } catch (const ValueError& error) {
    throw error.At(source.Name(), builder.Path());
  }
  return builder.Take();
}

// Skips blank lines.
class JsonLines final : public Documents {
 public:
  JsonLines(const std::string& fileName, Progress& progress)
      : fSource(Source::Read(fileName)), fRest(fSource.Bytes()), fMonitor(fSource, progress) {
    progress.Begin("reading", fRest.size());
  }

  KAP_T_MT::CPOSObject Next() override {
    fRest.remove_prefix(std::min(fRest.find_first_not_of(" \t\r\n"), fRest.size()));
    if (fRest.empty() && fIsBegun) return {};
    fIsBegun = true;
    const std::string_view line = fRest.substr(0, fRest.find('\n'));
    fRest.remove_prefix(line.size());
    return ReadJson(fSource, line, fMonitor);
  }

 private:
  Source fSource;
  std::string_view fRest;
  ReadingMonitor fMonitor;
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
    ReadingMonitor monitor(source, progress);
    return ReadJson(source, source.Bytes(), monitor);
  }
} gJsonReader;

}  // namespace

}  // namespace PosUtil
