// SPDX-License-Identifier: MIT
// The published tables of all interfaces only grow (docs/compatibility.md).

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "Tables.h"

namespace {

using Lines = std::vector<std::string>;

TEST(TablesTest, WhatIsPublishedStaysAsItIs) {
  const Lines published = ReadLines(KAP_PUBLISHED_TABLES);
  ASSERT_GT(published.size(), 150u) << KAP_PUBLISHED_TABLES;
  for (const std::string& broken : BrokenPromises(published, DeclaredTables())) {
    ADD_FAILURE() << broken;
  }
}

TEST(TablesTest, AdditionsPassAndChangesAreNamed) {
  const Lines published = {"A 0 Get AGetProc int()", "A 1 Set ASetProc void(int)",
                           "B 0 Do BDoProc void()"};
  const struct {
    const char* why;
    Lines declared;
    Lines broken;
  } rows[] = {
      {"unchanged", published, {}},
      {"a method at the end, and an interface",
       {published[0], published[1], "A 2 New ANewProc A*()", published[2], "C 0 X Y void()"},
       {}},
      {"a method in front moves the others",
       {"A 0 New N void()", "A 1 Get AGetProc int()", "A 2 Set ASetProc void(int)", published[2]},
       {"A 0 was Get AGetProc int(), is New N void()",
        "A 1 was Set ASetProc void(int), is Get AGetProc int()"}},
      {"another type",
       {published[0], "A 1 Set ASetProc void(long)", published[2]},
       {"A 1 was Set ASetProc void(int), is Set ASetProc void(long)"}},
      {"another procedure",
       {published[0], published[1], "B 0 Do BDoProcV2 void()"},
       {"B 0 was Do BDoProc void(), is Do BDoProcV2 void()"}},
      {"the last method is gone",
       {published[0], published[2]},
       {"A 1 is gone: Set ASetProc void(int)"}},
      {"an interface is gone", {published[0], published[1]}, {"B 0 is gone: Do BDoProc void()"}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(BrokenPromises(published, row.declared), row.broken);
  }
}

// A release adds what is new. It must not publish a changed line as a side effect.
TEST(TablesTest, AReleaseAddsAndNeverReplaces) {
  const std::string path = testing::TempDir() + "published_tables.txt";
  const Lines published = {"A 0 Get AGetProc int()"};
  const Lines grown = {published[0], "A 1 Set ASetProc void(int)", "B 0 Do BDoProc void()"};
  std::ofstream(path) << published[0] << '\n';

  EXPECT_EQ(AddToPublished(path, {"A 0 Get AGetProc long()"}),
            Lines{"A 0 was Get AGetProc int(), is Get AGetProc long()"});
  EXPECT_EQ(ReadLines(path), published);
  EXPECT_EQ(AddToPublished(path, grown), Lines{});
  EXPECT_EQ(ReadLines(path), grown);
  std::remove(path.c_str());
  EXPECT_EQ(AddToPublished(path, grown), Lines{path + ": no published tables"});
}

// An alias must not hide a change of the type that it stands for.
TEST(TablesTest, TypesAreWrittenOut) {
  const Lines declared = DeclaredTables();
  const char* const rows[] = {
      "KAP 0 KAPRegisterProcAddress KAPRegisterProcAddress "
      "int(const char*, const char*, const char*, void*)",
      "KAPFilterInterface 1 NewClientDataSink KAPFilterNewClientDataSinkV2Proc "
      "KAPError*(KAPDataSink**, void*, KAPError*(*)(void*, const unsigned char*, unsigned long), "
      "KAPError*(*)(void*))",
      "POSRawPointerInterface 3 GetReleaseProc POSRawPointerGetReleaseProcProc "
      "void(*)(void*)(KAPContainer*)"};
  for (const char* const row : rows) {
    EXPECT_NE(std::find(declared.begin(), declared.end(), row), declared.end()) << row;
  }
}

}  // namespace
