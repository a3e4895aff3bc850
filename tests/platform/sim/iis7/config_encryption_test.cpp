#include "platform/sim/iis7/config_encryption.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/sim/machine/machine_error.h"
#include "platform/sim/machine/machine_layout.h"
#include "testing/file_bytes.h"
#include "testing/temp_folder.h"
#include "testing/temp_machine.h"

namespace webrig::sim::iis7 {
namespace {

const ConfigEncryption& Machine1() {
    static const ConfigEncryption encryption(ConfigEncryption::NewMachineKey());
    return encryption;
}

TEST(ConfigEncryption, RoundTripsAnyUtf16Text) {
    const std::u16string texts[] = {
        u"",
        u"P@ssw0rd!",
        u"\u00e9t\u00e9 \u65e5\u672c \U0001F511",
        std::u16string(1, u'\xD800') + u"lone surrogate",
        std::u16string(3000, u'x'),
    };
    for (const std::u16string& text : texts) {
        const std::u16string stored = Machine1().Encrypt(text);
        EXPECT_TRUE(stored.starts_with(u"[enc:AesProvider:")) << qm::to_utf8(stored);
        EXPECT_TRUE(stored.ends_with(u":enc]"));
        EXPECT_TRUE(ConfigEncryption::IsEncrypted(stored));
        EXPECT_EQ(Machine1().Decrypt(stored), text);
    }
}

TEST(ConfigEncryption, SameTextEncryptsDifferentlyEachTime) {
    EXPECT_NE(Machine1().Encrypt(u"secret"), Machine1().Encrypt(u"secret"));
}

TEST(ConfigEncryption, AnotherMachinesKeyCannotRead) {
    const ConfigEncryption other(ConfigEncryption::NewMachineKey());
    EXPECT_EQ(other.Decrypt(Machine1().Encrypt(u"secret")), std::nullopt);
}

TEST(ConfigEncryption, EveryChangedCharacterIsRefused) {
    const std::u16string stored = Machine1().Encrypt(u"secret");
    const size_t payloadStart = std::u16string_view(u"[enc:AesProvider:").size();
    const size_t payloadEnd = stored.size() - std::u16string_view(u":enc]").size();
    for (size_t i = payloadStart; i < payloadEnd; ++i) {
        std::u16string damaged = stored;
        damaged[i] = damaged[i] == u'A' ? u'B' : u'A';
        EXPECT_EQ(Machine1().Decrypt(damaged), std::nullopt) << "position " << i;
    }
}

TEST(ConfigEncryption, TextThatIsNotOursIsRefused) {
    const std::u16string stored = Machine1().Encrypt(u"secret");
    const std::u16string payload = stored.substr(17, stored.size() - 22);
    const std::u16string cases[] = {
        u"",
        u"secret",
        u"[enc:AesProvider::enc]",
        u"[enc:AesProvider:QUJD:enc]",
        u"[enc:RsaProvider:" + payload + u":enc]",
        u"[enc:AesProvider:" + payload,
        u"[enc:AesProvider:" + payload + u"=:enc]",
        u"[enc:AesProvider:" + payload.substr(0, payload.size() - 4) + u":enc]",
        u"[enc:AesProvider:*" + payload.substr(1) + u":enc]",
        u"[enc:AesProvider:" + payload + u"AAAA:enc]",
        u"[ENC:AesProvider:" + payload + u":enc]",
    };
    for (const std::u16string& text : cases) {
        EXPECT_EQ(Machine1().Decrypt(text), std::nullopt) << qm::to_utf8(text);
    }
}

TEST(ConfigEncryption, IsEncryptedLooksOnlyAtTheFrame) {
    EXPECT_TRUE(ConfigEncryption::IsEncrypted(u"[enc:AesProvider:abc:enc]"));
    EXPECT_TRUE(ConfigEncryption::IsEncrypted(u"[enc:IISWASOnlyAesProvider:abc:enc]"));
    EXPECT_FALSE(ConfigEncryption::IsEncrypted(u"[enc:AesProvider:abc"));
    EXPECT_FALSE(ConfigEncryption::IsEncrypted(u"enc:AesProvider:abc:enc]"));
    EXPECT_FALSE(ConfigEncryption::IsEncrypted(u"[enc:enc]"));
    EXPECT_FALSE(ConfigEncryption::IsEncrypted(u"P@ssw0rd"));
}

TEST(ConfigEncryption, KeysHave32RandomBytes) {
    const std::string key = ConfigEncryption::NewMachineKey();
    EXPECT_EQ(key.size(), 32u);
    EXPECT_NE(key, ConfigEncryption::NewMachineKey());
    EXPECT_THROW(ConfigEncryption(std::string(16, 'k')), std::invalid_argument);
}

TEST(MachineKey, NewIisMachineHasOneThatLoadingKeeps) {
    testing::TempMachine temp;
    const auto key = testing::ReadBytes(ConfigKeyPath(temp.path()));
    EXPECT_EQ(key.size(), 32u);
    const std::u16string stored = LoadConfigEncryption(temp.path()).Encrypt(u"pw");
    EXPECT_EQ(LoadConfigEncryption(temp.path()).Decrypt(stored), u"pw");
    EXPECT_EQ(testing::ReadBytes(ConfigKeyPath(temp.path())), key);
}

TEST(MachineKey, OlderMachineFolderGetsOneOnFirstUse) {
    testing::TempFolder folder;
    ASSERT_FALSE(std::filesystem::exists(ConfigKeyPath(folder.path())));
    const std::u16string stored = LoadConfigEncryption(folder.path()).Encrypt(u"pw");
    EXPECT_EQ(std::filesystem::file_size(ConfigKeyPath(folder.path())), 32u);
    EXPECT_EQ(LoadConfigEncryption(folder.path()).Decrypt(stored), u"pw");
    // Nothing but the key is left in its folder.
    size_t files = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator(ConfigKeyPath(folder.path()).parent_path())) {
        ++files;
    }
    EXPECT_EQ(files, 1u);
}

TEST(MachineKey, AKeyOfTheWrongSizeIsReportedAndKept) {
    testing::TempFolder folder;
    std::filesystem::create_directories(ConfigKeyPath(folder.path()).parent_path());
    const std::vector<std::byte> shortKey(31, std::byte{7});
    testing::WriteBytes(ConfigKeyPath(folder.path()), shortKey);
    EXPECT_THROW(LoadConfigEncryption(folder.path()), MachineError);
    EXPECT_EQ(testing::ReadBytes(ConfigKeyPath(folder.path())), shortKey);
}

TEST(MachineKey, MachinesWithoutIis7HaveNone) {
    MachineConfig config;
    config.iisVersion = {6, 0};
    testing::TempMachine temp(config);
    EXPECT_FALSE(std::filesystem::exists(ConfigKeyPath(temp.path())));
}

}  // namespace
}  // namespace webrig::sim::iis7
