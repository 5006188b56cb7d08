// SPDX-License-Identifier: MIT
#include "formats/typea/StreamInput.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "base/Failure.h"
#include "base/SavedException.h"
#include "files/InputWindow.h"
#include "formats/typea/TypeAStream.h"

namespace PosUtil {

namespace {

constexpr std::string_view kSpace = " \t\r\n";
constexpr std::size_t kEscape = 4;  // the length of an escape with digits, such as \303

// Returns whether the escape stands for a zero character. The library takes its digits modulo 256.
bool IsZeroEscape(std::string_view escape) {
  const auto digit = [&](std::size_t i) { return static_cast<unsigned>(escape[i] - '0'); };
  return digit(1) <= 9 && (digit(1) * 64 + digit(2) * 8 + digit(3)) % 256 == 0;
}

}  // namespace

class StreamInput::Client final : public KAP_T_MT::KAPClientPositionableStream {
 public:
  Client(const std::string& fileName, Extent extent, Progress& progress, std::function<void()> idle)
      : fWindow(fileName, progress, std::move(idle)) {
    if (extent == Extent::kOne) CheckTypeASize(fWindow.File().Size(), fWindow.File().Name());
  }

  std::size_t Read(unsigned char* buffer, std::size_t size) override {
    return fSaved.Save([&] {
      if (!HasMore()) return std::size_t{0};
      if (Position() >= fZero) {
        throw ErrorAt(fZero, "a zero character, which ends a text");
      }
      const std::size_t count = std::min({size, fWindow.Size() - fNext, fZero - Position()});
      std::memcpy(buffer, fWindow.Data() + fNext, count);
      fNext += count;
      return count;
    });
  }
  void Seek(long offset, int origin) override;
  long Mark() override { return static_cast<long>(Position() - fBegin); }
  void Write(const unsigned char*, std::size_t) override {
    throw Failure("the input stream is read-only");
  }

  std::size_t Position() const { return fWindow.Discarded() + fNext; }
  void BeginDocument() { fBegin = Position(); }
  void KeepFromHere() { fWindow.KeepFrom(fNext); }
  void KeepNothing() { fWindow.KeepNothing(); }
  // Its fBegin is the number of bytes before the window.
  DocumentText Window() const { return {fWindow.Part(), fWindow.Discarded()}; }
  DocumentText Kept() const { return {fWindow.Part(), fWindow.KeptFrom(), fWindow.BeforeKept()}; }
  SavedException& Saved() { return fSaved; }
  bool SkipSpace() {
    while (HasMore() && kSpace.find(fWindow.Data()[fNext]) != std::string_view::npos) ++fNext;
    return HasMore();
  }
  SyntaxError ErrorAt(std::size_t offset, const std::string& message) const {
    return fWindow.ErrorAt(offset - fWindow.Discarded(), message);
  }
  SyntaxError ErrorAfterText(const std::string& message) const {
    return fWindow.ErrorAfterText(message);
  }

 private:
  // Returns whether there is a byte at the position.
  bool HasMore() {
    if (fNext == fWindow.Size()) {
      fNext -= fWindow.Refill(fNext);
      CheckTypeASize(fWindow.Discarded() + fWindow.Size() - fBegin, fWindow.File().Name());
      if (fZero == SIZE_MAX) FindZero();
    }
    return fNext < fWindow.Size();
  }
  void FindZero();

  InputWindow fWindow;
  std::size_t fNext = 0;  // index in the window
  // These count from the start of the input.
  std::size_t fBegin = 0;  // of the document; the library sees positions from here on
  std::size_t fSearched = 0;
  std::size_t fZero = SIZE_MAX;  // the first zero character
  SavedException fSaved;
};

void StreamInput::Client::Seek(long offset, int origin) {
  const long position = origin == KAP_T_MT::kKAPSeekFromPosition ? Mark() + offset : offset;
  const long place = position + static_cast<long>(fBegin) - static_cast<long>(fWindow.Discarded());
  if (origin == KAP_T_MT::kKAPSeekFromEnd || place < 0 ||
      place > static_cast<long>(fWindow.Size())) {
    throw Failure("the input stream cannot seek to that position");
  }
  fNext = static_cast<std::size_t>(place);
}

// The library would cut a string or a key at a zero character, without a report.
void StreamInput::Client::FindZero() {
  const std::string_view bytes(fWindow.Data(), fWindow.Size());
  const std::size_t first = fSearched - fWindow.Discarded();
  fZero = std::min(bytes.find('\0', first), bytes.size());
  std::size_t at = std::min(bytes.find('\\', first), bytes.size());
  while (at + kEscape <= bytes.size() && !IsZeroEscape(bytes.substr(at, kEscape))) {
    at = std::min(bytes.find('\\', at + 2), bytes.size());
  }
  fSearched = fWindow.Discarded() + at;  // an escape may go on in the next bytes
  if (at + kEscape <= bytes.size()) fZero = std::min(fZero, at);
  fZero = fZero < bytes.size() ? fZero + fWindow.Discarded() : SIZE_MAX;
}

StreamInput::StreamInput(const std::string& fileName, Extent extent, Progress& progress,
                         std::function<void()> idle)
    : StreamInput(KAP_T_MT::KAPNewClient<Client>(fileName, extent, progress, std::move(idle))) {}

StreamInput::StreamInput(KAP_T_MT::TKAPClientObject<Client> client)
    : fClient(client.get()), fStream(NewHostStream(std::move(client))) {}

std::size_t StreamInput::Position() const { return fClient->Position(); }

void StreamInput::CheckFailure() { fClient->Saved().Rethrow(); }

void StreamInput::BeginDocument() { fClient->BeginDocument(); }

void StreamInput::KeepFromHere() { fClient->KeepFromHere(); }
void StreamInput::KeepNothing() { fClient->KeepNothing(); }

DocumentText StreamInput::Kept() const { return fClient->Kept(); }

bool StreamInput::SkipSpace() { return fClient->SkipSpace(); }

std::size_t StreamInput::FindBack(std::string_view characters, std::size_t offset) const {
  const DocumentText text = fClient->Window();
  const std::size_t found = text.fPart.fBytes.find_last_of(characters, offset - text.fBegin);
  return found == std::string_view::npos ? offset : text.fBegin + found;
}

char StreamInput::At(std::size_t offset) const {
  const DocumentText text = fClient->Window();
  return text.fPart.fBytes[offset - text.fBegin];
}

SyntaxError StreamInput::ErrorAt(std::size_t offset, const std::string& message) const {
  return fClient->ErrorAt(offset, message);
}

SyntaxError StreamInput::ErrorAfterText(const std::string& message) const {
  return fClient->ErrorAfterText(message);
}

}  // namespace PosUtil
