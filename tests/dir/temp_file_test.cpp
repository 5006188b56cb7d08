#include <atomic>
#include <fstream>
#include <optional>
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
  CKAPPositionableStream ofView = view->CreateIndependentlyPositionableStream();
  view.reset();
  EXPECT_EQ(Names().size(), 1u);
  stream.reset();
  EXPECT_EQ(Names(), Texts());
  EXPECT_EQ(Read(ofView), text);  // it still reads, but there are no more views
  EXPECT_TRUE(Fails([&] { ofView.CreateIndependentlyPositionableStream(); }));
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
  EXPECT_NE(message(&out, "tf", "no mode"), "");
  ::setenv("TMPDIR", Path("missing").c_str(), 1);
  EXPECT_EQ(message(&out, "tf", "w+b"), "KAPUtilsDirImpl::createNewFile: Unknown error");
  Unregister(KAPUtilsDirInterface::kName);
  EXPECT_TRUE(Fails([] { NewStream(); }));
  EXPECT_EQ(out, nullptr);
}

// A link in the place of the file, as anybody can put it into a directory without sticky bit, is
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

TEST_F(DirTest, ReleaseUnderRefusals) {
  std::optional<CKAPPositionableStream> stream = NewStream();
  FailFrom(Kind::kAny, 1);
  stream.reset();
  StopFaults();
  EXPECT_EQ(Names(), Texts());
}

// Runs `test` in a world of its own for each n. What it runs by `refused` meets a failure of the
// nth call from then on, alone or with all after it. It must fail when there is such a call, and
// only then; `refused` returns whether it did.
using Refused = std::function<bool(const Body& body)>;
void RefuseEachCall(const std::function<void(DirWorld&, const Refused&)>& test) {
  for (const bool andAllAfterIt : {false, true}) {
    bool fired = true;
    for (unsigned long n = 1; fired && !testing::Test::HasFailure(); ++n) {
      SCOPED_TRACE(testing::Message() << "call " << n << (andAllAfterIt ? " on" : ""));
      DirWorld world;
      test(world, [&](const Body& body) {
        andAllAfterIt ? world.FailFrom(Kind::kAny, n) : world.FailCall(Kind::kAny, n);
        const bool failed = Fails(body);
        fired = world.Fired();
        world.StopFaults();
        EXPECT_EQ(failed, fired);
        return failed;
      });
    }
  }
}

TEST(DirRefusalTest, NoStreamNoFile) {
  int failures = 0;
  RefuseEachCall([&](DirWorld& world, const Refused& refused) {
    std::optional<CKAPPositionableStream> stream;
    const bool failed = refused([&] {
      CKAPUtilsDir::New(CKAPUtilsDir::GetCurrent().GetFilePathSpec(Text("a")));
      stream = NewStream();
    });
    EXPECT_EQ(world.Names().size(), failed ? 0u : 1u);
    failures += failed ? 1 : 0;
  });
  EXPECT_GT(failures, 60);
}

// Whatever fails, a later view reads what was written: the stream writes on, or it has become a
// view itself.
TEST(DirRefusalTest, NoView) {
  int written = 0;
  RefuseEachCall([&](DirWorld&, const Refused& refused) {
    CKAPPositionableStream stream = NewStream();
    Write(stream, "text");
    std::optional<CKAPPositionableStream> first;
    const bool failed = refused([&] { first = stream.CreateIndependentlyPositionableStream(); });
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
                                         {Kind::kMark, [&] { stream.Mark(); }}};
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
