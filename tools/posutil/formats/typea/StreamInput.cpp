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

}  // namespace

class StreamInput::Client final : public KAP_T_MT::KAPClientPositionableStream {
 public:
  Client(const std::string& fileName, Progress& progress, std::function<void()> idle)
      : fWindow(fileName, progress, std::move(idle)) {
    CheckTypeASize(fWindow.File().Size(), fWindow.File().Name());
  }

  std::size_t Read(unsigned char* buffer, std::size_t size) override {
    return fSaved.Save([&] {
      if (!HasMore()) return std::size_t{0};
      const std::size_t count = std::min(size, fWindow.Size() - fNext);
      std::memcpy(buffer, fWindow.Data() + fNext, count);
      fNext += count;
      return count;
    });
  }
  void Seek(long offset, int origin) override;
  long Mark() override { return static_cast<long>(Position()); }
  void Write(const unsigned char*, std::size_t) override {
    throw Failure("the input stream is read-only");
  }

  std::size_t Position() const { return fWindow.Discarded() + fNext; }
  void KeepFromHere() { fWindow.KeepFrom(fNext); }
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
      CheckTypeASize(fWindow.Discarded() + fWindow.Size(), fWindow.File().Name());
    }
    return fNext < fWindow.Size();
  }

  InputWindow fWindow;
  std::size_t fNext = 0;  // index in the window
  SavedException fSaved;
};

void StreamInput::Client::Seek(long offset, int origin) {
  const long position = origin == KAP_T_MT::kKAPSeekFromPosition ? Mark() + offset : offset;
  const long place = position - static_cast<long>(fWindow.Discarded());
  if (origin == KAP_T_MT::kKAPSeekFromEnd || place < 0 ||
      place > static_cast<long>(fWindow.Size())) {
    throw Failure("the input stream cannot seek to that position");
  }
  fNext = static_cast<std::size_t>(place);
}

StreamInput::StreamInput(const std::string& fileName, Progress& progress,
                         std::function<void()> idle)
    : StreamInput(KAP_T_MT::KAPNewClient<Client>(fileName, progress, std::move(idle))) {}

StreamInput::StreamInput(KAP_T_MT::TKAPClientObject<Client> client)
    : fClient(client.get()), fStream(NewHostStream(std::move(client))) {}

std::size_t StreamInput::Position() const { return fClient->Position(); }

void StreamInput::CheckFailure() { fClient->Saved().Rethrow(); }

void StreamInput::KeepFromHere() { fClient->KeepFromHere(); }

DocumentText StreamInput::Kept() const { return fClient->Kept(); }

bool StreamInput::SkipSpace() { return fClient->SkipSpace(); }

std::size_t StreamInput::FindBack(char character, std::size_t offset) const {
  const DocumentText text = fClient->Window();
  const std::size_t found = text.fPart.fBytes.rfind(character, offset - text.fBegin);
  return found == std::string_view::npos ? offset : text.fBegin + found;
}

SyntaxError StreamInput::ErrorAt(std::size_t offset, const std::string& message) const {
  return fClient->ErrorAt(offset, message);
}

SyntaxError StreamInput::ErrorAfterText(const std::string& message) const {
  return fClient->ErrorAfterText(message);
}

}  // namespace PosUtil
