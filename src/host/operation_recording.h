#pragma once
// Records of the items an installation created, sent to the host so that it can ask webrig to
// remove them again at uninstall or rollback (by the name recorded here).

#include <memory>

#include "platform/host_objects.h"

namespace webrig::host {

// The event names of the four item kinds.
inline constexpr char16_t kVRootCreated[] = u"IIS VRoot Created";
inline constexpr char16_t kAppPoolCreated[] = u"IIS AppPool Created";
inline constexpr char16_t kWebServiceExtensionCreated[] = u"IIS WebServiceExtension Created";
inline constexpr char16_t kWebSiteCreated[] = u"IIS WebSite Created";

inline constexpr char16_t kGeneralOperationType[] = u"OPTYPE_GENERAL";

// The host's recorder for general operations, from the `operations` argument of
// QMIISComponentInstall. Throws qm::com_exception with the HRESULT of a failed step.
std::shared_ptr<platform::IOperationRecorder> ObtainOperationRecorder(
    platform::HostObjects& hostObjects, void* operations);

// Sends the record {event name, item name}; does nothing without a recorder or while the
// component's records are suppressed. Throws qm::com_exception when the recorder fails.
void RecordItemCreated(platform::IOperationRecorder* recorder, bool suppressEvents,
                       const qm::wstring& eventName, const qm::wstring& itemName);

}  // namespace webrig::host
