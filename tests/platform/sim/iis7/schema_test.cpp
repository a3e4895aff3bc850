#include "platform/sim/iis7/schema.h"

#include <gtest/gtest.h>

#include "platform/sim/iis7/attribute_value.h"
#include "testing/case_name.h"

namespace webrig::sim::iis7 {
namespace {

// Steps from a section's root through child elements or collection entries: "add/processModel".
const ElementSchema* Reach(const SectionSchema& section, std::u16string_view path) {
    const ElementSchema* element = &section.root;
    while (element != nullptr && !path.empty()) {
        const size_t slash = path.find(u'/');
        const std::u16string_view step = path.substr(0, slash);
        const ElementSchema* child = element->FindChild(step);
        element = child != nullptr ? child : element->FindEntry(step);
        path = slash == path.npos ? u"" : path.substr(slash + 1);
    }
    return element;
}

const AttributeSchema* Attribute(const char16_t* section, const char16_t* element,
                                 const char16_t* attribute) {
    const SectionSchema* found = Schema::BuiltIn().FindSection(section);
    const ElementSchema* holder = found != nullptr ? Reach(*found, element) : nullptr;
    return holder != nullptr ? holder->FindAttribute(attribute) : nullptr;
}

constexpr const char16_t* kPools = u"system.applicationHost/applicationPools";
constexpr const char16_t* kSites = u"system.applicationHost/sites";

// A few anchors per type in the built-in files, where a slip would change what the runtime reads.
TEST(Schema, BuiltInFilesDescribeWhatTheRuntimeReads) {
    struct Anchor {
        const AttributeSchema* attribute;
        AttributeType type;
        const char16_t* defaultValue;
    };
    const Anchor anchors[] = {
        {Attribute(kPools, u"add/processModel", u"identityType"), AttributeType::enumeration,
         u"ApplicationPoolIdentity"},
        {Attribute(kPools, u"add/recycling/periodicRestart", u"time"), AttributeType::timeSpan,
         u"1.05:00:00"},
        {Attribute(kPools, u"add", u"queueLength"), AttributeType::uint32, u"1000"},
        {Attribute(u"system.webServer/httpErrors", u"error", u"subStatusCode"),
         AttributeType::int32, u"-1"},
        {Attribute(kSites, u"siteDefaults/logFile", u"truncateSize"), AttributeType::int64,
         u"20971520"},
        {Attribute(u"system.webServer/handlers", u"", u"accessPolicy"), AttributeType::flags,
         u"Read"},
        {Attribute(u"system.webServer/directoryBrowse", u"", u"enabled"), AttributeType::boolean,
         u"false"},
        {Attribute(u"system.web/authentication", u"", u"mode"), AttributeType::enumeration,
         u"Windows"},
        {Attribute(u"system.webServer/fastCgi",
                   u"application/environmentVariables/"
                   u"environmentVariable",
                   u"name"),
         AttributeType::string, u""},
        {Attribute(u"system.webServer/rewrite/rules", u"rule/action", u"redirectType"),
         AttributeType::enumeration, u"Permanent"},
        {Attribute(kSites, u"site/ftpServer/security/ssl", u"controlChannelPolicy"),
         AttributeType::enumeration, u"SslRequire"},
        {Attribute(kSites, u"siteDefaults/ftpServer/logFile", u"enabled"), AttributeType::boolean,
         u"true"},
    };
    for (const Anchor& anchor : anchors) {
        ASSERT_NE(anchor.attribute, nullptr);
        SCOPED_TRACE(qm::to_utf8(anchor.attribute->name));
        EXPECT_EQ(anchor.attribute->type, anchor.type);
        EXPECT_EQ(anchor.attribute->defaultValue, anchor.defaultValue);
    }
    const AttributeSchema* password = Attribute(kPools, u"add/processModel", u"password");
    ASSERT_NE(password, nullptr);
    EXPECT_TRUE(password->encrypted);
    const AttributeSchema* handler = Attribute(u"system.webServer/handlers", u"add", u"name");
    ASSERT_NE(handler, nullptr);
    EXPECT_TRUE(handler->isUniqueKey && handler->required && handler->caseSensitive);
    const ElementSchema* files =
        Reach(*Schema::BuiltIn().FindSection(u"system.webServer/defaultDocument"), u"files");
    ASSERT_NE(files, nullptr);
    ASSERT_TRUE(files->collection.has_value());
    EXPECT_FALSE(files->collection->mergeAppend);
    EXPECT_EQ(files->collection->removeElement, u"remove");
    for (const char16_t* section :
         {u"system.webServer/security/dynamicIpSecurity", u"system.webServer/webdav/authoring",
          u"system.webServer/applicationInitialization", u"system.webServer/proxy",
          u"system.ftpServer/security/authorization", u"webFarms"}) {
        EXPECT_NE(Schema::BuiltIn().FindSection(section), nullptr) << qm::to_utf8(section);
    }
}

// --- the reader -----------------------------------------------------------------------------

Schema ParseOne(const std::string& sectionBody) {
    return Schema::Parse("<configSchema><sectionSchema name=\"s/t\">" + sectionBody +
                         "</sectionSchema></configSchema>");
}

TEST(SchemaParse, ReadsValidationsAndNamedValues) {
    const Schema schema = ParseOne(
        R"(<attribute name="n" type="int64" defaultValue="-5" validationType="integerRange" validationParameter="-10,10" />)"
        R"(<attribute name="t" type="timeSpan" defaultValue="00:01:00" validationType="timeSpanRange" validationParameter="60,3600,30" />)"
        R"(<attribute name="f" type="flags" validationType="nonEmptyString"><flag name="A" value="1" /><flag name="B" value="4" /></attribute>)"
        R"(<attribute name="p" type="string" validationType="virtualPath" required="true" isUniqueKey="true" caseSensitive="true" expanded="true" encrypted="true" />)");
    const ElementSchema& root = schema.sections().at(0).root;
    const AttributeSchema* n = root.FindAttribute(u"n");
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(n->type, AttributeType::int64);
    EXPECT_EQ(n->minimum, -10);
    EXPECT_EQ(n->maximum, 10);
    const AttributeSchema* t = root.FindAttribute(u"t");
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->minimum, 60);
    EXPECT_EQ(t->maximum, 3600);
    EXPECT_EQ(t->granularitySeconds, 30u);
    const AttributeSchema* f = root.FindAttribute(u"f");
    ASSERT_NE(f, nullptr);
    EXPECT_TRUE(f->validateNonEmpty);
    ASSERT_EQ(f->values.size(), 2u);
    EXPECT_EQ(f->values[1].name, u"B");
    EXPECT_EQ(f->values[1].value, 4u);
    const AttributeSchema* p = root.FindAttribute(u"p");
    ASSERT_NE(p, nullptr);
    EXPECT_TRUE(p->validateVirtualPath && p->required && p->isUniqueKey && p->caseSensitive &&
                p->expanded && p->encrypted);
}

TEST(SchemaParse, DefaultElementCopiesTheEntryWithoutKeysOrCollection) {
    const Schema schema = ParseOne(
        R"(<collection addElement="item" defaultElement="itemDefaults" mergeAppend="false" allowDuplicates="true">)"
        R"(<attribute name="k" type="string" required="true" isUniqueKey="true" />)"
        R"(<attribute name="must" type="uint" required="true" />)"
        R"(<element name="inner"><attribute name="x" type="bool" defaultValue="false" /></element>)"
        R"(<collection addElement="sub"><attribute name="v" type="string" isUniqueKey="true" /></collection>)"
        R"(</collection>)");
    const ElementSchema& root = schema.sections().at(0).root;
    ASSERT_TRUE(root.collection.has_value());
    EXPECT_FALSE(root.collection->mergeAppend);
    EXPECT_TRUE(root.collection->allowDuplicates);
    EXPECT_EQ(root.collection->defaultElement, u"itemDefaults");
    const ElementSchema* defaults = root.FindChild(u"itemDefaults");
    ASSERT_NE(defaults, nullptr);
    EXPECT_EQ(defaults->FindAttribute(u"k"), nullptr);
    ASSERT_NE(defaults->FindAttribute(u"must"), nullptr);
    EXPECT_FALSE(defaults->FindAttribute(u"must")->required);
    EXPECT_NE(defaults->FindChild(u"inner"), nullptr);
    EXPECT_FALSE(defaults->collection.has_value());
    const ElementSchema* item = root.FindEntry(u"item");
    ASSERT_NE(item, nullptr);
    EXPECT_TRUE(item->collection.has_value());
    EXPECT_TRUE(item->FindAttribute(u"must")->required);
}

TEST(SchemaParse, ReadsIisFormsOfCollectionsAndValues) {
    const Schema schema = ParseOne(
        R"(<attribute name="bw" type="uint" validationType="integerRange" validationParameter="0,1023,exclude" />)"
        R"(<attribute name="wait" type="timeSpan" timeSpanFormat="seconds" allowInfinite="true" defaultValue="Infinite" />)"
        R"(<collection addElement="allow,deny" clearElement="clear" allowUnrecognizedAttributes="true">)"
        R"(<attribute name="users" type="string" isUniqueKey="true" /></collection>)");
    const ElementSchema& root = schema.sections().at(0).root;
    const AttributeSchema* bandwidth = root.FindAttribute(u"bw");
    ASSERT_NE(bandwidth, nullptr);
    EXPECT_EQ(bandwidth->excludedRange, std::make_pair(int64_t{0}, int64_t{1023}));
    EXPECT_FALSE(bandwidth->minimum.has_value());
    const AttributeSchema* wait = root.FindAttribute(u"wait");
    ASSERT_NE(wait, nullptr);
    EXPECT_EQ(wait->timeSpanFormat, TimeSpanFormat::seconds);
    EXPECT_TRUE(wait->allowInfinite);
    ASSERT_EQ(root.entries.size(), 2u);
    EXPECT_EQ(root.entries[1].name, u"deny");
    EXPECT_NE(root.entries[1].FindExactAttribute("users"), nullptr);
    EXPECT_TRUE(root.entries[0].allowUnrecognizedAttributes);
    // Files hold names as the schema spells them; the administration objects ignore case.
    EXPECT_EQ(root.entries[0].FindExactAttribute("Users"), nullptr);
    EXPECT_NE(root.entries[0].FindAttribute(u"Users"), nullptr);
}

TEST(SchemaParse, AnotherFileExtendsASection) {
    const Schema schema = Schema::FromFiles(
        {{"a.xml",
          R"(<configSchema><sectionSchema name="s/t"><collection addElement="site" defaultElement="siteDefaults">)"
          R"(<attribute name="name" type="string" isUniqueKey="true" /></collection></sectionSchema></configSchema>)"},
         {"b.xml", R"(<configSchema><sectionSchema name="s/t"><collection addElement="site">)"
                   R"(<element name="ftp"><attribute name="on" type="bool" /></element>)"
                   R"(</collection></sectionSchema></configSchema>)"}});
    const ElementSchema& root = schema.FindSection(u"s/t")->root;
    ASSERT_NE(root.FindEntry(u"site"), nullptr);
    EXPECT_NE(root.FindEntry(u"site")->FindChild(u"ftp"), nullptr);
    ASSERT_NE(root.FindChild(u"siteDefaults"), nullptr);
    EXPECT_NE(root.FindChild(u"siteDefaults")->FindChild(u"ftp"), nullptr);
    try {
        Schema::FromFiles(
            {{"a.xml",
              R"(<configSchema><sectionSchema name="s/t"><attribute name="x" type="bool" /></sectionSchema></configSchema>)"},
             {"b.xml",
              "<configSchema>\n<sectionSchema name=\"s/t\">\n<attribute name=\"x\" type=\"uint\" "
              "/>\n</sectionSchema></configSchema>"}});
        ADD_FAILURE() << "an attribute described twice was accepted";
    } catch (const SchemaError& error) {
        EXPECT_STREQ(error.what(), "b.xml: section 's/t': attribute x is described twice");
    }
}

struct BadSchema {
    const char* what;
    std::string text;
};

class SchemaMistakes : public ::testing::TestWithParam<BadSchema> {};

TEST_P(SchemaMistakes, AreRefused) {
    EXPECT_THROW(Schema::Parse(GetParam().text), SchemaError) << GetParam().what;
}

std::string Section(const std::string& body) {
    return "<configSchema><sectionSchema name=\"s/t\">" + body + "</sectionSchema></configSchema>";
}

INSTANTIATE_TEST_SUITE_P(
    Typos, SchemaMistakes,
    ::testing::Values(
        BadSchema{"not XML", "<configSchema><sectionSchema"},
        BadSchema{"another root", "<schema />"},
        BadSchema{"unknown type", Section(R"(<attribute name="a" type="integer" />)")},
        BadSchema{"unknown attribute", Section(R"(<attribute name="a" type="bool" dflt="x" />)")},
        BadSchema{"unknown element", Section(R"(<property name="a" />)")},
        BadSchema{
            "range on a string",
            Section(
                R"(<attribute name="a" type="string" validationType="integerRange" validationParameter="1,2" />)")},
        BadSchema{
            "range with one number",
            Section(
                R"(<attribute name="a" type="uint" validationType="integerRange" validationParameter="1" />)")},
        BadSchema{
            "range not numbers",
            Section(
                R"(<attribute name="a" type="uint" validationType="integerRange" validationParameter="1,x" />)")},
        BadSchema{"unknown validation",
                  Section(R"(<attribute name="a" type="string" validationType="email" />)")},
        BadSchema{"default the type refuses",
                  Section(R"(<attribute name="a" type="bool" defaultValue="yes" />)")},
        BadSchema{"default not as IIS writes it",
                  Section(R"(<attribute name="a" type="timeSpan" defaultValue="29:00:00" />)")},
        BadSchema{
            "default outside the range",
            Section(
                R"(<attribute name="a" type="uint" defaultValue="9" validationType="integerRange" validationParameter="10,20" />)")},
        BadSchema{"enum without values", Section(R"(<attribute name="a" type="enum" />)")},
        BadSchema{
            "flag in an enum",
            Section(R"(<attribute name="a" type="enum"><flag name="x" value="1" /></attribute>)")},
        BadSchema{
            "values on a bool",
            Section(R"(<attribute name="a" type="bool"><enum name="x" value="1" /></attribute>)")},
        BadSchema{
            "attribute twice",
            Section(R"(<attribute name="a" type="bool" /><attribute name="A" type="uint" />)")},
        BadSchema{"two collections",
                  Section(R"(<collection addElement="a" /><collection addElement="b" />)")},
        BadSchema{"collection without addElement", Section(R"(<collection />)")},
        BadSchema{"timeSpanFormat on a number",
                  Section(R"(<attribute name="a" type="uint" timeSpanFormat="seconds" />)")},
        BadSchema{
            "declaration without declaredIn",
            R"(<configSchema><sectionSchema name="s" overrideModeDefault="Deny" /></configSchema>)"},
        BadSchema{
            "section twice",
            R"(<configSchema><sectionSchema name="s" /><sectionSchema name="s" /></configSchema>)"},
        BadSchema{"section without name", R"(<configSchema><sectionSchema /></configSchema>)"}),
    testing::NameFromWhat());

}  // namespace
}  // namespace webrig::sim::iis7
