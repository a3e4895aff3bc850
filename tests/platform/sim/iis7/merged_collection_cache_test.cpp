// Collections merged by one manager are kept with the cached files for the next fresh manager;
// what a manager reads must still follow every change: a file replaced on disk, a commit, the
// file of a lower level, and (for that manager only) changes not yet committed.

#include <gtest/gtest.h>

#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::AdminManager;
using platform::ConfigElement;
using platform::ElementCollection;
using testing::IisConfigMachine;
using Names = std::vector<std::u16string>;

constexpr std::u16string_view kPools = u"system.applicationHost/applicationPools";
constexpr std::u16string_view kDocuments = u"system.webServer/defaultDocument";

std::shared_ptr<ElementCollection> Collection(AdminManager& manager, std::u16string_view section,
                                              std::u16string_view path) {
    std::shared_ptr<ConfigElement> element;
    std::shared_ptr<ElementCollection> collection;
    EXPECT_EQ(manager.GetAdminSection(section, path, element), 0);
    if (section == kDocuments) {
        std::shared_ptr<ConfigElement> files;
        EXPECT_EQ(element->GetElementByName(u"files", files), 0);
        element = files;
    }
    EXPECT_EQ(element->GetCollection(collection), 0);
    return collection;
}

Names Read(ElementCollection& collection, std::u16string_view key) {
    uint32_t count = 0;
    EXPECT_EQ(collection.Count(count), 0);
    Names names(count);
    for (uint32_t i = 0; i < count; ++i) {
        std::shared_ptr<ConfigElement> item;
        std::shared_ptr<platform::ConfigProperty> property;
        EXPECT_EQ(collection.Item(i, item), 0);
        EXPECT_EQ(item->GetPropertyByName(key, property), 0);
        EXPECT_EQ(property->GetStringValue(names[i]), 0);
    }
    return names;
}

Names Pools(AdminManager& manager) {
    return Read(*Collection(manager, kPools, testing::kAppHostPath), u"name");
}

void AddPool(ElementCollection& pools, std::u16string_view name) {
    std::shared_ptr<ConfigElement> pool;
    std::shared_ptr<platform::ConfigProperty> property;
    ASSERT_EQ(pools.CreateNewElement(u"add", pool), 0);
    ASSERT_EQ(pool->GetPropertyByName(u"name", property), 0);
    ASSERT_EQ(property->PutValue(platform::Variant{std::u16string(name)}), 0);
    ASSERT_EQ(pools.AddElement(pool, -1), 0);
}

TEST(MergedCollectionCache, FollowsAFileReplacedOnDisk) {
    IisConfigMachine machine;
    EXPECT_EQ(Pools(*machine.NewManager()), Names{u"DefaultAppPool"});
    std::string text = machine.ReadAppHost();
    const std::string pool = "<add name=\"DefaultAppPool\" />";
    text.replace(text.find(pool), pool.size(), pool + "<add name=\"Shop\" />");
    machine.WriteAppHost(text);
    EXPECT_EQ(Pools(*machine.NewManager()), (Names{u"DefaultAppPool", u"Shop"}));
}

TEST(MergedCollectionCache, FollowsACommitAndKeepsChangesNotCommittedToTheirManager) {
    IisConfigMachine machine;
    auto writer = machine.NewManager();
    auto pools = Collection(*writer, kPools, testing::kAppHostPath);
    EXPECT_EQ(Read(*pools, u"name"), Names{u"DefaultAppPool"});
    AddPool(*pools, u"Shop");
    EXPECT_EQ(Read(*pools, u"name"), (Names{u"DefaultAppPool", u"Shop"}));
    EXPECT_EQ(Pools(*machine.NewManager()), Names{u"DefaultAppPool"});
    ASSERT_EQ(writer->CommitChanges(), 0);
    EXPECT_EQ(Pools(*machine.NewManager()), (Names{u"DefaultAppPool", u"Shop"}));
    EXPECT_EQ(Pools(*writer), (Names{u"DefaultAppPool", u"Shop"}));
}

TEST(MergedCollectionCache, FollowsTheFileOfALowerLevel) {
    IisConfigMachine machine;
    const auto documents = [&] {
        auto manager = machine.NewManager();
        return Read(*Collection(*manager, kDocuments, testing::kDefaultSitePath), u"value");
    };
    EXPECT_EQ(documents(), (Names{u"Default.htm", u"index.html"}));
    const auto webConfig = [&](std::string_view files) {
        IisConfigMachine::WriteText(machine.DrivePath("inetpub/wwwroot/web.config"),
                                    "<configuration><system.webServer><defaultDocument><files>" +
                                        std::string(files) +
                                        "</files></defaultDocument></system.webServer>"
                                        "</configuration>");
    };
    webConfig("<add value=\"home.htm\" />");
    EXPECT_EQ(documents(), (Names{u"home.htm", u"Default.htm", u"index.html"}));
    webConfig("<clear />");
    EXPECT_EQ(documents(), Names{});
}

}  // namespace
}  // namespace webrig::sim::iis7
