#pragma once
// The IIS 7+ administration interfaces (ahadmin) that webrig calls. MinGW-w64 has no header for
// them, so they are declared here from their public descriptions.
//
// Facts they rest on:
// - Every interface derives from IUnknown (not IDispatch), so its first method is vtable slot 3.
// - The vtable order of each interface is the order of its RPC opnums in the [MC-IISA] protocol
//   document (section 3.1.4, "Methods in RPC Opnum Order", opnum 3 = slot 3). The same order is
//   used by independent callers of these interfaces in other languages (the opnum tables of a
//   DCOM client generated from [MC-IISA]'s IDL, and managed declarations used against a real
//   IIS), which were compared method by method. learn.microsoft.com's native-code reference
//   ("Application Host Administration Interfaces", header Ahadmin.h) lists the methods
//   alphabetically, so it confirms names and signatures but not the order.
// - Interface and class identifiers are those tabled in [MC-IISA] section 1.9 ("Standards
//   Assignments") and used in learn.microsoft.com's samples.
// Methods webrig does not call still hold their slot; their argument types are reduced to what
// keeps the slot (interface pointers of unused kinds as IUnknown*).

#include "platform/win32/windows_api.h"

// A COM interface has no destructor: a virtual one would take a vtable slot.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

namespace webrig::win32::ahadmin {

struct IAppHostElement;
struct IAppHostElementCollection;
struct IAppHostPropertyCollection;
struct IAppHostChildElementCollection;
struct IAppHostConfigManager;
struct IAppHostConfigFile;
struct IAppHostConfigLocationCollection;
struct IAppHostConfigLocation;

// {2B72133B-3F5B-4602-8952-803546CE3344}: AppHostWritableAdminManager.
inline constexpr CLSID kClsidWritableAdminManager = {
    0x2B72133B, 0x3F5B, 0x4602, {0x89, 0x52, 0x80, 0x35, 0x46, 0xCE, 0x33, 0x44}};

// {9BE77978-73ED-4A9A-87FD-13F09FEC1B13}
struct IAppHostAdminManager : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetAdminSection(BSTR sectionName, BSTR path,
                                                      IAppHostElement** section) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMetadata(BSTR metadataType, VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMetadata(BSTR metadataType, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ConfigManager(IAppHostConfigManager** manager) = 0;
};

// {FA7660F6-7B3F-4237-A8BF-ED0AD0DCBBD9}: slots 7 to 9 after the admin manager's.
struct IAppHostWritableAdminManager : public IAppHostAdminManager {
    virtual HRESULT STDMETHODCALLTYPE CommitChanges() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CommitPath(BSTR* commitPath) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_CommitPath(BSTR commitPath) = 0;
};
inline constexpr IID kIidWritableAdminManager = {
    0xFA7660F6, 0x7B3F, 0x4237, {0xA8, 0xBF, 0xED, 0x0A, 0xD0, 0xDC, 0xBB, 0xD9}};

// {64FF8CCC-B287-4DAE-B08A-A72CBF45F453}
struct IAppHostElement : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_Name(BSTR* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Collection(IAppHostElementCollection** collection) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Properties(IAppHostPropertyCollection** properties) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    get_ChildElements(IAppHostChildElementCollection** elements) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMetadata(BSTR metadataType, VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMetadata(BSTR metadataType, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Schema(IUnknown** schema) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetElementByName(BSTR subName, IAppHostElement** element) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPropertyByName(BSTR subName,
                                                        struct IAppHostProperty** property) = 0;
    virtual HRESULT STDMETHODCALLTYPE Clear() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Methods(IUnknown** methods) = 0;
};

// {C8550BFF-5281-4B1E-AC34-99B6FA38464D}
struct IAppHostElementCollection : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_Count(DWORD* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT index, IAppHostElement** element) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddElement(IAppHostElement* element, INT position) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteElement(VARIANT index) = 0;
    virtual HRESULT STDMETHODCALLTYPE Clear() = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateNewElement(BSTR elementName,
                                                       IAppHostElement** element) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Schema(IUnknown** schema) = 0;
};

// {ED35F7A1-5024-4E7B-A44D-07DDAF4B524D}
struct IAppHostProperty : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_Name(BSTR* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Value(VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Value(VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE Clear() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_StringValue(BSTR* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Exception(IUnknown** exception) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMetadata(BSTR metadataType, VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMetadata(BSTR metadataType, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Schema(IUnknown** schema) = 0;
};

// {0191775E-BCFF-445A-B4F4-3BDDA54E2816}
struct IAppHostPropertyCollection : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_Count(DWORD* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT index, IAppHostProperty** property) = 0;
};

// {08A90F5F-0702-48D6-B45F-02A9885A9768}
struct IAppHostChildElementCollection : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_Count(DWORD* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT index, IAppHostElement** element) = 0;
};

// {8F6D760F-F0CB-4D69-B5F6-848B33E9BDC6}
struct IAppHostConfigManager : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetConfigFile(BSTR configPath, IAppHostConfigFile** file) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetUniqueConfigPath(BSTR configPath, BSTR* uniquePath) = 0;
};

// {ADA4E6FB-E025-401E-A5D0-C3134A281F07}
struct IAppHostConfigFile : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_ConfigPath(BSTR* configPath) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FilePath(BSTR* filePath) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    get_Locations(IAppHostConfigLocationCollection** locations) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAdminSection(BSTR sectionName, BSTR path,
                                                      IAppHostElement** section) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMetadata(BSTR metadataType, VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMetadata(BSTR metadataType, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE ClearInvalidSections() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_RootSectionGroup(IUnknown** group) = 0;
};

// {832A32F7-B3EA-4B8C-B260-9A2923001184}
struct IAppHostConfigLocationCollection : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_Count(DWORD* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT index,
                                               IAppHostConfigLocation** location) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddLocation(BSTR locationPath,
                                                  IAppHostConfigLocation** location) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteLocation(VARIANT index) = 0;
    virtual HRESULT STDMETHODCALLTYPE RenameLocation(VARIANT index, BSTR locationPath) = 0;
};

// {370AF178-7758-4DAD-8146-7391F6E18585}
struct IAppHostConfigLocation : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_Path(BSTR* path) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Count(DWORD* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT index, IAppHostElement** section) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddConfigSection(BSTR sectionName,
                                                       IAppHostElement** section) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteConfigSection(VARIANT index) = 0;
};

}  // namespace webrig::win32::ahadmin

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
