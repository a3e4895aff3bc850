#include "platform/sim/iis7/xml_tree.h"

#include <gtest/gtest.h>

#include "platform/sim/iis7/xml_reader.h"

namespace webrig::sim::iis7 {
namespace {

XmlDocument Read(std::string_view text) {
    return ReadXml(std::make_shared<const std::string>(text));
}

XmlElement& Mutable(XmlDocument& document, std::initializer_list<size_t> childIndexes) {
    XmlElement* element = &MakeMutable(document.root);
    for (const size_t index : childIndexes) {
        element = &MakeMutable(element->children[index].element);
    }
    return *element;
}

struct RoundTripCase {
    const char* name;
    std::string_view text;
};

class XmlRoundTrip : public ::testing::TestWithParam<RoundTripCase> {};

// Every byte of an untouched document comes back, however it was written.
TEST_P(XmlRoundTrip, RendersTheTextAsWritten) {
    const XmlDocument document = Read(GetParam().text);
    EXPECT_EQ(RenderXml(document), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, XmlRoundTrip,
    ::testing::Values(
        RoundTripCase{"crlf",
                      "<?xml version=\"1.0\"?>\r\n<configuration>\r\n  <a x=\"1\" />\r\n"
                      "</configuration>\r\n"},
        RoundTripCase{"byteOrderMark", "\xEF\xBB\xBF<configuration/>"},
        RoundTripCase{"quotesAndSpacing",
                      "<c>\n<a  x = 'one'\ty=\"&quot;two&quot;\"   />\n<b\n  z=\"3\"\n/></c>"},
        RoundTripCase{"commentsAndCdata",
                      "<!-- head --><c><!-- in --><![CDATA[<raw>]]><?pi data?></c><!-- tail -->"},
        RoundTripCase{"emptyPairAndText", "<c><a></a><b>text &amp; more</b>\n</c>\n"},
        RoundTripCase{"references", "<c v=\"&#x41;&#66;&lt;&gt;&apos;\" />"},
        RoundTripCase{"doctype", "<!DOCTYPE configuration>\n<configuration />"},
        RoundTripCase{"multibyte", "<c name=\"caf\xC3\xA9 \xE2\x82\xAC\" />"}),
    [](const ::testing::TestParamInfo<RoundTripCase>& item) { return item.param.name; });

struct MalformedCase {
    const char* name;
    std::string_view text;
    int line;
};

class XmlMalformed : public ::testing::TestWithParam<MalformedCase> {};

TEST_P(XmlMalformed, IsRefusedWithTheLineOfTheFault) {
    try {
        Read(GetParam().text);
        FAIL() << "accepted";
    } catch (const XmlSyntaxError& error) {
        EXPECT_EQ(error.line(), GetParam().line) << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Faults, XmlMalformed,
    ::testing::Values(MalformedCase{"notXml", "hello", 1}, MalformedCase{"empty", "", 1},
                      MalformedCase{"truncated", "<c>\n<a x=\"1\" />\n<b>", 3},
                      MalformedCase{"mismatchedEnd", "<c>\n<a></b>\n</c>", 2},
                      MalformedCase{"duplicateAttribute", "<c>\n\n<a x=\"1\" x=\"2\" /></c>", 3},
                      MalformedCase{"unquotedValue", "<c a=1 />", 1},
                      MalformedCase{"lessThanInValue", "<c a=\"<\" />", 1},
                      MalformedCase{"unknownEntity", "<c>\n&nbsp;</c>", 2},
                      MalformedCase{"twoRoots", "<c/>\n<d/>", 2},
                      MalformedCase{"textOutside", "<c/>\nx", 2},
                      MalformedCase{"internalSubset", "<!DOCTYPE c [<!ENTITY e \"x\">]><c/>", 1},
                      MalformedCase{"badUtf8", "<c>\n\xC3\x28</c>", 2},
                      MalformedCase{"utf16", "\xFF\xFE<\0c\0/\0>\0", 1},
                      MalformedCase{"lateDeclaration", "\n<?xml version=\"1.0\"?><c/>", 2},
                      MalformedCase{"openComment", "<c><!-- never closed</c>", 1}),
    [](const ::testing::TestParamInfo<MalformedCase>& item) { return item.param.name; });

TEST(XmlTree, ReadDecodesAttributeValues) {
    const XmlDocument document = Read("<c a=\"x &amp; &#x41;\n\ty\" />");
    const XmlAttribute* attribute = document.DocumentElement()->FindAttribute("a");
    ASSERT_NE(attribute, nullptr);
    EXPECT_EQ(attribute->value, "x & A  y");
}

TEST(XmlTree, ChangingAnAttributeRewritesOnlyItsTag) {
    XmlDocument document = Read("<c>\r\n    <a x=\"1\"  y='2' />\r\n    <b x=\"1\" />\r\n</c>\r\n");
    Mutable(document, {0, 0}).SetAttribute("y", "<3>");
    EXPECT_EQ(RenderXml(document),
              "<c>\r\n    <a x=\"1\"  y='&lt;3&gt;' />\r\n    <b x=\"1\" />\r\n</c>\r\n");
}

TEST(XmlTree, NewAttributesAndChildrenFollowTheLayout) {
    XmlDocument document = Read("<c>\r\n    <a x=\"1\" />\r\n    <b x=\"1\" />\r\n</c>\r\n");
    XmlElement& a = Mutable(document, {0, 0});
    a.SetAttribute("z", "a\"b");
    auto child = NewXmlElement("add");
    child->SetAttribute("value", "v");
    InsertChildElement(a, std::string::npos, child, document.layout);
    EXPECT_EQ(RenderXml(document),
              "<c>\r\n    <a x=\"1\" z=\"a&quot;b\">\r\n        <add value=\"v\" />\r\n    </a>\r\n"
              "    <b x=\"1\" />\r\n</c>\r\n");
}

TEST(XmlTree, InsertedElementsTakeTheirSiblingsIndentation) {
    XmlDocument document = Read("<c>\n  <a />\n  <b />\n</c>");
    XmlElement& c = Mutable(document, {0});
    InsertChildElement(c, 0, NewXmlElement("first"), document.layout);
    InsertChildElement(c, std::string::npos, NewXmlElement("last"), document.layout);
    EXPECT_EQ(RenderXml(document), "<c>\n  <first />\n  <a />\n  <b />\n  <last />\n</c>");
}

TEST(XmlTree, NewElementsWithChildrenAreIndentedWhereTheyLand) {
    XmlDocument document = Read("<c>\n    <a />\n</c>\n");
    auto outer = NewXmlElement("outer");
    InsertChildElement(*outer, std::string::npos, NewXmlElement("inner"), document.layout);
    InsertChildElement(Mutable(document, {0}), std::string::npos, outer, document.layout);
    EXPECT_EQ(RenderXml(document),
              "<c>\n    <a />\n    <outer>\n        <inner />\n    </outer>\n</c>\n");
}

TEST(XmlTree, RemovingAnElementTakesItsLine) {
    XmlDocument document = Read("<c>\r\n    <a />\r\n    <!-- keep -->\r\n    <b />\r\n</c>");
    XmlElement& c = Mutable(document, {0});
    RemoveChildElement(c, 1);
    EXPECT_EQ(RenderXml(document), "<c>\r\n    <a />\r\n    <!-- keep -->\r\n</c>");
}

TEST(XmlTree, ChangesCopyOnlyWhatTheyTouchAndLeaveSharedDocumentsAlone) {
    const XmlDocument original = Read("<c>\n  <a x=\"1\" />\n  <b x=\"1\" />\n</c>");
    XmlDocument copy = original;
    Mutable(copy, {0, 0}).SetAttribute("x", "2");
    EXPECT_EQ(RenderXml(original), "<c>\n  <a x=\"1\" />\n  <b x=\"1\" />\n</c>");
    EXPECT_EQ(RenderXml(copy), "<c>\n  <a x=\"2\" />\n  <b x=\"1\" />\n</c>");
    // The untouched sibling is the same element in both documents.
    EXPECT_EQ(original.DocumentElement()->children[1].element,
              copy.DocumentElement()->children[1].element);
}

}  // namespace
}  // namespace webrig::sim::iis7
