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
    "bad.txt: born (optional, type != int): Expected INT was of invalid type\n"
    "bad.txt: Unknown member cats\n"
    "bad.txt: name (required, type != Name): String length below mininum value 1\n";

TEST_F(ValidateTest, TheWorstOfAllFilesDecides) {
  Put("torn.txt", "< name");
  const std::string torn =
      "torn.txt:1:7: syntax error at the end of the text\n  < name\n        ^\n";
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
  const std::string last = "3 files checked: 1 valid, 2 not valid, 2 messages\n";
  const std::string message = "born (optional, type != int): INT was not a whole number\n";
  Put("odd.json", R"({"name":"Ada","born":1815.5})");
  for (const std::string format : {"json", "typea"}) {
    Run({"convert", "schema.txt", "schema." + format});
    Run({"convert", "ada.txt", "ada." + format});
    Run({"convert", "odd.json", "odd." + format});
    EXPECT_EQ(
        Run({"validate", "ada." + format, "--schema", "schema." + format, "odd." + format, "--type",
             "Person", "odd." + format}),
        (Outcome{1, "odd." + format + ": " + message + "odd." + format + ": " + message + last,
                 ""}));
  }
  EXPECT_EQ(Run({"validate", "--schema", "-", "--schema-from", "text", "--type", "Person", "--from",
                 "json", "odd.json"},
                kSchema)
                .fStatus,
            1);
  EXPECT_EQ(
      Validate({"--from", "text", "-"}, "People", "[< name Ada > < name (Charles Babbage) >]"),
      (Outcome{1,
               "<stdin>: [1]: name (required, type != Name): String length above maximum value 9\n"
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
               "{\"file\":\"odd.txt\",\"valid\":false,\"messages\":"
               "[\"Unknown member \\\\x80\\\\x0a\\\"\\\\\"]},\n"
               "{\"file\":\"nowhere.txt\",\"valid\":null,\"messages\":[],\"error\":\"" +
                   error + "\"}\n],\"valid\":1,\"invalid\":1,\"unchecked\":1,\"messages\":1}\n",
               "posutil: " + error + "\n"}));
  EXPECT_EQ(Validate({"odd.txt"}).fOut,
            "odd.txt: Unknown member \\x80\\x0a\"\\\n"
            "1 file checked: 0 valid, 1 not valid, 1 message\n");
}

TEST_F(ValidateTest, Types) {
  EXPECT_EQ(Validate({"ada.txt", "bad.txt"}, "any").fStatus, 0);
  EXPECT_EQ(Validate({"ada.txt"}, "Nothing"),
            (Outcome{1,
                     "ada.txt: not valid, without a message\n"
                     "1 file checked: 0 valid, 1 not valid, 0 messages\n",
                     ""}));
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
  EXPECT_EQ(outcome.fOut, "");
  EXPECT_EQ(
      outcome.fErr.find("posutil: faulty.txt: the schema is not valid, so nothing was checked\n"
                        "faulty.txt: A (value, type != TypeDefn): Not a valid union type: "
                        "Trying DictDefn: "),
      0u)
      << outcome.fErr;
  EXPECT_NE(outcome.fErr.find(" Cannot locate definition of type B\n"), std::string::npos);

  const std::string message = "posutil: list.txt: a schema must be a dictionary of types\n";
  EXPECT_EQ(Run({"validate", "--schema", "list.txt", "--type", "A", "ada.txt"}),
            (Outcome{3, "", message}));
  EXPECT_EQ(Run({"validate", "--schema", "nowhere.txt", "--type", "A", "ada.txt"}).fStatus, 3);

  EXPECT_EQ(Run({"check-schema", "schema.txt", KAP_SAMPLES "/iso-codes.txt"}).fOut,
            "2 files checked: 2 valid, 0 not valid, 0 messages\n");
  EXPECT_EQ(Run({"check-schema", "-q", "schema.txt"}), (Outcome{0, "", ""}));
  EXPECT_EQ(Run({"check-schema", "-q", "faulty.txt"}), (Outcome{1, "", ""}));
  EXPECT_EQ(Run({"check-schema", "list.txt", "faulty.txt", "-q"}), (Outcome{3, "", message}));
  const Outcome named = Run({"check-schema", "faulty.txt"});
  EXPECT_EQ(named.fStatus, 1);
  EXPECT_NE(named.fOut.find(" Cannot locate definition of type B\n"), std::string::npos);
  EXPECT_NE(
      Run({"check-schema", "--format", "json", "-", "--from", "text"}, "<>").fOut.find("true"),
      std::string::npos);
}

TEST_F(ValidateTest, WrongUsage) {
  Put("ada.data", "1");
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
    const Outcome outcome = Run(row);
    EXPECT_EQ(outcome.fStatus, 2);
    EXPECT_EQ(outcome.fOut, "");
  }
}

}  // namespace
