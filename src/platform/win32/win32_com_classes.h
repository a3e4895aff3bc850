#pragma once
// Whether the IIS 6 admin base class can be had on this machine (CoGetClassObject).

#include "platform/com_classes.h"

namespace webrig::win32 {

class Win32ComClasses final : public platform::ComClasses {
  public:
    qm::hresult ProbeAdminBaseClassFactory() override;
};

}  // namespace webrig::win32
