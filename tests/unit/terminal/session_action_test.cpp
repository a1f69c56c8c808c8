#include "terminal/session_action.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quillport {
namespace {

template <typename Kind>
Kind actionIn(std::string_view line) {
    const SessionLine parsed = parseSessionLine(line);
    EXPECT_FALSE(parsed.when) << line;
    const auto* action = std::get_if<Kind>(&parsed.action);
    EXPECT_NE(action, nullptr) << line;
    return action == nullptr ? Kind{} : *action;
}

std::string refusal(std::string_view line) {
    try {
        (void)parseSessionLine(line);
    } catch (const NoAction& error) {
        return error.what();
    }
    return "taken";
}

TEST(SessionLine, setsAndGetsProperties) {
    const auto host = actionIn<SetProperty>(R"({"set":"HostName","value":"rtu12"})");
    EXPECT_EQ(host.name, SetProperty::Name::HostName);
    EXPECT_EQ(host.value, "rtu12");
    const auto board = actionIn<SetProperty>(R"({"value":"","set":"partNumber"})");
    EXPECT_EQ(board.name, SetProperty::Name::partNumber);
    EXPECT_EQ(board.value, "");
    actionIn<GetHostName>(R"({"get":"HostName"})");
}

TEST(SessionLine, callsMembers) {
    actionIn<CallConnect>(R"({"call":"Connect"})");
    actionIn<CallDisconnect>(R"({"call":"Disconnect"})");
    const auto search =
        actionIn<CallGetFiles>(R"({"call":"GetFiles","filespec":"\\home\\*.out","attributes":16})");
    EXPECT_EQ(search.filespec, "\\home\\*.out");
    EXPECT_EQ(search.attributes, 16);
    EXPECT_EQ(actionIn<CallGetFiles>(R"({"call":"GetFiles","filespec":"x"})").attributes, 0);
}

TEST(SessionLine, isTheOperatorsHand) {
    const auto typed = actionIn<TypeText>(R"({"type":"txt_password","text":"geheim"})");
    EXPECT_EQ(typed.control, ControlId::txt_password);
    EXPECT_EQ(typed.text, "geheim");
    EXPECT_EQ(actionIn<Click>(R"({"click":"cmd_connect"})").control, ControlId::cmd_connect);
    EXPECT_EQ(actionIn<DoubleClick>(R"({"doubleclick":"lbl_Backdoor"})").control, ControlId::lbl_Backdoor);
    const auto key = actionIn<PressKey>(R"({"key":13,"in":"txt_password"})");
    EXPECT_EQ(key.keyCode, 13);
    EXPECT_EQ(key.control, ControlId::txt_password);
}

TEST(SessionLine, queuesPicksAsTheControlsPaths) {
    EXPECT_EQ(actionIn<QueuePick>(R"({"pick":"/home/op/x/Application"})").path, "\\home\\op\\x\\Application");
    EXPECT_EQ(actionIn<QueuePick>(R"({"pick":null})").path, std::nullopt);
    const auto relative = actionIn<QueuePick>(R"({"pick":"x"})").path.value_or("");
    EXPECT_TRUE(relative.starts_with("\\")) << relative;
    EXPECT_TRUE(relative.ends_with("\\x")) << relative;
}

TEST(SessionLine, queuesAnswers) {
    const auto any = actionIn<QueueAnswer>(R"({"answer":"Yes"})");
    EXPECT_EQ(any.button, Button::Yes);
    EXPECT_EQ(any.title, std::nullopt);
    EXPECT_EQ(actionIn<QueueAnswer>(R"({"answer":"No","title":"File Exists"})").title, "File Exists");
}

TEST(SessionLine, showsThePanel) {
    actionIn<ShowPanel>(R"({"panel":true})");
}

TEST(SessionLine, waitsForAWrite) {
    const SessionLine text =
        parseSessionLine(R"({"when":{"control":"txtResult","begins":"Receiving "},"click":"cmdCancel"})");
    ASSERT_TRUE(text.when);
    EXPECT_EQ(text.when->control, ControlId::txtResult);
    EXPECT_EQ(std::get<std::string>(text.when->wanted), "Receiving ");
    EXPECT_EQ(std::get<Click>(text.action).control, ControlId::cmdCancel);

    const SessionLine bar =
        parseSessionLine(R"({"when":{"control":"barTotFile","atLeast":30},"panel":true})");
    ASSERT_TRUE(bar.when);
    EXPECT_EQ(std::get<std::int32_t>(bar.when->wanted), 30);
    EXPECT_TRUE(std::holds_alternative<ShowPanel>(bar.action));
}

TEST(SessionLine, thatIsNoActionSaysWhy) {
    struct Row {
        const char* line;
        const char* message;
    };
    for (const Row& row : {
             Row{"", "it is not JSON"},
             Row{"click cmd_connect", "it is not JSON"},
             Row{"{\"click\":\"cmd_connect\"} {}", "it is not JSON"},
             Row{"{\"click\":\"\xff\"}", "it is not JSON"},
             Row{"[]", "the line is not a JSON object"},
             Row{"{}", "no action among its keys: none"},
             Row{R"({"clik":"cmd_connect"})", "no action among its keys: \"clik\" (did you mean \"click\"?)"},
             Row{R"({"click":"cmd_conect"})",
                 "unknown control \"cmd_conect\" (did you mean \"cmd_connect\"?)"},
             Row{R"({"click":7})", "the value of \"click\" is not a text"},
             Row{R"({"click":"cmd_connect","twice":true})", "the key \"twice\" does not belong in the line"},
             Row{R"({"click":"cmd_connect","panel":true})", "the key \"panel\" does not belong in the line"},
             Row{R"({"set":"HostName"})", "the key \"value\" is missing"},
             Row{R"({"set":"hostname","value":""})",
                 "unknown property \"hostname\" (did you mean \"HostName\"?)"},
             Row{R"({"get":"partNumber"})", "partNumber can be set, but not read"},
             Row{R"({"get":"x"})", "unknown property \"x\""},
             Row{R"({"call":"Conect"})", "unknown member \"Conect\" (did you mean \"Connect\"?)"},
             Row{R"({"call":"GetFiles"})", "the key \"filespec\" is missing"},
             Row{R"({"call":"GetFiles","filespec":"x","attributes":4294967296})",
                 "the value of \"attributes\" is not a whole number of 32 bits"},
             Row{R"({"type":"lblApp","text":"x"})",
                 "nobody types in \"lblApp\", only in txt_username, txt_password and cmbFileType"},
             Row{R"({"type":"txt_username"})", "the key \"text\" is missing"},
             Row{R"({"key":13})", "the key \"in\" is missing"},
             Row{R"({"key":"13","in":"txt_password"})",
                 "the value of \"key\" is not a whole number of 32 bits"},
             Row{R"({"key":13.5,"in":"txt_password"})",
                 "the value of \"key\" is not a whole number of 32 bits"},
             Row{R"({"pick":""})", "the value of \"pick\" is no path"},
             Row{R"({"pick":"a\u0000b"})", "the value of \"pick\" is no path"},
             Row{R"({"pick":7})", "the value of \"pick\" is not a text"},
             Row{R"({"answer":"yes"})", "unknown button \"yes\" (did you mean \"Yes\"?)"},
             Row{R"({"answer":"Abort"})", "unknown button \"Abort\""},
             Row{R"({"answer":"Yes","title":1})", "the value of \"title\" is not a text"},
             Row{R"({"panel":false})", "the value of \"panel\" is not true"},
             Row{R"({"when":{"control":"txtResult","begins":"x"}})", "no action among its keys: \"when\""},
             Row{R"({"when":"txtResult","panel":true})", "the value of \"when\" is not a JSON object"},
             Row{R"({"when":{"begins":"x"},"panel":true})", "the key \"control\" is missing"},
             Row{R"({"when":{"control":"txtResult"},"panel":true})",
                 "a text is waited for with \"begins\" and its beginning"},
             Row{R"({"when":{"control":"txtResult","atLeast":1},"panel":true})",
                 "a text is waited for with \"begins\" and its beginning"},
             Row{R"({"when":{"control":"barTotFile","begins":"x"},"panel":true})",
                 "the bar is waited for with \"atLeast\" and a number"},
             Row{R"({"when":{"control":"txtResult","begins":"x","atLeast":1},"panel":true})",
                 "the key \"atLeast\" does not belong in the value of \"when\""},
         }) {
        EXPECT_EQ(refusal(row.line), row.message) << row.line;
    }
}

TEST(SessionLine, survivesDeepNesting) {
    EXPECT_EQ(refusal(std::string(100'000, '[')), "it is not JSON");
    EXPECT_EQ(refusal(std::string(100'000, '[') + std::string(100'000, ']')),
              "the line is not a JSON object");
}

} // namespace
} // namespace quillport
