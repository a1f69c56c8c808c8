#include "xml/LibXmlPlatform.h"

#include "platform/failure.h"
#include "servers/SimulatedRtu.h"
#include "servers/http_test_server.h"
#include "unit/files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

namespace quillport {
namespace {

using namespace std::chrono_literals;

const std::string xsi = "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";
const std::string xs = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'";

std::unique_ptr<XmlDocument> validatingDocument(const HttpOptions& options = {}) {
    auto document = LibXmlPlatform(options).createDocument();
    document->put_ResolveExternals(true);
    document->put_ValidateOnParse(true);
    document->put_Async(false);
    return document;
}

std::string withSchema(const std::string& location) {
    return "<R " + xsi + " xsi:noNamespaceSchemaLocation='" + location + "'/>";
}

std::string withNamedSchema(const std::string& location) {
    return "<R xmlns='u' " + xsi + " xsi:schemaLocation='u " + location + "'/>";
}

std::string includingSchema(const std::string& location) {
    return xs + "><xs:include schemaLocation='" + location + "'/></xs:schema>";
}

/// Documents on a web server that serves the files of the test's folder.
class XmlOverHttpTest : public testing::Test {
protected:
    bool load(const std::string& url) {
        document = validatingDocument(options);
        const bool loaded = document->load(url);
        EXPECT_EQ(document->parseErrorCode() == 0, loaded);
        EXPECT_EQ(document->parseErrorReason().empty(), loaded);
        EXPECT_EQ(document->documentElement() != nullptr, loaded);
        return loaded;
    }

    bool loadFile(const std::string& content) {
        folder.write("doc.xml", content);
        return load(server.url("/files/doc.xml"));
    }

    [[nodiscard]] std::string reason() const { return document->parseErrorReason(); }

    test::TemporaryFolder folder;
    test::HttpTestServer server{folder.path()};
    HttpOptions options;
    std::unique_ptr<XmlDocument> document;
};

TEST_F(XmlOverHttpTest, LoadsADocument) {
    ASSERT_TRUE(load(server.url("/doc"))) << reason();
    const auto children = document->documentElement()->children();
    ASSERT_EQ(children.size(), 1U);
    EXPECT_EQ(children[0]->name(), "NAME");
    EXPECT_EQ(children[0]->text(), "test");
    EXPECT_TRUE(load(server.url("/redirect/302?/doc"))) << reason();
}

TEST_F(XmlOverHttpTest, ReasonsAreInPlainWords) {
    options.silenceTimeout = 300ms;
    const std::pair<const char*, const char*> rows[] = {
        {"/status/404", "status 404"},     {"/status/500", "status 500"},
        {"/none", "status 404"},           {"/redirect/302?http://127.0.0.1:9/", "is not followed"},
        {"/silent", "time-out"},           {"/cut", "broke off"},
        {"/cut-unknown", "Premature end"}, {"/status/204", "Document is empty"},
    };
    for (const auto& [path, words] : rows) {
        EXPECT_FALSE(load(server.url(path))) << path;
        EXPECT_NE(reason().find(words), std::string::npos) << path << ": " << reason();
    }
}

TEST_F(XmlOverHttpTest, AnErrorPageWithAGoodStatusIsNoDocument) {
    EXPECT_FALSE(loadFile(
        "<!DOCTYPE html>\n<html><head><meta charset=utf-8></head><body>Not found<br></body></html>"));
    EXPECT_FALSE(loadFile("404 - not found"));
}

TEST_F(XmlOverHttpTest, AnEndlessDocumentIsCutShort) {
    options.maximumBytes = 1'000'000;
    EXPECT_FALSE(load(server.url("/endless")));
    EXPECT_NE(reason().find("larger than"), std::string::npos) << reason();
}

TEST_F(XmlOverHttpTest, UrlsWithAUserNameAreRefused) {
    EXPECT_FALSE(load("http://user@" + server.address() + "/doc"));
    EXPECT_NE(reason().find("user name"), std::string::npos) << reason();
    EXPECT_EQ(server.requests().size(), 0U);
}

TEST_F(XmlOverHttpTest, DtdAndSchemaComeFromTheSameServer) {
    folder.write("parts/rtu.dtd", "<!ELEMENT R (#PCDATA)>");
    folder.write("rtu.xsd", xs + "><xs:include schemaLocation='parts/types.xsd'/>"
                                 "<xs:element name='R' type='t'/></xs:schema>");
    folder.write("parts/types.xsd", xs + "><xs:simpleType name='t'><xs:restriction base='xs:int'/>"
                                         "</xs:simpleType></xs:schema>");
    const std::string dtd = "<!DOCTYPE R SYSTEM '" + server.url("/files/parts/rtu.dtd") + "'>";
    EXPECT_TRUE(loadFile(dtd + "<R>x</R>")) << reason();
    EXPECT_TRUE(loadFile("<!DOCTYPE R SYSTEM 'parts/rtu.dtd'><R>x</R>")) << reason();
    EXPECT_TRUE(loadFile("<!DOCTYPE R SYSTEM '/files/parts/rtu.dtd'><R>x</R>")) << reason();
    EXPECT_FALSE(loadFile(dtd + "<R><A/></R>"));
    EXPECT_FALSE(loadFile("<!DOCTYPE R SYSTEM 'none.dtd'><R/>"));
    EXPECT_NE(reason().find("status 404"), std::string::npos) << reason();
    const std::string schema = "<R " + xsi + " xsi:noNamespaceSchemaLocation='rtu.xsd'>";
    EXPECT_TRUE(loadFile(schema + "5</R>")) << reason();
    EXPECT_FALSE(loadFile(schema + "x</R>"));
}

TEST_F(XmlOverHttpTest, NothingComesFromAnywhereElse) {
    folder.write("rtu.dtd", "<!ELEMENT R (#PCDATA)>");
    folder.write("rtu.xsd", xs + "><xs:element name='R'/></xs:schema>");
    test::HttpTestServer other(folder.path());
    const std::string dtd = (folder.path() / "rtu.dtd").string();
    for (const std::string& where :
         {other.url("/files/rtu.dtd"), "//" + other.address() + "/files/rtu.dtd", "file://" + dtd,
          "http://localhost:" + std::to_string(server.port()) + "/files/rtu.dtd",
          server.url("/redirect/302?" + other.url("/files/rtu.dtd")), "file:" + dtd,
          "http://x@" + server.address() + "/files/rtu.dtd", std::string("ftp://127.0.0.1/rtu.dtd")}) {
        EXPECT_FALSE(loadFile("<!DOCTYPE R SYSTEM '" + where + "'><R>x</R>")) << where;
        EXPECT_FALSE(loadFile("<!DOCTYPE R [<!ENTITY e SYSTEM '" + where + "'>]><R>&e;</R>")) << where;
    }
    for (const std::string& where :
         {other.url("/files/rtu.xsd"), "file://" + (folder.path() / "rtu.xsd").string()}) {
        EXPECT_FALSE(loadFile(withSchema(where))) << where;
        EXPECT_FALSE(loadFile(withNamedSchema(where))) << where;
        folder.write("outer.xsd", includingSchema(where));
        EXPECT_FALSE(loadFile(withSchema("outer.xsd"))) << where;
    }
    EXPECT_EQ(other.requests().size(), 0U);
}

TEST_F(XmlOverHttpTest, RelativeReferencesStartWhereTheRedirectHasLed) {
    folder.write("deep/doc.xml", "<!DOCTYPE R SYSTEM 'rtu.dtd'><R>x</R>");
    folder.write("deep/rtu.dtd", "<!ELEMENT R (#PCDATA)>");
    EXPECT_TRUE(load(server.url("/redirect/302?/files/deep/doc.xml"))) << reason();
}

TEST_F(XmlOverHttpTest, ExternalsThatNeverComeAreATimeOut) {
    options.silenceTimeout = 300ms;
    EXPECT_FALSE(loadFile("<!DOCTYPE R SYSTEM '/silent'><R/>"));
    EXPECT_NE(reason().find("time-out"), std::string::npos) << reason();
    EXPECT_FALSE(loadFile("<!DOCTYPE R SYSTEM '/cut'><R/>"));
    EXPECT_NE(reason().find("broke off"), std::string::npos) << reason();
}

TEST_F(XmlOverHttpTest, AStopOfTheProgramEndsTheLoadWhereverItStands) {
    folder.write("doc.xml", "<!DOCTYPE R SYSTEM '/silent'><R/>");
    folder.write("schema.xml", withSchema("/silent"));
    bool stop = false;
    options.cancelled = [&]() -> bool {
        if (stop && server.requests().back().line == "GET /silent HTTP/1.1") {
            throw ProgramStop();
        }
        return false;
    };
    document = validatingDocument(options);
    ASSERT_TRUE(document->load(server.url("/doc")));
    stop = true;
    for (const char* path : {"/silent", "/files/doc.xml", "/files/schema.xml"}) {
        EXPECT_THROW(document->load(server.url(path)), ProgramStop) << path;
        EXPECT_EQ(document->documentElement(), nullptr);
        EXPECT_NE(document->parseErrorCode(), 0);
        EXPECT_FALSE(document->parseErrorReason().empty());
    }
    stop = false;
    EXPECT_TRUE(document->load(server.url("/doc"))) << document->parseErrorReason();
}

TEST_F(XmlOverHttpTest, ADocumentFromTheDiskFetchesNothingFromTheNet) {
    folder.write("rtu.dtd", "<!ELEMENT R (#PCDATA)>");
    folder.write("local.xml", "<!DOCTYPE R SYSTEM '" + server.url("/files/rtu.dtd") + "'><R/>");
    EXPECT_FALSE(load(folder.at("local.xml")));
    EXPECT_EQ(server.requests().size(), 0U);
}

TEST_F(XmlOverHttpTest, OneDocumentLoadsFromEverywhere) {
    folder.write("local.xml", "<L/>");
    document = validatingDocument();
    for (int round = 0; round < 20; ++round) {
        EXPECT_TRUE(document->load(server.url("/doc")));
        EXPECT_EQ(document->documentElement()->name(), "R");
        EXPECT_FALSE(document->load(server.url("/status/404")));
        EXPECT_TRUE(document->load(folder.at("local.xml")));
        EXPECT_EQ(document->documentElement()->name(), "L");
    }
}

// The simulated RTU: the file's name is asked for in lower case, on the default port.

TEST(XmlFromTheSimulatedRtu, IsTheRtusDescription) {
    test::SimulatedRtu rtu;
    HttpOptions options;
    options.connectTo = rtu.connectTo("rtu-7");
    const auto document = validatingDocument(options);
    ASSERT_TRUE(document->load("http://rtu-7/cs/xml/rtusetup.xml")) << document->parseErrorReason();
    std::string name;
    for (const auto& cpu : document->documentElement()->children()) {
        for (const auto& container : cpu->children()) {
            for (const auto& value : container->children()) {
                if (cpu->name() == "CPU" && container->name() == "RTU" && value->name() == "NAME") {
                    name = value->text();
                }
            }
        }
    }
    EXPECT_FALSE(name.empty());
}

TEST(XmlFromTheSimulatedRtu, IsAFailureWithEachFaultAndGoodAfterwards) {
    test::SimulatedRtu rtu;
    HttpOptions options;
    options.connectTo = rtu.connectTo("rtu-7");
    options.silenceTimeout = 300ms;
    const auto document = validatingDocument(options);
    for (const char* fault :
         {"http-status:404", "http-status:500", "http-garbage", "http-stall", "http-cut"}) {
        rtu.addFault(std::string(fault) + "=rtusetup.xml");
        EXPECT_FALSE(document->load("http://rtu-7/cs/xml/rtusetup.xml")) << fault;
        EXPECT_FALSE(document->parseErrorReason().empty()) << fault;
        rtu.clearFaults();
        EXPECT_TRUE(document->load("http://rtu-7/cs/xml/rtusetup.xml"))
            << fault << ": " << document->parseErrorReason();
    }
}

} // namespace
} // namespace quillport
