// SPDX-License-Identifier: MIT
#include <cstring>
#include <stdexcept>

#include "ValidatorWorld.h"

// Extra validations.

namespace {

using namespace KAP_T_MT;

const Outcome kValid = {"valid"};

class CallbackTest : public ::testing::Test, public ValidatorWorld {
 public:
  CallbackTest() { gWorld = this; }

  static char* Bytes(KAPSharedBuffer* buffer) {
    return reinterpret_cast<char*>(gWorld->Call<KAPSharedBuffInterface, "GetBuffer">(buffer));
  }
  // Fails everything, with the text that the client data are.
  static long Reject(POSObject*, KAPStringAtom*, KAPSharedBuffer* buffer, void* text) {
    std::strcpy(Bytes(buffer), static_cast<const char*>(text));
    return 0;
  }
  static void* Text(const char* text) { return const_cast<char*>(text); }

  // Appends its arguments to the text that the client data are; the number 13 fails.
  static long Write(POSObject* object, KAPStringAtom* type, KAPSharedBuffer* buffer, void* text) {
    const std::string shown = gWorld->Show(object);
    *static_cast<std::string*>(text) += gWorld->Strings<"GetCString">(type) + (" " + shown + ";");
    const std::size_t size = gWorld->Call<KAPSharedBuffInterface, "GetSize">(buffer);
    EXPECT_EQ(std::string(Bytes(buffer), size), std::string(1024, '\0'));
    return shown == "13" ? 0 : -1;
  }

  std::string fCalls;

  static CallbackTest* gWorld;
};

CallbackTest* CallbackTest::gWorld = nullptr;

TEST_F(CallbackTest, AfterASuccessfulCheckOfTheType) {
  const Object validator = Validator(
      "< L < category array membertype N > N < category int max 20 > K < category string >"
      "  D < category dict keytype K valuetype N > U < category union set [string N] > >");
  std::string calls;
  for (const char* type : {"N", "L", "K", "int", "any", "string"}) {
    RegisterCallback(validator, type, &Write, &calls);
  }
  const auto callsOf = [&](const char* type, const char* object, const Outcome& outcome) {
    calls.clear();
    EXPECT_EQ(Validate(validator, type, Read(object)), outcome);
    return calls;
  };
  EXPECT_EQ(callsOf("L", "[1 2]", kValid), "N 1;N 2;L [1 2];");
  EXPECT_EQ(
      callsOf("L", "[1 21 13]", (Outcome{"[1]: Number above maximum value 20.000000", "[2]: "})),
      "N 1;N 13;");
  EXPECT_EQ(callsOf("D", "< a 1 >", kValid), "K \"a\";N 1;");
  EXPECT_EQ(callsOf("U", "1", kValid), "N 1;");
  EXPECT_EQ(callsOf("int", "1", kValid), "");
  EXPECT_EQ(callsOf("any", "1", kValid), "");
}

// Even where outcomes are remembered without it, and whether or not messages are wanted.
TEST_F(CallbackTest, ForEachOfManyChecksOfOneObject) {
  const Object validator = Validator(
      "< N < category int > A < category union set [N B] > B < category array membertype A > >");
  int calls = 0;
  const auto count = [](POSObject*, KAPStringAtom*, KAPSharedBuffer*, void* data) {
    return static_cast<long>(++*static_cast<int*>(data));
  };
  RegisterCallback(validator, "N", count, &calls);
  const Object object = FarDown(Number(1), 3000);
  EXPECT_EQ(Validate(validator, "A", object), kValid);
  EXPECT_EQ(std::exchange(calls, 0), 3000);
  EXPECT_TRUE((Call<POSValidatorInterface, "Validate">(validator.get(), object.get(),
                                                       Key("A").get(), nullptr)));
  EXPECT_EQ(calls, 3000);
}

TEST_F(CallbackTest, ALaterOneReplaces) {
  const Object validator = Validator("< N < category int > >");
  const Object one = Number(1);
  RegisterCallback(validator, "N", &Reject, Text("first"));
  RegisterCallback(validator, "N", &Reject, Text("second"));
  EXPECT_EQ(Validate(validator, "N", one), Outcome{"second"});
  RegisterCallback(validator, "N", nullptr);
  EXPECT_EQ(Validate(validator, "N", one), kValid);

  // In the middle of its own call.
  const auto replace = [](POSObject*, KAPStringAtom* typeName, KAPSharedBuffer* buffer,
                          void* self) {
    gWorld->Call<POSStructValidatorInterface, "RegisterCallbackProc">(
        static_cast<KAPContainer*>(self), typeName, &Reject, Text("third"));
    return Reject(nullptr, typeName, buffer, Text("replaced"));
  };
  RegisterCallback(validator, "N", replace, validator.get());
  EXPECT_EQ(Validate(validator, "N", one), Outcome{"replaced"});
  EXPECT_EQ(Validate(validator, "N", one), Outcome{"third"});
}

// A callback may change the document and the schema. The current step finishes with the contents it
// started with; later steps see the changes.
TEST_F(CallbackTest, ThatChangesTheDocument) {
  const auto change = [](POSObject* object, KAPStringAtom*, KAPSharedBuffer*, void* data) {
    gWorld->fCalls += gWorld->Show(object) + " ";
    (*static_cast<std::function<void()>*>(data))();
    return 1l;
  };
  const char* const schema =
      "< N < category union set [int string] > A < category array membertype N >"
      "  D < category dict required < b N > optional < a N c N d N > valuetype N > >";
  const auto callsDuring = [&](const char* type, const Object& object, std::function<void()> body) {
    const Object validator = Validator(schema);
    for (const char* name : {"N", "A", "D"}) RegisterCallback(validator, name, change, &body);
    fCalls.clear();
    EXPECT_EQ(Validate(validator, type, object), kValid);
    return fCalls;
  };
  const Object array = Read("[1 2 3 4]");
  EXPECT_EQ(callsDuring("A", array, [&] { Call<POSArrayInterface, "Remove">(array.get(), 0ul); }),
            "1 3 [3 4] ");
  const Object replaced = Read("[1 2]");
  EXPECT_EQ(
      callsDuring("A", replaced,
                  [&] { Call<POSArrayInterface, "SetAt">(replaced.get(), 0ul, Number(9).get()); }),
      "1 2 [9 2] ");
  const Object dict = Read("< a 1 b 2 c 3 d 4 >");
  EXPECT_EQ(callsDuring("D", dict,
                        [&] {
                          for (const char* key : {"a", "c"}) Remove(dict, key);
                        }),
            "1 1 2 2 4 4 <b 2 d 4> ");
}

// The last references to all that a check works on.
TEST_F(CallbackTest, ThatReleasesEverything) {
  struct State {
    Object validator;
    Object object;
    int calls = 0;
  } state = {Validator("< A < category array membertype N > N < category int > >"), Read("[1 2]")};
  const auto release = [](POSObject*, KAPStringAtom*, KAPSharedBuffer*, void* data) {
    auto& all = *static_cast<State*>(data);
    all.validator.reset();
    all.object.reset();
    return static_cast<long>(++all.calls);
  };
  RegisterCallback(state.validator, "N", release, &state);
  EXPECT_TRUE((Call<POSValidatorInterface, "Validate">(state.validator.get(), state.object.get(),
                                                       Key("A").get(), nullptr)));
  EXPECT_EQ(state.calls, 2);
}

// Whichever call of a callback empties the document and the schema: no crash, and a message about
// everything that a later step needs and does not find.
TEST_F(CallbackTest, ThatEmptiesEverything) {
  const char* const schema =
      "< N < category int > S < category string > U < category union set [S N] >"
      "I < category intersection set [N U] >"
      "H < category array membertype [N U I] > A < category array membertype U >"
      "D < category dict required < r H > optional < o A > keytype S valuetype any > >";
  struct State {
    Object schema;
    Object object;
    int calls = 0;
    int at = 0;
  };
  const auto empty = [](POSObject*, KAPStringAtom*, KAPSharedBuffer*, void* data) {
    auto& state = *static_cast<State*>(data);
    if (++state.calls != state.at) return 1l;
    for (const char* path : {"D.required", "D.optional", "D", "U", "I", "H", "A"}) {
      gWorld->Empty(gWorld->DeepGet(state.schema, path));
    }
    for (const char* path : {"r", "o"}) gWorld->Empty(gWorld->DeepGet(state.object, path));
    gWorld->Empty(state.schema);
    gWorld->Empty(state.object);
    return 1l;
  };
  int at = 1;
  for (bool reached = true; reached; ++at) {
    SCOPED_TRACE(at);
    const BalancedScope balanced(*this);
    State state = {Read(schema), Read("< r [1 (x) 2] o [(y) 3 (z)] >"), 0, at};
    const Object validator = Validator(state.schema);
    for (const char* name : {"N", "S", "U", "I", "H", "A", "D"}) {
      RegisterCallback(validator, name, empty, &state);
    }
    Validate(validator, "D", state.object);
    reached = state.calls >= at;
  }
  EXPECT_GT(at, 10);
}

// Such a part can still be kept alive, and a callback receives it.
TEST_F(CallbackTest, AForeignPartWhoseInterfaceIsGone) {
  const char* const name = "TestForeign";
  static int never;
  for (const auto& entry : POSObjectInterface::Registration(nullptr, nullptr, nullptr)) {
    Register(name, entry.fMethodName, entry.fProcName, &never);
  }
  const Object array = Read("[1]");
  Call<POSArrayInterface, "Append">(array.get(), Foreign(name).get());
  Unregister(name);
  const Object validator =
      Validator("< L < category array membertype E > E < category union set [any] > >");
  std::string calls;
  const auto count = [](POSObject*, KAPStringAtom*, KAPSharedBuffer*, void* text) {
    *static_cast<std::string*>(text) += "called ";
    return 1l;
  };
  RegisterCallback(validator, "E", count, &calls);
  EXPECT_EQ(Validate(validator, "L", array), kValid);
  EXPECT_EQ(calls, "called called ");
}

// Against its contract.
TEST_F(CallbackTest, OneThatThrows) {
  const Object validator =
      Validator("< N < category int > D < category dict keytype string valuetype N > >");
  const auto fail = [](POSObject*, KAPStringAtom*, KAPSharedBuffer*, void*) -> long {
    throw std::runtime_error("what went wrong");
  };
  RegisterCallback(validator, "N", fail);
  EXPECT_EQ(Validate(validator, "D", Read("< a 1 >")), Outcome{"! what went wrong"});
}

// A reason that fills the buffer, with or without a terminator, and one in a context that makes it
// too long.
TEST_F(CallbackTest, ReasonsAreCut) {
  const auto fill = [](POSObject*, KAPStringAtom*, KAPSharedBuffer* buffer, void* size) {
    std::memset(Bytes(buffer), 'x', *static_cast<std::size_t*>(size));
    return 0l;
  };
  const Object validator = Validator("< N < category int > L < category array membertype N > >");
  for (std::size_t size : {1022u, 1023u, 1024u}) {
    RegisterCallback(validator, "N", fill, &size);
    EXPECT_EQ(Validate(validator, "N", Number(1)),
              Outcome{std::string(std::min<std::size_t>(size, 1023), 'x')});
    EXPECT_EQ(Validate(validator, "L", Read("[1]")), Outcome{"[0]: " + std::string(1018, 'x')});
  }
  const std::string name(2000, 'n');
  const Object schema = Read("<>");
  Put(schema, name.c_str(), schema);
  EXPECT_EQ(Validate(Validator(schema), name.c_str(), Number(1)),
            Outcome{("! Malformed schema definition for " + name).substr(0, 1025)});
  Remove(schema, name.c_str());
}

}  // namespace
