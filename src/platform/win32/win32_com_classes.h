#pragma once
// Whether the IIS 6 admin base class can be had on this machine (CoGetClassObject), and its
// class factory.

#include "platform/com_classes.h"

namespace webrig::win32 {

class Win32ComClasses final : public platform::ComClasses {
  public:
    qm::hresult ProbeAdminBaseClassFactory() override;
    qm::hresult GetAdminBaseClassFactory(
        std::unique_ptr<platform::AdminBaseClassFactory>& factory) override;
};

}  // namespace webrig::win32
