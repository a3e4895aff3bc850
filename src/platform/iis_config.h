#pragma once
// The IIS 7+ configuration system as its administration objects show it: a writable
// administration manager that hands out configuration sections at configuration paths
// ("MACHINE/WEBROOT/APPHOST/Default Web Site/shop"), their elements, collections and properties,
// and commits the changes into the file its commit path selects. Every call returns the HRESULT
// the IIS object returns for the same situation.

#include <cstdint>
#include <memory>

#include "platform/automation.h"
#include "support/result_codes.h"
#include "support/wide_string.h"

namespace webrig::platform {

// IAppHostProperty.
class ConfigProperty {
  public:
    virtual ~ConfigProperty() = default;
    virtual qm::hresult GetName(qm::wstring& name) = 0;
    // The effective value at the section's path: local, inherited or the schema default.
    virtual qm::hresult GetValue(Variant& value) = 0;
    // Checks the value against the attribute's type and records it at the commit path's level.
    virtual qm::hresult PutValue(const Variant& value) = 0;
    // The value as text ("true", "Integrated", "00:20:00").
    virtual qm::hresult GetStringValue(qm::wstring& value) = 0;
};

class ElementCollection;

// IAppHostElement.
class ConfigElement {
  public:
    virtual ~ConfigElement() = default;
    virtual qm::hresult GetName(qm::wstring& name) = 0;
    // get_Collection: the collection the element holds.
    virtual qm::hresult GetCollection(std::shared_ptr<ElementCollection>& collection) = 0;
    virtual qm::hresult GetElementByName(qm::wstring_view name,
                                         std::shared_ptr<ConfigElement>& element) = 0;
    virtual qm::hresult GetPropertyByName(qm::wstring_view name,
                                          std::shared_ptr<ConfigProperty>& property) = 0;
};

// IAppHostElementCollection: the merged entries of a collection at the section's path.
class ElementCollection {
  public:
    virtual ~ElementCollection() = default;
    virtual qm::hresult Count(uint32_t& count) = 0;
    virtual qm::hresult Item(uint32_t index, std::shared_ptr<ConfigElement>& element) = 0;
    // `element` comes from this collection's CreateNewElement; position -1 appends.
    virtual qm::hresult AddElement(const std::shared_ptr<ConfigElement>& element,
                                   int32_t position) = 0;
    virtual qm::hresult DeleteElement(uint32_t index) = 0;
    // A new, not yet added entry; `name` is one of the collection's add element names.
    virtual qm::hresult CreateNewElement(qm::wstring_view name,
                                         std::shared_ptr<ConfigElement>& element) = 0;
};

// IAppHostConfigLocation.
class ConfigLocation {
  public:
    virtual ~ConfigLocation() = default;
    // The location's path attribute ("Default Web Site/shop").
    virtual qm::hresult GetPath(qm::wstring& path) = 0;
};

// IAppHostConfigLocationCollection: the <location> tags of one file.
class ConfigLocations {
  public:
    virtual ~ConfigLocations() = default;
    virtual qm::hresult Count(uint32_t& count) = 0;
    virtual qm::hresult Item(uint32_t index, std::shared_ptr<ConfigLocation>& location) = 0;
    virtual qm::hresult DeleteLocation(uint32_t index) = 0;
};

// IAppHostConfigFile.
class ConfigFile {
  public:
    virtual ~ConfigFile() = default;
    virtual qm::hresult GetLocations(std::shared_ptr<ConfigLocations>& locations) = 0;
};

// IAppHostConfigManager.
class ConfigManager {
  public:
    virtual ~ConfigManager() = default;
    // The file of a configuration path; only "MACHINE/WEBROOT/APPHOST" is offered.
    virtual qm::hresult GetConfigFile(qm::wstring_view configPath,
                                      std::shared_ptr<ConfigFile>& file) = 0;
};

// IAppHostWritableAdminManager. A fresh manager has no pending changes and the commit path
// "MACHINE/WEBROOT/APPHOST". Releasing it without CommitChanges discards the changes.
class AdminManager {
  public:
    virtual ~AdminManager() = default;
    virtual qm::hresult GetAdminSection(qm::wstring_view sectionName, qm::wstring_view path,
                                        std::shared_ptr<ConfigElement>& section) = 0;
    virtual qm::hresult CommitChanges() = 0;
    virtual qm::hresult GetCommitPath(qm::wstring& path) = 0;
    virtual qm::hresult PutCommitPath(qm::wstring_view path) = 0;
    virtual qm::hresult GetConfigManager(std::shared_ptr<ConfigManager>& manager) = 0;
    // The description the error information of the latest failed call of this manager or its
    // objects carries (for a malformed file: the file, the line and what is wrong).
    virtual qm::wstring LastErrorDescription() = 0;
};

// Creates administration managers (CoCreateInstance of AppHostWritableAdminManager).
class IisConfiguration {
  public:
    virtual ~IisConfiguration() = default;
    // Fails with the creation HRESULT (REGDB_E_CLASSNOTREG) when IIS 7+ is not installed.
    virtual qm::hresult CreateAdminManager(std::unique_ptr<AdminManager>& manager) = 0;
};

}  // namespace webrig::platform
