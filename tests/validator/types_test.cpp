// SPDX-License-Identifier: MIT
#include <algorithm>
#include <fstream>
#include <limits>

#include "ValidatorWorld.h"

// What each type accepts, and what is said about the rest: whole outcomes, in their order.

namespace {

using namespace KAP_T_MT;

const Outcome kValid = {"valid"};
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

class TypesTest : public ValidatorTest {
 protected:
  // The type, or T when it is a definition.
  Outcome CheckOne(const std::string& type, const Object& object) {
    const bool defined = type.find(' ') != std::string::npos;
    return Check("< T < " + (defined ? type : std::string()) +
                     " >"
                     "  NoDict int Text2 < category string maxlen 2 > Max2 < category real max 2 >"
                     "  Max1 < category real max 1 maxexcl 2 > None < category union >"
                     "  Entry < category dict keytype string valuetype Item >"
                     "  Item < category int max 10 > List < category array membertype Entry > >",
                 defined ? "T" : type.c_str(), object);
  }
};

std::vector<std::string> Split(std::string text, const std::string& separator) {
  std::vector<std::string> parts;
  for (std::size_t end = 0; (end = text.find(separator)) != std::string::npos;) {
    parts.push_back(text.substr(0, end));
    text.erase(0, end + separator.size());
  }
  parts.push_back(text);
  return parts;
}

TEST_F(TypesTest, Cases) {
  std::ifstream file(VALIDATOR_CASES);
  int cases = 0;
  for (std::string row; std::getline(file, row);) {
    if (row.empty() || row[0] == '#') continue;
    SCOPED_TRACE(row);
    const std::vector<std::string> parts = Split(row, " | ");
    ASSERT_EQ(parts.size(), 3u);
    const Object object = Read(parts[1].c_str());
    const Outcome outcome = parts[0] == "schema" ? CheckSchema(object) : CheckOne(parts[0], object);
    if (parts[2] == "faulty") {
      EXPECT_TRUE(!outcome.empty() && outcome != kValid);
    } else {
      EXPECT_EQ(outcome, parts[2] == "invalid" ? Outcome() : Split(parts[2], "; "));
    }
    ++cases;
  }
  EXPECT_GT(cases, 120);
}

TEST_F(TypesTest, UndefinedTypes) {
  const auto outcomeFor = [this](const std::string& name) {
    const Object schema = Read("< A < category dict > >");
    Put(Get(schema, "A"), "valuetype", Own(Call<POSStringInterface, "NewPOSString">(name.c_str())));
    return CheckSchema(schema).front();
  };
  const std::string context =
      "A (value, type != TypeDefn): Not a valid union type: Trying DictDefn: "
      "valuetype (optional, type != TypeName): ";
  EXPECT_EQ(outcomeFor("Widget"), context + "Cannot locate definition of type Widget");
  // The reason has 1024 bytes of room, and its context shares them.
  const std::string name(990, 'n');
  EXPECT_EQ(outcomeFor(name),
            (context + "Cannot locate definition of type " + name).substr(0, 1023));
  EXPECT_EQ(outcomeFor(name + 'n'), context + "Caught exception: Error buffer too small");
}

// Which of one object of each kind an intrinsic type accepts (number, string, Unicode string,
// binary data, pointer, array, dictionary). The schema's own entry of that name is never used.
TEST_F(TypesTest, IntrinsicTypes) {
  const struct {
    const char *type, *accepted, *name;
  } rows[] = {{"any", "xxxxxxx", ""},
              {"real", "x......", "REAL"},
              {"string", ".x.....", "STRING"},
              {"unicodestring", "..x....", "UNICODESTRING"},
              {"bindata", "...x...", "BINDATA"},
              {"rawptr", "....x..", "RAWPTR"},
              {"kapobjref", "....x..", "OBJREF"},
              {"qnbaseobjref", "....x..", "OBJREF"},
              {"kaperrorobjref", "....x..", "OBJREF"}};
  const std::vector<Object> objects = OneOfEachKind();
  for (const auto& row : rows) {
    const std::string schema = std::string("< ") + row.type + " < category int min 99 > >";
    const std::string message = std::string("Expected ") + row.name + " was of invalid type";
    for (std::size_t kind = 0; kind < objects.size(); ++kind) {
      EXPECT_EQ(Check(schema, row.type, objects[kind]),
                row.accepted[kind] == 'x' ? kValid : Outcome{message})
          << row.type << kind;
    }
  }
}

// What text notation cannot say.
TEST_F(TypesTest, OtherObjects) {
  for (double value : {kNan, kInfinity, -kInfinity, 1e300}) {
    EXPECT_EQ(CheckOne("int", Number(value)), Outcome{"INT was not a whole number"});
    EXPECT_EQ(CheckOne("bool", Number(value)), Outcome{"BOOL was a number unequal to zero or one"});
  }
  EXPECT_EQ(CheckOne("bool", Number(-0.0)), kValid);
  EXPECT_EQ(CheckOne("category real min 1 max 0 minexcl 1 maxexcl 0", Number(kNan)), kValid);
  const Object schema = Read("< T < category real > >");
  Put(Get(schema, "T"), "min", Number(1e308));
  EXPECT_EQ(Validate(Validator(schema), "T", Number(0)).front().size(), 27u + 309 + 7);
  Put(Get(schema, "T"), "min", Number(kInfinity));
  EXPECT_EQ(Validate(Validator(schema), "T", Number(1e308)),
            Outcome{"Number below mininum value inf"});
  EXPECT_EQ(Validate(Validator(schema), "T", Number(kInfinity)), kValid);

  const Object data = BinData("png", "abc");
  EXPECT_EQ(CheckOne("category bindata minlen 3 maxlen 3 oneof [gif png]", data), kValid);
  EXPECT_EQ(CheckOne("category bindata minlen 4 maxlen 2 oneof [gif]", data),
            (Outcome{"String length below mininum value 4", "String length above maximum value 2",
                     "TypeName is not one of the enumerated values"}));
  const Object pointer = RawPointer(this, [](void*) {});
  for (const std::string type : {"rawptr", "kapobjref", "qnbaseobjref", "kaperrorobjref"}) {
    EXPECT_EQ(CheckOne("category " + type, pointer), kValid);
  }
  const Object array = Read("[1]");
  Call<POSArrayInterface, "SetAt">(array.get(), 2ul, Number(1).get());
  EXPECT_EQ(CheckOne("category array membertype any", array),
            Outcome{"! CPOSArray::GetAt subscript failed"});
}

// Each level multiplies the checks: they would not end if outcomes were not remembered.
TEST_F(TypesTest, SeveralTypesAtEachLevel) {
  constexpr int kLevels = 32;
  const auto nested = [](const std::string& inner) {
    return std::string(kLevels, '[') + inner + std::string(kLevels, ']');
  };
  const auto members = [](std::string inner) {
    for (int level = 0; level < kLevels; ++level) inner = "< k " + inner + " >";
    return inner;
  };
  const struct {
    const char* why;
    const char* definitions;  // of a level; A@ is its type, and A# that of the next level
    std::string object;
    bool valid;
  } rows[] = {
      {"a union", "A@ < category union set [A# A#] >", "text", false},
      {"a union, valid", "A@ < category union set [A# A#] >", "1", true},
      {"a wide union",
       "A@ < category union set [A# A# A# A# A# A# A# A# A# A# A# A# A# A# A# A#] >", "text",
       false},
      {"unions in turn",
       "A@ < category union set [A# B#] > B@ < category union set [B# A#] > B32 < category real >",
       "text", false},
      {"nested objects",
       "A@ < category union set [X@ Y@] > X@ < category array membertype A# minlen 9 >"
       "Y@ < category array membertype A# >",
       nested("text"), false},
      {"nested objects, valid by the second type only",
       "A@ < category union set [X@ Y@] > X@ < category array membertype A# minlen 9 >"
       "Y@ < category array membertype A# >",
       nested("1"), true},
      {"an intersection", "A@ < category intersection set [A# A#] >", "1", true},
      {"names", "A@ < category dict keytype K@ valuetype A# > K@ < category string maxlen 1 >",
       members("1"), true},
      {"a name that is too short",
       "A@ < category dict keytype K@ valuetype A# > K@ < category string minlen 2 >", members("1"),
       false},
      {"a value and a member", "A@ < category dict required < k A# > valuetype A# >", members("1"),
       true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    std::string schema = "< A32 < category int > ";
    for (int level = 0; level < kLevels; ++level) {
      for (const char* c = row.definitions; *c != '\0'; ++c) {
        schema += *c == '@'   ? std::to_string(level)
                  : *c == '#' ? std::to_string(level + 1)
                              : std::string(1, *c);
      }
    }
    const Object validator = Validator((schema + " >").c_str());
    RegisterCallback(validator, "A1", nullptr);  // none: outcomes are remembered all the same
    const Object object = Read(row.object.c_str());
    EXPECT_EQ((Call<POSValidatorInterface, "Validate">(validator.get(), object.get(),
                                                       Key("A0").get(), nullptr)),
              row.valid);
    if (row.valid) {
      EXPECT_EQ(Validate(validator, "A0", object), kValid);
    } else if (&row == &rows[0] || &row == &rows[4]) {  // the others take as long
      EXPECT_GT(Validate(validator, "A0", object).size(), 100'000u);
    }
  }
}

// Where outcomes are remembered, an invalid object still has all its messages. Without memory for
// the outcomes, everything is checked again.
TEST_F(TypesTest, RememberedOutcomes) {
  const Object validator = Validator(
      "< N < category int max 4 > A < category array membertype T >"
      "  T < category union set [N A] > >");
  constexpr int kTimes = 800;
  for (const bool hasMemory : {true, false}) {
    if (!hasMemory) FailBlocksAbove(90000);
    const Object invalid = FarDown(Number(5), kTimes);
    const auto isValid = [&](const Object& object) {
      return Call<POSValidatorInterface, "Validate">(validator.get(), object.get(), Key("A").get(),
                                                     nullptr);
    };
    EXPECT_FALSE(isValid(invalid));
    EXPECT_TRUE(isValid(FarDown(Number(4), kTimes)));
    const std::string message = "Number above maximum value 4.000000";
    const Outcome outcome = Validate(validator, "A", invalid);
    EXPECT_EQ(std::count_if(outcome.begin(), outcome.end(),
                            [&](const std::string& each) { return each.ends_with(message); }),
              kTimes);
    EXPECT_EQ(Fired(), !hasMemory);
    StopFaults();
  }
}

// One object and more types than outcomes are remembered: none is taken for another one.
TEST_F(TypesTest, OutcomesOfManyTypes) {
  constexpr int kTypes = 3000;
  std::string schema = "< A < category array membertype T > T < category union set [A All] >";
  std::string all;
  for (int i = 0; i < kTypes; ++i) {
    const std::string number = std::to_string(i);
    schema += " U" + number + " < category union set [No" + number + " Yes" + number + "] > No" +
              number + " < category int max 4 > Yes" + number + " < category int >";
    all += " U" + number;
  }
  schema += " All < category intersection set [" + all + "] > >";
  const Object validator = Validator(schema.c_str());
  const Object object = FarDown(Number(5), 1);
  EXPECT_TRUE((Call<POSValidatorInterface, "Validate">(validator.get(), object.get(),
                                                       Key("A").get(), nullptr)));
}

// Many messages about one part hide none about another.
TEST_F(TypesTest, ManyMessages) {
  std::string schema =
      "< T9 < category dict required < v V a A b B > > V < category array membertype U >"
      " U < category array > A < category array membertype int >"
      " B < category array membertype int > ";
  std::string object = "< v [";
  for (int i = 0; i < 2000; ++i) object += "[]";  // outcomes are remembered from then on
  object += "] a [";
  for (int i = 0; i < 200'100; ++i) object += "x ";
  object += "] b [x x] >";
  for (int level = 9; level-- > 0;) {
    const std::string number = std::to_string(level);
    schema +=
        "T" + number + " < category dict required < t T" + std::to_string(level + 1) + " > > ";
    object = "< t " + object + " >";
  }
  const Outcome outcome = Check(schema + ">", "T0", object.c_str());
  ASSERT_EQ(outcome.size(), 200'102u);
  EXPECT_NE(outcome.back().find(" b (required"), std::string::npos) << outcome.back();
}

}  // namespace
