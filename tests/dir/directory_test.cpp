// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <fstream>

#include "DirWorld.h"
#include "POSValidator.h"
#include "kaputilsdirimpl/UnixKAPUtilsDirImpl.h"

namespace {

using namespace KAP_T_MT;
using Dir = KAPUtilsDirInterface;

// The body throws the error "KAPUtilsDirImpl::<operation>: Unknown error" with this code.
void ExpectFailure(const std::string& operation, int code, const Body& body) {
  try {
    body();
    ADD_FAILURE() << operation << " succeeded";
  } catch (const CKAPError& error) {
    EXPECT_EQ(error.what(), "KAPUtilsDirImpl::" + operation + ": Unknown error");
    EXPECT_TRUE(error.Matches("KAPUtilsDir", code));
  }
}

auto OpenDescriptors() { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); }

TEST_F(DirTest, FullPaths) {
  const std::string longName(3 * PATH_MAX, 'n');
  const struct {
    const char* directory;  // null: TMPDIR is not set
    std::string name;
    std::string path;
  } rows[] = {{nullptr, "a", "/tmp/a"},
              {"/var/tmp/", "a", "/var/tmp/a"},
              {"/tmp", "/etc/x", "/tmp//etc/x"},
              {"", "a", "/a"},  // empty: no slash at its end
              {"no/such", "../b", "no/such/../b"},
              {"/tmp", longName, "/tmp/" + longName}};  // longer than the system takes
  for (const auto& row : rows) {
    row.directory ? ::setenv("TMPDIR", row.directory, 1) : ::unsetenv("TMPDIR");
    EXPECT_EQ(CKAPUtilsDir::GetTempDir().GetFilePathSpec(Text(row.name)).Text(), row.path);
  }
  Unregister(Dir::kName);
  EXPECT_TRUE(CKAPUtilsDir::GetTempDir().IsNull());
}

TEST_F(DirTest, FindsDeletesAndRenames) {
  const CKAPUtilsDir dir = CKAPUtilsDir::GetTempDir();
  const CKAPStringAtom tooLong = Text(std::string(PATH_MAX, 'n'));
  std::ofstream(Path("file")) << "old";
  fs::create_directory(Path("folder"));
  fs::create_symlink(Path("file"), Path("link"));
  for (const char* name : {"file", "folder", "link", "", "folder/../file"}) {
    EXPECT_TRUE(dir.FileExists(Text(name))) << name;
  }
  dir.Rename(Text("file"), "folder/old");
  dir.Rename("folder/old", Text("folder/new"));
  EXPECT_EQ(fs::file_size(Path("folder/new")), 3u);
  for (const char* name : {"file", "link", "folder/new/below", tooLong.Text()}) {
    EXPECT_FALSE(dir.FileExists(Text(name))) << name;
  }
  ExpectFailure("Delete", ENOENT, [&] { dir.Delete(Text("file")); });
  ExpectFailure("Delete", ENOTEMPTY, [&] { dir.Delete(Text("folder")); });
  ExpectFailure("Delete", ENAMETOOLONG, [&] { dir.Delete(tooLong); });
  ExpectFailure("Rename", ENOENT, [&] { dir.Rename(Text("file"), Text("b")); });
  ExpectFailure("Rename", ENAMETOOLONG, [&] { dir.Rename(Text("link"), tooLong); });
  for (const char* name : {"folder/new", "folder", "link"}) dir.Delete(Text(name));
}

TEST_F(DirTest, UniqueFiles) {
  const auto descriptors = OpenDescriptors();
  const CKAPUtilsDir dir = CKAPUtilsDir::New(Text(Path("")));  // ends in a slash
  const std::string names[] = {dir.CreateUniqueFilename(Text("tf")).Text(),
                               dir.CreateUniqueFilename("tf", Text("ignored")).Text(),
                               dir.CreateUniqueFilename(Text("./tf")).Text()};
  EXPECT_NE(names[0], names[1]);
  for (const std::string& name : names) {
    EXPECT_EQ(name.substr(0, name.size() - 6), "tf.");
    struct stat entry = {};
    EXPECT_EQ(::stat(Path(name).c_str(), &entry), 0) << name;
    EXPECT_EQ(entry.st_mode, mode_t{S_IFREG | 0600}) << name;
    Remove(name);
  }
  ExpectFailure("createNewFile", ENOENT,
                [&] { (void)dir.CreateUniqueFilename(Text("missing/tf")); });
  EXPECT_EQ(OpenDescriptors(), descriptors + 3);  // deliberate: for the life of the process
}

TEST_F(DirTest, WorkingDirectory) {
  const fs::path before = fs::current_path();
  fs::create_directory(Path("work"));
  fs::current_path(Path("work"));
  // Deliberate: looked for in the directory, made in the working directory.
  const NKAPUtilsDirImpl::KAPUtilsDirImpl folder(Text(Path("")));
  EXPECT_FALSE(folder.createNewFile(Text("work")));
  EXPECT_TRUE(folder.createNewFile(Text("a")));
  ExpectFailure("createNewFile", ENOENT, [&] { folder.createNewFile(Text("no/a")); });
  CKAPUtilsDir::GetCurrent().Delete(Text("a"));
  Remove("work");
  ExpectFailure("GetCurrent", ENOENT, [] { (void)CKAPUtilsDir::GetCurrent(); });
  fs::current_path(before);
}

TEST_F(DirTest, BadArguments) {
  const CKAPUtilsDir good = CKAPUtilsDir::GetTempDir();
  const CPOSNumber number(1);
  const CKAPContainerHolder empty;
  const CPOSStructValidator validator(CPOSDict::New());  // filed under the same name as a directory
  const CKAPStringAtom text = Text("file");
  KAPUtilsDir* const dir = good.Handle();
  KAPStringAtom* const name = text.Handle();
  KAPUtilsDir* newDir = dir;
  KAPStringAtom* atom = name;
  unsigned char exists = 1;
  const auto expect = [this](const char* message, const std::vector<KAPError*>& errors) {
    for (KAPError* error : errors) EXPECT_EQ(TakeMessage(error), message);
  };
  for (KAPUtilsDir* bad :
       {static_cast<KAPUtilsDir*>(nullptr), number.Handle(), empty.Handle(), validator.Handle()}) {
    expect("instance was not an KAPUtilsDir",
           {Call<Dir, "FileExists">(&exists, bad, name), Call<Dir, "Delete">(bad, name),
            Call<Dir, "Rename">(bad, name, name), Call<Dir, "GetFilePathSpec">(&atom, bad, name),
            Call<Dir, "CreateUniqueFilename">(&atom, bad, name, name)});
  }
  expect(
      "a null pointer was given where a value is needed",
      {Call<Dir, "GetTempDir">(nullptr), Call<Dir, "GetCurrent">(nullptr),
       Call<Dir, "NewKAPUtilsDir">(nullptr, name), Call<Dir, "NewKAPUtilsDir">(&newDir, nullptr),
       Call<Dir, "FileExists">(nullptr, dir, name), Call<Dir, "FileExists">(&exists, dir, nullptr),
       Call<Dir, "Delete">(dir, nullptr), Call<Dir, "Rename">(dir, nullptr, name),
       Call<Dir, "Rename">(dir, name, nullptr), Call<Dir, "GetFilePathSpec">(nullptr, dir, name),
       Call<Dir, "GetFilePathSpec">(&atom, dir, nullptr),
       Call<Dir, "CreateUniqueFilename">(nullptr, dir, name, name),
       Call<Dir, "CreateUniqueFilename">(&atom, dir, nullptr, name)});
  EXPECT_TRUE(!newDir && !atom && exists == 0);
}

}  // namespace
