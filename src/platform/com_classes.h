#pragma once
// Which COM classes the machine can create. The IIS 6 admin base class is there on IIS 6 and
// older, and on later IIS only with its metabase compatibility feature; webrig asks before
// choosing the metabase backend.

#include <cstdint>
#include <memory>

#include "support/result_codes.h"

namespace webrig::platform {

// The class factory (IClassFactory) of the IIS 6 admin base class.
class AdminBaseClassFactory {
  public:
    virtual ~AdminBaseClassFactory() = default;

    // IClassFactory::CreateInstance without an outer object, for IMSAdminBase
    // ({70B51430-B6CA-11D0-B9B9-00A0C922E750}); the instance is released at once. S_OK or the
    // creation HRESULT.
    virtual qm::hresult CreateAdminBase() = 0;
};

class ComClasses {
  public:
    virtual ~ComClasses() = default;

    // CoGetClassObject for the IIS 6 admin base class ({A9E69610-B80D-11D0-B9B9-00A0C922E750})
    // with its class factory interface, on the local machine; the factory is released at once.
    // S_OK when it could be obtained, else the failure HRESULT (REGDB_E_CLASSNOTREG when the
    // class is not registered).
    virtual qm::hresult ProbeAdminBaseClassFactory() = 0;

    // The same CoGetClassObject (class context 21: in-process, local and remote server, with an
    // all-zero COSERVERINFO), keeping the factory for a CreateInstance. S_OK with a factory, or
    // the failure HRESULT and no factory.
    virtual qm::hresult GetAdminBaseClassFactory(
        std::unique_ptr<AdminBaseClassFactory>& factory) = 0;
};

}  // namespace webrig::platform
