#include "control/QuillportControl.h"
#include "platform/failure.h"
#include "terminal/Session.h"
#include "terminal/TracedFtpClient.h"
#include "terminal/json_lines.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>

namespace quillport {
namespace {

/// A panel without a control behind it: its buttons do what a test tells them.
class FakeControl final : public ControlSurface {
public:
    void standOn(PanelListener& listener) { panel_ = std::make_unique<Panel>(listener); }
    Panel& own() { return *panel_; }

    void Connect() override { done.emplace_back("Connect"); }
    void Disconnect() override { done.emplace_back("Disconnect"); }
    std::string get_HostName() override { return host; }
    void put_HostName(const std::string& hostName) override { host = hostName; }
    void put_partNumber(const std::string& partNumber) override {
        done.push_back("partNumber " + partNumber);
    }
    std::vector<std::string> GetFiles(const std::string& filespec, std::int32_t attributes) override {
        done.push_back("GetFiles " + filespec + " " + std::to_string(attributes));
        return {"", "a.out", "b.out"};
    }
    HandResult click(ControlId control) override { return hand("click", control); }
    HandResult doubleClick(ControlId control) override { return hand("doubleclick", control); }
    HandResult keyDown(ControlId control, std::int32_t keyCode) override {
        return hand("key " + std::to_string(keyCode), control);
    }
    HandResult type(ControlId control, std::string_view text) override {
        own().takeTyping(control, text);
        return hand("type", control);
    }
    const Panel& panel() override { return own(); }

    std::string host;
    std::vector<std::string> done;
    std::function<void()> onClick = [] {};

private:
    HandResult hand(const std::string& what, ControlId control) {
        if (!own()[control].enabled) {
            return HandResult::ignored;
        }
        done.push_back(what + " " + std::string(designOf(control).name));
        if (what == "click") {
            const auto work = onClick; // which may put another in its place
            work();
        }
        return HandResult::handled;
    }

    std::unique_ptr<Panel> panel_;
};

class SessionTest : public testing::Test {
protected:
    SessionTest() { control.standOn(session); }

    /// What the session writes for these lines.
    std::string effectsOf(std::initializer_list<const char*> lines, Session& of) {
        output.str("");
        for (const char* line : lines) {
            of.perform(parseSessionLine(line));
        }
        return output.str();
    }
    std::string effectsOf(std::initializer_list<const char*> lines) { return effectsOf(lines, session); }

    std::ostringstream output;
    FakeControl control;
    Session session{control, output, Trace::no};
};

TEST_F(SessionTest, countsActions) {
    EXPECT_EQ(effectsOf({R"({"call":"Connect"})", R"({"call":"Disconnect"})"}), R"({"event":"done","action":1}
{"event":"done","action":2}
)");
    EXPECT_EQ(control.done, (std::vector<std::string>{"Connect", "Disconnect"}));
}

TEST_F(SessionTest, writesPropertiesAndTheWholeListOfFiles) {
    EXPECT_EQ(effectsOf({R"({"set":"HostName","value":"r\u00fc"})", R"({"get":"HostName"})",
                         R"({"set":"partNumber","value":"K5902"})",
                         R"({"call":"GetFiles","filespec":"\\x\\*.out","attributes":2})"}),
              R"({"event":"done","action":1}
{"event":"value","name":"HostName","value":"rü"}
{"event":"done","action":2}
{"event":"done","action":3}
{"event":"value","name":"GetFiles","value":["","a.out","b.out"]}
{"event":"done","action":4}
)");
    EXPECT_EQ(control.done, (std::vector<std::string>{"partNumber K5902", "GetFiles \\x\\*.out 2"}));
}

TEST_F(SessionTest, writesEveryWriteOfThePanel) {
    control.onClick = [this] {
        control.own().setText(ControlId::lblApp, "K5902\xff.out");
        control.own().setText(ControlId::txtResult, "OK");
        control.own().setEnabled(ControlId::cmdCancel, true);
        control.own().setVisible(ControlId::barTotFile, false);
        control.own().setValue(ControlId::barTotFile, 7);
        control.own().addItem(ControlId::cmbFileType, "GUI");
        control.own().addItem(ControlId::cmbFileType, "Templates");
    };
    EXPECT_EQ(effectsOf({R"({"click":"cmd_connect"})"}),
              R"({"event":"write","control":"lblApp","property":"caption","value":"K5902�.out"}
{"event":"write","control":"txtResult","property":"text","value":"OK"}
{"event":"write","control":"cmdCancel","property":"enabled","value":true}
{"event":"write","control":"barTotFile","property":"visible","value":false}
{"event":"write","control":"barTotFile","property":"value","value":7}
{"event":"write","control":"cmbFileType","property":"items","value":["GUI"]}
{"event":"write","control":"cmbFileType","property":"items","value":["GUI","Templates"]}
{"event":"done","action":1}
)");
}

TEST_F(SessionTest, saysThatAHandWasIgnored) {
    control.own().setEnabled(ControlId::txt_password, false);
    EXPECT_EQ(effectsOf({R"({"click":"cmdGetFile"})", R"({"doubleclick":"cmdGetFile"})",
                         R"({"key":13,"in":"txt_password"})", R"({"type":"txt_password","text":"x"})"}),
              R"({"event":"ignored","action":"click","control":"cmdGetFile"}
{"event":"done","action":1}
{"event":"ignored","action":"doubleclick","control":"cmdGetFile"}
{"event":"done","action":2}
{"event":"ignored","action":"key","control":"txt_password"}
{"event":"done","action":3}
{"event":"ignored","action":"type","control":"txt_password"}
{"event":"done","action":4}
)");
}

TEST_F(SessionTest, answersPromptsFromTheQueue) {
    const Prompt exists{"exists ?", "File Exists", {Button::Yes, Button::No}, 2, Icon::question};
    const Prompt done{"done", "Quillport", {Button::OK}, 1, Icon::information};
    effectsOf({R"({"answer":"Yes"})", R"({"answer":"No","title":"Other"})",
               R"({"answer":"Yes","title":"File Exists"})"});
    output.str("");
    EXPECT_EQ(session.show(done), Button::OK); // has no Yes: the answer waits for a prompt that has
    EXPECT_EQ(session.show(exists), Button::Yes);
    EXPECT_EQ(session.show(exists), Button::Yes);
    EXPECT_EQ(session.show(exists), Button::No);
    EXPECT_EQ(
        output.str(),
        R"({"event":"prompt","text":"done","title":"Quillport","buttons":["OK"],"default":1,"icon":"information","answer":"OK"}
{"event":"prompt","text":"exists ?","title":"File Exists","buttons":["Yes","No"],"default":2,"icon":"question","answer":"Yes"}
{"event":"prompt","text":"exists ?","title":"File Exists","buttons":["Yes","No"],"default":2,"icon":"question","answer":"Yes"}
{"event":"prompt","text":"exists ?","title":"File Exists","buttons":["Yes","No"],"default":2,"icon":"question","answer":"No"}
)");
}

TEST_F(SessionTest, takesTheLastButtonWhereTheDefaultLiesBeyond) {
    EXPECT_EQ(session.show({"sure ?", "T", {Button::Yes, Button::No}, 3, Icon::exclamation}), Button::No);
    EXPECT_EQ(
        output.str(),
        R"({"event":"prompt","text":"sure ?","title":"T","buttons":["Yes","No"],"default":3,"icon":"exclamation","answer":"No"}
)");
}

TEST_F(SessionTest, answersPickersInOrderAndCancelsWithoutAnAnswer) {
    effectsOf({R"({"pick":"/home/op/Application"})", R"({"pick":null})"});
    output.str("");
    const PickerRequest save{PickerKind::save, "Select", "Application", ".out"};
    EXPECT_EQ(session.pick(save), "\\home\\op\\Application");
    EXPECT_EQ(session.pick(save), std::nullopt);
    EXPECT_EQ(session.pick({PickerKind::open, "Send", "*.out", ""}), std::nullopt);
    EXPECT_EQ(
        output.str(),
        R"({"event":"picker","dialog":"save","title":"Select","fileName":"Application","defaultExt":".out","answer":"\\home\\op\\Application"}
{"event":"picker","dialog":"save","title":"Select","fileName":"Application","defaultExt":".out","answer":null}
{"event":"picker","dialog":"open","title":"Send","fileName":"*.out","defaultExt":"","answer":null}
)");
}

TEST_F(SessionTest, performsWhatWaitsInsideTheWriteAndOnlyOnce) {
    control.onClick = [this] {
        control.onClick = [this] { control.own().setText(ControlId::lblPn, "inside"); };
        control.own().setText(ControlId::txtResult, "Scanning: /");
        control.own().setText(ControlId::txtResult, "Receiving a...");
        control.own().setText(ControlId::txtResult, "Receiving b...");
    };
    EXPECT_EQ(effectsOf({R"({"when":{"control":"txtResult","begins":"Receiving "},"click":"cmd_connect"})",
                         R"({"click":"cmd_connect"})"}),
              R"({"event":"done","action":1}
{"event":"write","control":"txtResult","property":"text","value":"Scanning: /"}
{"event":"write","control":"txtResult","property":"text","value":"Receiving a..."}
{"event":"write","control":"lblPn","property":"caption","value":"inside"}
{"event":"write","control":"txtResult","property":"text","value":"Receiving b..."}
{"event":"done","action":2}
)");
}

TEST_F(SessionTest, waitsForTheBarsValueAndNotForItsVisibility) {
    effectsOf({R"({"when":{"control":"barTotFile","atLeast":30},"call":"Connect"})"});
    control.own().setValue(ControlId::barTotFile, 29);
    control.own().setVisible(ControlId::barTotFile, true);
    EXPECT_TRUE(control.done.empty());
    control.own().setValue(ControlId::barTotFile, 31);
    EXPECT_EQ(control.done, std::vector<std::string>{"Connect"});
}

TEST_F(SessionTest, performsAllThatWaitForOneWriteInTheirOrder) {
    effectsOf({R"({"when":{"control":"txtResult","begins":""},"call":"Disconnect"})",
               R"({"when":{"control":"txtResult","begins":"O"},"call":"Connect"})"});
    control.own().setText(ControlId::txtResult, "OK");
    EXPECT_EQ(control.done, (std::vector<std::string>{"Disconnect", "Connect"}));
}

TEST_F(SessionTest, showsAFailureThatLeftTheControl) {
    control.onClick = [] { throw Failure(53, "File not found"); };
    EXPECT_EQ(
        effectsOf({R"({"click":"cmd_connect"})"}),
        R"({"event":"prompt","text":"File not found","title":"Quillport","buttons":["OK"],"default":1,"icon":"stop","answer":"OK"}
{"event":"done","action":1}
)");
}

TEST_F(SessionTest, keepsAFailureOfAnInnerActionFromTheRunningCall) {
    bool wentOn = false;
    control.onClick = [&] {
        control.onClick = [] { throw Failure(53, "File not found"); };
        control.own().setText(ControlId::txtResult, "Receiving a...");
        wentOn = true;
    };
    effectsOf({R"({"when":{"control":"txtResult","begins":"Rec"},"click":"cmd_connect"})",
               R"({"click":"cmd_connect"})"});
    EXPECT_TRUE(wentOn);
}

TEST_F(SessionTest, masksThePasswordOnThePanel) {
    const std::string effects =
        effectsOf({R"({"type":"txt_password","text":"geheim"})", R"({"panel":true})"});
    EXPECT_EQ(effects.find("geheim"), std::string::npos);
    EXPECT_NE(effects.find(R"("txt_password":{"text":"********","enabled":true,"visible":true})"),
              std::string::npos)
        << effects;
}

TEST_F(SessionTest, showsEveryControlOfThePanel) {
    const std::string effects = effectsOf({R"({"panel":true})"});
    EXPECT_TRUE(effects.starts_with(
        R"({"event":"panel","controls":{"Frame2":{"caption":"File Transfer","enabled":true,"visible":true},)"))
        << effects;
    for (const char* part :
         {R"("cmbFileType":{"text":"Configuration","enabled":true,"visible":true,"items":[]})",
          R"("cmdGetFile":{"caption":"Get from RTU","enabled":false,"visible":true})",
          R"("barTotFile":{"enabled":true,"visible":true,"value":0})", R"("txt_password":{"text":"",)"}) {
        EXPECT_NE(effects.find(part), std::string::npos) << part << " in " << effects;
    }
    for (const ControlDesign& design : panelTable()) {
        EXPECT_NE(effects.find("\"" + std::string(design.name) + "\":{"), std::string::npos) << design.name;
    }
}

TEST_F(SessionTest, writesCallsAndClientEventsOnlyWithTracing) {
    const FtpArgument folder[] = {std::string_view("/ata0a/")};
    session.callReturned("ftpChangeFolder", folder, nullptr);
    session.eventDelivered("OnFtpScanning", folder);
    EXPECT_EQ(output.str(), "");

    Session traced{control, output, Trace::yes};
    const FtpArgument item[] = {std::string_view("a"), makeDateTime(2015, 9, 30, 11, 5, 42), std::int64_t{7},
                                false};
    const Failure refused(-2147212275, "refused");
    traced.callReturned("ftpChangeFolder", folder, nullptr);
    traced.callReturned("ftpState", {}, &refused);
    traced.eventDelivered("OnFtpListItem", item);
    EXPECT_EQ(output.str(),
              R"({"event":"call","name":"ftpChangeFolder","arguments":["/ata0a/"],"number":0}
{"event":"call","name":"ftpState","arguments":[],"number":-2147212275,"description":"refused"}
{"event":"client","name":"OnFtpListItem","arguments":["a","2015-09-30T11:05:42",7,false]}
)");
}

TEST_F(SessionTest, endsWhenTheOutputIsLost) {
    output.setstate(std::ios::badbit);
    EXPECT_THROW(session.perform(parseSessionLine(R"({"panel":true})")), OutputLost);
}

} // namespace
} // namespace quillport
