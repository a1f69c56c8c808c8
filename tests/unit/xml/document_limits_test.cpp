#include "xml/document_limits.h"

#include <gtest/gtest.h>

#include <string>

namespace quillport::document_limits {
namespace {

std::string attributes(std::size_t count) {
    std::string text;
    for (std::size_t index = 0; index < count; ++index) {
        text += " a" + std::to_string(index) + "=''";
    }
    return text;
}

std::string inUtf16(const std::string& ascii, bool bigEndian) {
    std::string text = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii) {
        text += bigEndian ? '\0' : c;
        text += bigEndian ? c : '\0';
    }
    return text;
}

TEST(DocumentLimits, AnElementMayHaveSoManyAttributesAndNoMore) {
    EXPECT_EQ(problem("<a" + attributes(attributesOfElement) + "/>"), "");
    EXPECT_EQ(problem("<r>\n\n<a" + attributes(attributesOfElement + 1) + "/></r>"),
              "An element has more than 1024 attributes (line 3)");
}

TEST(DocumentLimits, TheAttributesAreCountedInUtf16Too) {
    const std::string bad = "<a" + attributes(attributesOfElement + 1) + "/>";
    const std::string good = "<a" + attributes(attributesOfElement) + "/>";
    for (const bool bigEndian : {false, true}) {
        EXPECT_NE(problem(inUtf16(bad, bigEndian)), "");
        EXPECT_NE(problem(inUtf16("<?xml version='1.0'?>" + bad, bigEndian).substr(2)), "");
        EXPECT_EQ(problem(inUtf16(good, bigEndian)), "");
    }
}

TEST(DocumentLimits, OnlyAttributesAreCounted) {
    const std::string quotes(4 * attributesOfElement + 6000, '\'');
    const std::string many = attributes(2 * attributesOfElement);
    EXPECT_EQ(problem("<a>" + quotes + "</a>"), "");
    EXPECT_EQ(problem("<a><!-- <a " + many + " --></a>"), "");
    EXPECT_EQ(problem("<a><![CDATA[ <a " + many + " ]]></a>"), "");
    EXPECT_EQ(problem("<?pi <a " + many + " ?><a/>"), "");
    EXPECT_EQ(problem("<a b=\"" + many + "\"/>"), "");
    EXPECT_EQ(problem("<a b='>' c='<!--'/>" + many), "");
    EXPECT_NE(problem("<!-- - > -- ' --><a" + many + "/>"), "");
    EXPECT_NE(problem("<a b='>'" + many + "/>"), "");
    EXPECT_NE(problem("<!DOCTYPE a [<!-- ' --><?p ' ?><!ENTITY e '<'>]><a" + many + "/>"), "");
}

TEST(DocumentLimits, TheInternalSubsetIsBounded) {
    const std::string entity = "<!ENTITY e \"" + std::string(100, 'x') + "\">\n";
    std::string subset;
    while (subset.size() < internalSubsetBytes - 200) {
        subset += entity;
    }
    EXPECT_EQ(problem("<!DOCTYPE a [" + subset + "]><a/>"), "");
    EXPECT_EQ(problem("<!DOCTYPE a [" + subset + entity + entity + "]><a/>"),
              "The document type declaration is larger than 65536 bytes (line 1)");
}

TEST(DocumentLimits, WhatNeverEndsIsLeftToTheParser) {
    const std::string filler(internalSubsetBytes / 2, 'x');
    for (const char* start :
         {"<a b='", "<a ", "<!--", "<![CDATA[", "<?pi", "<!DOCTYPE a [", "<!DOCTYPE a '"}) {
        EXPECT_EQ(problem(start + filler), "") << start;
    }
}

TEST(DocumentLimits, ADocumentHasALargestSize) {
    std::string document = "<a>" + std::string(documentBytes - 7, ' ') + "</a>";
    EXPECT_EQ(problem(document), "");
    EXPECT_EQ(problem(document + " "), "The document is larger than 16777216 bytes");
}

TEST(DocumentLimits, EncodingsWithoutAsciiMarkupAreRefused) {
    const auto declared = [](const std::string& encoding) {
        return problem("<?xml version='1.0' encoding='" + encoding + "'?><a/>");
    };
    for (const char* good :
         {"UTF-8", "utf-8", "UTF-16", "ISO-8859-1", "iso-8859-15", "windows-1252", "US-ASCII", "KOI8-R"}) {
        EXPECT_EQ(declared(good), "") << good;
    }
    for (const char* bad :
         {"UTF-7", "UCS-4", "UTF-32", "IBM037", "EBCDIC-CP-US", "ISO-2022-JP", "HZ", "nonsense"}) {
        EXPECT_NE(declared(bad), "") << bad;
    }
    EXPECT_EQ(problem("\xEF\xBB\xBF<?xml version='1.0'?><a/>"), "");
    EXPECT_NE(problem("\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-7'?><a/>"), "");
    EXPECT_EQ(problem("<?xml version='1.0'?><a encoding='UTF-7'/>"), "");
    EXPECT_NE(problem(std::string("<\0\0\0a\0\0\0", 8)), "");
    EXPECT_NE(problem("\x4C\x6F\xA7\x94"), "");
}

TEST(DocumentLimits, BrokenDeclarationsAreLeftToTheParser) {
    for (const char* document : {"<?xml", "<?xml encoding", "<?xml encoding=", "<?xml encoding='UTF-8", "",
                                 "<", "\xFF\xFE", "\xFF\xFE<", "<!", "<!DOCTYPE", "<![CDATA[", "<?"}) {
        EXPECT_EQ(problem(document), "") << document;
    }
}

} // namespace
} // namespace quillport::document_limits
