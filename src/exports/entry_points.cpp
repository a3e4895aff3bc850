// The eight exported functions: argument conversion and nothing else.

#include "exports/export_calls.h"
#include "webrig/webrig.h"

namespace {

qm::wstring TextOf(webrig_text text) {
    if (text == nullptr) {
        return {};
    }
#if defined(_WIN32)
    static_assert(sizeof(wchar_t) == sizeof(char16_t), "LPCWSTR is UTF-16 on Windows");
    return qm::wstring(reinterpret_cast<const char16_t*>(text));
#else
    return qm::wstring(text);
#endif
}

}  // namespace

using namespace webrig::exports;

extern "C" {

WEBRIG_API int32_t WEBRIG_CALL QMIISInitialize(webrig_text settingsFile, uint32_t hostContext) {
    try {
        return Initialize(TextOf(settingsFile), hostContext);
    } catch (...) {
        return 0;
    }
}

WEBRIG_API int32_t WEBRIG_CALL QMIISUninitialize(void) {
    return Uninitialize();
}

WEBRIG_API int32_t WEBRIG_CALL QMIISComponentInstall(webrig_text component, void* operations) {
    try {
        return ComponentInstall(TextOf(component), operations);
    } catch (...) {
        return 0;
    }
}

WEBRIG_API int32_t WEBRIG_CALL QMIISCheckForContinue(webrig_text component,
                                                     int32_t continueWithoutIIS) {
    try {
        return CheckForContinue(TextOf(component), continueWithoutIIS);
    } catch (...) {
        return 0;
    }
}

WEBRIG_API int32_t WEBRIG_CALL QMIISVRootUninstall(webrig_text name) {
    try {
        return VRootUninstall(TextOf(name));
    } catch (...) {
        return 0;
    }
}

WEBRIG_API int32_t WEBRIG_CALL QMIISWebSiteUninstall(webrig_text name) {
    try {
        return WebSiteUninstall(TextOf(name));
    } catch (...) {
        return 0;
    }
}

WEBRIG_API int32_t WEBRIG_CALL QMIISAppPoolUninstall(webrig_text name) {
    try {
        return AppPoolUninstall(TextOf(name));
    } catch (...) {
        return 0;
    }
}

WEBRIG_API int32_t WEBRIG_CALL QMIISWebServiceExtensionUninstall(webrig_text name) {
    try {
        return WebServiceExtensionUninstall(TextOf(name));
    } catch (...) {
        return 0;
    }
}

}  // extern "C"
