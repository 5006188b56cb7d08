// SPDX-License-Identifier: MIT
#include "commands/changes/ValueArgument.h"

#include <charconv>
#include <cmath>
#include <iterator>

#include "POSDict.h"
#include "base/Failure.h"
#include "base/Printable.h"
#include "base/SyntaxError.h"
#include "base/Utf.h"
#include "files/Source.h"
#include "formats/json/TaggedJson.h"
#include "formats/notation/NotationReader.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

constexpr char kName[] = "<VALUE>";

CPOSObject UnicodeString(const std::string& text) {
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t length = Utf8CharacterLength(rest);
    if (length == 0) throw Failure("VALUE is not UTF-8", kExitUsage);
    rest.remove_prefix(length);
  }
  return CPOSUnicodeString(Utf8ToUtf16(text).c_str());
}

CPOSObject Number(const std::string& text) {
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size() ||
      !std::isfinite(value)) {
    throw Failure("VALUE is not a number: " + Printable(text), kExitUsage);
  }
  return CPOSNumber(value);
}

CPOSObject Notation(const std::string& text) {
  try {
    return ReadNotation(Source(kName, text));
  } catch (const SyntaxError& error) {
    throw PlacedFailure(error.what(), kExitUsage);
  }
}

}  // namespace

void ValueArgument::Declare(Options& options) {
  options.Argument("VALUE", fText, "The new value, in JSON");
  Option forms[] = {options.Flag("--string", fIsString, "VALUE is a string as it is"),
                    options.Flag("--unicode", fIsUnicode, "VALUE is a Unicode string as it is"),
                    options.Flag("--number", fIsNumber, "VALUE is a number"),
                    options.Flag("--text", fIsNotation, "VALUE is text notation")};
  for (Option* form = std::begin(forms); form != std::end(forms); ++form) {
    for (Option* other = std::begin(forms); other != form; ++other) form->NotWith(*other);
  }
}

Change ValueArgument::Read(Session& session) const {
  session.TheLibrary();
  if (fIsString || fIsUnicode || fIsNumber || fIsNotation) {
    const CPOSObject object = Object(fText);
    session.TheLibrary().CheckReports(kName);
    return {object, session};
  }
  try {
    return {kName, fText, session};
  } catch (const UnheldValue& error) {
    throw PlacedFailure(error.what(), kExitUsage);
  } catch (const SyntaxError& error) {
    throw PlacedFailure(
        std::string(error.what()) +
            "\nVALUE is JSON; use --string, --unicode, --number or --text for another "
            "form.",
        kExitUsage);
  }
}

CPOSObject ValueArgument::Object(const std::string& text) const {
  if (fIsString) return CPOSString(text.c_str());
  if (fIsUnicode) return UnicodeString(text);
  return fIsNumber ? Number(text) : Notation(text);
}

}  // namespace PosUtil
