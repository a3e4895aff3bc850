// The order of the virtual operations is fixed: install code, the backends and their doubles
// agree on it. Read from the member-function pointers under the Itanium C++ ABI (g++ and clang on
// x86), where a virtual function's pointer holds 1 + its byte offset in the virtual table.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "apphost/iis_functions_vista.h"
#include "controller/iis_vroot_controller.h"
#include "metabase/iis_functions_legacy.h"

namespace webrig::testing {
namespace {

#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
constexpr bool kItaniumAbi = true;
#else
constexpr bool kItaniumAbi = false;
#endif

struct Slot {
    std::string name;
    long index;  // -1: not a virtual function
};

template <class MemberFunction>
Slot SlotOf(const char* name, MemberFunction function) {
    struct Representation {
        uintptr_t pointer;
        ptrdiff_t adjustment;
    };
    static_assert(sizeof(MemberFunction) == sizeof(Representation));
    Representation bits{};
    std::memcpy(&bits, &function, sizeof bits);
    if ((bits.pointer & 1) == 0) {
        return {name, -1};
    }
    return {name, static_cast<long>((bits.pointer - 1) / sizeof(void*))};
}

#define WEBRIG_SLOT(Class, name) SlotOf(#name, &Class::name)

void ExpectInOrder(const std::vector<Slot>& slots) {
    for (size_t i = 0; i < slots.size(); ++i) {
        EXPECT_EQ(slots[i].index, static_cast<long>(i)) << slots[i].name;
    }
}

TEST(SlotOrderTest, TheFiftyControllerOperations) {
    if (!kItaniumAbi) {
        GTEST_SKIP() << "virtual table layout is read under the Itanium C++ ABI only";
    }
    ExpectInOrder({
        WEBRIG_SLOT(CIISVRootController, SetEventSink),
        WEBRIG_SLOT(CIISVRootController, IsInstallState),
        WEBRIG_SLOT(CIISVRootController, IsRemoveState),
        WEBRIG_SLOT(CIISVRootController, CloseKey),
        WEBRIG_SLOT(CIISVRootController, OpenKeyLog),
        WEBRIG_SLOT(CIISVRootController, GetData),
        WEBRIG_SLOT(CIISVRootController, EnumKeys),
        WEBRIG_SLOT(CIISVRootController, InitIISObject),
        WEBRIG_SLOT(CIISVRootController, AddWebSiteFunction),
        WEBRIG_SLOT(CIISVRootController, SetVRtStrProperty),
        WEBRIG_SLOT(CIISVRootController, RemoveWebsite),
        WEBRIG_SLOT(CIISVRootController, AppCreate),
        WEBRIG_SLOT(CIISVRootController, CreateApplication),
        WEBRIG_SLOT(CIISVRootController, CreateVirtualDirectory),
        WEBRIG_SLOT(CIISVRootController, CreateAppPoolFunction),
        WEBRIG_SLOT(CIISVRootController, RemoveLegacyApplication),
        WEBRIG_SLOT(CIISVRootController, RemoveApplication),
        WEBRIG_SLOT(CIISVRootController, RemoveVirtualDirectory),
        WEBRIG_SLOT(CIISVRootController, RemoveAppPoolFunction),
        WEBRIG_SLOT(CIISVRootController, SetVRtDelimMultiszProperty),
        WEBRIG_SLOT(CIISVRootController, SetVRtMultiszProperty),
        WEBRIG_SLOT(CIISVRootController, SetVRtDWProperty),
        WEBRIG_SLOT(CIISVRootController, SetVRtBinProperty),
        WEBRIG_SLOT(CIISVRootController, SetDynamicMetaDataProperties),
        WEBRIG_SLOT(CIISVRootController, CompareDirValues),
        WEBRIG_SLOT(CIISVRootController, OpenKeyToWebsite),
        WEBRIG_SLOT(CIISVRootController, FindSiteWithId),
        WEBRIG_SLOT(CIISVRootController, FindSiteWithPort),
        WEBRIG_SLOT(CIISVRootController, CanDeletePath),
        WEBRIG_SLOT(CIISVRootController, GetNextWebsiteId),
        WEBRIG_SLOT(CIISVRootController, InstallMimeTypes),
        WEBRIG_SLOT(CIISVRootController, CheckAspNetBitness),
        WEBRIG_SLOT(CIISVRootController, SetAppPoolProperties),
        WEBRIG_SLOT(CIISVRootController, IsVistaBackend),
        WEBRIG_SLOT(CIISVRootController, LogMessage),
        WEBRIG_SLOT(CIISVRootController, ReportError),
        WEBRIG_SLOT(CIISVRootController, WebsiteExists),
        WEBRIG_SLOT(CIISVRootController, GetPortFromBindingInfo),
        WEBRIG_SLOT(CIISVRootController, GetBasePath),
        WEBRIG_SLOT(CIISVRootController, MaskPasswordValue),
        WEBRIG_SLOT(CIISVRootController, VRootCreated),
        WEBRIG_SLOT(CIISVRootController, AppPoolCreated),
        WEBRIG_SLOT(CIISVRootController, WebServiceExtensionCreated),
        WEBRIG_SLOT(CIISVRootController, WebSiteCreated),
        WEBRIG_SLOT(CIISVRootController, Reserved44),
        WEBRIG_SLOT(CIISVRootController, Reserved45),
        WEBRIG_SLOT(CIISVRootController, ComponentFileInfo),
        WEBRIG_SLOT(CIISVRootController, WriteUninstallProps),
        WEBRIG_SLOT(CIISVRootController, RemoveUninstallProps),
        WEBRIG_SLOT(CIISVRootController, SetFormsAuthentication),
    });
}

TEST(SlotOrderTest, TheMetabaseBackendServices) {
    if (!kItaniumAbi) {
        GTEST_SKIP() << "virtual table layout is read under the Itanium C++ ABI only";
    }
    ExpectInOrder({
        WEBRIG_SLOT(CIisFunctionsLegacy, LogMessage),
        WEBRIG_SLOT(CIisFunctionsLegacy, ReportError),
        WEBRIG_SLOT(CIisFunctionsLegacy, WebsiteExists),
        WEBRIG_SLOT(CIisFunctionsLegacy, GetPortFromBindingInfo),
        WEBRIG_SLOT(CIisFunctionsLegacy, GetBasePath),
        WEBRIG_SLOT(CIisFunctionsLegacy, MaskPasswordValue),
    });
}

TEST(SlotOrderTest, TheConfigurationBackendServices) {
    if (!kItaniumAbi) {
        GTEST_SKIP() << "virtual table layout is read under the Itanium C++ ABI only";
    }
    ExpectInOrder({
        WEBRIG_SLOT(CIisFunctionsVista, LogMessage),
        WEBRIG_SLOT(CIisFunctionsVista, WebsiteExists),
        WEBRIG_SLOT(CIisFunctionsVista, GetPortFromBindingInfo),
        WEBRIG_SLOT(CIisFunctionsVista, GetBasePath),
        WEBRIG_SLOT(CIisFunctionsVista, MaskPasswordValue),
    });
}

}  // namespace
}  // namespace webrig::testing
