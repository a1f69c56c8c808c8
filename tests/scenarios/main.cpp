#include "harness/Runner.h"
#include "harness/ScenarioFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string_view>
#include <vector>

// Every scenario file below this folder becomes a test suite, every scenario a test.

namespace quillport::scenarios {

namespace {

struct Session {
    Expectations expectations = Expectations::compare;
    std::vector<Rewrite> rewrites;
};

class ScenarioTest : public testing::Test {
public:
    ScenarioTest(const Scenario& scenario, Session& session) : scenario_(scenario), session_(session) {}

    void TestBody() override {
        const Outcome outcome = run(scenario_, session_.expectations);
        session_.rewrites.insert(session_.rewrites.end(), outcome.rewrites.begin(), outcome.rewrites.end());
        if (!outcome.held) {
            ADD_FAILURE_AT(scenario_.file.c_str(), outcome.line) << outcome.report;
        }
    }

private:
    const Scenario& scenario_;
    Session& session_;
};

/// Stands for a file that cannot be read as scenarios.
class UnreadableFileTest : public testing::Test {
public:
    explicit UnreadableFileTest(const ScenarioFile& file) : file_(file) {}

    void TestBody() override {
        for (const FileError& error : file_.errors) {
            ADD_FAILURE_AT(file_.path.c_str(), error.line) << error.text;
        }
    }

private:
    const ScenarioFile& file_;
};

void registerTests(const std::vector<ScenarioFile>& files, Session& session) {
    for (const ScenarioFile& file : files) {
        if (!file.errors.empty()) {
            const std::string suite = "unreadable_" + file.suite;
            testing::RegisterTest(suite.c_str(), "File", nullptr, nullptr, file.path.c_str(),
                                  file.errors.front().line,
                                  [&file]() -> testing::Test* { return new UnreadableFileTest(file); });
        }
        for (const Scenario& scenario : file.scenarios) {
            testing::RegisterTest(file.suite.c_str(), scenario.name.c_str(), nullptr, nullptr,
                                  scenario.file.c_str(), scenario.line,
                                  [&]() -> testing::Test* { return new ScenarioTest(scenario, session); });
        }
    }
}

/// Rewriting needs the flag, and a person who looks at what it did.
bool chooseExpectations(int argc, char** argv, Session& session) {
    for (int at = 1; at < argc; ++at) {
        const std::string_view argument = argv[at];
        if (argument != "--rewrite") {
            std::cerr << "unknown argument: " << argument << "\nthe one there is: --rewrite\n";
            return false;
        }
        if (std::getenv("CI") != nullptr) {
            std::cerr << "--rewrite is refused where CI is set: nobody would look at the new expectations\n";
            return false;
        }
        if (testing::GTEST_FLAG(filter) == "*") {
            std::cerr << "--rewrite needs a --gtest_filter: other scenarios may be right to fail\n";
            return false;
        }
        session.expectations = Expectations::rewrite;
    }
    return true;
}

} // namespace

} // namespace quillport::scenarios

int main(int argc, char** argv) {
    using namespace quillport::scenarios;
    constexpr int usageError = 2;
    testing::InitGoogleTest(&argc, argv);
    Session session;
    if (!chooseExpectations(argc, argv, session)) {
        return usageError;
    }
    const std::vector<ScenarioFile> files = readScenarioFiles(QUILLPORT_SCENARIO_FOLDER);
    registerTests(files, session);
    const int result = RUN_ALL_TESTS();
    apply(session.rewrites);
    for (const Rewrite& rewrite : session.rewrites) {
        std::cout << rewrite.file.string() << ":" << rewrite.firstBar << ": transcript rewritten\n";
    }
    return result;
}
