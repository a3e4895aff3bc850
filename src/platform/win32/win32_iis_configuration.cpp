#include "platform/win32/win32_iis_configuration.h"

#include "platform/win32/com_error.h"
#include "platform/win32/com_values.h"
#include "platform/win32/iis_admin_interfaces.h"

namespace webrig::win32 {
namespace {

using namespace ahadmin;

// What the objects of one manager share: the description of their latest failure.
struct ErrorTrail {
    qm::wstring lastDescription;

    qm::hresult Check(HRESULT hr) {
        if (FAILED(hr)) {
            lastDescription = TakeErrorInfo().description;
        }
        return hr;
    }
};
using Trail = std::shared_ptr<ErrorTrail>;

// A collection index as the administration objects take it.
void IndexVariant(uint32_t index, VARIANT& out) noexcept {
    out.vt = VT_UI4;
    out.ulVal = index;
}

// Reads a BSTR property into `text`.
template <class Object, class Getter>
qm::hresult ReadText(Object* object, Getter getter, ErrorTrail& trail, qm::wstring& text) {
    text.clear();
    ScopedBstr value;
    const HRESULT hr = trail.Check((object->*getter)(value.receive()));
    if (SUCCEEDED(hr)) {
        text = value.Text();
    }
    return hr;
}

// Wraps the interface a call returned into its seam object, or returns the call's failure.
template <class Wrapper, class Interface, class Seam>
qm::hresult Wrap(HRESULT hr, ComPtr<Interface>& got, const Trail& trail,
                 std::shared_ptr<Seam>& out) {
    out.reset();
    if (FAILED(trail->Check(hr))) {
        return hr;
    }
    if (!got) {
        return qm::hr::pointer;
    }
    out = std::make_shared<Wrapper>(std::move(got), trail);
    return hr;
}

class Property final : public platform::ConfigProperty {
  public:
    Property(ComPtr<IAppHostProperty> property, Trail trail)
        : m_property(std::move(property)), m_trail(std::move(trail)) {}

    qm::hresult GetName(qm::wstring& name) override {
        return ReadText(m_property.get(), &IAppHostProperty::get_Name, *m_trail, name);
    }
    qm::hresult GetValue(platform::Variant& value) override {
        value = std::monostate{};
        ScopedVariant got;
        const HRESULT hr = m_trail->Check(m_property->get_Value(&got.get()));
        return FAILED(hr) ? hr : FromVariant(got.get(), value);
    }
    qm::hresult PutValue(const platform::Variant& value) override {
        ScopedVariant put;
        if (const qm::hresult hr = ToVariant(value, put.get()); qm::failed(hr)) {
            return hr;
        }
        return m_trail->Check(m_property->put_Value(put.get()));
    }
    qm::hresult GetStringValue(qm::wstring& value) override {
        return ReadText(m_property.get(), &IAppHostProperty::get_StringValue, *m_trail, value);
    }

  private:
    ComPtr<IAppHostProperty> m_property;
    Trail m_trail;
};

class Element final : public platform::ConfigElement {
  public:
    Element(ComPtr<IAppHostElement> element, Trail trail)
        : m_element(std::move(element)), m_trail(std::move(trail)) {}

    qm::hresult GetName(qm::wstring& name) override {
        return ReadText(m_element.get(), &IAppHostElement::get_Name, *m_trail, name);
    }
    qm::hresult GetCollection(std::shared_ptr<platform::ElementCollection>& collection) override;
    qm::hresult GetElementByName(qm::wstring_view name,
                                 std::shared_ptr<platform::ConfigElement>& element) override {
        element.reset();
        const ScopedBstr subName(name);
        if (subName.Failed()) {
            return qm::hr::out_of_memory;
        }
        ComPtr<IAppHostElement> got;
        return Wrap<Element>(m_element->GetElementByName(subName.get(), got.receive()), got,
                             m_trail, element);
    }
    qm::hresult GetPropertyByName(qm::wstring_view name,
                                  std::shared_ptr<platform::ConfigProperty>& property) override {
        property.reset();
        const ScopedBstr subName(name);
        if (subName.Failed()) {
            return qm::hr::out_of_memory;
        }
        ComPtr<IAppHostProperty> got;
        return Wrap<Property>(m_element->GetPropertyByName(subName.get(), got.receive()), got,
                              m_trail, property);
    }

    IAppHostElement* raw() const noexcept { return m_element.get(); }

  private:
    ComPtr<IAppHostElement> m_element;
    Trail m_trail;
};

class Collection final : public platform::ElementCollection {
  public:
    Collection(ComPtr<IAppHostElementCollection> collection, Trail trail)
        : m_collection(std::move(collection)), m_trail(std::move(trail)) {}

    qm::hresult Count(uint32_t& count) override {
        DWORD got = 0;
        const HRESULT hr = m_trail->Check(m_collection->get_Count(&got));
        count = SUCCEEDED(hr) ? got : 0;
        return hr;
    }
    qm::hresult Item(uint32_t index, std::shared_ptr<platform::ConfigElement>& element) override {
        VARIANT at;
        IndexVariant(index, at);
        ComPtr<IAppHostElement> got;
        return Wrap<Element>(m_collection->get_Item(at, got.receive()), got, m_trail, element);
    }
    qm::hresult AddElement(const std::shared_ptr<platform::ConfigElement>& element,
                           int32_t position) override {
        // Only an element this layer handed out has a COM object behind it.
        const auto* ours = dynamic_cast<const Element*>(element.get());
        if (ours == nullptr) {
            return qm::hr::invalid_arg;
        }
        return m_trail->Check(m_collection->AddElement(ours->raw(), position));
    }
    qm::hresult DeleteElement(uint32_t index) override {
        VARIANT at;
        IndexVariant(index, at);
        return m_trail->Check(m_collection->DeleteElement(at));
    }
    qm::hresult CreateNewElement(qm::wstring_view name,
                                 std::shared_ptr<platform::ConfigElement>& element) override {
        element.reset();
        const ScopedBstr elementName(name);
        if (elementName.Failed()) {
            return qm::hr::out_of_memory;
        }
        ComPtr<IAppHostElement> got;
        return Wrap<Element>(m_collection->CreateNewElement(elementName.get(), got.receive()), got,
                             m_trail, element);
    }

  private:
    ComPtr<IAppHostElementCollection> m_collection;
    Trail m_trail;
};

qm::hresult Element::GetCollection(std::shared_ptr<platform::ElementCollection>& collection) {
    ComPtr<IAppHostElementCollection> got;
    return Wrap<Collection>(m_element->get_Collection(got.receive()), got, m_trail, collection);
}

class Location final : public platform::ConfigLocation {
  public:
    Location(ComPtr<IAppHostConfigLocation> location, Trail trail)
        : m_location(std::move(location)), m_trail(std::move(trail)) {}

    qm::hresult GetPath(qm::wstring& path) override {
        return ReadText(m_location.get(), &IAppHostConfigLocation::get_Path, *m_trail, path);
    }

  private:
    ComPtr<IAppHostConfigLocation> m_location;
    Trail m_trail;
};

class Locations final : public platform::ConfigLocations {
  public:
    Locations(ComPtr<IAppHostConfigLocationCollection> locations, Trail trail)
        : m_locations(std::move(locations)), m_trail(std::move(trail)) {}

    qm::hresult Count(uint32_t& count) override {
        DWORD got = 0;
        const HRESULT hr = m_trail->Check(m_locations->get_Count(&got));
        count = SUCCEEDED(hr) ? got : 0;
        return hr;
    }
    qm::hresult Item(uint32_t index, std::shared_ptr<platform::ConfigLocation>& location) override {
        VARIANT at;
        IndexVariant(index, at);
        ComPtr<IAppHostConfigLocation> got;
        return Wrap<Location>(m_locations->get_Item(at, got.receive()), got, m_trail, location);
    }
    qm::hresult DeleteLocation(uint32_t index) override {
        VARIANT at;
        IndexVariant(index, at);
        return m_trail->Check(m_locations->DeleteLocation(at));
    }

  private:
    ComPtr<IAppHostConfigLocationCollection> m_locations;
    Trail m_trail;
};

class File final : public platform::ConfigFile {
  public:
    File(ComPtr<IAppHostConfigFile> file, Trail trail)
        : m_file(std::move(file)), m_trail(std::move(trail)) {}

    qm::hresult GetLocations(std::shared_ptr<platform::ConfigLocations>& locations) override {
        ComPtr<IAppHostConfigLocationCollection> got;
        return Wrap<Locations>(m_file->get_Locations(got.receive()), got, m_trail, locations);
    }

  private:
    ComPtr<IAppHostConfigFile> m_file;
    Trail m_trail;
};

class ConfigManager final : public platform::ConfigManager {
  public:
    ConfigManager(ComPtr<IAppHostConfigManager> manager, Trail trail)
        : m_manager(std::move(manager)), m_trail(std::move(trail)) {}

    qm::hresult GetConfigFile(qm::wstring_view configPath,
                              std::shared_ptr<platform::ConfigFile>& file) override {
        file.reset();
        const ScopedBstr path(configPath);
        if (path.Failed()) {
            return qm::hr::out_of_memory;
        }
        ComPtr<IAppHostConfigFile> got;
        return Wrap<File>(m_manager->GetConfigFile(path.get(), got.receive()), got, m_trail, file);
    }

  private:
    ComPtr<IAppHostConfigManager> m_manager;
    Trail m_trail;
};

class AdminManager final : public platform::AdminManager {
  public:
    explicit AdminManager(ComPtr<IAppHostWritableAdminManager> manager)
        : m_manager(std::move(manager)), m_trail(std::make_shared<ErrorTrail>()) {}

    qm::hresult GetAdminSection(qm::wstring_view sectionName, qm::wstring_view path,
                                std::shared_ptr<platform::ConfigElement>& section) override {
        section.reset();
        const ScopedBstr name(sectionName);
        const ScopedBstr at(path);
        if (name.Failed() || at.Failed()) {
            return qm::hr::out_of_memory;
        }
        ComPtr<IAppHostElement> got;
        return Wrap<Element>(m_manager->GetAdminSection(name.get(), at.get(), got.receive()), got,
                             m_trail, section);
    }
    qm::hresult CommitChanges() override { return m_trail->Check(m_manager->CommitChanges()); }
    qm::hresult GetCommitPath(qm::wstring& path) override {
        return ReadText(m_manager.get(), &IAppHostWritableAdminManager::get_CommitPath, *m_trail,
                        path);
    }
    qm::hresult PutCommitPath(qm::wstring_view path) override {
        const ScopedBstr commitPath(path);
        if (commitPath.Failed()) {
            return qm::hr::out_of_memory;
        }
        return m_trail->Check(m_manager->put_CommitPath(commitPath.get()));
    }
    qm::hresult GetConfigManager(std::shared_ptr<platform::ConfigManager>& manager) override {
        ComPtr<IAppHostConfigManager> got;
        return Wrap<ConfigManager>(m_manager->get_ConfigManager(got.receive()), got, m_trail,
                                   manager);
    }
    qm::wstring LastErrorDescription() override { return m_trail->lastDescription; }

  private:
    ComPtr<IAppHostWritableAdminManager> m_manager;
    Trail m_trail;
};

}  // namespace

qm::hresult Win32IisConfiguration::CreateAdminManager(
    std::unique_ptr<platform::AdminManager>& manager) {
    manager.reset();
    ComPtr<IAppHostWritableAdminManager> created;
    const HRESULT hr =
        ::CoCreateInstance(kClsidWritableAdminManager, nullptr, CLSCTX_INPROC_SERVER,
                           kIidWritableAdminManager, reinterpret_cast<void**>(created.receive()));
    if (SUCCEEDED(hr) && created) {
        manager = std::make_unique<AdminManager>(std::move(created));
    }
    return hr;
}

}  // namespace webrig::win32
