// Elements, collections and properties of the IIS 7+ backend: reading and writing attributes,
// adding, finding and deleting collection entries, and reaching an element by its path.

#include "apphost/config_calls.h"
#include "apphost/iis_functions_vista.h"
#include "support/status_codes.h"

using webrig::apphost::Decimal;
using webrig::apphost::EqualsIgnoringAsciiCase;
using webrig::apphost::ThrowIfFailed;

namespace {

constexpr char16_t kAppPoolsSection[] = u"system.applicationHost/applicationPools";

// The child names of an element path: "a//b" has an empty name between the slashes, "/a" one
// before "a"; a trailing slash adds nothing.
std::vector<qm::wstring> SplitElementPath(const qm::wstring& path) {
    std::vector<qm::wstring> pieces;
    size_t start = 0;
    while (true) {
        const size_t slash = path.find(u'/', start);
        if (slash == qm::wstring::npos) {
            if (start < path.size()) {
                pieces.push_back(path.substr(start));
            }
            return pieces;
        }
        pieces.push_back(path.substr(start, slash - start));
        start = slash + 1;
    }
}

}  // namespace

CIisFunctionsVista::PropertyPtr CIisFunctionsVista::GetPropertyByName(const ElementPtr& element,
                                                                      const qm::wstring& name) {
    if (!element) {
        LogMessage(u"Element is NULL while looking for the following property: " + name);
        return nullptr;
    }
    try {
        PropertyPtr property;
        const qm::hresult hr = element->GetPropertyByName(name, property);
        if (qm::failed(hr)) {
            property.reset();
            qm::wstring text = qm::format(
                u"GetPropertyByName for '%s' failed with the following HRESULT: %d", name, hr);
            if (hr == qm::hr::invalid_index) {
                text += u". Invalid index.";
            }
            text += u". Perhaps IIS is not configurated to support this property.";
            LogMessage(text);
        }
        if (!property) {
            LogMessage(u"Property NULL while looking for: " + name);
        }
        return property;
    } catch (...) {
        LogMessage(u"Exception caught in GetPropertyByName while looking for: " + name);
        return nullptr;
    }
}

int32_t CIisFunctionsVista::PutPropertyCommon(const ElementPtr& element, const qm::wstring& name,
                                              const qm::wstring& value, bool isPath) {
    LogMessage(qm::format(u"PutPropertyCommon: sProperty %s sValue %s bIsPath %d", name,
                          MaskPasswordValue(name, value), isPath ? 1 : 0));
    const PropertyPtr property = GetPropertyByName(element, name);
    if (!property) {
        LogMessage(qm::format(
            u"PutPropertyCommon: no property returned for %s, don't try to set it now", name));
        return 0;
    }
    qm::wstring oldText;
    qm::wstring newText;
    int32_t code = 0;
    try {
        webrig::platform::Variant oldValue;
        ThrowIfFailed(property->GetValue(oldValue));
        if (const auto* text = std::get_if<qm::wstring>(&oldValue)) {
            oldText = *text;
        } else if (qm::failed(m_platform.automation().ChangeTypeToText(oldValue, oldText))) {
            oldText.clear();
        }
        newText = isPath ? NormalizeVirtualPath(value) : value;
        qm::wstring elementName;
        ThrowIfFailed(element->GetName(elementName));
        LogMessage(
            qm::format(u"Setting property '%s' to value '%s' for element '%s'. Old value: '%s'. "
                       u"m_sSectionName : '%s'.",
                       name, MaskPasswordValue(name, newText), elementName,
                       MaskPasswordValue(name, oldText), m_sSectionName));
        if (EqualsIgnoringAsciiCase(oldText, newText)) {
            LogMessage(u"Property value is the same, so no need to change it.");
            m_bValueChanged = false;
        }
        code = property->PutValue(MakePropertyVariant(newText, isPath));
        if (qm::succeeded(code)) {
            qm::wstring stored;
            const qm::hresult read = property->GetStringValue(stored);
            LogMessage(qm::format(
                u"put_value succeeded. get_StringValue now returns '%d' with string value '%s'.",
                read, MaskPasswordValue(name, stored)));
            return 0;
        }
    } catch (...) {
        LogMessage(
            qm::format(u"Exception caught in PutPropertyCommon for property '%s' with value '%s'",
                       name, MaskPasswordValue(name, value)));
        code = qm::status::create_vroot_or_write_property_failed;
    }
    LogMessage(u"Attempt to change property value had problems, HRESULT: " + Decimal(code));
    if (oldText == newText) {
        LogMessage(
            u"An error was detected, but do not throw an error because it looks like the value "
            u"is not changing.");
        return 0;
    }
    return code;
}

int32_t CIisFunctionsVista::PutPropertyValue(ElementPtr element, const qm::wstring& name,
                                             const qm::wstring& value, bool isPath) {
    LogMessage(qm::format(u"PutPropertyValue: sProperty %s sValue %s bIsPath %d", name,
                          MaskPasswordValue(name, value), isPath ? 1 : 0));
    try {
        const int32_t code = PutPropertyCommon(element, name, value, isPath);
        if (code >= 0) {
            return 0;
        }
        if (code != qm::hr::lock_violation) {
            return code;
        }
        LogMessage(
            u"Attempt put_Value with main configuration file because previous call to put_Value "
            u"failed with the following HRESULT: " +
            Decimal(code) +
            u". The property or section is not allowed to be overridden at the web.config level. "
            u"Will try setting at the applicationhost level instead.");
        const qm::wstring oldCommitPath = GetCommitPath();
        const int32_t switched = UseMainConfigurationFile(element, code);
        if (switched < 0) {
            return switched;
        }
        const int32_t retried =
            PutPropertyValueAtAppHostLevel(oldCommitPath, m_sSectionName, name, value, isPath);
        return retried < 0 ? retried : 0;
    } catch (...) {
        LogMessage(
            qm::format(u"Exception caught in PutPropertyValue for property '%s' with value '%s'",
                       name, MaskPasswordValue(name, value)));
        return qm::status::create_vroot_or_write_property_failed;
    }
}

int32_t CIisFunctionsVista::PutPropertyValueAtAppHostLevel(const qm::wstring& path,
                                                           const qm::wstring& sectionName,
                                                           const qm::wstring& name,
                                                           const qm::wstring& value, bool isPath) {
    LogMessage(qm::format(u"PutPropertyValueAtAppHostLevel for section '%s' (commit path '%s')",
                          sectionName, path));
    try {
        PutCommitPath(kAppHostPath);
        // The section at the old commit path is now a location of the main configuration file.
        const ElementPtr section = GetAdminSection(sectionName, path);
        if (!section) {
            LogMessage(u"PutPropertyValueAtAppHostLeve: Failed to get section for element");
            return qm::status::create_vroot_or_write_property_failed;
        }
        const int32_t code = PutPropertyCommon(section, name, value, isPath);
        return code >= 0 ? 0 : code;
    } catch (...) {
        LogMessage(qm::format(
            u"Exception caught in PutPropertyValueAtAppHostLevel for property '%s' with value '%s'",
            name, MaskPasswordValue(name, value)));
        return qm::status::create_vroot_or_write_property_failed;
    }
}

CIisFunctionsVista::ElementPtr CIisFunctionsVista::CreateNewElement(const CollectionPtr& collection,
                                                                    const qm::wstring& name) {
    if (!collection) {
        LogMessage(u"Collection is NULL.  CreateNewElement failed for: " + name);
        return nullptr;
    }
    try {
        ElementPtr element;
        const qm::hresult hr = collection->CreateNewElement(name, element);
        if (qm::failed(hr)) {
            element.reset();
            LogMessage(u"CreateNewElement for '" + name + u"' failed with the following HRESULT: " +
                       Decimal(hr));
        }
        if (!element) {
            LogMessage(u"pElement is NULL for the following element: " + name);
        }
        return element;
    } catch (...) {
        LogMessage(u"exception caught in CreateNewElement for the following element: " + name);
        return nullptr;
    }
}

int32_t CIisFunctionsVista::AddElement(const CollectionPtr& collection, const ElementPtr& element,
                                       int32_t position) {
    if (!collection || !element) {
        if (!collection) {
            LogMessage(u"spCollection NULL in CIisFunctionsVista::AddElement.");
        }
        if (!element) {
            LogMessage(u"pElement NULL in CIisFunctionsVista::AddElement");
        }
        return qm::hr::pointer;
    }
    qm::wstring name;
    ThrowIfFailed(element->GetName(name));
    LogMessage(u"Adding the following element: " + name);
    const qm::hresult code = collection->AddElement(element, position);
    if (qm::failed(code)) {
        LogMessage(
            qm::format(u"AddElement failed with the following HRESULT: '%s':", Decimal(code)));
    }
    if (code == qm::hr::already_exists) {
        LogMessage(u"Ignoring error because it indicates that the item already exists.");
        return 0;
    }
    return code;
}

CIisFunctionsVista::CollectionPtr CIisFunctionsVista::GetElementCollection(
    const ElementPtr& element) {
    if (!element) {
        LogMessage(u"Element is NULL.  Can't get collection");
        return nullptr;
    }
    CollectionPtr collection;
    const qm::hresult hr = element->GetCollection(collection);
    if (qm::failed(hr)) {
        collection.reset();
        LogMessage(
            qm::format(u"get_Collection failed with the following HRESULT: '%s':", Decimal(hr)));
    }
    if (!collection) {
        LogMessage(u"spCollection is NULL");
    }
    return collection;
}

CIisFunctionsVista::ElementPtr CIisFunctionsVista::GetSubElement(const ElementPtr& parent,
                                                                 const qm::wstring& name) {
    if (!parent) {
        LogMessage(qm::format(u"pParentElement NULL while looking for sub '%s'", name));
        return nullptr;
    }
    ElementPtr child;
    const qm::hresult hr = parent->GetElementByName(name, child);
    if (qm::failed(hr)) {
        child.reset();
    }
    if (!child) {
        LogMessage(qm::format(u"Problem getting element sub '%s', GetElementByName HRESULT = '%s'",
                              name, Decimal(hr)));
    }
    return child;
}

CIisFunctionsVista::ElementPtr CIisFunctionsVista::FindElementInCollection(
    const ElementPtr& parent, const qm::wstring& attribute1, const qm::wstring& value1,
    const qm::wstring& attribute2, const qm::wstring& value2, bool deleteIt) {
    if (!parent) {
        LogMessage(u"Parent element is NULL while searching collection");
        return nullptr;
    }
    const CollectionPtr collection = GetElementCollection(parent);
    if (!collection) {
        LogMessage(u"Parent collection is NULL while searching collection");
        return nullptr;
    }
    uint32_t count = 0;
    ThrowIfFailed(collection->Count(count));
    const auto matches = [this](const ElementPtr& item, const qm::wstring& attribute,
                                const qm::wstring& value) {
        const PropertyPtr property = GetPropertyByName(item, attribute);
        if (!property) {
            return false;
        }
        qm::wstring text;
        ThrowIfFailed(property->GetStringValue(text));
        return EqualsIgnoringAsciiCase(text, value);
    };
    for (uint32_t index = 0; index < count; ++index) {
        ElementPtr item;
        ThrowIfFailed(collection->Item(index, item));
        if (!matches(item, attribute1, value1) ||
            (!attribute2.empty() && !matches(item, attribute2, value2))) {
            continue;
        }
        LogMessage(u"Found element with property '" + attribute1 + u"' value of: " + value1);
        if (deleteIt) {
            LogMessage(u"DeleteElement returned: " + Decimal(collection->DeleteElement(index)));
            return nullptr;
        }
        return item;
    }
    LogMessage(u"No element found with property '" + attribute1 + u"' value of '" + value1 + u"'.");
    return nullptr;
}

int32_t CIisFunctionsVista::GetConfigElement(const qm::wstring& sectionName,
                                             const qm::wstring& subPath, ElementPtr& element) {
    const ElementPtr section = GetAdminSection(sectionName, GetCommitPath());
    if (!section) {
        LogMessage(qm::format(u"Element '%s' not found.", sectionName));
        return qm::status::app_pool_failed_or_element_missing;
    }
    const bool appPools = sectionName == kAppPoolsSection;
    ElementPtr current = section;
    if (appPools) {
        current = FindElementInCollection(section, u"name", m_sAppPoolName, u"", u"", false);
        if (!current) {
            LogMessage(
                qm::format(u"Element '%s/add name=%s' not found.", sectionName, m_sAppPoolName));
            return qm::status::app_pool_failed_or_element_missing;
        }
    }
    if (!subPath.empty()) {
        for (const qm::wstring& name : SplitElementPath(subPath)) {
            current = GetSubElement(current, name);
            if (!current) {
                LogMessage(appPools
                               ? qm::format(u"Element '%s/add name=%s/%s' not found.", sectionName,
                                            m_sAppPoolName, subPath)
                               : qm::format(u"Element '%s/%s' not found.", sectionName, subPath));
                return qm::status::app_pool_failed_or_element_missing;
            }
        }
    }
    element = current;
    return 0;
}

int32_t CIisFunctionsVista::GetConfigElementCollection(const qm::wstring& sectionName,
                                                       const qm::wstring& subPath,
                                                       ElementPtr* element,
                                                       CollectionPtr* collection) {
    ElementPtr found;
    const int32_t code = GetConfigElement(sectionName, subPath, found);
    if (code != 0) {
        return code;
    }
    if (element != nullptr) {
        *element = found;
    }
    CollectionPtr held = GetElementCollection(found);
    if (!held) {
        return qm::hr::fail;
    }
    if (collection == nullptr) {
        return qm::hr::pointer;
    }
    *collection = std::move(held);
    return 0;
}

CIisFunctionsVista::ElementPtr CIisFunctionsVista::GetAppPoolElement(const CIISAppPoolProp& pool) {
    const ElementPtr section = GetAdminSection(kAppPoolsSection, kAppHostPath);
    return FindElementInCollection(section, u"name", pool.Name, u"", u"", false);
}
