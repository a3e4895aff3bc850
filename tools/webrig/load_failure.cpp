#include "load_failure.h"

#include "settings/progress_identifiers.h"
#include "support/case_insensitive.h"
#include "support/decimal.h"
#include "support/format.h"
#include "support/status_codes.h"

namespace webrig::cli {
namespace {

using qm::wstring;
using qm::wstring_view;

// Thrown to end the walk at the first failure.
struct Found {
    LoadFailure failure;
};

class Walker {
  public:
    explicit Walker(const settings::SettingsFile& file) : m_file(file) {}

    void Walk() {
        const int32_t components = Number(u"Components", u"Count");
        for (int32_t i = 1; i <= components; ++i) {
            const wstring entry = qm::format(u"c%d", i);
            const wstring name =
                Required(u"Components", entry, qm::status::component_entry_missing);
            List(name + u"_VRoots", u"v%d", qm::status::vroot_entry_missing, &Walker::VRoot);
            List(name + u"_AppPools", u"a%d", qm::status::app_pool_entry_missing, &Walker::AppPool);
            List(name + u"_WebServiceExtensions", u"w%d", qm::status::extension_entry_missing,
                 &Walker::Extension);
            List(name + u"_WebSites", u"ws%d", qm::status::website_entry_missing,
                 &Walker::ListedWebsite);
        }
        for (const char16_t* message : settings::kProgressIdentifiers) {
            NotEmpty(u"ProgressMessages", message, qm::status::progress_message_empty);
        }
    }

  private:
    using ItemVisitor = void (Walker::*)(const wstring&);

    [[noreturn]] static void Fail(int32_t status, wstring_view section, wstring_view key,
                                  bool absent) {
        throw Found{{status, qm::to_utf8(section), qm::to_utf8(key), absent}};
    }

    std::optional<wstring_view> Value(wstring_view section, wstring_view key) const {
        return m_file.Find(section, key);
    }

    // A key whose absence and emptiness both fail; its value.
    wstring Required(wstring_view section, wstring_view key, int32_t status) const {
        const auto value = Value(section, key);
        if (!value || value->empty()) {
            Fail(status, section, key, !value);
        }
        return wstring(*value);
    }

    // A key with a default that must not be present and empty.
    void NotEmpty(wstring_view section, wstring_view key, int32_t status) const {
        const auto value = Value(section, key);
        if (value && value->empty()) {
            Fail(status, section, key, false);
        }
    }

    int32_t Number(wstring_view section, wstring_view key) const {
        const auto value = Value(section, key);
        return value ? qm::read_decimal(*value) : 0;
    }

    void List(const wstring& section, const char16_t* entryFormat, int32_t missing,
              ItemVisitor visit) {
        NotEmpty(section, u"ActionState", qm::status::list_action_state_empty);
        NotEmpty(section, u"Count", qm::status::list_count_empty);
        const int32_t count = Number(section, u"Count");
        for (int32_t i = 1; i <= count; ++i) {
            (this->*visit)(Required(section, qm::format(entryFormat, i), missing));
        }
    }

    void VRoot(const wstring& section) {
        Required(section, u"QMIISCommon", qm::status::item_key_empty);
        NotEmpty(section, u"VRootProps", qm::status::vroot_props_empty);
        Required(section, u"ParentSite", qm::status::parent_site_missing);
        Common(section, true);
        const wstring parent(Value(section, u"Parent").value_or(u""));
        const auto componentBased = Value(parent, u"IsComponentBased");
        if (componentBased && !componentBased->empty() && qm::read_decimal(*componentBased) != 0) {
            return;
        }
        if (qm::istarts_with(parent, u"Website_")) {
            Website(parent, false);
        }
    }

    void ListedWebsite(const wstring& section) { Website(section, true); }

    void Website(const wstring& section, bool listed) {
        if (listed) {
            Required(section, u"QMIISCommon", qm::status::item_key_empty);
        }
        NotEmpty(section, u"Port", qm::status::website_port_empty);
        NotEmpty(section, u"SiteNumber", qm::status::website_site_number_empty);
        Common(section, false);
    }

    void Common(const wstring& section, bool vroot) {
        if (vroot) {
            Required(section, u"DisplayName", qm::status::vroot_display_name_empty);
        }
        Required(section, u"ItemType", qm::status::item_type_missing);
        Required(section, u"RootDir", qm::status::root_dir_empty);
        NotEmpty(section, u"Attributes", qm::status::attributes_empty);
        NotEmpty(section, u"SessionTimeout", qm::status::session_timeout_empty);
        NotEmpty(section, u"ScriptTimeout", qm::status::script_timeout_empty);
        NotEmpty(section, u"MetaDataPropCount", qm::status::metadata_count_empty);
        for (int32_t i = 1, n = Number(section, u"MetaDataPropCount"); i <= n; ++i) {
            const wstring entry =
                Required(section, qm::format(u"mdp%d", i), qm::status::metadata_entry_missing);
            NotEmpty(entry, u"Prop", qm::status::metadata_prop_empty);
            NotEmpty(entry, u"Type", qm::status::metadata_type_empty);
            NotEmpty(entry, u"UserType", qm::status::metadata_user_type_empty);
            Required(entry, u"Value", qm::status::metadata_value_empty);
        }
        NotEmpty(section, u"AppMapCount", qm::status::app_map_count_empty);
        for (int32_t i = 1, n = Number(section, u"AppMapCount"); i <= n; ++i) {
            const wstring entry =
                Required(section, qm::format(u"a%d", i), qm::status::app_map_entry_missing);
            Required(entry, u"VRootAppMapKey", qm::status::app_map_key_empty);
            Required(entry, u"Extension", qm::status::app_map_extension_empty);
            Required(entry, u"ExecPath", qm::status::app_map_exec_path_empty);
            Required(entry, u"Verb", qm::status::app_map_verb_empty);
            NotEmpty(entry, u"AppMapProps", qm::status::app_map_props_empty);
        }
        NotEmpty(section, u"MimeMapCount", qm::status::mime_map_count_empty);
        for (int32_t i = 1, n = Number(section, u"MimeMapCount"); i <= n; ++i) {
            const wstring entry =
                Required(section, qm::format(u"mm%d", i), qm::status::mime_map_entry_missing);
            Required(entry, u"Extension", qm::status::mime_map_empty);
            Required(entry, u"Type", qm::status::mime_map_empty);
        }
    }

    void AppPool(const wstring& section) {
        NotEmpty(section, u"Name", qm::status::app_pool_name_empty);
    }

    void Extension(const wstring& section) {
        NotEmpty(section, u"File", qm::status::extension_file_empty);
        NotEmpty(section, u"Description", qm::status::extension_description_empty);
        NotEmpty(section, u"Group", qm::status::extension_group_empty);
    }

    const settings::SettingsFile& m_file;
};

}  // namespace

std::optional<LoadFailure> LocateLoadFailure(const settings::SettingsFile& file) {
    try {
        Walker(file).Walk();
    } catch (const Found& found) {
        return found.failure;
    }
    return std::nullopt;
}

}  // namespace webrig::cli
