#include <stdexcept>

#include "TestHost.h"

namespace {

using KAP_T_MT::KAPResource;
using KAPHost::Component;
using KAPHost::LoadError;

class ComponentTest : public HostTest {};

TEST_F(ComponentTest, IsInitialisedTerminatedAndUnloaded) {
  {
    Component component = fHost.Load(SMALL_COMPONENT, "Small");
    EXPECT_EQ(component.Version(), 7);
    EXPECT_EQ(fHost.TakeSnapshot().Of(KAPResource::kAtom, "kept by a component").fNumber, 1);
    const auto answer =
        reinterpret_cast<int (*)()>(fHost.Find("SmallInterface", "Answer", "SmallAnswerProc"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);

    Component moved = std::move(component);
    EXPECT_NE(fHost.Find("SmallInterface", "Answer", "SmallAnswerProc"), nullptr);
  }
  EXPECT_EQ(fHost.Find("SmallInterface", "Answer", "SmallAnswerProc"), nullptr);
  EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty());
}

TEST_F(ComponentTest, FailuresNameFileAndReason) {
  const struct {
    const char* why;
    std::string path;
    std::string name;
    std::string part;
  } rows[] = {{"no such file", "/no/such/file.so", "Small", "cannot open shared object file"},
              {"no such entry point", SMALL_COMPONENT, "Big", "BigInitialize"},
              {"fails to initialise", SMALL_COMPONENT, "Small", "SmallInitialize failed"}};
  fHost.FailRegistration("SmallInterface", "Answer");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    try {
      fHost.Load(row.path, row.name);
      ADD_FAILURE();
    } catch (const LoadError& error) {
      const std::string text = error.what();
      EXPECT_NE(text.find(row.part), std::string::npos) << text;
      EXPECT_NE(text.find(row.path), std::string::npos) << text;
    }
  }
}

}  // namespace
