#include "platform/sim/iis7/config_locations.h"

#include "platform/sim/iis7/config_failure.h"
#include "platform/sim/iis7/config_objects.h"
#include "platform/sim/iis7/config_path.h"

namespace webrig::sim::iis7 {
namespace {

class LocationImpl final : public platform::ConfigLocation {
  public:
    explicit LocationImpl(qm::wstring path) : m_path(std::move(path)) {}
    qm::hresult GetPath(qm::wstring& path) override {
        path = m_path;
        return qm::hr::ok;
    }

  private:
    qm::wstring m_path;
};

class LocationsImpl final : public platform::ConfigLocations {
  public:
    explicit LocationsImpl(std::shared_ptr<ConfigSession> session)
        : m_session(std::move(session)) {}

    qm::hresult Count(uint32_t& count) override {
        count = 0;
        return Guarded(*m_session, [&] {
            count = static_cast<uint32_t>(m_session->AppHostLocations().size());
        });
    }

    qm::hresult Item(uint32_t index, std::shared_ptr<platform::ConfigLocation>& location) override {
        location.reset();
        return Guarded(*m_session, [&] {
            const FoundElement found = At(index);
            const XmlAttribute* path = found.element->FindAttribute("path");
            location = std::make_shared<LocationImpl>(qm::from_utf8(path ? path->value : ""));
        });
    }

    qm::hresult DeleteLocation(uint32_t index) override {
        return Guarded(*m_session, [&] {
            FoundElement found = At(index);
            const PathStep step = found.path.back();
            found.path.pop_back();
            WorkingFile& appHost = m_session->AppHost();
            XmlElement& configuration = m_session->MutableAt(appHost, found.path);
            for (size_t i = 0; i < configuration.children.size(); ++i) {
                if (configuration.children[i].element &&
                    configuration.children[i].element->id == step.id) {
                    RemoveChildElement(configuration, i);
                    break;
                }
            }
            m_session->MarkChanged();
        });
    }

  private:
    FoundElement At(uint32_t index) {
        std::vector<FoundElement> locations = m_session->AppHostLocations();
        if (index >= locations.size()) {
            Fail(qm::hr::invalid_index, "there are " + std::to_string(locations.size()) +
                                            " location tags; there is no location " +
                                            std::to_string(index));
        }
        return locations[index];
    }

    std::shared_ptr<ConfigSession> m_session;
};

class ConfigFileImpl final : public platform::ConfigFile {
  public:
    explicit ConfigFileImpl(std::shared_ptr<ConfigSession> session)
        : m_session(std::move(session)) {}
    qm::hresult GetLocations(std::shared_ptr<platform::ConfigLocations>& locations) override {
        locations = std::make_shared<LocationsImpl>(m_session);
        return qm::hr::ok;
    }

  private:
    std::shared_ptr<ConfigSession> m_session;
};

}  // namespace

qm::hresult ConfigManagerImpl::GetConfigFile(qm::wstring_view configPath,
                                             std::shared_ptr<platform::ConfigFile>& file) {
    file.reset();
    return Guarded(*m_session, [&] {
        const std::optional<std::vector<qm::wstring>> segments = SplitConfigPath(configPath);
        if (!segments || !segments->empty()) {
            Fail(qm::hr::invalid_arg, "only MACHINE/WEBROOT/APPHOST is offered as a file");
        }
        m_session->AppHost();
        file = std::make_shared<ConfigFileImpl>(m_session);
    });
}

}  // namespace webrig::sim::iis7
