// JSON, read piece by piece: the document is never held in another form. See JsonForms.h for what JSON has no values
// for; true and false become strings, null an empty slot or an absent member.

#include <nlohmann/json.hpp>

#include "Failure.h"
#include "Format.h"
#include "JsonBuilder.h"
#include "Printable.h"
#include "SyntaxError.h"

namespace PosUtil {

namespace {

constexpr int kNumberOverflow = 406;  // the parser's number for that error

class Handler final : public nlohmann::json_sax<nlohmann::json> {
 public:
  Handler(const Source& source, JsonBuilder& builder) : fSource(source), fBuilder(builder) {}

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
    throw SyntaxError(fSource, position > 0 ? position - 1 : 0,
                      Printable(message) + (path.empty() ? "" : " (at " + Printable(path) + ")"));
  }

 private:
  // What the parser says, without its own name and place, and without the text that the excerpt will show.
  static std::string Message(std::string text) {
    text.erase(0, std::min(text.find(": ", text.find(", column ")), text.size() - 2) + 2);
    const std::size_t token = text.find("; last read: '");
    const std::size_t expected = text.rfind("; expected ");
    if (token == std::string::npos) return text;
    const bool hasMore = expected != std::string::npos && expected > token;
    return text.substr(0, token) + (hasMore ? text.substr(expected) : "");
  }

  const Source& fSource;
  JsonBuilder& fBuilder;
};

class JsonReader final : public Reader {
 public:
  JsonReader() : Reader(2, "json", ".json") {}

  KAP_T_MT::CPOSObject Read(const Source& source) const override {
    const std::string_view bytes = source.Bytes();
    JsonBuilder builder;
    Handler handler(source, builder);
    try {
      nlohmann::json::sax_parse(bytes.begin(), bytes.end(), &handler);
    } catch (const ValueError& error) {
      throw error.At(source.Name(), builder.Path());
    }
    return builder.Take();
  }
} gJsonReader;

}  // namespace

}  // namespace PosUtil
