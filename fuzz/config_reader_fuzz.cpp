// The reader of applicationHost.config must never crash: any bytes either are refused as
// malformed (0x8007000D) or load; a loaded file renders back byte for byte, and sections read,
// merge and take changes without fault.

#include <cstdlib>
#include <string>

#include "platform/sim/iis7/xml_reader.h"
#include "testing/iis_config_machine.h"

namespace {

using webrig::platform::AdminManager;
using webrig::platform::ConfigElement;
using webrig::platform::ElementCollection;
using webrig::platform::Variant;

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

constexpr std::u16string_view kAppHost = u"MACHINE/WEBROOT/APPHOST";

// Reads every entry of a collection, then adds one and deletes the first.
void Exercise(AdminManager& manager, std::u16string_view section, std::u16string_view child,
              std::u16string_view key, std::u16string_view path) {
    std::shared_ptr<ConfigElement> element;
    if (manager.GetAdminSection(section, path, element) != 0) {
        return;
    }
    if (!child.empty()) {
        std::shared_ptr<ConfigElement> inner;
        Check(element->GetElementByName(child, inner) == 0);
        element = inner;
    }
    std::shared_ptr<ElementCollection> collection;
    Check(element->GetCollection(collection) == 0);
    uint32_t count = 0;
    if (collection->Count(count) != 0) {
        return;
    }
    for (uint32_t i = 0; i < count; ++i) {
        std::shared_ptr<ConfigElement> item;
        Check(collection->Item(i, item) == 0);
        std::shared_ptr<webrig::platform::ConfigProperty> property;
        std::u16string text;
        Check(item->GetPropertyByName(key, property) == 0);
        property->GetStringValue(text);
    }
    std::shared_ptr<ConfigElement> added;
    if (collection->CreateNewElement(section.ends_with(u"sites") ? u"site" : u"add", added) == 0) {
        std::shared_ptr<webrig::platform::ConfigProperty> property;
        Check(added->GetPropertyByName(key, property) == 0);
        property->PutValue(Variant{u"fuzz"});
        collection->AddElement(added, 0);
    }
    if (count > 0) {
        collection->DeleteElement(0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const webrig::sim::iis7::XmlDocument document =
            webrig::sim::iis7::ReadXml(std::make_shared<const std::string>(text));
        Check(webrig::sim::iis7::RenderXml(document) == text);
    } catch (const webrig::sim::iis7::XmlSyntaxError& error) {
        Check(error.line() >= 1);
        return 0;
    }
    static webrig::testing::IisConfigMachine machine;
    machine.WriteAppHost(text);
    std::unique_ptr<AdminManager> manager = machine.NewManager();
    std::shared_ptr<ConfigElement> section;
    const qm::hresult hr =
        manager->GetAdminSection(u"system.webServer/directoryBrowse", kAppHost, section);
    if (hr == qm::hr::invalid_data || hr == qm::hr::not_supported) {
        return 0;
    }
    Exercise(*manager, u"system.applicationHost/sites", {}, u"name", kAppHost);
    Exercise(*manager, u"system.applicationHost/applicationPools", {}, u"name", kAppHost);
    Exercise(*manager, u"system.webServer/defaultDocument", u"files", u"value",
             u"MACHINE/WEBROOT/APPHOST/Default Web Site");
    Exercise(*manager, u"system.webServer/httpErrors", {}, u"statusCode",
             u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop");
    std::u16string value;
    webrig::testing::PutAttribute(*manager, u"system.webServer/directoryBrowse",
                                  u"MACHINE/WEBROOT/APPHOST/Default Web Site", u"enabled",
                                  Variant{true});
    webrig::testing::ReadAttribute(*manager, u"system.webServer/directoryBrowse",
                                   u"MACHINE/WEBROOT/APPHOST/Default Web Site", u"enabled", value);
    return 0;
}
