#pragma once
// What the service operations work with: the machine's service control manager and clock, and
// the runtime's log.

#include "host/event_log.h"
#include "platform/clock.h"
#include "platform/service_control.h"

namespace webrig::services {

struct ServiceContext {
    platform::ServiceControl& services;
    platform::Clock& clock;
    IIISEvent* sink = nullptr;

    void Log(const qm::wstring& text) const { host::LogLine(sink, text); }
};

// A manager and a service handle, closed when it goes: every path out of an operation that
// opened them closes both.
class ServiceHandles {
  public:
    explicit ServiceHandles(platform::ServiceControl& services) : m_services(services) {}
    ServiceHandles(const ServiceHandles&) = delete;
    ServiceHandles& operator=(const ServiceHandles&) = delete;
    ~ServiceHandles() {
        if (service != platform::kNoService) {
            m_services.Close(service);
        }
        if (manager != platform::kNoService) {
            m_services.Close(manager);
        }
    }

    platform::ServiceHandle manager = platform::kNoService;
    platform::ServiceHandle service = platform::kNoService;

  private:
    platform::ServiceControl& m_services;
};

}  // namespace webrig::services
