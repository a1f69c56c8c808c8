#include "xml/LibXmlPlatform.h"

#include "unit/files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <memory>
#include <string>
#include <vector>

namespace quillport {
namespace {

enum class Mode { plain, resolving, validating };

/// Local documents, written into a folder of the test and loaded from there.
class LibXmlDocumentTest : public testing::Test {
protected:
    std::unique_ptr<XmlDocument> create(Mode mode = Mode::plain) {
        auto made = platform.createDocument();
        made->put_ResolveExternals(mode != Mode::plain);
        made->put_ValidateOnParse(mode == Mode::validating);
        made->put_Async(false);
        return made;
    }

    /// Writes the document and loads it anew; checks what holds for every load.
    bool load(std::string_view content, Mode mode = Mode::plain) {
        folder.write("doc.xml", content);
        document = create(mode);
        return loadPath(folder.at("doc.xml"));
    }

    bool loadPath(const std::string& path) {
        const bool loaded = document->load(path);
        EXPECT_EQ(document->parseErrorCode() == 0, loaded);
        EXPECT_EQ(document->parseErrorReason().empty(), loaded);
        EXPECT_EQ(document->documentElement() != nullptr, loaded);
        return loaded;
    }

    [[nodiscard]] std::string reason() const { return document->parseErrorReason(); }
    [[nodiscard]] std::string rootText() const { return document->documentElement()->text(); }

    [[nodiscard]] std::vector<std::string> childNames() const {
        std::vector<std::string> names;
        for (const auto& child : document->documentElement()->children()) {
            names.push_back(child->name());
        }
        return names;
    }

    test::TemporaryFolder folder;
    LibXmlPlatform platform;
    std::unique_ptr<XmlDocument> document;
};

using Names = std::vector<std::string>;

TEST_F(LibXmlDocumentTest, StartsWithNothingLoaded) {
    document = create();
    EXPECT_EQ(document->documentElement(), nullptr);
    EXPECT_EQ(document->parseErrorCode(), 0);
    EXPECT_EQ(document->parseErrorReason(), "");
}

TEST_F(LibXmlDocumentTest, WalksElementsOnly) {
    ASSERT_TRUE(load("<?xml version='1.0'?>\n<!-- c --><?p i?>\n<R>\n  <A/> <!-- c --> text <?p i?>\n"
                     "<b:B xmlns:b='u'/><![CDATA[x]]><A/></R>\n<!-- end -->"));
    EXPECT_EQ(document->documentElement()->name(), "R");
    EXPECT_EQ(childNames(), (Names{"A", "b:B", "A"}));
    EXPECT_TRUE(document->documentElement()->children()[0]->children().empty());
}

TEST_F(LibXmlDocumentTest, TextIsAsDelivered) {
    ASSERT_TRUE(load("<R><A>  two  blanks </A><B>a&amp;b &#x3C;<![CDATA[<c> & ]]></B><C></C><D/>"
                     "<E>   </E><F>one\r\ntwo</F><G>x<i>y</i><!-- no -->z</G></R>"));
    const auto children = document->documentElement()->children();
    const char* const texts[] = {"  two  blanks ", "a&b <<c> & ", "", "", "   ", "one\ntwo", "xyz"};
    ASSERT_EQ(children.size(), std::size(texts));
    for (std::size_t index = 0; index < children.size(); ++index) {
        EXPECT_EQ(children[index]->text(), texts[index]) << children[index]->name();
    }
}

TEST_F(LibXmlDocumentTest, AnAbsentAttributeIsNotAnEmptyOne) {
    ASSERT_TRUE(load("<R VER='' ver='low' x:VER2='other' xmlns:x='u' B=' a&lt;&#10;b '/>"));
    const auto root = document->documentElement();
    EXPECT_EQ(root->attribute("VER"), "");
    EXPECT_EQ(root->attribute("ver"), "low");
    EXPECT_EQ(root->attribute("Ver"), std::nullopt);
    EXPECT_EQ(root->attribute("VER2"), std::nullopt);
    EXPECT_EQ(root->attribute("B"), " a<\nb ");
    EXPECT_EQ(root->attribute(""), std::nullopt);
}

TEST_F(LibXmlDocumentTest, ReadsTheUsualEncodings) {
    const std::string utf8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><R>Z\xC3\xBC</R>";
    const std::string utf16Declared = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><R>Z_</R>";
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    for (const char c : utf16Declared) {
        const char low = c == '_' ? '\xFC' : c;
        little += {low, '\0'};
        big += {'\0', low};
    }
    const std::string rows[] = {
        utf8,
        "\xEF\xBB\xBF" + utf8,
        "<R>Z\xC3\xBC</R>",
        "<?xml version='1.0' encoding='ISO-8859-1'?><R>Z\xFC</R>",
        "<?xml version='1.0' encoding='windows-1252'?><R>Z\xFC</R>",
        little,
        big,
        little.substr(2),
        big.substr(2),
    };
    for (const std::string& row : rows) {
        ASSERT_TRUE(load(row)) << row << ": " << reason();
        EXPECT_EQ(rootText(), "Z\xC3\xBC");
    }
}

TEST_F(LibXmlDocumentTest, RefusesWhatIsNotWellFormed) {
    using namespace std::string_view_literals;
    const std::string_view rows[] = {
        "",
        " \n ",
        "\xEF\xBB\xBF",
        "\xFF\xFE",
        "\xFE\xFF\0"sv,
        "not XML at all",
        "VER=1",
        "<R>",
        "<R",
        "<R VER='1",
        "<R></r>",
        "<R><A></R></A>",
        "<R/><R/>",
        "<R/>text",
        "<R A='1' A='2'/>",
        "<R A=1/>",
        "<R A='<'/>",
        "<R>&unknown;</R>",
        "<R>&amp</R>",
        "<R>a & b</R>",
        "<R>]]></R>",
        "<R><!-- -- --></R>",
        "<R>\x01</R>",
        "<R>\xFF</R>",
        "<R>Z\xFC</R>",
        "<R><x:A/></R>",
        "<R x:a='1'/>",
        " <?xml version='1.0'?><R/>",
        "<?xml version='1.0' encoding='UTF-8'?>",
        "<?xml version='1.0' encoding='UTF-7'?><R/>",
        "<?xml version='1.0' encoding='UTF-16'?><R/>",
        "<R>\0</R>"sv,
        "<!DOCTYPE R [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><R>&a;</R>",
        "<html><head><meta charset='x'></head><body>404<br></body></html>",
        "\x50\x4B\x03\x04zip",
    };
    for (const Mode mode : {Mode::plain, Mode::validating}) {
        for (const std::string_view row : rows) {
            EXPECT_FALSE(load(row, mode)) << row;
        }
    }
}

TEST_F(LibXmlDocumentTest, ACutDocumentIsNeverTakenForAWholeOne) {
    const std::string whole = "<?xml version='1.0'?><!DOCTYPE R [<!ELEMENT R (A)><!ELEMENT A (#PCDATA)>]>"
                              "<R><!-- c --><A>x&amp;<![CDATA[y]]></A></R>";
    ASSERT_TRUE(load(whole, Mode::validating)) << reason();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(load(whole.substr(0, size), Mode::validating)) << whole.substr(0, size);
    }
}

TEST_F(LibXmlDocumentTest, TheReasonIsTheFirstErrorWithItsLine) {
    EXPECT_FALSE(load("<R>\n<A>\n</B>\n</R>"));
    EXPECT_EQ(reason(), "Opening and ending tag mismatch: A line 2 and B (line 3)");
    EXPECT_FALSE(load("<" + std::string(20'000, 'n') + "></x>"));
    EXPECT_LT(reason().size(), 600U);
}

TEST_F(LibXmlDocumentTest, NothingIsWrittenToTheStandardErrorOutput) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(load("<R><A></R>"));
    EXPECT_FALSE(load("<!DOCTYPE R SYSTEM 'no.dtd'><R>&x;</R>", Mode::validating));
    EXPECT_FALSE(load("<R xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                      "xsi:noNamespaceSchemaLocation='no.xsd'/>",
                      Mode::validating));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LibXmlDocumentTest, WhatIsNoFileCannotBeLoaded) {
    document = create();
    folder.makeFolder("sub");
    ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
    for (const std::string& path :
         {folder.at("none.xml"), folder.at("sub"), folder.at("sub\\"), folder.at("pipe"), std::string(),
          std::string("\\"), std::string("\\dev\\zero"), std::string("a\0b", 3),
          folder.at(std::string(5000, 'x'))}) {
        EXPECT_FALSE(loadPath(path)) << path;
    }
}

TEST_F(LibXmlDocumentTest, OtherSchemesAreRefused) {
    document = create(Mode::validating);
    folder.write("doc.xml", "<R/>");
    EXPECT_FALSE(loadPath("file://" + (folder.path() / "doc.xml").string()));
    EXPECT_FALSE(loadPath("ftp://127.0.0.1/doc.xml"));
    EXPECT_NE(reason().find("only http and https"), std::string::npos) << reason();
}

TEST_F(LibXmlDocumentTest, FindsAFileInAnyCaseAndWithAnyName) {
    const std::string name = "Z\xC3\xBC rich #1 50% [a] ?.XML";
    folder.write("Config/" + name, "<R/>");
    document = create(Mode::validating);
    EXPECT_TRUE(loadPath(folder.at("CONFIG\\" + name))) << reason();
    EXPECT_TRUE(loadPath(folder.at("config\\z\xC3\x9C RICH #1 50% [A] ?.xml"))) << reason();
}

TEST_F(LibXmlDocumentTest, IsUsedAgainAndAgain) {
    folder.write("good.xml", "<R VER='1'><A/></R>");
    folder.write("bad.xml", "<R><A></R>");
    folder.write("external.xml", "<!DOCTYPE R SYSTEM 'none.dtd'><R/>");
    document = create(Mode::validating);
    for (int round = 0; round < 50; ++round) {
        EXPECT_TRUE(loadPath(folder.at("good.xml")));
        EXPECT_EQ(document->documentElement()->attribute("VER"), "1");
        EXPECT_FALSE(loadPath(folder.at("bad.xml")));
        EXPECT_FALSE(loadPath(folder.at("external.xml")));
        EXPECT_FALSE(loadPath(folder.at("none.xml")));
    }
}

TEST_F(LibXmlDocumentTest, DoesNotRememberNamesForEver) {
    document = create();
    for (int round = 0; round < 12; ++round) {
        std::string content = "<R>";
        for (int index = 0; index < 1500; ++index) {
            content += "<n" + std::to_string(round) + "_" + std::to_string(index) + "/>";
        }
        folder.write("doc.xml", content + "</R>");
        ASSERT_TRUE(loadPath(folder.at("doc.xml")));
        EXPECT_EQ(document->documentElement()->children().size(), 1500U);
    }
}

TEST_F(LibXmlDocumentTest, ADocumentMayOutliveItsPlatform) {
    folder.write("doc.xml", "<R/>");
    document = LibXmlPlatform().createDocument();
    EXPECT_TRUE(loadPath(folder.at("doc.xml")));
}

// Externals

TEST_F(LibXmlDocumentTest, WithoutResolvingExternalsAreLeftAlone) {
    folder.write("ext.txt", "external");
    EXPECT_TRUE(load("<!DOCTYPE R SYSTEM 'none.dtd'><R>a</R>")) << reason();
    EXPECT_TRUE(load("<!DOCTYPE R [<!ENTITY e SYSTEM 'ext.txt'>]><R>a&e;b</R>")) << reason();
    EXPECT_EQ(rootText(), "ab");
    EXPECT_TRUE(load("<!DOCTYPE R [<!ENTITY % p SYSTEM 'file:///etc/passwd'> %p;]><R>a</R>")) << reason();
    EXPECT_TRUE(load("<!DOCTYPE R [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><R>&e;</R>")) << reason();
    EXPECT_EQ(rootText(), "");
    EXPECT_TRUE(load("<R xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                     "xsi:noNamespaceSchemaLocation='none.xsd'/>"))
        << reason();
}

TEST_F(LibXmlDocumentTest, InternalEntitiesAreAlwaysReplaced) {
    ASSERT_TRUE(load("<!DOCTYPE R [<!ENTITY e '<A>in</A>'>]><R>&e;</R>")) << reason();
    EXPECT_EQ(childNames(), Names{"A"});
    EXPECT_EQ(rootText(), "in");
}

TEST_F(LibXmlDocumentTest, ExternalsComeFromTheDocumentsFolderAndBelow) {
    folder.write("ext.txt", "near");
    folder.write("parts/ext.xml", "<A>below</A>");
    ASSERT_TRUE(load("<!DOCTYPE R [<!ENTITY e SYSTEM 'ext.txt'><!ENTITY f SYSTEM 'parts/ext.xml'>]>"
                     "<R>&e;&f;</R>",
                     Mode::resolving))
        << reason();
    EXPECT_EQ(rootText(), "nearbelow");
    EXPECT_EQ(childNames(), Names{"A"});
}

TEST_F(LibXmlDocumentTest, ExternalsFromAnywhereElseAreRefused) {
    const test::TemporaryFolder elsewhere;
    elsewhere.write("secret.txt", "secret");
    std::filesystem::create_symlink(elsewhere.path() / "secret.txt", folder.path() / "link.txt");
    std::filesystem::create_symlink(elsewhere.path(), folder.path() / "linked");
    // The beginning of the folder's name is not the folder.
    const std::string neighbour = folder.path().string() + "x";
    std::filesystem::create_directory(neighbour);
    std::ofstream(neighbour + "/secret.txt") << "secret";
    for (const std::string& where : {std::string("file:///etc/passwd"),
                                     std::string("/etc/passwd"),
                                     std::string("../../../../etc/passwd"),
                                     std::string("..%2F..%2F..%2Fetc%2Fpasswd"),
                                     std::string("file://localhost/etc/passwd"),
                                     (elsewhere.path() / "secret.txt").string(),
                                     neighbour + "/secret.txt",
                                     std::string("link.txt"),
                                     std::string("linked/secret.txt"),
                                     std::string("http://127.0.0.1:9/x"),
                                     std::string("https://127.0.0.1:9/x"),
                                     std::string("ftp://127.0.0.1:9/x"),
                                     std::string("//127.0.0.1:9/x"),
                                     std::string("C:\\secret.txt"),
                                     std::string("..\\..\\etc\\passwd"),
                                     std::string("a%00b"),
                                     std::string(" "),
                                     std::string("none.txt"),
                                     std::string("http://["),
                                     std::string("/dev/zero"),
                                     std::string("data:,x")}) {
        EXPECT_FALSE(load("<!DOCTYPE R [<!ENTITY e SYSTEM \"" + where + "\">]><R>&e;</R>", Mode::resolving))
            << where;
        EXPECT_FALSE(load("<!DOCTYPE R SYSTEM \"" + where + "\"><R/>", Mode::resolving)) << where;
        EXPECT_FALSE(load("<!DOCTYPE R [<!ENTITY % p SYSTEM \"" + where + "\"> %p;]><R/>", Mode::resolving))
            << where;
        EXPECT_FALSE(load("<R xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                          "xsi:schemaLocation=\"urn:a " +
                              where + "x\"/>",
                          Mode::validating))
            << where;
    }
    std::filesystem::remove_all(neighbour);
}

TEST_F(LibXmlDocumentTest, RefusedExternalsAreNamed) {
    EXPECT_FALSE(load("<!DOCTYPE R [<!ENTITY e SYSTEM 'http://127.0.0.1:9/x'>]><R>&e;</R>", Mode::resolving));
    EXPECT_EQ(
        reason(),
        "The document names http://127.0.0.1:9/x, which lies outside of its own folder and is not fetched");
}

TEST_F(LibXmlDocumentTest, ADocumentAsksForOnlyAFewExternals) {
    const auto naming = [](int count) {
        std::string subset;
        std::string body;
        for (int index = 0; index < count; ++index) {
            const std::string name = std::to_string(index);
            subset.append("<!ENTITY e").append(name).append(" SYSTEM 'e").append(name).append(".txt'>");
            body.append("&e").append(name).append(";");
        }
        return "<!DOCTYPE R [" + subset + "]><R>" + body + "</R>";
    };
    for (int count = 1; count <= 17; ++count) {
        folder.write("e" + std::to_string(count - 1) + ".txt", "x");
        EXPECT_EQ(load(naming(count), Mode::resolving), count <= 16) << count;
    }
    EXPECT_EQ(reason(), "The document names more than 16 external files");
}

TEST_F(LibXmlDocumentTest, ExternalsAreSmall) {
    folder.write("big.txt", std::string(262'145, 'x'));
    folder.write("fits.txt", std::string(262'144, 'x'));
    EXPECT_TRUE(load("<!DOCTYPE R [<!ENTITY e SYSTEM 'fits.txt'>]><R>&e;</R>", Mode::resolving)) << reason();
    EXPECT_FALSE(load("<!DOCTYPE R [<!ENTITY e SYSTEM 'big.txt'>]><R>&e;</R>", Mode::resolving));
}

TEST_F(LibXmlDocumentTest, ExternalsThatNameEachOtherComeToAnEnd) {
    folder.write("a.xml", "<A>&b;</A>");
    folder.write("b.xml", "<B>&a;</B>");
    EXPECT_FALSE(load("<!DOCTYPE R [<!ENTITY a SYSTEM 'a.xml'><!ENTITY b SYSTEM 'b.xml'>]><R>&a;</R>",
                      Mode::resolving));
}

// Validation

TEST_F(LibXmlDocumentTest, IsValidatedByTheDtdThatItNames) {
    folder.write("rtu.dtd", "<!ELEMENT R (NAME, TYPE?)>\n<!ATTLIST R VER CDATA #REQUIRED KIND (a|b) 'a'>\n"
                            "<!ELEMENT NAME (#PCDATA)>\n<!ELEMENT TYPE (#PCDATA)>\n<!ENTITY unit 'bar'>");
    const std::string external = "<!DOCTYPE R SYSTEM 'rtu.dtd'>";
    const std::string internal = "<!DOCTYPE R [<!ELEMENT R (NAME)><!ELEMENT NAME (#PCDATA)>]>";
    struct Row {
        std::string document;
        bool valid;
    };
    const Row rows[] = {
        {"<R/>", true},
        {"<!DOCTYPE R><R/>", true},
        {internal + "<R>\n <NAME>x</NAME>\n</R>", true},
        {internal + "<R><NAME>x</NAME><NAME/></R>", false},
        {internal + "<R><OTHER/></R>", false},
        {internal + "<NAME/>", false},
        {external + "<R VER='1'><NAME>&unit;</NAME></R>", true},
        {external + "<R VER='1' KIND='b'>\n<NAME/><TYPE/>\n</R>", true},
        {external + "<R><NAME/></R>", false},
        {external + "<R VER='1' KIND='c'><NAME/></R>", false},
        {external + "<R VER='1'><TYPE/></R>", false},
        {external + "<R VER='1'><NAME/>text</R>", false},
        {external + "<X/>", false},
        {"<!DOCTYPE R SYSTEM 'none.dtd'><R/>", false},
        {"<!DOCTYPE R PUBLIC '-//none' 'RTU.DTD'><R VER='1'><NAME/></R>", true},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(load(row.document, Mode::validating), row.valid) << row.document << ": " << reason();
    }
}

TEST_F(LibXmlDocumentTest, WithoutValidationOnlyTheFormCounts) {
    folder.write("rtu.dtd", "<!ELEMENT R (NAME)><!ATTLIST R KIND CDATA 'default'>");
    EXPECT_TRUE(load("<!DOCTYPE R SYSTEM 'rtu.dtd'><R><WRONG/></R>", Mode::resolving)) << reason();
    EXPECT_EQ(document->documentElement()->attribute("KIND"), "default");
    EXPECT_TRUE(load("<!DOCTYPE R [<!ELEMENT R EMPTY>]><R><WRONG/></R>")) << reason();
}

TEST_F(LibXmlDocumentTest, ValidationAloneFetchesNothing) {
    folder.write("rtu.dtd", "<!ELEMENT R EMPTY>");
    const auto loadAlone = [&](const std::string& content) {
        folder.write("doc.xml", content);
        document = create();
        document->put_ValidateOnParse(true);
        return loadPath(folder.at("doc.xml"));
    };
    EXPECT_TRUE(loadAlone("<!DOCTYPE R SYSTEM 'rtu.dtd'><R>x</R>")) << reason();
    EXPECT_TRUE(loadAlone("<!DOCTYPE R SYSTEM 'rtu.dtd' [<!ELEMENT X EMPTY>]><R>x</R>")) << reason();
    EXPECT_FALSE(loadAlone("<!DOCTYPE R [<!ELEMENT R EMPTY>]><R>x</R>"));
    EXPECT_TRUE(loadAlone("<R xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                          "xsi:noNamespaceSchemaLocation='none.xsd'/>"))
        << reason();
}

TEST_F(LibXmlDocumentTest, ABrokenDtdIsAFailure) {
    folder.write("broken.dtd", "<!ELEMENT R (");
    folder.write("empty.dtd", "");
    EXPECT_FALSE(load("<!DOCTYPE R SYSTEM 'broken.dtd'><R/>", Mode::validating));
    EXPECT_TRUE(load("<!DOCTYPE R SYSTEM 'empty.dtd'><R/>", Mode::validating)) << reason();
}

const std::string xs = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'";
const std::string xsi = "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";

TEST_F(LibXmlDocumentTest, IsValidatedByTheSchemaThatItNames) {
    folder.write("plain.xsd",
                 xs + "><xs:element name='R'><xs:complexType><xs:sequence>"
                      "<xs:element name='TYPE' type='xs:int'/></xs:sequence>"
                      "<xs:attribute name='VER' use='required'/></xs:complexType></xs:element></xs:schema>");
    folder.write("named.xsd",
                 xs + " targetNamespace='urn:a'><xs:element name='R' type='xs:int'/></xs:schema>");
    const auto plain = [](const std::string& rest) { return "<R " + xsi + " " + rest; };
    const std::string location = "xsi:noNamespaceSchemaLocation='plain.xsd' ";
    struct Row {
        std::string document;
        bool valid;
    };
    const Row rows[] = {
        {plain(location + "VER='1'><TYPE>7260</TYPE></R>"), true},
        {plain(location + "VER='1'><TYPE>x</TYPE></R>"), false},
        {plain(location + "><TYPE>1</TYPE></R>"), false},
        {plain(location + "VER='1'/>"), false},
        {plain("xsi:noNamespaceSchemaLocation='none.xsd'/>"), false},
        {plain("xsi:noNamespaceSchemaLocation='named.xsd'/>"), false},
        {plain("/>"), true},
        {plain("xsi:schemaLocation=''/>"), true},
        {"<a:R xmlns:a='urn:a' " + xsi + " xsi:schemaLocation='urn:a named.xsd'>5</a:R>", true},
        {"<a:R xmlns:a='urn:a' " + xsi + " xsi:schemaLocation=' \n urn:a\n named.xsd '>5</a:R>", true},
        {"<a:R xmlns:a='urn:a' " + xsi + " xsi:schemaLocation='urn:a named.xsd'>x</a:R>", false},
        {"<a:R xmlns:a='urn:b' " + xsi + " xsi:schemaLocation='urn:a named.xsd'>5</a:R>", false},
        {"<a:R xmlns:a='urn:a' " + xsi +
             " xsi:schemaLocation='urn:a named.xsd' xsi:noNamespaceSchemaLocation='plain.xsd'>5</a:R>",
         true},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(load(row.document, Mode::validating), row.valid) << row.document << ": " << reason();
    }
}

TEST_F(LibXmlDocumentTest, TheSchemasPartsGoThroughTheSameGate) {
    folder.write("types.xsd",
                 xs + "><xs:simpleType name='t'><xs:restriction base='xs:int'/></xs:simpleType></xs:schema>");
    folder.write("main.xsd",
                 xs + "><xs:include schemaLocation='types.xsd'/><xs:element name='R' type='t'/></xs:schema>");
    folder.write(
        "far.xsd",
        xs + "><xs:include schemaLocation='http://127.0.0.1:9/t.xsd'/><xs:element name='R'/></xs:schema>");
    folder.write("disk.xsd", xs + "><xs:import namespace='u' "
                                  "schemaLocation='file:///etc/passwd'/><xs:element name='R'/></xs:schema>");
    folder.write("broken.xsd", xs + "><xs:element name='R' type='none'/></xs:schema>");
    folder.write("entity.xsd", "<!DOCTYPE x [<!ENTITY e SYSTEM 'file:///etc/passwd'>]>" + xs +
                                   "><xs:annotation><xs:documentation>&e;</xs:documentation></xs:annotation>"
                                   "<xs:element name='R'/></xs:schema>");
    const auto usingSchema = [](const std::string& schema) {
        return "<R " + xsi + " xsi:noNamespaceSchemaLocation='" + schema + "'>5</R>";
    };
    EXPECT_TRUE(load(usingSchema("main.xsd"), Mode::validating)) << reason();
    for (const char* schema : {"far.xsd", "disk.xsd", "broken.xsd", "entity.xsd"}) {
        EXPECT_FALSE(load(usingSchema(schema), Mode::validating)) << schema;
    }
}

// Attacks

std::string nested(const std::string& seed, int levels) {
    std::string subset = "<!ENTITY e0 '" + seed + "'>";
    for (int level = 1; level <= levels; ++level) {
        std::string value;
        for (int copy = 0; copy < 10; ++copy) {
            value += "&e" + std::to_string(level - 1) + ";";
        }
        subset += "<!ENTITY e" + std::to_string(level) + " '" + value + "'>";
    }
    return subset;
}

TEST_F(LibXmlDocumentTest, EntitiesDoNotBlowUp) {
    const std::string laughs = "<!DOCTYPE R [" + nested("laugh", 9) + "]>";
    std::string references;
    for (int copy = 0; copy < 100'000; ++copy) {
        references += "&big;";
    }
    std::string parameters = "<!ENTITY % p0 'x'>";
    for (int level = 1; level <= 9; ++level) {
        parameters += "<!ENTITY % p" + std::to_string(level) + " '";
        for (int copy = 0; copy < 10; ++copy) {
            parameters += "&#37;p" + std::to_string(level - 1) + ";";
        }
        parameters += "'>";
    }
    folder.write("parameters.dtd", parameters + "<!ENTITY e '%p9;'>");
    for (const Mode mode : {Mode::plain, Mode::validating}) {
        EXPECT_FALSE(load(laughs + "<R>&e9;</R>", mode));
        EXPECT_FALSE(load(laughs + "<R a='&e9;'/>", mode));
        EXPECT_FALSE(
            load("<!DOCTYPE R [<!ENTITY big '" + std::string(50'000, 'x') + "'>]><R>" + references + "</R>",
                 mode));
        EXPECT_FALSE(load("<!DOCTYPE R [" + nested("<A/>", 9) + "]><R>&e9;</R>", mode));
    }
    EXPECT_FALSE(load("<!DOCTYPE R SYSTEM 'parameters.dtd'><R>&e;</R>", Mode::validating));
}

TEST_F(LibXmlDocumentTest, HugeElementsAreRefusedWhereverTheyHide) {
    std::string attributes;
    for (int index = 0; index < 200'000; ++index) {
        attributes += " a" + std::to_string(index) + "=''";
    }
    EXPECT_FALSE(load("<R" + attributes + "/>"));
    EXPECT_EQ(reason(), "An element has more than 1024 attributes (line 1)");
    EXPECT_FALSE(
        load("<!DOCTYPE R [<!ENTITY e \"&#60;A" + attributes.substr(0, 40'000) + "''/>\">]><R>&e;</R>"));
    EXPECT_EQ(reason(), "Entity e: An element has more than 1024 attributes (line 1)");
    folder.write("part.xml", "<A" + attributes.substr(0, 40'000) + "''/>");
    EXPECT_FALSE(load("<!DOCTYPE R [<!ENTITY e SYSTEM 'part.xml'>]><R>&e;</R>", Mode::resolving));
    EXPECT_NE(reason().find("more than 1024 attributes"), std::string::npos) << reason();
}

TEST_F(LibXmlDocumentTest, DeepNestingIsRefused) {
    std::string open;
    std::string close;
    for (int level = 0; level < 100'000; ++level) {
        open += "<a>";
        close += "</a>";
    }
    EXPECT_FALSE(load(open + close));
    EXPECT_FALSE(load(open));
    EXPECT_TRUE(load(open.substr(0, 600) + close.substr(0, 800))) << reason();
}

TEST_F(LibXmlDocumentTest, ADocumentThatIsTooLargeIsNotReadToItsEnd) {
    const auto file = folder.write("endless.xml", "<R>");
    ASSERT_EQ(truncate(file.c_str(), 50'000'000'000), 0); // a hole: it takes no space
    document = create();
    EXPECT_FALSE(loadPath(folder.at("endless.xml")));
    EXPECT_EQ(reason(), "The document is larger than 16777216 bytes");
}

TEST_F(LibXmlDocumentTest, ReadingOnAfterAFatalErrorStopsSoon) {
    // Without the stop the parser reads the rest for nothing, and the many name spaces make it take minutes.
    std::string content = "<q><q b='1' b='2'>";
    for (int level = 0; level < 200; ++level) {
        content += "<q";
        for (int index = 0; index < 500; ++index) {
            content += " xmlns:n" + std::to_string(level) + "_" + std::to_string(index) + "='u'";
        }
        content += ">";
    }
    for (int element = 0; element < 500'000; ++element) {
        content += "<n0_0:x/>";
    }
    EXPECT_FALSE(load(content));
    EXPECT_EQ(reason(), "Attribute b redefined (line 1)");
}

} // namespace
} // namespace quillport
