// Writing settings into sections: one attribute of an element reached by its path, and entries
// merged into a collection by their key attributes.

#include "apphost/iis_functions_vista.h"

int32_t CIisFunctionsVista::SetSectionElementProperty(const qm::wstring& sectionName,
                                                      const qm::wstring& elementPath,
                                                      const qm::wstring& attribute,
                                                      const qm::wstring& value) {
    ElementPtr element;
    if (const int32_t code = GetConfigElement(sectionName, elementPath, element)) {
        return code;
    }
    return PutPropertyValue(element, attribute, value, false);
}

int32_t CIisFunctionsVista::MergeCollectionEntries(const qm::wstring& sectionName,
                                                   const qm::wstring& elementPath,
                                                   const qm::wstring& newElementName,
                                                   const qm::wstring& keyAttribute,
                                                   const std::vector<AttributeMap>& entries) {
    return MergeCollectionEntries(sectionName, elementPath, newElementName, keyAttribute, u"",
                                  entries);
}

int32_t CIisFunctionsVista::MergeCollectionEntries(const qm::wstring& sectionName,
                                                   const qm::wstring& elementPath,
                                                   const qm::wstring& newElementName,
                                                   const qm::wstring& keyAttribute1,
                                                   const qm::wstring& keyAttribute2,
                                                   const std::vector<AttributeMap>& entries) {
    ElementPtr element;
    CollectionPtr collection;
    if (const int32_t code =
            GetConfigElementCollection(sectionName, elementPath, &element, &collection)) {
        return code;
    }
    for (const AttributeMap& entry : entries) {
        const auto key1 = entry.find(keyAttribute1);
        if (key1 == entry.end()) {
            continue;
        }
        const auto key2 = keyAttribute2.empty() ? entry.end() : entry.find(keyAttribute2);
        const bool twoKeys = key2 != entry.end();
        const ElementPtr existing = FindElementInCollection(
            element, keyAttribute1, key1->second, twoKeys ? keyAttribute2 : qm::wstring(),
            twoKeys ? key2->second : qm::wstring(), false);
        if (const int32_t code =
                AddOrUpdateCollectionEntry(collection, existing, newElementName, entry)) {
            return code;
        }
    }
    return 0;
}

int32_t CIisFunctionsVista::AddOrUpdateCollectionEntry(const CollectionPtr& collection,
                                                       const ElementPtr& existing,
                                                       const qm::wstring& newElementName,
                                                       const AttributeMap& attributes) {
    const ElementPtr element = existing ? existing : CreateNewElement(collection, newElementName);
    for (const auto& [name, value] : attributes) {
        if (const int32_t code = PutPropertyValue(element, name, value, false)) {
            return code;
        }
    }
    return existing ? 0 : AddElement(collection, element, -1);
}
