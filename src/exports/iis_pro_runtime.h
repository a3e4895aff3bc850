#pragma once
// The runtime instance: everything that lives from one QMIISInitialize to the next.

#include <cstdint>
#include <memory>
#include <set>

#include "host/iis_event.h"
#include "platform/platform.h"
#include "settings/iis_loader.h"
#include "settings/iis_property_bag.h"

class CIISProRuntime final {
  public:
    explicit CIISProRuntime(std::shared_ptr<webrig::platform::Platform> platform);
    CIISProRuntime(const CIISProRuntime&) = delete;
    CIISProRuntime& operator=(const CIISProRuntime&) = delete;

    // Takes the event sink and the host context, and lets the bag load itself through `loader`.
    // Returns the initialization status, which the export does not pass on.
    int32_t Initialize(CIISLoader& loader, std::unique_ptr<IIISEvent> sink, uint32_t context);

    // Reads the installed IIS version and decides whether `component` can be installed: 0, or -1
    // when it has IIS items, IIS is absent or older than 4 and `continueWithoutIIS` is 0.
    int32_t CheckForContinue(const qm::wstring& component, int32_t continueWithoutIIS);

    // Whether the component creates anything IIS needs to be present for (websites alone do not
    // count).
    bool ComponentHasIISItems(const qm::wstring& component);

    // The runtime's log helper: one line to the event sink, if any.
    void Log(const qm::wstring& text);

    webrig::platform::Platform& platform() { return *m_platform; }

    CIISPropertyBag propertyBag;
    std::unique_ptr<IIISEvent> eventSink;
    uint32_t hostContext = 0;
    std::set<qm::wstring> installedComponents;

  private:
    std::shared_ptr<webrig::platform::Platform> m_platform;
};
