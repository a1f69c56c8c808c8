#include "terminal/UsageError.h"
#include "terminal/file_types.h"
#include "terminal/json_lines.h"
#include "terminal/printable.h"
#include "terminal/progress_line.h"
#include "terminal/spelling.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <sstream>

namespace quillport {
namespace {

TEST(ProgressLine, hasBarPercentAndText) {
    EXPECT_EQ(renderProgressLine(79, 0, "Getting file vxworks ..."),
              "[------------------------]   0% Getting file vxworks ...");
    EXPECT_EQ(renderProgressLine(79, 50, "Receiving vxworks..."),
              "[############------------]  50% Receiving vxworks...");
    EXPECT_EQ(renderProgressLine(79, 100, "OK"), "[########################] 100% OK");
}

TEST(ProgressLine, neverExceedsTheWidth) {
    EXPECT_EQ(renderProgressLine(48, 7, "Receiving a-name-that-is-long.xml..."),
              "[#-----------------------]   7% Receiving a-name");
    EXPECT_EQ(renderProgressLine(20, 7, "Receiving a-name..."), "  7% Receiving a-nam");
    EXPECT_EQ(renderProgressLine(3, 100, "x"), "100");
    EXPECT_EQ(renderProgressLine(0, 100, "x"), "");
}

TEST(ProgressLine, countsCharactersAndShowsNoControls) {
    EXPECT_EQ(renderProgressLine(10, 1, "\u00dcbersicht"), "  1% \u00dcbers");
    EXPECT_EQ(renderProgressLine(30, 1, "a\x1b[2Jb\r\nc"), "  1% a?[2Jb c");
}

TEST(ProgressLine, keepsAStrayPercentageWithinTheBar) {
    EXPECT_EQ(renderProgressLine(60, 250, ""), "[########################] 100% ");
    EXPECT_EQ(renderProgressLine(60, -3, ""), "[------------------------]   0% ");
}

TEST(Printable, makesControlCharactersHarmless) {
    EXPECT_EQ(printable("plain \u00fc"), "plain \u00fc");
    EXPECT_EQ(printable("one\r\ntwo\nthree"), "one\ntwo\nthree");
    EXPECT_EQ(printable("a\rb\tc\x7f"), "a?b?c?");
    EXPECT_EQ(printable("\x1b]0;title\x07"), "?]0;title?");
    EXPECT_EQ(printable("\u009b31m"), "?31m");
    EXPECT_EQ(printableLine("one\r\ntwo"), "one two");
}

TEST(Spelling, suggestsTheNearestWord) {
    constexpr std::array<std::string_view, 5> types{"application", "os", "configuration", "gui", "templates"};
    const auto suggested = [&](std::string_view word) {
        return std::string(spelling::suggestion(word, types).value_or("-"));
    };
    EXPECT_EQ(suggested("aplication"), "application");
    EXPECT_EQ(suggested("APPLICATION"), "application");
    EXPECT_EQ(suggested("config"), "configuration");
    EXPECT_EQ(suggested("configurations"), "configuration");
    EXPECT_EQ(suggested("template"), "templates");
    EXPECT_EQ(suggested("giu"), "gui");
    EXPECT_EQ(suggested("so"), "os");
    EXPECT_EQ(suggested("firmware"), "-");
    EXPECT_EQ(suggested(""), "-");
}

TEST(Spelling, listsWords) {
    constexpr std::array<std::string_view, 3> words{"a", "b", "c"};
    EXPECT_EQ(spelling::listed(words), "a, b and c");
    EXPECT_EQ(spelling::listed(std::span(words).first(1)), "a");
    EXPECT_EQ(spelling::listed({}), "");
}

TEST(FileTypes, areNamedByTheirWords) {
    EXPECT_EQ(fileTypeNamed("application").comboText, "Application");
    EXPECT_EQ(fileTypeNamed("os").comboText, "Operating System");
    EXPECT_EQ(fileTypeNamed("configuration").comboText, "Configuration");
    EXPECT_EQ(fileTypeNamed("gui").comboText, "GUI");
    EXPECT_EQ(fileTypeNamed("templates").comboText, "Templates");
    try {
        (void)fileTypeNamed("aplication");
        ADD_FAILURE() << "a typo was taken";
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(),
                     "unknown TYPE \"aplication\" (did you mean \"application\"?); the types are "
                     "application, os, configuration, gui and templates");
    }
}

TEST(JsonLine, isValidUtf8WhateverItHolds) {
    EXPECT_EQ(jsonLine({{"name", "a\xffz\xc3"}}), "{\"name\":\"a\ufffdz\ufffd\"}");
    EXPECT_EQ(jsonLine({{"b", 1}, {"a", "x\ny"}}), R"({"b":1,"a":"x\ny"})");
}

TEST(WriteLine, throwsWhenTheOutputIsLost) {
    std::ostringstream output;
    writeLine(output, "one");
    EXPECT_EQ(output.str(), "one\n");
    output.setstate(std::ios::badbit);
    EXPECT_THROW(writeLine(output, "two"), OutputLost);
}

} // namespace
} // namespace quillport
