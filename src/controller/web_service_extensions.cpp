// Web service extensions (the ISAPI and CGI files IIS may run), added to and removed from the
// list through ADSI's IIS web service object. Only IIS 6, or IIS 7+ with its metabase
// compatibility feature, offer that object.

#include "controller/iis_vroot_controller.h"
#include "support/format.h"
#include "support/status_codes.h"

namespace {

constexpr char16_t kWebServicePath[] = u"IIS://localhost/w3svc";

// Bits of a web service extension's Attributes.
constexpr int32_t kAllowed = 0x1;
constexpr int32_t kDeletable = 0x2;
constexpr int32_t kRemoveFirst = 0x4;

// "activeds.dll" from the system directory, with ADsGetObject. The library is freed when the
// returned object goes, on every path out of the caller.
std::unique_ptr<webrig::platform::ActiveDs> LoadActiveDs(webrig::platform::Platform& platform) {
    std::unique_ptr<webrig::platform::ActiveDs> library;
    const qm::wstring path = platform.system().SystemDirectory() + u"\\activeds.dll";
    if (platform.adsi().LoadActiveDs(path, library) != qm::win32::success) {
        library.reset();
    }
    return library;
}

}  // namespace

int32_t CIISVRootController::CreateWebServiceExtension(CIISWebServiceExtensionProp& extension) {
    try {
        if (ProgressMessage(u"PROGMSG_IIS_CREATEWEBSERVICEEXTENSION", u"") ==
            IIISEvent::kCancelled) {
            return qm::status::user_cancelled;
        }
        LogMessage(qm::format(u"Configuring extension '%s' with file '%s' and group '%s'",
                              extension.Description, extension.File, extension.Group));
        const auto library = LoadActiveDs(platform());
        if (library == nullptr) {
            LogMessage(u"GetProcAddress failed on ADsGetObject");
            return qm::status::ads_get_object_missing;
        }
        std::unique_ptr<webrig::platform::IisWebService> service;
        if (const qm::hresult got = library->GetWebService(kWebServicePath, service); got < 0) {
            LogMessage(qm::format(u"ADsGetObject failed with the following error: %d", got));
            LogMessage(
                u"Perhaps IIS Metabase and IIS 6 configuration compatibility is required "
                u"for this action.");
            return got;
        }
        if ((extension.Attributes & kRemoveFirst) != 0) {
            if (const int32_t removed = RemoveWebServiceExtension(extension); removed != 0) {
                return removed;
            }
        }
        const qm::hresult added = service->AddExtensionFile(
            extension.File, (extension.Attributes & kAllowed) != 0, extension.Group,
            (extension.Attributes & kDeletable) != 0, extension.Description);
        if (added < 0) {
            LogMessage(qm::format(u"AddExtensionFile returned: %d", added));
            if (added != webrig::platform::adsi_error::duplicate_name) {
                return added;
            }
            LogMessage(u"Web Extension appears to already exist.");
        }
        // The web service object is its own IADs here: the query cannot fail.
        if (const qm::hresult saved = service->SetInfo(); saved < 0) {
            LogMessage(qm::format(
                u"SetInfo failed for Web Service Extension with the following result: %d", saved));
            return saved;
        }
        extension.ActionTaken = 3;
        WebServiceExtensionCreated(extension.Description);
        LogMessage(u"CreateWebServiceExtension returning success.");
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in CreateWebServiceExtension function");
        return qm::status::create_extension_failed;
    }
}

int32_t CIISVRootController::RemoveWebServiceExtension(CIISWebServiceExtensionProp& extension) {
    try {
        if (m_pPropertyBag->iisMajorVersion < 6) {
            return 0;
        }
        if (ProgressMessage(u"PROGMSG_IIS_REMOVEWEBSERVICEEXTENSION", extension.File) ==
            IIISEvent::kCancelled) {
            return qm::status::user_cancelled;
        }
        LogMessage(u"Removing the following Web Service Extension file: " + extension.File);
        const auto library = LoadActiveDs(platform());
        if (library == nullptr) {
            LogMessage(u"GetProcAddress failed on ADsGetObject");
            return qm::status::ads_get_object_missing;
        }
        std::unique_ptr<webrig::platform::IisWebService> service;
        if (const qm::hresult got = library->GetWebService(kWebServicePath, service); got < 0) {
            LogMessage(qm::format(u"ADsGetObject faile with the following error: %d", got));
            return got;
        }
        if (const qm::hresult deleted = service->DeleteExtensionFileRecord(extension.File);
            deleted < 0) {
            LogMessage(qm::format(u"DeleteExtensionFileRecord has the following return code: %d",
                                  deleted));
        }
        if (const qm::hresult saved = service->SetInfo(); saved < 0) {
            LogMessage(qm::format(u"SetInfo failed with the following error: %d", saved));
            return saved;
        }
        platform().clock().Sleep(1000);
        LogMessage(u"RemoveWebServiceExtension returning success.");
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in RemoveWebServiceExtension function");
        return qm::status::remove_extension_failed;
    }
}
