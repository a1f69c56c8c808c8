#include "terminal/PromptAnswers.h"
#include "terminal/TerminalPrompter.h"

#include <gtest/gtest.h>

namespace quillport {
namespace {

Prompt exists() {
    return {.text = "The file x exists. Do you want to overwrite ?",
            .title = "File Exists",
            .buttons = {Button::Yes, Button::No},
            .defaultButton = 2,
            .icon = Icon::question};
}

Prompt untitled(std::string text) {
    return {.text = std::move(text)};
}

PromptAnswers answersOf(std::initializer_list<const char*> texts) {
    std::vector<GivenAnswer> answers;
    for (const char* text : texts) {
        answers.push_back(parseGivenAnswer(text));
    }
    return PromptAnswers(std::move(answers));
}

TEST(GivenAnswer, isReadAsTitleAndButton) {
    struct Row {
        const char* text;
        const char* title;
        Button button;
    };
    for (const Row& row : {Row{"File Exists=Yes", "File Exists", Button::Yes}, Row{"x=no", "x", Button::No},
                           Row{"a=b=CANCEL", "a=b", Button::Cancel}, Row{" Unable=ok", " Unable", Button::OK},
                           Row{"File get retry=Retry", "File get retry", Button::Retry}}) {
        const GivenAnswer answer = parseGivenAnswer(row.text);
        EXPECT_EQ(answer.title, row.title) << row.text;
        EXPECT_EQ(answer.button, row.button) << row.text;
    }
}

TEST(GivenAnswer, saysWhatIsWrong) {
    struct Row {
        const char* text;
        const char* message;
    };
    for (const Row& row :
         {Row{"File Exists", "there is no \"=\" in it"}, Row{"=Yes", "there is no title before the \"=\""},
          Row{"  =Yes", "there is no title before the \"=\""},
          Row{"File Exists=Yse", "no button is called \"Yse\" (did you mean \"Yes\"?); the buttons are OK, "
                                 "Cancel, Yes, No and Retry"},
          Row{"File Exists=", "no button is called \"\"; the buttons are OK, Cancel, Yes, No and Retry"}}) {
        try {
            (void)parseGivenAnswer(row.text);
            ADD_FAILURE() << row.text << " was taken";
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), row.message);
        }
    }
}

TEST(PromptAnswers, oneAnswerStandsForAllPromptsOfItsTitle) {
    PromptAnswers answers = answersOf({"File Exists=Yes"});
    EXPECT_EQ(answers.take(exists()), Button::Yes);
    EXPECT_EQ(answers.take(exists()), Button::Yes);
}

TEST(PromptAnswers, severalAreTakenInOrderAndTheLastStands) {
    PromptAnswers answers = answersOf({"File Exists=Yes", "Overwrite All=No", "File Exists=No"});
    EXPECT_EQ(answers.take(exists()), Button::Yes);
    EXPECT_EQ(answers.take(exists()), Button::No);
    EXPECT_EQ(answers.take(exists()), Button::No);
    EXPECT_EQ(answers.unused(), std::vector<std::string>{"Overwrite All"});
}

TEST(PromptAnswers, retryIsUsedOnceForEachTimeItWasGiven) {
    const Prompt retry{
        .text = "again?", .title = "File get retry", .buttons = {Button::Retry, Button::Cancel}};
    PromptAnswers answers = answersOf({"File get retry=Retry", "File get retry=Retry"});
    EXPECT_EQ(answers.take(retry), Button::Retry);
    EXPECT_EQ(answers.take(retry), Button::Retry);
    EXPECT_EQ(answers.take(retry), std::nullopt);
}

TEST(PromptAnswers, titlesAreExactAndUntitledPromptsAreNamedByTheirBeginning) {
    EXPECT_EQ(answersOf({"File=Yes"}).take(exists()), std::nullopt);
    EXPECT_EQ(answersOf({"The file x=Yes"}).take(exists()), std::nullopt);
    EXPECT_EQ(answersOf({"Error connecting=OK"}).take(untitled("Error connecting to target.")), Button::OK);
    EXPECT_EQ(answersOf({"Unable=OK"}).take(untitled(" Unable to access the file RtuSetup.xml")), Button::OK);
    EXPECT_EQ(answersOf({"connecting=OK"}).take(untitled("Error connecting to target.")), std::nullopt);
    EXPECT_EQ(answersOf({"Quillport=OK"}).take(untitled("Error connecting to target.")), std::nullopt);
}

TEST(DefaultAnswer, isTheLastButtonWhereTheDefaultLiesBeyond) {
    Prompt prompt = exists();
    EXPECT_EQ(defaultAnswer(prompt), Button::No);
    prompt.defaultButton = 1;
    EXPECT_EQ(defaultAnswer(prompt), Button::Yes);
    prompt.defaultButton = 3;
    EXPECT_EQ(defaultAnswer(prompt), Button::No);
    prompt.defaultButton = 0;
    EXPECT_EQ(defaultAnswer(prompt), Button::Yes);
}

TEST(RenderPrompt, starsTheDefaultWhereThereIsAChoice) {
    EXPECT_EQ(renderPrompt(exists()),
              "[File Exists] The file x exists. Do you want to overwrite ? {Yes, *No}");
    EXPECT_EQ(renderPrompt(untitled("ChgFolder error")), "[Quillport] ChgFolder error {OK}");
}

TEST(ButtonTyped, takesTheWordOrItsBeginning) {
    EXPECT_EQ(buttonTyped(exists(), "y"), Button::Yes);
    EXPECT_EQ(buttonTyped(exists(), "NO"), Button::No);
    EXPECT_EQ(buttonTyped(exists(), "yess"), std::nullopt);
    EXPECT_EQ(buttonTyped(exists(), "Cancel"), std::nullopt);
    EXPECT_EQ(buttonTyped(exists(), ""), std::nullopt);
}

} // namespace
} // namespace quillport
