// The order of the virtual operations is fixed: install code, the backends and their doubles
// agree on it. Read from the member-function pointers under the Itanium C++ ABI (g++ and clang on
// x86), where a virtual function's pointer holds 1 + its byte offset in the virtual table.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
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

// Each function's slot, named by its piece of `names`, the text of the argument list.
template <class... MemberFunctions>
std::vector<Slot> SlotsOf(std::string_view names, MemberFunctions... functions) {
    std::vector<Slot> slots;
    const auto next = [&names] {
        names.remove_prefix(std::min(names.find_first_not_of(' '), names.size()));
        const size_t comma = std::min(names.find(','), names.size());
        std::string name(names.substr(0, comma));
        names.remove_prefix(std::min(comma + 1, names.size()));
        return name;
    };
    (slots.push_back(SlotOf(next().c_str(), functions)), ...);
    return slots;
}

#define WEBRIG_SLOTS(...) SlotsOf(#__VA_ARGS__, __VA_ARGS__)

void ExpectInOrder(const std::vector<Slot>& slots) {
    for (size_t i = 0; i < slots.size(); ++i) {
        EXPECT_EQ(slots[i].index, static_cast<long>(i)) << slots[i].name;
    }
}

TEST(SlotOrderTest, TheFiftyControllerOperations) {
    if (!kItaniumAbi) {
        GTEST_SKIP() << "virtual table layout is read under the Itanium C++ ABI only";
    }
    using C = CIISVRootController;
    ExpectInOrder(WEBRIG_SLOTS(
        &C::SetEventSink, &C::IsInstallState, &C::IsRemoveState, &C::CloseKey, &C::OpenKeyLog,
        &C::GetData, &C::EnumKeys, &C::InitIISObject, &C::AddWebSiteFunction, &C::SetVRtStrProperty,
        &C::RemoveWebsite, &C::AppCreate, &C::CreateApplication, &C::CreateVirtualDirectory,
        &C::CreateAppPoolFunction, &C::RemoveLegacyApplication, &C::RemoveApplication,
        &C::RemoveVirtualDirectory, &C::RemoveAppPoolFunction, &C::SetVRtDelimMultiszProperty,
        &C::SetVRtMultiszProperty, &C::SetVRtDWProperty, &C::SetVRtBinProperty,
        &C::SetDynamicMetaDataProperties, &C::CompareDirValues, &C::OpenKeyToWebsite,
        &C::FindSiteWithId, &C::FindSiteWithPort, &C::CanDeletePath, &C::GetNextWebsiteId,
        &C::InstallMimeTypes, &C::CheckAspNetBitness,
        static_cast<int32_t (C::*)(const CIISAppPoolProp&)>(&C::SetAppPoolProperties),
        &C::IsVistaBackend, &C::LogMessage, &C::ReportError, &C::WebsiteExists,
        &C::GetPortFromBindingInfo, &C::GetBasePath, &C::MaskPasswordValue, &C::VRootCreated,
        &C::AppPoolCreated, &C::WebServiceExtensionCreated, &C::WebSiteCreated, &C::Reserved44,
        &C::Reserved45, &C::ComponentFileInfo, &C::WriteUninstallProps, &C::RemoveUninstallProps,
        &C::SetFormsAuthentication));
}

TEST(SlotOrderTest, TheMetabaseBackendServices) {
    if (!kItaniumAbi) {
        GTEST_SKIP() << "virtual table layout is read under the Itanium C++ ABI only";
    }
    using L = CIisFunctionsLegacy;
    ExpectInOrder(WEBRIG_SLOTS(&L::LogMessage, &L::ReportError, &L::WebsiteExists,
                               &L::GetPortFromBindingInfo, &L::GetBasePath, &L::MaskPasswordValue));
}

TEST(SlotOrderTest, TheConfigurationBackendServices) {
    if (!kItaniumAbi) {
        GTEST_SKIP() << "virtual table layout is read under the Itanium C++ ABI only";
    }
    using V = CIisFunctionsVista;
    ExpectInOrder(WEBRIG_SLOTS(&V::LogMessage, &V::WebsiteExists, &V::GetPortFromBindingInfo,
                               &V::GetBasePath, &V::MaskPasswordValue));
}

}  // namespace
}  // namespace webrig::testing
