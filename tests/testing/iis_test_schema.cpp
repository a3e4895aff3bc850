#include "testing/iis_test_schema.h"

namespace webrig::testing {
namespace {

using sim::iis7::AttributeSchema;
using sim::iis7::AttributeType;
using sim::iis7::CollectionSchema;
using sim::iis7::ElementSchema;
using sim::iis7::NamedValue;
using sim::iis7::SectionSchema;

AttributeSchema Text(std::u16string name, std::u16string defaultValue = {}) {
    AttributeSchema attribute;
    attribute.name = std::move(name);
    attribute.defaultValue = std::move(defaultValue);
    return attribute;
}

AttributeSchema Key(std::u16string name, bool combined = false) {
    AttributeSchema attribute = Text(std::move(name));
    attribute.required = true;
    (combined ? attribute.isCombinedKey : attribute.isUniqueKey) = true;
    return attribute;
}

AttributeSchema Bool(std::u16string name, bool defaultValue) {
    AttributeSchema attribute = Text(std::move(name), defaultValue ? u"true" : u"false");
    attribute.type = AttributeType::boolean;
    return attribute;
}

AttributeSchema Number(std::u16string name, std::u16string defaultValue,
                       std::optional<int64_t> minimum = std::nullopt,
                       std::optional<int64_t> maximum = std::nullopt) {
    AttributeSchema attribute = Text(std::move(name), std::move(defaultValue));
    attribute.type = AttributeType::uint32;
    attribute.minimum = minimum;
    attribute.maximum = maximum;
    return attribute;
}

AttributeSchema Span(std::u16string name, std::u16string defaultValue, int64_t maximum,
                     uint32_t granularity) {
    AttributeSchema attribute = Text(std::move(name), std::move(defaultValue));
    attribute.type = AttributeType::timeSpan;
    attribute.minimum = 0;
    attribute.maximum = maximum;
    attribute.granularitySeconds = granularity;
    return attribute;
}

AttributeSchema Enum(std::u16string name, std::u16string defaultValue,
                     std::vector<NamedValue> values, bool flags = false) {
    AttributeSchema attribute = Text(std::move(name), std::move(defaultValue));
    attribute.type = flags ? AttributeType::flags : AttributeType::enumeration;
    attribute.values = std::move(values);
    return attribute;
}

AttributeSchema Secret(std::u16string name) {
    AttributeSchema attribute = Text(std::move(name));
    attribute.encrypted = true;
    return attribute;
}

ElementSchema Element(std::u16string name, std::vector<AttributeSchema> attributes,
                      std::vector<ElementSchema> children = {}) {
    ElementSchema element;
    element.name = std::move(name);
    element.attributes = std::move(attributes);
    element.children = std::move(children);
    return element;
}

ElementSchema WithCollection(ElementSchema element, ElementSchema entry, std::u16string remove,
                             std::u16string clear, bool mergeAppend = true) {
    CollectionSchema collection;
    collection.addElements = {entry.name};
    collection.removeElement = std::move(remove);
    collection.clearElement = std::move(clear);
    collection.mergeAppend = mergeAppend;
    element.collection = std::move(collection);
    element.entries = {std::move(entry)};
    return element;
}

SectionSchema Section(std::u16string name, ElementSchema root) {
    SectionSchema section;
    section.name = std::move(name);
    section.root = std::move(root);
    return section;
}

const std::vector<NamedValue> kLogonMethods = {
    {u"Interactive", 0}, {u"Batch", 1}, {u"Network", 2}, {u"ClearText", 3}};

std::vector<SectionSchema> Sections() {
    std::vector<SectionSchema> sections;

    ElementSchema virtualDirectory = Element(
        u"virtualDirectory",
        {Key(u"path"), Text(u"physicalPath"), Text(u"userName"), Secret(u"password"),
         Enum(u"logonMethod", u"ClearText", kLogonMethods), Bool(u"allowSubDirConfig", true)});
    ElementSchema application =
        WithCollection(Element(u"application", {Key(u"path"), Text(u"applicationPool"),
                                                Text(u"enabledProtocols", u"http"),
                                                Bool(u"preloadEnabled", false)}),
                       virtualDirectory, {}, {});
    ElementSchema binding = Element(
        u"binding",
        {Key(u"protocol", true), Key(u"bindingInformation", true), Number(u"sslFlags", u"0")});
    ElementSchema bindings = WithCollection(Element(u"bindings", {}), binding, {}, u"clear");
    ElementSchema site = WithCollection(
        Element(u"site", {Key(u"name"), Number(u"id", u""), Bool(u"serverAutoStart", true)},
                {bindings}),
        application, {}, {});
    site.attributes[1].isUniqueKey = true;
    site.attributes[1].required = true;
    ElementSchema siteDefaults = Element(u"siteDefaults", {Bool(u"serverAutoStart", true)});
    ElementSchema applicationDefaults = Element(
        u"applicationDefaults", {Text(u"applicationPool"), Text(u"enabledProtocols", u"http")});
    ElementSchema sitesRoot =
        WithCollection(Element(u"sites", {}, {siteDefaults, applicationDefaults}), site, {}, {});
    sitesRoot.collection->defaultElement = u"siteDefaults";
    sections.push_back(Section(u"system.applicationHost/sites", std::move(sitesRoot)));

    ElementSchema processModel =
        Element(u"processModel",
                {Enum(u"identityType", u"ApplicationPoolIdentity",
                      {{u"LocalSystem", 0},
                       {u"LocalService", 1},
                       {u"NetworkService", 2},
                       {u"SpecificUser", 3},
                       {u"ApplicationPoolIdentity", 4}}),
                 Text(u"userName"), Secret(u"password"),
                 Span(u"idleTimeout", u"00:20:00", 30 * 86400, 60), Number(u"maxProcesses", u"1")});
    ElementSchema schedule =
        WithCollection(Element(u"schedule", {}), Element(u"add", {[] {
                                                             AttributeSchema value =
                                                                 Span(u"value", u"", 86399, 60);
                                                             value.isUniqueKey = true;
                                                             value.required = true;
                                                             return value;
                                                         }()}),
                       {}, u"clear");
    ElementSchema periodicRestart = Element(
        u"periodicRestart",
        {Span(u"time", u"1.05:00:00", 432000 * 60, 60), Number(u"requests", u"0")}, {schedule});
    ElementSchema recycling = Element(u"recycling", {}, {periodicRestart});
    const std::vector<AttributeSchema> poolAttributes = {
        Key(u"name"),
        Number(u"queueLength", u"1000", 10, 65535),
        Bool(u"autoStart", true),
        Text(u"managedRuntimeVersion"),
        Enum(u"managedPipelineMode", u"Integrated", {{u"Integrated", 0}, {u"Classic", 1}}),
        Bool(u"enable32BitAppOnWin64", false)};
    ElementSchema pool = Element(u"add", poolAttributes, {processModel, recycling});
    ElementSchema poolDefaults =
        Element(u"applicationPoolDefaults", poolAttributes, {processModel, recycling});
    poolDefaults.attributes[0].required = false;
    poolDefaults.attributes[0].isUniqueKey = false;
    ElementSchema poolsRoot =
        WithCollection(Element(u"applicationPools", {}, {poolDefaults}), pool, {}, {});
    poolsRoot.collection->defaultElement = u"applicationPoolDefaults";
    sections.push_back(Section(u"system.applicationHost/applicationPools", std::move(poolsRoot)));

    ElementSchema property = Element(u"property", {[] {
                                                       AttributeSchema id = Number(u"id", u"");
                                                       id.isUniqueKey = true;
                                                       id.required = true;
                                                       return id;
                                                   }(),
                                                   Text(u"value")});
    ElementSchema key =
        WithCollection(Element(u"key", {Key(u"path")}), property, u"remove", u"clear");
    sections.push_back(
        Section(u"system.applicationHost/customMetadata",
                WithCollection(Element(u"customMetadata", {}), key, u"remove", u"clear")));

    sections.push_back(
        Section(u"system.webServer/security/authentication/anonymousAuthentication",
                Element(u"anonymousAuthentication",
                        {Bool(u"enabled", true), Text(u"userName", u"IUSR"), Secret(u"password"),
                         Enum(u"logonMethod", u"ClearText", kLogonMethods)})));
    sections.push_back(
        Section(u"system.webServer/directoryBrowse",
                Element(u"directoryBrowse",
                        {Bool(u"enabled", false), Enum(u"showFlags", u"Date, Time, Size, Extension",
                                                       {{u"None", 0},
                                                        {u"Date", 2},
                                                        {u"Time", 4},
                                                        {u"Size", 8},
                                                        {u"Extension", 16},
                                                        {u"LongDate", 32}},
                                                       true)})));
    AttributeSchema handlerName = Key(u"name");
    handlerName.caseSensitive = true;
    ElementSchema handler = Element(
        u"add", {handlerName,
                 [] {
                     AttributeSchema a = Text(u"path");
                     a.required = true;
                     return a;
                 }(),
                 [] {
                     AttributeSchema a = Text(u"verb");
                     a.required = true;
                     return a;
                 }(),
                 Text(u"modules"), Text(u"scriptProcessor"),
                 Enum(u"resourceType", u"Unspecified",
                      {{u"File", 0}, {u"Directory", 1}, {u"Either", 2}, {u"Unspecified", 3}})});
    sections.push_back(Section(u"system.webServer/handlers",
                               WithCollection(Element(u"handlers", {Enum(u"accessPolicy", u"Read",
                                                                         {{u"None", 0},
                                                                          {u"Read", 1},
                                                                          {u"Write", 2},
                                                                          {u"Execute", 4},
                                                                          {u"Source", 16},
                                                                          {u"Script", 512}},
                                                                         true)}),
                                              handler, u"remove", u"clear", false)));
    ElementSchema document = Element(u"add", {Key(u"value")});
    sections.push_back(Section(
        u"system.webServer/defaultDocument",
        Element(u"defaultDocument", {Bool(u"enabled", true)},
                {WithCollection(Element(u"files", {}), document, u"remove", u"clear", false)})));
    AttributeSchema statusCode = Number(u"statusCode", u"", 400, 999);
    statusCode.isCombinedKey = true;
    statusCode.required = true;
    AttributeSchema subStatusCode = Text(u"subStatusCode", u"-1");
    subStatusCode.type = sim::iis7::AttributeType::int32;
    subStatusCode.isCombinedKey = true;
    subStatusCode.minimum = -1;
    subStatusCode.maximum = 999;
    ElementSchema error = Element(
        u"error",
        {statusCode, subStatusCode, Text(u"path"),
         Enum(u"responseMode", u"File", {{u"File", 0}, {u"ExecuteURL", 1}, {u"Redirect", 2}})});
    sections.push_back(
        Section(u"system.webServer/httpErrors",
                WithCollection(Element(u"httpErrors", {}), error, u"remove", u"clear")));
    sections.push_back(
        Section(u"system.webServer/asp",
                Element(u"asp", {Bool(u"enableParentPaths", false)},
                        {Element(u"limits", {Span(u"scriptTimeout", u"00:01:30", 86400, 1)}),
                         Element(u"session", {Span(u"timeout", u"00:20:00", 365 * 86400, 60)})})));
    // Rules hold nested elements and collections, for copies between levels.
    ElementSchema conditions = WithCollection(
        Element(u"conditions", {}), Element(u"add", {Key(u"input")}), u"remove", u"clear");
    ElementSchema rule = Element(u"rule", {Key(u"name"), Bool(u"stopProcessing", false)},
                                 {Element(u"match", {Text(u"url")}), conditions});
    sections.push_back(Section(u"system.webServer/rewrite/rules",
                               WithCollection(Element(u"rules", {}), rule, u"remove", u"clear")));
    sections.push_back(
        Section(u"system.web/authentication",
                Element(u"authentication",
                        {Enum(u"mode", u"Windows",
                              {{u"None", 0}, {u"Windows", 1}, {u"Passport", 2}, {u"Forms", 3}})})));
    return sections;
}

}  // namespace

const sim::iis7::Schema& IisTestSchema() {
    static const sim::iis7::Schema schema(Sections());
    return schema;
}

}  // namespace webrig::testing
