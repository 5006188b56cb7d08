// SPDX-License-Identifier: MIT
// Checks of documents and schemas: files, formats and exit statuses. The tests of the library cover
// the rules.

#include "Folder.h"
#include "Posutil.h"

namespace {

const char kSchema[] =
    "< Person < category dict required < name Name > optional < born int > >"
    "  Name < category string minlen 1 maxlen 9 > People < category array membertype Person >"
    "  Nothing < category union set [] > Thing < category objref >"
    "  Circle < category union set [Circle] > >";

class ValidateTest : public testing::Test {
 protected:
  ValidateTest() {
    Put("schema.txt", kSchema);
    Put("ada.txt", "< name Ada born 1815 >");
    Put("bad.txt", "< name () born [] cats 2 >");
  }

  std::string Put(const std::string& name, const std::string& content) {
    return fFolder.Put(name, content);
  }
  // Expands names of files to paths in the folder. Absolute paths and other arguments stay.
  std::vector<std::string> InFolder(std::vector<std::string> arguments) const {
    for (std::string& each : arguments) {
      if (each[0] != '/' && each.find('.') != std::string::npos) each = fFolder.Path(each);
    }
    return arguments;
  }
  // Removes the path of the folder from the output.
  Outcome Run(const std::vector<std::string>& arguments, const std::string& input = "") const {
    Outcome outcome = RunPosutil(InFolder(arguments), input);
    const std::string prefix = fFolder.Path("");
    for (std::string* text : {&outcome.fOut, &outcome.fErr}) {
      for (std::size_t at; (at = text->find(prefix)) != std::string::npos;) {
        text->erase(at, prefix.size());
      }
    }
    return outcome;
  }
  Outcome Validate(std::vector<std::string> arguments, const std::string& type = "Person",
                   const std::string& input = "") const {
    arguments.insert(arguments.begin(), {"validate", "--schema", "schema.txt", "--type", type});
    return Run(arguments, input);
  }

  const Folder fFolder;
};

const std::string kBad =
    "bad.txt:1:16: born (optional, type != int): Expected INT was of invalid type; "
    "found an array of 0\nschema.txt:1:60: note: the rule\n"
    "bad.txt:1:19: Unknown member cats\nschema.txt:1:3: note: the rule\n"
    "bad.txt:1:8: name (required, type != Name): String length below mininum value 1; found \"\"\n"
    "schema.txt:1:97: note: the rule\n";

TEST_F(ValidateTest, TheWorstOfAllFilesDecides) {
  Put("torn.txt", "< name");
  Put("empty.data", " ");
  const std::string torn =
      "torn.txt:1:7: unexpected end of the text; expected a value for \"name\"\n"
      "  < name\n        ^\n";
  const struct {
    std::vector<std::string> files;
    Outcome outcome;
  } rows[] = {
      {{"ada.txt"}, {0, "1 file checked: 1 valid, 0 not valid, 0 messages\n", ""}},
      {{"bad.txt"}, {1, kBad + "1 file checked: 0 valid, 1 not valid, 3 messages\n", ""}},
      {{"bad.txt", "ada.txt"},
       {1, kBad + "2 files checked: 1 valid, 1 not valid, 3 messages\n", ""}},
      {{"bad.txt", "nowhere.txt", "torn.txt", "bad.txt"},
       {3, kBad + kBad + "2 files checked: 0 valid, 2 not valid, 6 messages; 2 files not checked\n",
        "posutil: nowhere.txt: No such file or directory\n" + torn}},
      {{"torn.txt", "ada.txt"},
       {3, "1 file checked: 1 valid, 0 not valid, 0 messages; 1 file not checked\n", torn}},
      {{"empty.data", "ada.txt"},
       {3, "1 file checked: 1 valid, 0 not valid, 0 messages; 1 file not checked\n",
        "posutil: empty.data: the input is empty\n"}},
      {{"--all", "empty.data"}, {0, "0 files checked: 0 valid, 0 not valid, 0 messages\n", ""}},
      {{"--quiet", "bad.txt"}, {1, "", ""}},
      {{"-q", "ada.txt"}, {0, "", ""}},
      {{"-q", "bad.txt", "nowhere.txt"},
       {3, "", "posutil: nowhere.txt: No such file or directory\n"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.files));
    EXPECT_EQ(Validate(row.files), row.outcome);
  }
}

TEST_F(ValidateTest, EveryFormatOfDocumentsAndSchemas) {
  const std::string message =
      ": born (optional, type != int): INT was not a whole number; "
      "found 1815.5\n";
  const struct {
    std::string format;
    std::string place;
    std::string rule;
  } rows[] = {{"json", ":2:11", ":24:7"}, {"typea", ":2:9", ":25:4"}};
  Put("odd.json", R"({"name":"Ada","born":1815.5})");
  for (const auto& [format, place, rule] : rows) {
    Run({"convert", "schema.txt", "schema." + format});
    Run({"convert", "ada.txt", "ada." + format});
    Run({"convert", "odd.json", "odd." + format});
    EXPECT_EQ(Run({"validate", "ada." + format, "--schema", "schema." + format, "--type", "Person",
                   "odd." + format}),
              (Outcome{1,
                       "odd." + format + place + message + "schema." + format + rule +
                           ": note: the rule\n"
                           "2 files checked: 1 valid, 1 not valid, 1 message\n",
                       ""}));
  }
  EXPECT_EQ(Run({"validate", "--schema", "-", "--schema-from", "text", "--type", "Person", "--from",
                 "json", "odd.json"},
                kSchema)
                .fStatus,
            1);
  EXPECT_EQ(
      Validate({"--from", "text", "-"}, "People", "[< name Ada >\n\t< name (Charles Babbage) >]"),
      (Outcome{1,
               "<stdin>:2:9: [1]: name (required, type != Name): String length above maximum value "
               "9; found \"Charles Babbage\"\nschema.txt:1:106: note: the rule\n"
               "1 file checked: 0 valid, 1 not valid, 1 message\n",
               ""}));
}

TEST_F(ValidateTest, Json) {
  // A name with characters that neither a line nor JSON can hold.
  Put("odd.txt", "< name Ada (\x80\n\"\\\\) 1 >");
  const std::string error = "nowhere.txt: No such file or directory";
  EXPECT_EQ(
      Validate({"--format", "json", "ada.txt", "odd.txt", "nowhere.txt"}),
      (Outcome{3,
               "{\"files\":[\n"
               "{\"file\":\"ada.txt\",\"valid\":true,\"messages\":[]},\n"
               "{\"file\":\"odd.txt\",\"valid\":false,\"messages\":[\n"
               " {\"file\":\"odd.txt\",\"line\":1,\"column\":12,\"path\":\"/\\\\x80\\n\\\"\\\\\","
               "\"type\":\"Person\",\"message\":\"Unknown member \\\\x80\\n\\\"\\\\\","
               "\"rule\":{\"file\":\"schema.txt\",\"line\":1,\"column\":3}}]},\n"
               "{\"file\":\"nowhere.txt\",\"valid\":null,\"messages\":[],\"error\":\"" +
                   error + "\"}\n],\"valid\":1,\"invalid\":1,\"unchecked\":1,\"messages\":1}\n",
               "posutil: " + error + "\n"}));
  EXPECT_EQ(Validate({"odd.txt"}).fOut,
            "odd.txt:1:12: Unknown member \\x80\\x0a\"\\\n"
            "schema.txt:1:3: note: the rule\n"
            "1 file checked: 0 valid, 1 not valid, 1 message\n");
}

TEST_F(ValidateTest, Types) {
  EXPECT_EQ(Validate({"ada.txt", "bad.txt"}, "any").fStatus, 0);
  EXPECT_EQ(Validate({"ada.txt"}, "Nothing"),
            (Outcome{1,
                     "ada.txt: not valid, without a message\n"
                     "1 file checked: 0 valid, 1 not valid, 0 messages\n",
                     ""}));
  EXPECT_EQ(Validate({"--all", "--from", "json", "-"}, "Nothing", "1").fOut,
            "<stdin>, document 1: not valid, without a message\n"
            "1 document checked: 0 valid, 1 not valid, 0 messages\n");
  // A missing type ends the command before it opens a document.
  for (const std::string type : {"Perso", "", "category"}) {
    EXPECT_EQ(Validate({"nowhere.txt"}, type),
              (Outcome{2, "",
                       "posutil: schema.txt: no type \"" + type +
                           "\" (types: Circle, Name, Nothing, People, Person, Thing)\n"}));
  }
}

// A report of the library means "not checked", not "not valid", and does not end the command.
TEST_F(ValidateTest, Reports) {
  const std::string none =
      "0 files checked: 0 valid, 0 not valid, 0 messages; 1 file not checked\n";
  const auto outcome = [&](const std::string& file, const std::string& report) {
    return Outcome{3, none, "posutil: " + file + ": the library reports: " + report + "\n"};
  };
  EXPECT_EQ(Validate({"ada.txt"}, "Thing"), outcome("ada.txt", "Unknown category in schema"));
  EXPECT_EQ(Validate({"ada.txt"}, "Circle"),
            outcome("ada.txt", "property object is nested too deep"));
  EXPECT_EQ(Validate({"-q", "ada.txt"}, "Thing").fStatus, 3);

  Put("faulty.txt",
      "< A < min 1 > B < category array membertype [any 1] > C < category A >"
      "  L < category array membertype A > X any >");
  Put("pair.txt", "[1 2]");
  const auto unchecked = [&](const std::string& type, const std::string& file) {
    return Run({"validate", "--no-schema-check", "--schema", "faulty.txt", "--type", type, file});
  };
  const std::string malformed = "Malformed schema definition for A, no category";
  EXPECT_EQ(unchecked("A", "ada.txt"), outcome("ada.txt", malformed));
  EXPECT_EQ(unchecked("L", "pair.txt"), outcome("pair.txt", malformed));
  EXPECT_EQ(unchecked("B", "pair.txt"),
            outcome("pair.txt", "downcast from CPOSObject to CPOSString failed"));
  EXPECT_EQ(unchecked("C", "ada.txt"), outcome("ada.txt", "Unknown category in schema"));
  EXPECT_EQ(unchecked("X", "ada.txt").fStatus, 2);  // a definition that is not a dictionary
}

TEST_F(ValidateTest, AnInvalidSchema) {
  Put("faulty.txt", "< A < category array membertype B > >");
  Put("list.txt", "[1]");
  const Outcome outcome =
      Run({"validate", "--schema", "faulty.txt", "--type", "A", "--format", "json", "ada.txt"});
  EXPECT_EQ(outcome.fStatus, 3);
  const std::string start =
      "{\"files\":[],\"error\":\"faulty.txt: the schema is not valid, so nothing";
  EXPECT_TRUE(outcome.fOut.starts_with(start)) << outcome.fOut;
  const std::string slip =
      "faulty.txt:1:33: A (value, type != TypeDefn): Not a valid union type: Trying ArrayDefn: "
      "Not a valid union type: Trying HomoArrayDefn: membertype (required, type != TypeName): "
      "Cannot locate definition of type B; found \"B\" (the closest of 2 alternatives)\n";
  EXPECT_EQ(outcome.fErr,
            "posutil: faulty.txt: the schema is not valid, so nothing was checked\n" + slip);

  const std::string message = "posutil: list.txt: a schema must be a dictionary of types\n";
  EXPECT_EQ(Run({"validate", "--schema", "list.txt", "--type", "A", "ada.txt"}),
            (Outcome{3, "", message}));
  EXPECT_EQ(Run({"validate", "-q", "--schema", "list.txt", "--type", "A", "ada.txt"}),
            (Outcome{3, "", message}));
  EXPECT_EQ(Run({"validate", "--schema", "nowhere.txt", "--type", "A", "ada.txt"}).fStatus, 3);
  EXPECT_EQ(
      Run({"validate", "--schema", "-", "--schema-from", "text", "--type", "A", "ada.txt"}, "< >"),
      (Outcome{2, "", "posutil: <stdin>: no type \"A\" (types: none)\n"}));
  Put("three.txt", "< A < category array > B < category array > C < category array > >");
  for (const auto& [most, rest] :
       {std::pair("1", "\n2 more messages\n"), {"2", "\n1 more message\n"}}) {
    const Outcome cut =
        Run({"validate", "--max-errors", most, "--schema", "three.txt", "--type", "A", "ada.txt"});
    EXPECT_EQ(cut.fStatus, 3);
    EXPECT_TRUE(cut.fErr.ends_with(rest)) << cut.fErr;
  }

  EXPECT_EQ(Run({"check-schema", "schema.txt", KAP_SAMPLES "/iso-codes.txt"}).fOut,
            "2 files checked: 2 valid, 0 not valid, 0 messages\n");
  EXPECT_EQ(Run({"check-schema", "-q", "schema.txt"}), (Outcome{0, "", ""}));
  EXPECT_EQ(Run({"check-schema", "-q", "faulty.txt"}), (Outcome{1, "", ""}));
  EXPECT_EQ(Run({"check-schema", "list.txt", "faulty.txt", "-q"}), (Outcome{3, "", message}));
  EXPECT_EQ(Run({"check-schema", "faulty.txt"}),
            (Outcome{1, slip + "1 file checked: 0 valid, 1 not valid, 1 message\n", ""}));
  EXPECT_NE(
      Run({"check-schema", "--format", "json", "-", "--from", "text"}, "<>").fOut.find("true"),
      std::string::npos);
}

// Each slip in a schema gives one message, which names it.
TEST_F(ValidateTest, SlipsInSchemas) {
  const struct {
    const char* schema;
    std::string message;
  } rows[] = {
      {"< C < category string minlen (3) > >",
       ":30: C (value, type != TypeDefn): Not a valid union type: Trying StringDefn: minlen "
       "(optional, type != real): Expected REAL was of invalid type; found \"3\" (the closest of "
       "10 alternatives)"},
      {"< D < min 1 > >",
       ":5: D (value, type != TypeDefn): Not a valid union type: Trying DictDefn: Missing required "
       "member category (the closest of 10 alternatives)"},
      {"< D < category strin > >",
       ":16: D (value, type != TypeDefn): Not a valid union type: Trying DictDefn: category "
       "(required, type != kDict): String is not one of the enumerated values; found \"strin\" "
       "(the closest of 10 alternatives)"},
      {"< E < category array membertype [int nosuch] > >",
       ":38: E (value, type != TypeDefn): Not a valid union type: Trying ArrayDefn: Not a valid "
       "union type: Trying HeteroArrayDefn: membertype (required, type != TypeList): [1]: Cannot "
       "locate definition of type nosuch; found \"nosuch\" (the closest of 2 alternatives)"},
      {"< F < category array > >",
       ":5: F (value, type != TypeDefn): Not a valid union type: Trying ArrayDefn: Not a valid "
       "union type: Trying HomoArrayDefn: Missing required member membertype (the closest of 2 "
       "alternatives)"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.schema);
    EXPECT_EQ(
        Run({"check-schema", "--from", "text", "-"}, row.schema),
        (Outcome{1,
                 "<stdin>:1" + row.message + "\n1 file checked: 0 valid, 1 not valid, 1 message\n",
                 ""}));
  }
}

TEST_F(ValidateTest, PlacesOfValuesAndRules) {
  Put("kinds.txt",
      "< Pair < category array membertype [int string] >\n"
      "Both < category intersection set [Low\n High] > Low < category int max 5 >\n"
      "High < category int minexcl 5 >\n"
      "Short < category string maxlen 1 > Wrapped < category dict required < ($unicode) Short > >\n"
      "Map < category dict keytype Short valuetype Low >\n"
      "kA < category string oneof [a] > kB < category string oneof [b] >\n"
      "A < category dict required < kind kA x int y int > >\n"
      "B < category dict required < kind kB z int > optional < w int > >\n"
      "Shape < category union set [int A B] > >");
  const std::string longText(61, 'x');
  const struct {
    const char* type;
    std::string document;
    std::string out;
  } rows[] = {
      {"Pair", "[1\n 2]", "2:2: [1]: Expected STRING was of invalid type; found 2\nkinds.txt:1:41"},
      {"Pair", "[1]",
       "1:1: Heterogenous array object size did not match type array size; found an array of 1\n"
       "kinds.txt:1:25"},
      {"Both", " 7",
       "1:2: Failed intersection type Low: Number above maximum value 5.000000; found 7\n"
       "kinds.txt:3:29"},
      {"Map", "< k 1\n long 2 >",
       "2:2: long (key, type != Short): String length above maximum value 1; found \"long\"\n"
       "kinds.txt:5:25"},
      {"Map", "< k (a b) >",
       "1:5: k (value, type != Low): Expected INT was of invalid type; found \"a b\"\n"
       "kinds.txt:3:16"},
      {"Low", "(\"b\\\\c)",
       "1:1: Expected INT was of invalid type; found \"\\\"b\\\\c\"\nkinds.txt:3:16"},
      {"Low", "(" + longText + ")",
       "1:1: Expected INT was of invalid type; found \"" + longText.substr(0, 60) +
           "\"...\nkinds.txt:3:16"},
      {"Low", "(\u65E5\u202E)",
       "1:1: Expected INT was of invalid type; found \"\u65E5\\u202e\"\nkinds.txt:3:16"},
      {"Shape", "< kind b z q >",
       "1:12: Not a valid union type: Trying B: z (required, type != int): Expected INT was of "
       "invalid type; found \"q\" (the closest of 3 alternatives)\nkinds.txt:9:38"},
      {"Shape", "< kind b w 1 >",
       "1:1: Not a valid union type: Trying B: Missing required member z (the closest of 3 "
       "alternatives)\nkinds.txt:9:38"},
      {"Shape", "(a)",
       "1:1: Not a valid union type: Trying int: Expected INT was of invalid type; found \"a\" "
       "(the closest of 3 alternatives)\nkinds.txt:10:29"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.document);
    EXPECT_EQ(Run({"validate", "--schema", "kinds.txt", "--type", row.type, "--from", "text", "-"},
                  row.document),
              (Outcome{1,
                       "<stdin>:" + row.out +
                           ": note: the rule\n1 file checked: 0 valid, 1 not valid, 1 message\n",
                       ""}));
  }
  const Outcome wrapped =
      Run({"validate", "--schema", "kinds.txt", "--type", "Wrapped", "--from", "json", "-"},
          R"({"$object": {"$unicode": "a b"}})");
  EXPECT_EQ(wrapped.fOut.substr(0, 23), "<stdin>:1:26: $unicode ") << wrapped.fOut;
  const std::string closest = Run({"validate", "--all", "--schema", "kinds.txt", "--type", "Shape",
                                   "--format", "json", "--from", "json", "-"},
                                  "{\"kind\":\"b\"}")
                                  .fOut;
  EXPECT_NE(closest.find("{\"file\":\"<stdin>\",\"document\":1,\"valid\":false,"),
            std::string::npos);
  EXPECT_NE(closest.find("member z\",\"others\":2,\"rule\""), std::string::npos) << closest;
  EXPECT_EQ(
      Run({"validate", "--all-branches", "--schema", "kinds.txt", "--type", "Shape", "--format",
           "json", "--from", "json", "-"},
          "{\"kind\":\"b\"}")
          .fOut,
      "{\"files\":[\n{\"file\":\"<stdin>\",\"valid\":false,\"messages\":[\n"
      " {\"file\":\"<stdin>\",\"line\":1,\"column\":1,\"path\":\"\",\"type\":\"int\","
      "\"message\":\"Not a valid union type: Trying int: Expected INT was of invalid type\","
      "\"found\":\"a dictionary\",\"rule\":{\"file\":\"kinds.txt\",\"line\":10,\"column\":29}},"
      "\n {\"file\":\"<stdin>\",\"line\":1,\"column\":1,\"path\":\"\",\"type\":\"A\","
      "\"message\":\"Not a valid union type: Trying A: Missing required member x\","
      "\"rule\":{\"file\":\"kinds.txt\",\"line\":8,\"column\":38}},\n"
      " {\"file\":\"<stdin>\",\"line\":1,\"column\":1,\"path\":\"\",\"type\":\"A\","
      "\"message\":\"Not a valid union type: Trying A: Missing required member y\","
      "\"rule\":{\"file\":\"kinds.txt\",\"line\":8,\"column\":44}},\n"
      " {\"file\":\"<stdin>\",\"line\":1,\"column\":1,\"path\":\"\",\"type\":\"B\","
      "\"message\":\"Not a valid union type: Trying B: Missing required member z\","
      "\"rule\":{\"file\":\"kinds.txt\",\"line\":9,\"column\":38}}]}\n"
      "],\"valid\":0,\"invalid\":1,\"unchecked\":0,\"messages\":4}\n");
}

// The library cuts its messages, so the places come from checks that start further inside.
TEST_F(ValidateTest, LongMessagesHaveTheirPlace) {
  Put("tree.txt",
      "< Node < category union set [Leaf Branch] >\n"
      "Leaf < category dict required < kind LeafKind value real > >\n"
      "Branch < category dict required < kind BranchKind children Nodes > >\n"
      "LeafKind < category string oneof [leaf] > BranchKind < category string oneof [branch] >\n"
      "Nodes < category array membertype Node > Map < category dict keytype any valuetype real >\n"
      "Lists < category union set [Numbers Strings] > Numbers < category array membertype real >\n"
      "Strings < category array membertype Short > Short < category string maxlen 5 > >");
  const auto tree = [](int depth) {
    std::string json = R"({"kind":"leaf","value":"x"})";
    for (int i = 0; i < depth; ++i) json = R"({"kind":"branch","children":[)" + json + "]}";
    return json;
  };
  std::string strings = "[";
  for (int i = 0; i < 11'200; ++i) strings += "\"a\",";
  const std::string key(990, 'k');
  std::string wide;
  for (int i = 0; i < 520; ++i) wide += "\u00E9";
  const std::string alike(1020, 'k');
  const struct {
    const char* why;
    const char* type;
    std::string document;
    const char* place;
    const char* end;
  } rows[] = {
      {"13 unions", "Node", tree(13), ":1:401: ", "found \"x\" (the closest of 2 alternatives)\n"},
      {"90 unions", "Node", tree(90), ":1:2634: ", "found \"x\" (the closest of 2 alternatives)\n"},
      {"a long key", "Map", "{\"" + key + "\":\"x\"}", ":1:995: ", "found \"x\"\n"},
      {"a key whose type is cut", "Map", "{\"" + key + "0123456789012345\":\"x\"}",
       ":1:1: ", " (value, type != ...\n"},
      {"an unknown key of two bytes each", "Leaf", R"({"kind":"leaf","value":1,")" + wide + "\":1}",
       ":1:1: ", "\u00E9...\n"},
      {"one that starts one byte later", "Leaf", R"({"kind":"leaf","value":1,"x)" + wide + "\":1}",
       ":1:1: ", "\u00E9...\n"},
      {"two unknown keys that start alike", "Leaf",
       R"({"kind":"leaf","value":1,")" + alike + "1\":1,\"" + alike + "2\":1}", ":1:1: ", "k...\n"},
      {"an unknown key", "Leaf", R"({"kind":"leaf","value":1,")" + std::string(1020, 'k') + "\":1}",
       ":1:1: ", "k...\n"},
      {"a key like a context", "Map", R"({"Trying U: ":"x"})", ":1:15: ", "found \"x\"\n"},
      {"an alternative after more messages than a check keeps", "Lists", strings + "\"toolong\"]",
       ":1:44802: ", "found \"toolong\" (the closest of 2 alternatives)\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    const std::string out =
        Run({"validate", "--schema", "tree.txt", "--type", row.type, "--from", "json", "-"},
            row.document)
            .fOut;
    EXPECT_TRUE(out.starts_with(std::string("<stdin>") + row.place)) << out;
    const std::string first = out.substr(0, out.find('\n') + 1);
    EXPECT_TRUE(first.ends_with(row.end)) << out;
    EXPECT_TRUE(out.ends_with("0 valid, 1 not valid, 1 message\n")) << out;
  }
}

TEST_F(ValidateTest, EmptySlots) {
  Put("list.txt", "< L < category array membertype int > >");
  const std::string slot = "An empty slot (null) of an array has no type\n";
  EXPECT_EQ(Run({"validate", "--schema", "list.txt", "--type", "L", "--from", "json", "-"},
                "[1,null,[null]]"),
            (Outcome{1,
                     "<stdin>:1:4: " + slot + "<stdin>:1:10: " + slot +
                         "1 file checked: 0 valid, 1 not valid, 2 messages\n",
                     ""}));
  Put("map.txt",
      "< M < category dict keytype any valuetype L > L < category array membertype int > >");
  const auto map = [&](const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"validate", "--schema", "map.txt", "--type",
                                          "M",        "--from",   "json",    "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Run(arguments, R"({"a":[null,1,null]})");
  };
  EXPECT_EQ(map({"-q"}), (Outcome{1, "", ""}));
  EXPECT_EQ(map({"--max-errors", "1"}).fOut,
            "<stdin>:1:7: " + slot +
                "1 more message (--max-errors 0 prints all)\n"
                "1 file checked: 0 valid, 1 not valid, 2 messages\n");
}

TEST_F(ValidateTest, StreamsAndLimits) {
  const std::string stream = "{\"name\":\"Ada\"}\n{\"name\":1}\n{\"name\":2,\"x\":3}";
  const std::string wrong =
      ": name (required, type != Name): Expected STRING was of invalid type; ";
  const std::string note = "schema.txt:1:81: note: the rule\n";
  EXPECT_EQ(Validate({"--all", "--from", "json", "-"}, "Person", stream),
            (Outcome{1,
                     "<stdin>:2:9" + wrong + "found 1\n" + note + "<stdin>:3:9" + wrong +
                         "found 2\n" + note +
                         "<stdin>:3:11: Unknown member x\nschema.txt:1:3: note: the rule\n"
                         "3 documents checked: 1 valid, 2 not valid, 3 messages\n",
                     ""}));
  EXPECT_EQ(Validate({"--all", "--max-errors", "1", "--from", "json", "-"}, "Person", stream).fOut,
            "<stdin>:2:9" + wrong + "found 1\n" + note +
                "2 more messages (--max-errors 0 prints all)\n"
                "3 documents checked: 1 valid, 2 not valid, 3 messages\n");
  EXPECT_EQ(Validate({"--all", "-q", "--from", "json", "-"}, "Person", stream),
            (Outcome{1, "", ""}));
  // Documents that are well formed do not end the input.
  const std::string unheld = R"({"a":[1e999,[{"]":"\"]}"}]]}{"name":true}null)";
  EXPECT_EQ(
      Validate({"--all", "--loss=error", "--from", "json", "-"}, "Person", unheld + stream).fOut,
      "<stdin>:2:9" + wrong + "found 1\n" + note + "<stdin>:3:9" + wrong + "found 2\n" + note +
          "<stdin>:3:11: Unknown member x\nschema.txt:1:3: note: the rule\n" +
          "3 documents checked: 1 valid, 2 not valid, 3 messages; 3 documents not checked\n");
  const Outcome cut = Validate({"--all", "--from", "json", "-"}, "Person", "[1e999,[");
  EXPECT_TRUE(cut.fErr.ends_with("expected the end of the document\n  [1e999,[\n          ^\n"))
      << cut.fErr;
  // A format without several documents to a file.
  for (const auto& [text, count] : {std::pair(" ", "0 files"), {"< name Ada >", "1 document"}}) {
    const std::string out = Validate({"--all", "--from", "text", "-"}, "Person", text).fOut;
    EXPECT_TRUE(out.starts_with(count)) << out;
  }
  EXPECT_EQ(Validate({"--all", "--from", "json", "-"}, "Person", stream + "[").fOut,
            "<stdin>:2:9" + wrong + "found 1\n" + note + "<stdin>:3:9" + wrong + "found 2\n" +
                note + "<stdin>:3:11: Unknown member x\nschema.txt:1:3: note: the rule\n" +
                "3 documents checked: 1 valid, 2 not valid, 3 messages; 1 document not checked\n");
}

TEST_F(ValidateTest, ManyDocumentsAfterALargeOne) {
  Put("list.txt", "< L < category array membertype int > >");
  std::string stream = "[" + std::string(64 << 20, ' ') + "]\n";
  for (int i = 0; i < 10000; ++i) stream += "[[]]\n";
  const Outcome outcome = RunPosutil({"validate", "--all", "--schema", fFolder.Path("list.txt"),
                                      "--type", "L", "--max-errors", "0", "--from", "json", "-"},
                                     stream, {.fPrefix = WithinSeconds(5)});
  EXPECT_EQ(outcome.fStatus, 1);
  EXPECT_EQ(outcome.fOut.substr(0, 13), "<stdin>:2:2: ");
}

// An object inside of which no alternative fits, and that is a union at each level.
TEST_F(ValidateTest, DeepUnionTakesLittleTime) {
  Put("deep.txt",
      "< Deep < category union set [ int Nest ] > "
      "Nest < category dict required < a Deep > > >");
#ifdef __OPTIMIZE__
  const int depth = 3000;
#else
  const int depth = 1000;  // more use up the stack
#endif
  std::string document;
  for (int i = 0; i < depth; ++i) document += "{\"a\":";
  document += "\"x\"" + std::string(depth, '}');
  const Outcome outcome = RunPosutil(
      {"validate", "--schema", fFolder.Path("deep.txt"), "--type", "Deep", "--from", "json", "-"},
      document, {.fPrefix = WithinSeconds(5)});
  EXPECT_EQ(outcome.fStatus, 1);
  EXPECT_EQ(outcome.fErr, "");
}

TEST_F(ValidateTest, WrongUsage) {
  Put("ada.data", "%");  // in no format
  const std::vector<std::string> rows[] = {
      {"validate"},
      {"validate", "--schema", "schema.txt", "--type", "Person"},
      {"validate", "--schema", "schema.txt", "ada.txt"},
      {"validate", "--type", "Person", "ada.txt"},
      {"validate", "--schema", "schema.txt", "--type", "Person", "ada.txt", "ada.data"},
      {"validate", "--schema", "ada.data", "--type", "Person", "ada.txt"},
      {"validate", "--schema", "schema.txt", "--type", "Person", "--format", "xml", "ada.txt"},
      {"check-schema"},
      {"check-schema", "schema.txt", "-"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    const Outcome outcome = Run(row, "%");
    EXPECT_EQ(outcome.fStatus, 2);
    EXPECT_EQ(outcome.fOut, "");
  }
}

}  // namespace
