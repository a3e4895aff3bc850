#include "platform/sim/host_process/sim_automation.h"

#include <gtest/gtest.h>

#include <cstring>

namespace webrig::sim {
namespace {

// The length prefix counts bytes; embedded NULs are kept; a terminator follows.
TEST(SimAutomation, LaysOutABstrAsOleAutomationDoes) {
    SimAutomation automation;
    const platform::Bstr text = automation.SysAllocStringLen(qm::wstring_view(u"h\0llo", 5));
    ASSERT_NE(text, nullptr);
    uint32_t prefix = 0;
    std::memcpy(&prefix, reinterpret_cast<const std::byte*>(text) - 4, 4);
    EXPECT_EQ(prefix, 10u);
    EXPECT_EQ(automation.SysStringLen(text), 5u);
    EXPECT_EQ(qm::wstring(text, 6), qm::wstring(u"h\0llo\0", 6));
    automation.SysFreeString(text);
    const platform::Bstr empty = automation.SysAllocStringLen(u"");
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(automation.SysStringLen(empty), 0u);
    EXPECT_EQ(empty[0], u'\0');
    automation.SysFreeString(empty);
    // Null is accepted where Windows accepts it.
    EXPECT_EQ(automation.SysStringLen(nullptr), 0u);
    automation.SysFreeString(nullptr);
}

TEST(SimAutomation, AFailedAllocationGivesNull) {
    SimAutomation automation([](size_t) -> void* { return nullptr; });
    EXPECT_EQ(automation.SysAllocStringLen(u"text"), nullptr);
}

// The conversion without flags: a VARIANT_BOOL is the 16-bit integer -1 or 0, not "True".
TEST(SimAutomation, ChangesValuesToTextAsVariantChangeTypeDoes) {
    SimAutomation automation;
    const std::pair<platform::Variant, qm::wstring> cases[] = {
        {platform::Variant{}, u""},
        {platform::Variant{true}, u"-1"},
        {platform::Variant{false}, u"0"},
        {platform::Variant{int32_t{-5}}, u"-5"},
        {platform::Variant{uint32_t{4294967295u}}, u"4294967295"},
        {platform::Variant{int64_t{-9000000000}}, u"-9000000000"},
        {platform::Variant{uint64_t{18446744073709551615u}}, u"18446744073709551615"},
        {platform::Variant{qm::wstring(u"Integrated")}, u"Integrated"},
    };
    for (const auto& [value, expected] : cases) {
        qm::wstring text = u"stale";
        EXPECT_EQ(automation.ChangeTypeToText(value, text), qm::hr::ok);
        EXPECT_EQ(text, expected);
    }
}

}  // namespace
}  // namespace webrig::sim
