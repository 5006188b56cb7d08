// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <optional>
#include <set>
#include <stdexcept>

#include "DirWorld.h"
#include "Threads.h"

namespace {

using namespace KAP_T_MT;
using Kind = KAP_T_MT::KAPFault;

CKAPPositionableStream NewStream() { return CKAPUtilsDir::NewTempFileStream("tf", nullptr, "w+b"); }

void Write(CKAPPositionableStream& stream, const std::string& text) {
  stream.Write(reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

std::string Read(CKAPPositionableStream& stream, std::size_t size = 200) {
  std::string text(size, '\0');
  text.resize(stream.Read(reinterpret_cast<unsigned char*>(text.data()), size));
  return text;
}

std::set<int> Descriptors() {
  std::set<int> descriptors;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    descriptors.insert(std::stoi(entry.path().filename()));
  }
  // Without that of the listing, which is closed again.
  std::erase_if(descriptors, [](int each) { return ::fcntl(each, F_GETFD) < 0; });
  return descriptors;
}

std::string LinkOf(int descriptor) {
  std::error_code ignored;
  return fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), ignored);
}

TEST_F(DirTest, TempFileLivesAsLongAsItsStream) {
  std::optional<CKAPPositionableStream> stream = NewStream();
  const Texts names = Names();
  ASSERT_EQ(names.size(), 1u);
  EXPECT_TRUE(names[0].starts_with("tf.") && names[0].size() == 9) << names[0];
  Write(*stream, "one two three");
  EXPECT_EQ(stream->Mark(), 13);
  stream->Seek(-5, kKAPSeekFromEnd);
  EXPECT_EQ(Read(*stream), "three");
  stream->Rewind();
  EXPECT_EQ(Read(*stream, 3), "one");
  const CKAPPositionableStream second(stream->Handle());
  stream.reset();
  EXPECT_EQ(Names(), names);  // there is another reference
}

TEST_F(DirTest, ViewsOfATempFile) {
  const std::set<int> before = Descriptors();
  std::optional<CKAPPositionableStream> stream = NewStream();
  const std::string text(100, 't');
  Write(*stream, text);
  std::optional<CKAPPositionableStream> view = stream->CreateIndependentlyPositionableStream();
  EXPECT_EQ(stream->Mark(), 0);  // a view itself now
  EXPECT_TRUE(Fails([&] { Write(*stream, "x"); }));
  EXPECT_TRUE(Fails([&] { Write(*view, "x"); }));
  EXPECT_EQ(Read(*view), text);
  EXPECT_EQ(Read(*stream, 60), text.substr(0, 60));
  const CKAPRewindableStream other = stream->CreateIndependentlyRewindableStream();
  EXPECT_EQ(stream->Mark(), 60);  // reopened only once
  for (const int each : Descriptors()) {
    EXPECT_TRUE(before.contains(each) || ::fcntl(each, F_GETFD) & FD_CLOEXEC) << LinkOf(each);
  }
  CKAPPositionableStream ofView = view->CreateIndependentlyPositionableStream();
  view.reset();
  EXPECT_EQ(Names().size(), 1u);
  stream.reset();
  EXPECT_EQ(Names(), Texts());
  EXPECT_EQ(Read(ofView), text);  // it still reads, but there are no more views
  EXPECT_TRUE(Fails([&] { (void)ofView.CreateIndependentlyPositionableStream(); }));
}

TEST_F(DirTest, TempFileThatCannotBeMade) {
  const auto message = [this](auto out, const char* prefix, const char* mode) {
    return TakeMessage(Call<KAPUtilsTempFileStreamFactory, "NewTempFileStream">(
        out, prefix, static_cast<const char*>(nullptr), mode));
  };
  const std::string null = "a null pointer was given where a value is needed";
  KAPPositionableStream* out = nullptr;
  EXPECT_EQ(message(nullptr, "tf", "w+b"), null);
  EXPECT_EQ(message(&out, nullptr, "w+b"), null);
  EXPECT_EQ(message(&out, "tf", nullptr), null);
  EXPECT_EQ(message(&out, "a/b", "w+b"), "the prefix of a temporary file contains a slash");
  const std::set<int> before = Descriptors();
  EXPECT_NE(message(&out, "tf", "no mode"), "");
  EXPECT_EQ(Descriptors(), before);
  ::setenv("TMPDIR", Path("missing").c_str(), 1);
  EXPECT_EQ(message(&out, "tf", "w+b"), "KAPUtilsDirImpl::createNewFile: Unknown error");
  Unregister(KAPUtilsDirInterface::kName);
  KAPError* const error = Call<KAPUtilsTempFileStreamFactory, "NewTempFileStream">(
      &out, "tf", static_cast<const char*>(nullptr), "w+b");
  EXPECT_NE(error, nullptr);
  EXPECT_EQ(TakeMessage(error), "");
  EXPECT_EQ(out, nullptr);
}

// A link in the place of the file, as any user can put it into a directory without sticky bit, is
// not followed.
TEST_F(DirTest, TempFileThatIsReplaced) {
  std::ofstream(Path("secret")) << "secret";
  for (const bool isMoved : {false, true}) {
    SCOPED_TRACE(isMoved);
    std::optional<CKAPPositionableStream> stream = NewStream();
    Write(*stream, "text");
    const std::string path = Path(Names().at(Names().at(0) == "secret" ? 1 : 0));
    isMoved ? fs::rename(path, Path("moved")) : static_cast<void>(fs::remove(path));
    fs::create_symlink(Path("secret"), path);
    std::optional<CKAPPositionableStream> view;
    const bool failed = Fails([&] { view = stream->CreateIndependentlyPositionableStream(); });
    EXPECT_EQ(failed, !isMoved);
    EXPECT_EQ(view ? Read(*view) : "", isMoved ? "text" : "");
    view.reset();
    stream.reset();
    EXPECT_FALSE(fs::is_symlink(path));
    EXPECT_EQ(Remove("moved"), isMoved);
  }
  EXPECT_TRUE(Remove("secret"));
}

// Something else in the process has closed the descriptors, or reuses them for another file: the
// name serves if it leads to the file.
TEST_F(DirTest, TempFileWithoutItsDescriptor) {
  for (const bool isReused : {false, true}) {
    for (const bool isReplaced : {false, true}) {
      SCOPED_TRACE(testing::Message() << isReused << isReplaced);
      std::optional<CKAPPositionableStream> stream = NewStream();
      Write(*stream, "text");
      std::optional<CKAPPositionableStream> view = stream->CreateIndependentlyPositionableStream();
      const std::string path = Path(Names().at(0));
      for (const int descriptor : Descriptors()) {
        if (LinkOf(descriptor) != path) continue;
        // The first one is the library's.
        isReused ? ::dup2(STDERR_FILENO, descriptor) : ::close(descriptor);
        break;
      }
      if (isReplaced) {
        fs::remove(path);
        std::ofstream(path) << "other";
      }
      view.reset();
      const bool failed = Fails([&] { view = stream->CreateIndependentlyPositionableStream(); });
      EXPECT_EQ(failed, isReplaced);
      EXPECT_EQ(view ? Read(*view) : "text", "text");
    }
  }
}

// What the descriptor's number means by now is another file, which is not closed.
TEST_F(DirTest, TempFileThatLosesItsDescriptorWhileItIsMade) {
  static const DirWorld* world;
  world = this;
  static int reused;
  using Factory = KAPStreamFactoryInterface;
  const auto& entry = Factory::kEntries[Factory::kSlot<"NewPositionableFileStream">];
  const Factory::Proc<"NewPositionableFileStream"> fail = [](auto...) {
    for (const int descriptor : Descriptors()) {
      if (LinkOf(descriptor) == world->Path(world->Names().at(0))) reused = descriptor;
    }
    ::dup2(STDERR_FILENO, reused);
    return CKAPError("cannot be opened", "c", 1).Detach();
  };
  void* const former = Find(Factory::kName, entry.fMethodName, entry.fProcName);
  Register(Factory::kName, entry.fMethodName, entry.fProcName, reinterpret_cast<void*>(fail));
  MoveCounter();
  EXPECT_TRUE(Fails([] { NewStream(); }));
  EXPECT_EQ(Names(), Texts());
  EXPECT_TRUE(Descriptors().contains(reused));
  ::close(reused);
  Register(Factory::kName, entry.fMethodName, entry.fProcName, former);
}

// A host that breaks its contract: neither a stream nor an error.
TEST_F(DirTest, TempFileWithoutAStream) {
  using Factory = KAPStreamFactoryInterface;
  const auto& entry = Factory::kEntries[Factory::kSlot<"NewClientPositionableStream">];
  const Factory::Proc<"NewClientPositionableStream"> none = [](auto...) {
    return static_cast<KAPError*>(nullptr);
  };
  Register(Factory::kName, entry.fMethodName, entry.fProcName, reinterpret_cast<void*>(none));
  MoveCounter();
  KAPPositionableStream* out = nullptr;
  EXPECT_EQ((Do<KAPUtilsTempFileStreamFactory, "NewTempFileStream">(
                &out, "tf", static_cast<const char*>(nullptr), "w+b")),
            "invalid container");
}

// The host reports it, and the stream is gone either way.
TEST_F(DirTest, TempFileThatCannotBeDeleted) {
  std::optional<CKAPPositionableStream> stream = NewStream();
  Remove(Names().at(0));
  stream.reset();
  EXPECT_EQ(TakeReport(), "KAPUtilsDirImpl::Delete: Unknown error");
  try {
    const CKAPPositionableStream kept = NewStream();
    const CKAPPositionableStream lost = NewStream();
    Remove(Names().at(0));
    throw std::runtime_error("passing");
  } catch (const std::runtime_error&) {  // and no second exception beside it
  }
  EXPECT_EQ(TakeReport(), "KAPUtilsDirImpl::Delete: Unknown error");
}

TEST_F(DirTest, ReleaseUnderFaults) {
  std::optional<CKAPPositionableStream> stream = NewStream();
  FailFrom(Kind::kAny, 1);
  stream.reset();
  StopFaults();
  EXPECT_EQ(Names(), Texts());
}

// Runs `test` in a world of its own for each n. In the body of `failedCall`, the nth call fails,
// alone or with all after it. The body must fail if there is such a call, and only then;
// `failedCall` returns whether it did.
using FailedCall = std::function<bool(const Body& body)>;
void FailEachCall(const std::function<void(DirWorld&, const FailedCall&)>& test) {
  FailingCall::Sweep([&](const FailingCall& call) {
    bool fired = false;
    DirWorld world;
    test(world, [&](const Body& body) {
      bool failed = false;
      fired = call.During(world, [&] { failed = Fails(body); });
      EXPECT_EQ(failed, fired);
      return failed;
    });
    return fired;
  });
}

TEST(DirFaultTest, NoStreamNoFile) {
  int failures = 0;
  FailEachCall([&](DirWorld& world, const FailedCall& failedCall) {
    std::optional<CKAPPositionableStream> stream;
    const bool failed = failedCall([&] {
      (void)CKAPUtilsDir::New(CKAPUtilsDir::GetCurrent().GetFilePathSpec(Text("a")));
      stream = NewStream();
    });
    EXPECT_EQ(world.Names().size(), failed ? 0u : 1u);
    failures += failed ? 1 : 0;
  });
  EXPECT_GT(failures, 60);
}

// Whatever fails, a later view reads what was written: the stream writes on, or it has become a
// view itself.
TEST(DirFaultTest, NoView) {
  int written = 0;
  FailEachCall([&](DirWorld&, const FailedCall& failedCall) {
    CKAPPositionableStream stream = NewStream();
    Write(stream, "text");
    std::optional<CKAPPositionableStream> first;
    const bool failed = failedCall([&] { first = stream.CreateIndependentlyPositionableStream(); });
    const bool writes = !Fails([&] { Write(stream, " and more"); });
    CKAPPositionableStream view = stream.CreateIndependentlyPositionableStream();
    EXPECT_EQ(Read(view), writes ? "text and more" : "text");
    EXPECT_TRUE(failed || !writes);
    written += writes ? 1 : 0;
  });
  EXPECT_GE(written, 2);
}

// The first call is the stream's own, the second that of the file stream, whose error is passed on.
TEST_F(DirTest, FileStreamFails) {
  CKAPPositionableStream stream = NewStream();
  const std::pair<Kind, Body> calls[] = {{Kind::kRead, [&] { Read(stream); }},
                                         {Kind::kWrite, [&] { Write(stream, "x"); }},
                                         {Kind::kSeek, [&] { stream.Rewind(); }},
                                         {Kind::kMark, [&] { (void)stream.Mark(); }}};
  for (const auto& [kind, call] : calls) {
    FailCall(kind, 2);
    EXPECT_TRUE(Fails(call) && Fired());
    StopFaults();
  }
}

TEST_F(DirTest, ThreadsMakeViews) {
  CKAPPositionableStream stream = NewStream();
  Write(stream, "text");
  std::atomic<int> right = 0;
  RunOnThreads([&](int) {
    for (int i = 0; i < 20; ++i) {
      CKAPPositionableStream view = stream.CreateIndependentlyPositionableStream();
      right += Read(view) == "text" ? 1 : 0;
    }
  });
  EXPECT_EQ(right, kThreads * 20);
}

}  // namespace
