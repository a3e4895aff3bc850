#include "platform/sim/adsi/sim_adsi.h"

#include "platform/processes.h"
#include "platform/sim/files/program_file.h"
#include "support/case_insensitive.h"

namespace webrig::sim {
namespace {

using platform::ConfigElement;
using platform::ElementCollection;

constexpr char16_t kRestrictionSection[] = u"system.webServer/security/isapiCgiRestriction";
constexpr char16_t kAppHost[] = u"MACHINE/WEBROOT/APPHOST";

qm::hresult PutProperty(ConfigElement& element, qm::wstring_view name,
                        const platform::Variant& value) {
    std::shared_ptr<platform::ConfigProperty> property;
    qm::hresult hr = element.GetPropertyByName(name, property);
    return qm::succeeded(hr) ? property->PutValue(value) : hr;
}

// The web service object over the restriction list. The administration manager's pending
// changes are the object's property cache: SetInfo commits them.
class WebService final : public platform::IisWebService {
  public:
    explicit WebService(std::unique_ptr<platform::AdminManager> manager)
        : m_manager(std::move(manager)) {}

    qm::hresult AddExtensionFile(qm::wstring_view file, bool allowed, qm::wstring_view groupId,
                                 bool, qm::wstring_view description) override {
        std::shared_ptr<ElementCollection> list;
        uint32_t index = 0;
        qm::hresult hr = Find(file, list, index);
        if (hr == qm::hr::ok) {
            return platform::adsi_error::duplicate_name;
        }
        if (hr != qm::hr::element_not_found) {
            return hr;
        }
        std::shared_ptr<ConfigElement> entry;
        hr = list->CreateNewElement(u"add", entry);
        const std::pair<const char16_t*, platform::Variant> values[] = {
            {u"path", qm::wstring(file)},
            {u"allowed", allowed},
            {u"groupId", qm::wstring(groupId)},
            {u"description", qm::wstring(description)},
        };
        for (const auto& [name, value] : values) {
            // Empty texts are the schema's defaults and stay unwritten.
            const auto* text = std::get_if<qm::wstring>(&value);
            if (qm::succeeded(hr) &&
                (text == nullptr || !text->empty() || name == qm::wstring_view(u"path"))) {
                hr = PutProperty(*entry, name, value);
            }
        }
        return qm::succeeded(hr) ? list->AddElement(entry, -1) : hr;
    }

    qm::hresult DeleteExtensionFileRecord(qm::wstring_view file) override {
        std::shared_ptr<ElementCollection> list;
        uint32_t index = 0;
        const qm::hresult hr = Find(file, list, index);
        return hr == qm::hr::ok ? list->DeleteElement(index) : hr;
    }

    qm::hresult SetInfo() override { return m_manager->CommitChanges(); }

  private:
    // S_OK and the entry's index when the list names `file` (without regard to case);
    // 0x80070490 when it does not; any other failure of reading the list.
    qm::hresult Find(qm::wstring_view file, std::shared_ptr<ElementCollection>& list,
                     uint32_t& index) {
        std::shared_ptr<ConfigElement> section;
        qm::hresult hr = m_manager->GetAdminSection(kRestrictionSection, kAppHost, section);
        if (qm::succeeded(hr)) {
            hr = section->GetCollection(list);
        }
        uint32_t count = 0;
        if (qm::succeeded(hr)) {
            hr = list->Count(count);
        }
        for (index = 0; qm::succeeded(hr) && index < count; ++index) {
            std::shared_ptr<ConfigElement> entry;
            std::shared_ptr<platform::ConfigProperty> path;
            qm::wstring value;
            hr = list->Item(index, entry);
            if (qm::succeeded(hr)) {
                hr = entry->GetPropertyByName(u"path", path);
            }
            if (qm::succeeded(hr)) {
                hr = path->GetStringValue(value);
            }
            if (qm::succeeded(hr) && qm::iequals(value, file)) {
                return qm::hr::ok;
            }
        }
        return qm::succeeded(hr) ? qm::hr::element_not_found : hr;
    }

    std::unique_ptr<platform::AdminManager> m_manager;
};

class ActiveDsLibrary final : public platform::ActiveDs {
  public:
    ActiveDsLibrary(bool hasIisProvider, platform::IisConfiguration& iis)
        : m_hasIisProvider(hasIisProvider), m_iis(iis) {}

    qm::hresult GetWebService(qm::wstring_view path,
                              std::unique_ptr<platform::IisWebService>& object) override {
        object.reset();
        if (!m_hasIisProvider || !qm::iequals(path, u"IIS://localhost/w3svc")) {
            return platform::adsi_error::bad_pathname;
        }
        std::unique_ptr<platform::AdminManager> manager;
        const qm::hresult hr = m_iis.CreateAdminManager(manager);
        if (qm::succeeded(hr)) {
            object = std::make_unique<WebService>(std::move(manager));
        }
        return hr;
    }

  private:
    bool m_hasIisProvider;
    platform::IisConfiguration& m_iis;
};

}  // namespace

uint32_t SimAdsi::LoadActiveDs(qm::wstring_view dllPath,
                               std::unique_ptr<platform::ActiveDs>& library) {
    library.reset();
    const bool hasFolder = dllPath.find_first_of(u"\\/") != qm::wstring_view::npos;
    const qm::wstring path =
        hasFolder ? qm::wstring(dllPath) : m_systemDirectory + u"\\" + qm::wstring(dllPath);
    const ResolvedPath resolved = m_files.Resolve(path);
    if (resolved.error != 0 || resolved.isDirectory) {
        return qm::win32::mod_not_found;
    }
    if (!HasProgramHeader(resolved.hostPath)) {
        return platform::kErrorBadExeFormat;
    }
    if (!qm::iequals(resolved.hostPath.filename().u16string(), u"activeds.dll")) {
        return qm::win32::proc_not_found;
    }
    library = std::make_unique<ActiveDsLibrary>(m_hasIisProvider, m_iis);
    return 0;
}

}  // namespace webrig::sim
