#include "host/host_text.h"

#include <gtest/gtest.h>

#include "testing/temp_machine.h"
#include "testing/test_host.h"

namespace webrig::host {
namespace {

class HostTextTest : public ::testing::Test {
  protected:
    testing::TempMachine temp;
    sim::Machine& machine = temp.machine();
};

TEST_F(HostTextTest, LoadsTheTextAndSubstitutesIt) {
    testing::TestHost host(machine);
    host.strings[u"IDS_SITE"] = u"[PRODUCT] Site";
    host.substitutions[u"[PRODUCT]"] = u"Orders";
    HostText text(machine, host.module(), host.context());
    EXPECT_EQ(text.LoadHostString(u"IDS_SITE"), u"Orders Site");
    EXPECT_EQ(host.loadStringCapacities, std::vector<uint32_t>{260});
}

TEST_F(HostTextTest, AskesAgainWithTheCapacityTheHostNeeds) {
    testing::TestHost host(machine);
    const qm::wstring longText(300, u'x');
    host.strings[u"IDS_LONG"] = longText;
    HostText text(machine, host.module(), host.context());
    EXPECT_EQ(text.LoadHostString(u"IDS_LONG"), longText);
    EXPECT_EQ(host.loadStringCapacities, (std::vector<uint32_t>{260, 301}));
}

TEST_F(HostTextTest, AnIdentifierTheTableLacksIsItsOwnTextStillSubstituted) {
    testing::TestHost host(machine);
    host.substitutions[u"[INSTALLDIR]"] = u"C:\\Apps\\Orders";
    HostText text(machine, host.module(), host.context());
    EXPECT_EQ(text.LoadHostString(u"[INSTALLDIR]"), u"C:\\Apps\\Orders");
}

TEST_F(HostTextTest, WithoutTheStringTableNothingIsSubstitutedEither) {
    testing::TestHost host(machine, {.loadString = false});
    host.substitutions[u"[X]"] = u"y";
    HostText text(machine, host.module(), host.context());
    EXPECT_EQ(text.LoadHostString(u"[X]"), u"[X]");
    EXPECT_EQ(text.SubstituteHostText(u"[X]"), u"y");
    EXPECT_TRUE(text.Available());
}

TEST_F(HostTextTest, AHostContextOfZeroSkipsTheHost) {
    testing::TestHost host(machine);
    host.strings[u"IDS_A"] = u"text";
    HostText text(machine, host.module(), 0);
    EXPECT_EQ(text.LoadHostString(u"IDS_A"), u"IDS_A");
    EXPECT_EQ(text.SubstituteHostText(u"[X]"), u"[X]");
    EXPECT_FALSE(text.Available());
    EXPECT_TRUE(host.loadStringKeys.empty());
}

TEST_F(HostTextTest, WithoutAHostModuleTextsStayAsTheyAre) {
    HostText text(machine, platform::kNoModule, 7);
    EXPECT_EQ(text.LoadHostString(u"IDS_A"), u"IDS_A");
    EXPECT_EQ(text.SubstituteHostText(u"[X]"), u"[X]");
    EXPECT_FALSE(text.Available());
}

TEST_F(HostTextTest, ANullTextFromTheHostIsTheEmptyText) {
    testing::TestHost host(machine);
    host.substituteToNull.insert(u"[GONE]");
    HostText text(machine, host.module(), host.context());
    EXPECT_EQ(text.SubstituteHostText(u"[GONE]"), u"");
}

TEST_F(HostTextTest, TheHostIsLookedUpAtEveryUse) {
    HostText text(machine, platform::kNoModule, 1);
    auto host = std::make_unique<testing::TestHost>(machine);
    host->strings[u"IDS_A"] = u"first";
    HostText bound(machine, host->module(), host->context());
    EXPECT_EQ(bound.LoadHostString(u"IDS_A"), u"first");
    const platform::ModuleHandle gone = host->module();
    const uint32_t context = host->context();
    host.reset();  // the host module is unloaded
    HostText stale(machine, gone, context);
    EXPECT_EQ(stale.LoadHostString(u"IDS_A"), u"IDS_A");
}

}  // namespace
}  // namespace webrig::host
