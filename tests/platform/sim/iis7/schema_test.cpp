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

struct Described {
    const char16_t* section;
    const char16_t* element;  // path below the section, "" for the section element
    const char16_t* attribute;
    AttributeType type;
    const char16_t* defaultValue;
    bool required = false;
    bool key = false;  // unique or combined
    bool encrypted = false;
};

class RuntimeAttributes : public ::testing::TestWithParam<Described> {};

TEST_P(RuntimeAttributes, HaveTheirTypeDefaultAndKey) {
    const Described& want = GetParam();
    const AttributeSchema* attribute = Attribute(want.section, want.element, want.attribute);
    ASSERT_NE(attribute, nullptr) << qm::to_utf8(want.attribute);
    EXPECT_EQ(attribute->name, want.attribute);
    EXPECT_EQ(attribute->type, want.type);
    EXPECT_EQ(attribute->defaultValue, want.defaultValue);
    EXPECT_EQ(attribute->required, want.required);
    EXPECT_EQ(attribute->isUniqueKey || attribute->isCombinedKey, want.key);
    EXPECT_EQ(attribute->encrypted, want.encrypted);
}

constexpr auto kBool = AttributeType::boolean;
constexpr auto kUint = AttributeType::uint32;
constexpr auto kInt = AttributeType::int32;
constexpr auto kString = AttributeType::string;
constexpr auto kTime = AttributeType::timeSpan;
constexpr auto kEnum = AttributeType::enumeration;
constexpr auto kFlags = AttributeType::flags;
constexpr const char16_t* kPools = u"system.applicationHost/applicationPools";
constexpr const char16_t* kSites = u"system.applicationHost/sites";

INSTANTIATE_TEST_SUITE_P(
    TheRuntimeWrites, RuntimeAttributes,
    ::testing::Values(
        Described{kSites, u"site", u"name", kString, u"", true, true},
        Described{kSites, u"site", u"id", kUint, u"", true, true},
        Described{kSites, u"site", u"serverAutoStart", kBool, u"true"},
        Described{kSites, u"site/bindings/binding", u"protocol", kString, u"", true, true},
        Described{kSites, u"site/bindings/binding", u"bindingInformation", kString, u"", true,
                  true},
        Described{kSites, u"site/bindings/binding", u"sslFlags", kUint, u"0"},
        Described{kSites, u"site/application", u"path", kString, u"", true, true},
        Described{kSites, u"site/application", u"applicationPool", kString, u""},
        Described{kSites, u"site/application", u"enabledProtocols", kString, u"http"},
        Described{kSites, u"site/application", u"preloadEnabled", kBool, u"false"},
        Described{kSites, u"site/application/virtualDirectory", u"path", kString, u"", true, true},
        Described{kSites, u"site/application/virtualDirectory", u"physicalPath", kString, u""},
        Described{kSites, u"site/application/virtualDirectory", u"password", kString, u"", false,
                  false, true},
        Described{kSites, u"site/application/virtualDirectory", u"logonMethod", kEnum,
                  u"ClearText"},
        Described{kSites, u"site/application/virtualDirectory", u"allowSubDirConfig", kBool,
                  u"true"},
        Described{kPools, u"add", u"name", kString, u"", true, true},
        Described{kPools, u"add", u"queueLength", kUint, u"1000"},
        Described{kPools, u"add", u"autoStart", kBool, u"true"},
        Described{kPools, u"add", u"managedRuntimeVersion", kString, u""},
        Described{kPools, u"add", u"managedPipelineMode", kEnum, u"Integrated"},
        Described{kPools, u"add", u"enable32BitAppOnWin64", kBool, u"false"},
        Described{kPools, u"add", u"startMode", kEnum, u"OnDemand"},
        Described{kPools, u"add/processModel", u"identityType", kEnum, u"ApplicationPoolIdentity"},
        Described{kPools, u"add/processModel", u"userName", kString, u""},
        Described{kPools, u"add/processModel", u"password", kString, u"", false, false, true},
        Described{kPools, u"add/processModel", u"idleTimeout", kTime, u"00:20:00"},
        Described{kPools, u"add/processModel", u"maxProcesses", kUint, u"1"},
        Described{kPools, u"add/processModel", u"loadUserProfile", kBool, u"false"},
        Described{kPools, u"add/recycling/periodicRestart", u"time", kTime, u"1.05:00:00"},
        Described{kPools, u"add/recycling/periodicRestart", u"requests", kUint, u"0"},
        Described{kPools, u"add/recycling/periodicRestart/schedule/add", u"value", kTime, u"", true,
                  true},
        Described{kPools, u"add/cpu", u"limit", kUint, u"0"},
        Described{kPools, u"add/cpu", u"action", kEnum, u"NoAction"},
        Described{kPools, u"add/cpu", u"resetInterval", kTime, u"00:05:00"},
        Described{u"system.applicationHost/customMetadata", u"key", u"path", kString, u"", true,
                  true},
        Described{u"system.applicationHost/customMetadata", u"key/property", u"id", kUint, u"",
                  true, true},
        Described{u"system.applicationHost/customMetadata", u"key/property", u"attributes", kFlags,
                  u"Inherit"},
        Described{u"system.applicationHost/customMetadata", u"key/property", u"userType", kUint,
                  u"1"},
        Described{u"system.webServer/security/authentication/anonymousAuthentication", u"",
                  u"userName", kString, u"IUSR"},
        Described{u"system.webServer/security/authentication/anonymousAuthentication", u"",
                  u"password", kString, u"", false, false, true},
        Described{u"system.webServer/security/authentication/anonymousAuthentication", u"",
                  u"enabled", kBool, u"true"},
        Described{u"system.webServer/security/authentication/basicAuthentication", u"", u"enabled",
                  kBool, u"false"},
        Described{u"system.webServer/security/authentication/basicAuthentication", u"", u"realm",
                  kString, u""},
        Described{u"system.webServer/security/authentication/windowsAuthentication", u"",
                  u"useKernelMode", kBool, u"true"},
        Described{u"system.webServer/security/authentication/windowsAuthentication",
                  u"providers/add", u"value", kString, u"", true, true},
        Described{u"system.webServer/directoryBrowse", u"", u"enabled", kBool, u"false"},
        Described{u"system.webServer/directoryBrowse", u"", u"showFlags", kFlags,
                  u"Date, Time, Size, Extension"},
        Described{u"system.webServer/handlers", u"", u"accessPolicy", kFlags, u"Read"},
        Described{u"system.webServer/handlers", u"add", u"name", kString, u"", true, true},
        Described{u"system.webServer/handlers", u"add", u"modules", kString,
                  u"ManagedPipelineHandler"},
        Described{u"system.webServer/handlers", u"add", u"resourceType", kEnum, u"Unspecified"},
        Described{u"system.webServer/handlers", u"add", u"requireAccess", kEnum, u"Script"},
        Described{u"system.webServer/httpLogging", u"", u"dontLog", kBool, u"false"},
        Described{u"system.webServer/httpLogging", u"", u"selectiveLogging", kEnum, u"LogAll"},
        Described{u"system.webServer/asp", u"limits", u"scriptTimeout", kTime, u"00:01:30"},
        Described{u"system.webServer/asp", u"session", u"timeout", kTime, u"00:20:00"},
        Described{u"system.webServer/defaultDocument", u"", u"enabled", kBool, u"true"},
        Described{u"system.webServer/defaultDocument", u"files/add", u"value", kString, u"", true,
                  true},
        Described{u"system.webServer/httpErrors", u"error", u"statusCode", kUint, u"", true, true},
        Described{u"system.webServer/httpErrors", u"error", u"subStatusCode", kInt, u"-1", false,
                  true},
        Described{u"system.webServer/httpErrors", u"error", u"path", kString, u"", true},
        Described{u"system.webServer/httpErrors", u"error", u"responseMode", kEnum, u"File"},
        Described{u"system.webServer/staticContent", u"mimeMap", u"fileExtension", kString, u"",
                  true, true},
        Described{u"system.webServer/staticContent", u"mimeMap", u"mimeType", kString, u"", true},
        Described{u"system.webServer/security/isapiCgiRestriction", u"", u"notListedIsapisAllowed",
                  kBool, u"false"},
        Described{u"system.webServer/security/isapiCgiRestriction", u"add", u"path", kString, u"",
                  true, true},
        Described{u"system.webServer/security/isapiCgiRestriction", u"add", u"allowed", kBool,
                  u"false"},
        Described{u"system.web/authentication", u"", u"mode", kEnum, u"Windows"}));

TEST(Schema, RangesAndGranularityOfTheRuntimesNumbers) {
    struct Limits {
        const AttributeSchema* attribute;
        int64_t minimum;
        int64_t maximum;
        uint32_t granularity;
    };
    const Limits cases[] = {
        {Attribute(kPools, u"add", u"queueLength"), 10, 65535, 0},
        {Attribute(kPools, u"add/processModel", u"idleTimeout"), 0, 30 * 86400, 60},
        {Attribute(kPools, u"add/recycling/periodicRestart", u"time"), 0, 4294967295, 60},
        {Attribute(kPools, u"add/recycling/periodicRestart/schedule/add", u"value"), 0,
         23 * 3600 + 59 * 60, 60},
        {Attribute(kPools, u"add/cpu", u"limit"), 0, 100000, 0},
        {Attribute(kPools, u"add/cpu", u"resetInterval"), 0, 86400, 60},
        {Attribute(u"system.webServer/asp", u"session", u"timeout"), 0, 365 * 86400, 60},
        {Attribute(u"system.webServer/httpErrors", u"error", u"statusCode"), 400, 999, 0},
        {Attribute(u"system.webServer/httpErrors", u"error", u"subStatusCode"), -1, 999, 0},
    };
    for (const Limits& limits : cases) {
        ASSERT_NE(limits.attribute, nullptr);
        SCOPED_TRACE(qm::to_utf8(limits.attribute->name));
        EXPECT_EQ(limits.attribute->minimum, limits.minimum);
        EXPECT_EQ(limits.attribute->maximum, limits.maximum);
        EXPECT_EQ(limits.attribute->granularitySeconds, limits.granularity);
    }
}

TEST(Schema, EnumAndFlagValuesKeepIisNumbers) {
    struct Value {
        const AttributeSchema* attribute;
        const char16_t* name;
        uint32_t value;
    };
    const Value cases[] = {
        {Attribute(kPools, u"add/processModel", u"identityType"), u"LocalSystem", 0},
        {Attribute(kPools, u"add/processModel", u"identityType"), u"NetworkService", 2},
        {Attribute(kPools, u"add/processModel", u"identityType"), u"ApplicationPoolIdentity", 4},
        {Attribute(kPools, u"add/cpu", u"action"), u"KillW3wp", 1},
        {Attribute(kPools, u"add/cpu", u"action"), u"ThrottleUnderLoad", 3},
        {Attribute(u"system.webServer/handlers", u"", u"accessPolicy"), u"Script", 512},
        {Attribute(u"system.webServer/handlers", u"", u"accessPolicy"), u"NoRemoteScript", 16384},
        {Attribute(u"system.webServer/handlers", u"add", u"requireAccess"), u"Execute", 4},
        {Attribute(u"system.webServer/directoryBrowse", u"", u"showFlags"), u"Extension", 16},
        {Attribute(u"system.applicationHost/customMetadata", u"key/property", u"dataType"),
         u"MultiSZ", 5},
        {Attribute(u"system.web/authentication", u"", u"mode"), u"Forms", 3},
        {Attribute(u"system.web/authentication", u"", u"mode"), u"Federated", 4},
    };
    for (const Value& want : cases) {
        ASSERT_NE(want.attribute, nullptr);
        SCOPED_TRACE(qm::to_utf8(want.name));
        const auto& values = want.attribute->values;
        const auto found = std::find_if(values.begin(), values.end(),
                                        [&](const NamedValue& v) { return v.name == want.name; });
        ASSERT_NE(found, values.end());
        EXPECT_EQ(found->value, want.value);
    }
}

struct Collection {
    const char16_t* section;
    const char16_t* holder;
    const char16_t* add;
    const char16_t* remove;
    const char16_t* clear;
    bool mergeAppend;
};

class Collections : public ::testing::TestWithParam<Collection> {};

TEST_P(Collections, HaveTheirElementNames) {
    const Collection& want = GetParam();
    const SectionSchema* section = Schema::BuiltIn().FindSection(want.section);
    ASSERT_NE(section, nullptr);
    const ElementSchema* holder = Reach(*section, want.holder);
    ASSERT_NE(holder, nullptr);
    ASSERT_TRUE(holder->collection.has_value());
    EXPECT_EQ(holder->collection->addElements, std::vector<std::u16string>{want.add});
    EXPECT_EQ(holder->collection->removeElement, want.remove);
    EXPECT_EQ(holder->collection->clearElement, want.clear);
    EXPECT_EQ(holder->collection->mergeAppend, want.mergeAppend);
    ASSERT_EQ(holder->entries.size(), 1u);
    EXPECT_EQ(holder->entries[0].name, want.add);
}

INSTANTIATE_TEST_SUITE_P(
    TheRuntimeEdits, Collections,
    ::testing::Values(
        Collection{kSites, u"", u"site", u"", u"", true},
        Collection{kSites, u"site/bindings", u"binding", u"", u"clear", true},
        Collection{kSites, u"site", u"application", u"", u"", true},
        Collection{kSites, u"site/application", u"virtualDirectory", u"", u"", true},
        Collection{kPools, u"", u"add", u"", u"", true},
        Collection{kPools, u"add/recycling/periodicRestart/schedule", u"add", u"", u"clear", true},
        Collection{u"system.webServer/handlers", u"", u"add", u"remove", u"clear", false},
        Collection{u"system.webServer/defaultDocument", u"files", u"add", u"remove", u"clear",
                   false},
        Collection{u"system.webServer/httpErrors", u"", u"error", u"remove", u"clear", true},
        Collection{u"system.webServer/staticContent", u"", u"mimeMap", u"remove", u"clear", true},
        Collection{u"system.webServer/security/isapiCgiRestriction", u"", u"add", u"remove",
                   u"clear", true},
        Collection{u"system.applicationHost/customMetadata", u"key", u"property", u"", u"", true}));

TEST(Schema, DefaultsElementsCarryTheEntriesSettingsWithoutKeys) {
    struct Defaults {
        const char16_t* section;
        const char16_t* path;
        const char16_t* present;  // an attribute the defaults element has
        const char16_t* key;      // the entry's key, which it lacks
    };
    const Defaults cases[] = {
        {kSites, u"siteDefaults", u"serverAutoStart", u"name"},
        {kSites, u"siteDefaults/logFile", u"directory", nullptr},
        {kSites, u"siteDefaults/traceFailedRequestsLogging", u"directory", nullptr},
        {kSites, u"applicationDefaults", u"applicationPool", u"path"},
        {kSites, u"virtualDirectoryDefaults", u"allowSubDirConfig", u"path"},
        {kSites, u"site/applicationDefaults", u"applicationPool", u"path"},
        {kSites, u"site/application/virtualDirectoryDefaults", u"physicalPath", u"path"},
        {kPools, u"applicationPoolDefaults", u"managedRuntimeVersion", u"name"},
        {kPools, u"applicationPoolDefaults/processModel", u"identityType", nullptr},
    };
    for (const Defaults& want : cases) {
        SCOPED_TRACE(qm::to_utf8(want.path));
        const ElementSchema* element =
            Reach(*Schema::BuiltIn().FindSection(want.section), want.path);
        ASSERT_NE(element, nullptr);
        EXPECT_NE(element->FindAttribute(want.present), nullptr);
        if (want.key != nullptr) {
            EXPECT_EQ(element->FindAttribute(want.key), nullptr);
        }
        EXPECT_FALSE(element->collection.has_value());
    }
}

TEST(Schema, NamesBelowTheSectionIgnoreCaseSectionNamesDoNot) {
    const ElementSchema* pool = Reach(*Schema::BuiltIn().FindSection(kPools), u"add");
    ASSERT_NE(pool, nullptr);
    const AttributeSchema* bitness = pool->FindAttribute(u"Enable32BitAppOnWin64");
    ASSERT_NE(bitness, nullptr);
    EXPECT_EQ(bitness->name, u"enable32BitAppOnWin64");
    ASSERT_NE(pool->FindChild(u"PROCESSMODEL"), nullptr);
    EXPECT_EQ(pool->FindChild(u"PROCESSMODEL")->name, u"processModel");
    EXPECT_EQ(pool->FindAttribute(u"noSuchAttribute"), nullptr);
    EXPECT_NE(Schema::BuiltIn().FindSection(u"system.webServer/handlers"), nullptr);
    EXPECT_EQ(Schema::BuiltIn().FindSection(u"system.webServer/Handlers"), nullptr);
    EXPECT_EQ(Schema::BuiltIn().FindSection(u"system.webServer/nothing"), nullptr);
}

TEST(Schema, SectionsOfMachineConfigCarryTheirDeclaration) {
    const SectionSchema* authentication =
        Schema::BuiltIn().FindSection(u"system.web/authentication");
    ASSERT_NE(authentication, nullptr);
    ASSERT_TRUE(authentication->machineConfigDeclaration.has_value());
    EXPECT_EQ(authentication->machineConfigDeclaration->allowDefinition, u"MachineToApplication");
    EXPECT_EQ(authentication->machineConfigDeclaration->overrideModeDefault, u"Allow");
    EXPECT_FALSE(Schema::BuiltIn().FindSection(kSites)->machineConfigDeclaration.has_value());
}

TEST(Schema, NamesAndPathsAreCheckedAsIisChecksThem) {
    struct Check {
        const AttributeSchema* attribute;
        const char16_t* text;
        bool accepted;
    };
    const AttributeSchema* site = Attribute(kSites, u"site", u"name");
    const AttributeSchema* pool = Attribute(kPools, u"add", u"name");
    const AttributeSchema* application = Attribute(kSites, u"site/application", u"path");
    const AttributeSchema* mimeType =
        Attribute(u"system.webServer/staticContent", u"mimeMap", u"mimeType");
    const Check cases[] = {
        {site, u"Default Web Site", true},
        {site, u"a?b", false},
        {site, u"", false},
        {pool, u"My Pool (x86)", true},
        {pool, u"a@b", false},
        {application, u"/", true},
        {application, u"/shop/admin", true},
        {application, u"/shop/", false},
        {mimeType, u"", false},
    };
    for (const Check& check : cases) {
        ASSERT_NE(check.attribute, nullptr);
        EXPECT_EQ(NormalizeAttributeText(*check.attribute, check.text).has_value(), check.accepted)
            << qm::to_utf8(check.attribute->name) << " " << qm::to_utf8(check.text);
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
        BadSchema{
            "defaults element clashes",
            Section(R"(<element name="d" /><collection addElement="a" defaultElement="d" />)")},
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
