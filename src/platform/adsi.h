#pragma once
// ADSI's IIS web service object ("IIS://localhost/w3svc"), through which web service extensions
// (the ISAPI and CGI restriction list) are added and removed. On Windows the object comes from
// "activeds.dll" (loaded by full path, ADsGetObject found by name) and the IIS ADSI provider,
// which IIS 6 has and IIS 7 and later only with the IIS 6 metabase compatibility feature.

#include <memory>

#include "support/result_codes.h"
#include "support/wide_string.h"

namespace webrig::platform {

namespace adsi_error {
// E_ADS_BAD_PATHNAME: no provider serves the path (IIS 7+ without the compatibility feature).
constexpr qm::hresult bad_pathname = static_cast<qm::hresult>(0x80005000u);
// HRESULT_FROM_WIN32(ERROR_DUP_NAME): AddExtensionFile of a file already listed.
constexpr qm::hresult duplicate_name = static_cast<qm::hresult>(0x80070034u);
}  // namespace adsi_error

// IISWebService with the IADs it also is. Changes stay in the object's property cache until
// SetInfo writes them.
class IisWebService {
  public:
    virtual ~IisWebService() = default;

    // IISWebService::AddExtensionFile(bstrExtensionFile, bAccess, bstrGroupID, bCanDelete,
    // bstrDescription).
    virtual qm::hresult AddExtensionFile(qm::wstring_view file, bool allowed,
                                         qm::wstring_view groupId, bool canDelete,
                                         qm::wstring_view description) = 0;
    // IISWebService::DeleteExtensionFileRecord(bstrExtensionFile).
    virtual qm::hresult DeleteExtensionFileRecord(qm::wstring_view file) = 0;
    // IADs::SetInfo: writes the cached changes.
    virtual qm::hresult SetInfo() = 0;
};

// "activeds.dll" while it is loaded (FreeLibrary when released).
class ActiveDs {
  public:
    virtual ~ActiveDs() = default;

    // ADsGetObject(path, IID_IISWebService, &object).
    virtual qm::hresult GetWebService(qm::wstring_view path,
                                      std::unique_ptr<IisWebService>& object) = 0;
};

class Adsi {
  public:
    virtual ~Adsi() = default;

    // LoadLibraryW(dllPath), then GetProcAddress(module, "ADsGetObject"). Returns 0 with the
    // library, or the Win32 error of the step that failed: the file's (ERROR_MOD_NOT_FOUND,
    // ERROR_BAD_EXE_FORMAT) or ERROR_PROC_NOT_FOUND for a library without the function.
    virtual uint32_t LoadActiveDs(qm::wstring_view dllPath, std::unique_ptr<ActiveDs>& library) = 0;
};

}  // namespace webrig::platform
