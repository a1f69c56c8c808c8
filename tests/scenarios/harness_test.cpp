#include "harness/FileTree.h"
#include "harness/Runner.h"
#include "harness/ScenarioFile.h"
#include "harness/actions.h"
#include "harness/end_state.h"
#include "harness/words.h"
#include "harness/xml_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <string_view>

// That scenarios can fail, and that each way of failing says where and why.

namespace quillport::scenarios {

namespace {

constexpr std::string_view good = R"(# Why: the hidden label has one effect.
scenario the hidden label
  doublepress lbl_Backdoor
----
prompt   [Quillport] "Super user mode enabled" {*OK}
----
member   skipConfigCheck false
)";

std::string replaced(std::string text, const std::string& wanted, const std::string& by) {
    const std::size_t at = text.find(wanted);
    EXPECT_NE(at, std::string::npos) << wanted;
    return at == std::string::npos ? text : text.replace(at, wanted.size(), by);
}

/// The good scenario with one line changed.
std::string changed(const std::string& wanted, const std::string& by) {
    return replaced(std::string(good), wanted, by);
}

/// What a text of one scenario comes to: its file's errors as `line: text`, or its report.
std::string reportOf(const std::string& text) {
    const ScenarioFile file = parseScenarioFile("sample.scenario", text);
    std::string report;
    for (const FileError& error : file.errors) {
        report += "sample.scenario:" + std::to_string(error.line) + ": " + error.text + "\n";
    }
    for (const Scenario& scenario : file.scenarios) {
        report += run(scenario).report;
    }
    return report;
}

void expectReport(const std::string& text, const std::string& wanted) {
    const std::string report = reportOf(text);
    EXPECT_NE(report.find(wanted), std::string::npos) << "wanted: " << wanted << "\nreport:\n" << report;
}

TEST(Harness, holdsWhereAllIsAsTold) {
    EXPECT_EQ(reportOf(std::string(good)), "");
}

TEST(Harness, showsAWrongLineAsADiff) {
    expectReport(changed("mode enabled", "mode disabled"),
                 "sample.scenario:5: the transcript differs (- expected, + actual):\n"
                 "- prompt   [Quillport] \"Super user mode disabled\" {*OK}\n"
                 "+ prompt   [Quillport] \"Super user mode enabled\" {*OK}\n");
}

TEST(Harness, tellsTitleWhyAndAllThatHappened) {
    const std::string report = reportOf(changed("mode enabled", "mode disabled"));
    EXPECT_TRUE(report.starts_with("sample.scenario:2: scenario the hidden label\n"
                                   "Why: the hidden label has one effect.\n"))
        << report;
    EXPECT_TRUE(report.ends_with("All that happened:\n"
                                 "  prompt   [Quillport] \"Super user mode enabled\" {*OK}\n"))
        << report;
}

TEST(Harness, showsAMissingAndAnUnexpectedLine) {
    expectReport(changed("----\nmember", "text txtResult \"OK\"\n----\nmember"),
                 "sample.scenario:6: the transcript differs (- expected, + actual):\n"
                 "  prompt   [Quillport] \"Super user mode enabled\" {*OK}\n"
                 "- text     txtResult \"OK\"\n");
    expectReport(changed("prompt   [Quillport] \"Super user mode enabled\" {*OK}\n", ""),
                 "sample.scenario:5: the transcript differs (- expected, + actual):\n"
                 "+ prompt   [Quillport] \"Super user mode enabled\" {*OK}\n");
}

TEST(Harness, tellsAWrongEndState) {
    expectReport(changed("skipConfigCheck false", "skipConfigCheck true"),
                 "sample.scenario:7: member   skipConfigCheck true: expected true, but it is false\n");
}

TEST(Harness, tellsWhatWasPreparedAndNotTaken) {
    const std::string press = "  doublepress";
    expectReport(changed(press, "  answer No\n" + press),
                 "sample.scenario:3: the answer No is left over: no prompt took it\n");
    expectReport(changed(press, "  pick cancel\n" + press),
                 "sample.scenario:3: the pick is left over: no picker took it\n");
    expectReport(changed(press, "  at client ftpConnect #2: press cmdCancel\n" + press),
                 "sample.scenario:3: the effect has not come: client   ftpConnect #2\n");
    expectReport(changed(press, "  fail ftpConnect 1 number 5 \"no\"\n" + press),
                 "sample.scenario:3: the failure of ftpConnect has not come: 0 calls were made\n");
    expectReport(changed(press, "  truncate a.out 3\n" + press),
                 "sample.scenario:3: no transfer of a.out was truncated\n");
}

constexpr std::string_view getApplication = R"(# Why: an overwrite is asked for.
scenario get
  login
  rtu    /ata0a/a.out 300
  local  \home\op\Application\a.out 120
  choose "Application"
  pick   \home\op\Application\Application
  answer Cancel to "Folder not empty"
  show   result
  press  cmdGetFile
----
----
)";

TEST(Harness, tellsAMissingOrUnfittingAnswer) {
    const std::string text(getApplication);
    EXPECT_EQ(reportOf(text), "");
    expectReport(replaced(text, "  answer Cancel to \"Folder not empty\"\n", ""),
                 "sample.scenario:9: an answer is missing for the prompt [Folder not empty]");
    expectReport(replaced(text, "Folder not empty", "File Exists"),
                 "sample.scenario:10: the answer Cancel of line 8 is for the prompt [File Exists], but "
                 "[Folder not empty] came");
    expectReport(replaced(text, "answer Cancel", "answer Retry"),
                 "sample.scenario:10: the answer Retry of line 8 does not fit the prompt [Folder not empty]");
}

TEST(Harness, tellsAMissingPick) {
    const std::string text =
        replaced(std::string(getApplication), "  pick   \\home\\op\\Application\\Application\n", "");
    expectReport(text, "sample.scenario:9: a pick is missing for the picker");
}

TEST(Harness, refusesAHiddenLoginWithAPrompt) {
    expectReport(replaced(std::string(getApplication), "  login\n", "  host none\n  login\n"),
                 "sample.scenario:4: the login has more to say than a \"login\" without \"shown\" may hide: "
                 "prompt   [Quillport] \"Unable to connect due to a blank host name\" {*OK}\n");
}

TEST(Harness, refusesUnknownVerbsAndSuggestsANearOne) {
    expectReport(changed("doublepress", "doubelpress"),
                 "sample.scenario:3: \"doubelpress\" is unknown; did you mean \"doublepress\"?\n");
    expectReport(changed("prompt ", "promt  "),
                 "sample.scenario:5: \"promt\" is unknown; did you mean \"prompt\"?\n");
    expectReport(changed("member ", "membre "), "\"membre\" is unknown; did you mean \"member\"?\n");
    expectReport(changed("lbl_Backdoor", "lblBackdoor"),
                 "sample.scenario:3: \"lblBackdoor\" is unknown; did you mean \"lbl_Backdoor\"?\n");
    expectReport(changed("  doublepress", "  fail ftpConect 1 number 5 \"no\"\n  doublepress"),
                 "sample.scenario:3: \"ftpConect\" is unknown; did you mean \"ftpConnect\"?\n");
}

TEST(Harness, refusesAnUnknownVerbBeforeAnythingIsDone) {
    const std::string report = reportOf(changed("----\nprompt", "  prees cmdCancel\n----\nprompt"));
    EXPECT_TRUE(report.ends_with("sample.scenario:4: \"prees\" is unknown; did you mean \"press\"?\n"
                                 "All that happened:\n"))
        << report;
}

TEST(Harness, refusesWordsThatAreMissingOrTooMany) {
    expectReport(changed("lbl_Backdoor", ""), "sample.scenario:3: missing: a control of the panel\n");
    expectReport(changed("lbl_Backdoor", "lbl_Backdoor twice"),
                 "sample.scenario:3: not understood from \"twice\" on\n");
    expectReport(changed("skipConfigCheck false", "skipConfigCheck false 1"),
                 "sample.scenario:7: member   skipConfigCheck false 1: not understood from \"1\" on\n");
    expectReport(changed("lbl_Backdoor", "\"lbl_Backdoor"), "sample.scenario:3: a quote is not closed\n");
}

TEST(Harness, refusesALineThatIsNotShown) {
    expectReport(changed("  doublepress", "  hide prompt\n  doublepress"),
                 "sample.scenario:6: lines of \"prompt\" are not shown here; see \"show\"\n");
}

TEST(Harness, refusesAMissingBar) {
    expectReport(changed("----\nprompt", "prompt"),
                 "sample.scenario:2: a ---- is missing: none stands below the transcript\n");
    expectReport("# Why: x\nscenario x\n  login\n",
                 "sample.scenario:2: a ---- is missing: none stands above the transcript\n");
    expectReport(
        std::string(good) + "----\n",
        "sample.scenario:8: a ---- too many: a scenario has one above its transcript and one below\n");
}

TEST(Harness, refusesANameThatStandsTwice) {
    expectReport(std::string(good) + std::string(good),
                 "sample.scenario:9: the name \"TheHiddenLabel\" stands twice: line 2 has it as well\n");
}

TEST(Harness, refusesAScenarioWithoutAWhy) {
    expectReport(changed("# Why: the hidden label has one effect.\n", ""),
                 "sample.scenario:1: a scenario needs a line \"# Why: ...\" above it\n");
    expectReport(std::string(good) + "\nscenario another\n----\n----\n",
                 "sample.scenario:9: a scenario needs a line \"# Why: ...\" above it\n");
}

TEST(Harness, refusesLinesOutsideOfScenarios) {
    expectReport("press cmdCancel\n",
                 "sample.scenario:1: nothing stands outside of a scenario but comments and \"common\"\n");
}

TEST(Harness, comparesAllRecordsWhereOneIsTold) {
    const std::string text = R"(# Why: records are told whole.
scenario records
  call RecordXferFile "/a" \a 3
  call RecordXferFile "/b" \b 4
----
----
record "/a" \a 3
)";
    expectReport(text, "sample.scenario:7: record \"/a\" \\a 3: the control has 2 records, not 1\n");
    EXPECT_EQ(reportOf(text + "record \"/b\" \\b 4\n"), "");
    expectReport(text + "record \"/b\" \\b 5\n", "expected \"/b\" \"\\b\" 5, but it is \"/b\" \"\\b\" 4\n");
}

TEST(Rows, makeAScenarioOfEach) {
    const std::string text = R"(# Why: tails.
scenario tail of <WHAT>
  call GetPathTail "<PATH>" "/"
  <EXTRA>
----
result "<TAIL>"
----
rows
  WHAT     PATH    TAIL  EXTRA
  a-path   /a/b    b     ""
  a-folder /a/     ""    "page Connect"
)";
    const ScenarioFile file = parseScenarioFile("sample.scenario", text);
    ASSERT_EQ(file.scenarios.size(), 2U);
    EXPECT_EQ(file.scenarios[0].name, "TailOfAPath");
    EXPECT_EQ(file.scenarios[0].line, 10);
    EXPECT_EQ(file.scenarios[0].steps[0].actions.size(), 1U);
    EXPECT_EQ(file.scenarios[1].name, "TailOfAFolder");
    EXPECT_EQ(file.scenarios[1].steps[0].actions.size(), 2U);
    EXPECT_EQ(reportOf(text), "");
    expectReport(replaced(text, "  b     ", "  c     "), "sample.scenario:10: scenario tail of a-path");
}

TEST(Rows, fillLineBreaksInAsTheyAreWritten) {
    const std::string text = "# Why: breaks.\nscenario <WHAT>\n  call GetPathTail \"<VALUE>\" /\n----\n"
                             "result \"<VALUE>\"\n----\nrows\n  WHAT VALUE\n  break \"one\\r\\ntwo\"\n";
    EXPECT_EQ(reportOf(text), "");
}

TEST(Rows, refuseATableThatDoesNotFit) {
    const std::string text = "# Why: x\nscenario x <A>\n  login\n----\n----\nrows\n";
    expectReport(text,
                 "sample.scenario:6: rows need a line of column names and at least one line of values\n");
    expectReport(text + "  A B\n  1 2\n", "sample.scenario:7: the scenario has no <B>\n");
    expectReport(text + "  A\n  1 2\n", "sample.scenario:8: the row has 2 values for 1 columns\n");
}

class RewriteTest : public testing::Test {
protected:
    void SetUp() override {
        // Tests run side by side: each has a file of its own.
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        path_ = std::filesystem::path(testing::TempDir()) / ("quillport_" + test + ".scenario");
        write(changed("mode enabled", "mode disabled"));
    }
    void TearDown() override { std::filesystem::remove(path_); }

    void write(const std::string& text) const { std::ofstream(path_) << text; }

    std::filesystem::path path_;
};

TEST_F(RewriteTest, putsTheActualTranscriptBetweenTheBars) {
    write(changed("mode enabled", "mode disabled") +
          replaced(std::string(good), "the hidden label\n", "another\n"));
    std::vector<Rewrite> rewrites;
    for (const Scenario& scenario : parseScenarioFile(path_, readWhole(path_)).scenarios) {
        const Outcome outcome = run(scenario, Expectations::rewrite);
        EXPECT_TRUE(outcome.held);
        rewrites.insert(rewrites.end(), outcome.rewrites.begin(), outcome.rewrites.end());
    }
    EXPECT_EQ(rewrites.size(), 1U);
    apply(rewrites);
    EXPECT_EQ(readWhole(path_),
              std::string(good) + replaced(std::string(good), "the hidden label\n", "another\n"));
}

TEST_F(RewriteTest, leavesRowsToPeople) {
    write(changed("the hidden label\n", "<X>\n") + "rows\n  X\n  one\n");
    write(replaced(readWhole(path_), "mode enabled", "mode disabled"));
    const ScenarioFile file = parseScenarioFile(path_, readWhole(path_));
    ASSERT_EQ(file.scenarios.size(), 1U);
    const Outcome outcome = run(file.scenarios[0], Expectations::rewrite);
    EXPECT_FALSE(outcome.held);
    EXPECT_TRUE(outcome.rewrites.empty());
}

TEST(HarnessWords, readBackWhatTheyShow) {
    for (const std::string text : {"plain", "with \"quotes\"", "line\r\nbreak", "\t", "\\home\\op\\x", ""}) {
        const auto words = splitWords(inQuotes(text));
        ASSERT_EQ(words.size(), 1U) << text;
        EXPECT_EQ(words.front().text, text);
    }
    EXPECT_EQ(inQuotes("a\r\nb\tc\"d"), "\"a\\r\\nb<09>c\"\"d\"");
    EXPECT_EQ(numberText(static_cast<std::int32_t>(0x80042013U)), "0x80042013");
    EXPECT_EQ(numberText(-1), "-1");
}

TEST(HarnessFileTree, looksUpExactlyFirstAndThenWithoutRegardToCase) {
    FileTree tree('/');
    tree.putFile("/a/README", 1, defaultDate());
    tree.putFile("/a/other", 2, defaultDate());
    ASSERT_NE(tree.findFile("/A/readme"), nullptr);
    EXPECT_EQ(tree.findFile("/A/readme")->size, 1);
    EXPECT_EQ(tree.spelled("\\A\\ReadMe"), "/a/README");
    EXPECT_EQ(tree.findFile("/a/README/"), nullptr);
    EXPECT_EQ(tree.findFolder("/a/README"), nullptr);
    EXPECT_NE(tree.findFolder("/a/"), nullptr);
    EXPECT_TRUE(tree.remove("/a/other"));
    EXPECT_FALSE(tree.remove("/a/other"));
}

TEST(HarnessFileTree, matchesMasks) {
    for (const auto& [name, mask, matches] :
         {std::tuple{"a.out", "*.out", true}, std::tuple{"a.OUT", "*.out", true},
          std::tuple{"a.out2", "*.out", false}, std::tuple{"WebCli", "*.*", true},
          std::tuple{"WebCli", "*", true}, std::tuple{"a.b.c", "*.c", true}, std::tuple{"ab", "?b", true},
          std::tuple{"b", "?b", false}, std::tuple{"é.x", "?.x", true}}) {
        EXPECT_EQ(matchesMask(name, mask), matches) << name << " " << mask;
    }
}

TEST(HarnessXml, readsSmallDocuments) {
    const auto root = readXml("<?xml version=\"1.0\"?>\n<!-- c --><a x='1' y=\"&lt;2\"> t<b>u&#65;</b><c/>"
                              "<![CDATA[<v>]]></a>");
    EXPECT_EQ(root->name, "a");
    EXPECT_EQ(root->text, " tuA<v>");
    ASSERT_EQ(root->attributes.size(), 2U);
    EXPECT_EQ(root->attributes[1].second, "<2");
    ASSERT_EQ(root->children.size(), 2U);
    EXPECT_EQ(root->children[0]->text, "uA");
}

TEST(HarnessXml, refusesWhatIsNotWellFormed) {
    for (const char* document : {"", "x", "<a>", "<a></b>", "<a", "<a b></a>", "<a>&x;</a>", "<a/><b/>",
                                 "<a b=1/>", "<a><!-- </a>", "< a/>"}) {
        EXPECT_THROW(static_cast<void>(readXml(document)), XmlReadError) << document;
    }
}

std::string readme() {
    return readWhole(std::filesystem::path(QUILLPORT_SCENARIO_FOLDER) / "README.md");
}

TEST(HarnessReadme, hasAnExampleThatHolds) {
    const std::string fence = "```\n";
    const std::string text = readme();
    const std::size_t start = text.find(fence) + fence.size();
    const std::string example = text.substr(start, text.find(fence, start) - start);
    EXPECT_NE(example.find("scenario "), std::string::npos);
    EXPECT_EQ(reportOf(example), "");
}

TEST(HarnessReadme, hasEveryVerb) {
    const std::string text = readme();
    std::vector<std::string> verbs = actionVerbs();
    for (const auto& more : {endStateVerbs(), transcriptVerbNames()}) {
        verbs.insert(verbs.end(), more.begin(), more.end());
    }
    for (const std::string& verb : verbs) {
        const bool told = text.find("`" + verb + " ") != std::string::npos ||
                          text.find("`" + verb + "`") != std::string::npos;
        EXPECT_TRUE(told) << verb;
    }
}

} // namespace

} // namespace quillport::scenarios
