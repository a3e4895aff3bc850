#include "platform/sim/iis7/config_encryption.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <vector>

#include "platform/sim/machine/atomic_file.h"
#include "platform/sim/machine/machine_error.h"
#include "platform/sim/machine/machine_layout.h"

namespace webrig::sim::iis7 {
namespace {

constexpr size_t kKeyBytes = 32;
constexpr size_t kNonceBytes = 12;
constexpr size_t kTagBytes = 16;
constexpr std::u16string_view kPrefix = u"[enc:AesProvider:";
constexpr std::u16string_view kSuffix = u":enc]";

using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

CipherContext NewContext() {
    return CipherContext(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
}

unsigned char* Bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}
const unsigned char* Bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string Utf16Le(qm::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

qm::wstring FromUtf16Le(const std::string& bytes) {
    qm::wstring text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                      static_cast<unsigned char>(bytes[i + 1]) << 8);
    }
    return text;
}

qm::wstring EncodeBase64(const std::string& bytes) {
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    const int length = EVP_EncodeBlock(Bytes(text), Bytes(bytes), static_cast<int>(bytes.size()));
    text.resize(static_cast<size_t>(length));
    return qm::widen_ascii(text);
}

int Base64Digit(char16_t c) {
    if (c >= u'A' && c <= u'Z') {
        return c - u'A';
    }
    if (c >= u'a' && c <= u'z') {
        return c - u'a' + 26;
    }
    if (c >= u'0' && c <= u'9') {
        return c - u'0' + 52;
    }
    return c == u'+' ? 62 : c == u'/' ? 63 : -1;
}

// Standard base64 with padding; nullopt for any other text.
std::optional<std::string> DecodeBase64(qm::wstring_view text) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == u'=') {
        ++padding;
    }
    std::string bytes;
    uint32_t bits = 0;
    int count = 0;
    for (size_t i = 0; i < text.size() - padding; ++i) {
        const int digit = Base64Digit(text[i]);
        if (digit < 0) {
            return std::nullopt;
        }
        bits = (bits << 6) | static_cast<uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>((bits >> count) & 0xFF);
        }
    }
    // The bits after the last byte must be zero, so that each byte string has one spelling.
    if ((bits & ((1u << count) - 1)) != 0) {
        return std::nullopt;
    }
    return bytes;
}

std::string ReadKeyFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string key((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (!stream.good() && !stream.eof()) {
        throw MachineError(path, 0, "the configuration key cannot be read");
    }
    if (key.size() != kKeyBytes) {
        throw MachineError(path, 0, "the configuration key is not 32 bytes long");
    }
    return key;
}

// Sixteen random hexadecimal digits: a draft name no other process picks.
std::string RandomName() {
    unsigned char random[8] = {};
    if (RAND_bytes(random, sizeof random) != 1) {
        throw std::runtime_error("no random bytes for a file name");
    }
    std::string name;
    for (const unsigned char byte : random) {
        name += "0123456789abcdef"[byte >> 4];
        name += "0123456789abcdef"[byte & 0xF];
    }
    return name;
}

// Writes a new key where none is yet: the complete file is linked into place, which fails
// when another process put its key there first.
void CreateKeyFile(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    const std::string key = ConfigEncryption::NewMachineKey();
    const std::filesystem::path draft =
        path.parent_path() / ("." + path.filename().string() + ".new-" + RandomName());
    if (error || !WriteFileAtomically(draft, std::as_bytes(std::span(key.data(), key.size())))) {
        throw MachineError(path, 0, "the configuration key cannot be written");
    }
    std::filesystem::create_hard_link(draft, path, error);
    std::filesystem::remove(draft);
}

}  // namespace

ConfigEncryption::ConfigEncryption(std::string machineKey) : m_key(std::move(machineKey)) {
    if (m_key.size() != kKeyBytes) {
        throw std::invalid_argument("a configuration key has 32 bytes");
    }
}

std::string ConfigEncryption::NewMachineKey() {
    std::string key(kKeyBytes, '\0');
    if (RAND_bytes(Bytes(key), static_cast<int>(key.size())) != 1) {
        throw std::runtime_error("no random bytes for a configuration key");
    }
    return key;
}

qm::wstring ConfigEncryption::Encrypt(qm::wstring_view clearText) const {
    const std::string plain = Utf16Le(clearText);
    std::string sealed(kNonceBytes + plain.size() + kTagBytes, '\0');
    unsigned char* nonce = Bytes(sealed);
    unsigned char* body = nonce + kNonceBytes;
    int length = 0;
    const CipherContext context = NewContext();
    if (!context || RAND_bytes(nonce, static_cast<int>(kNonceBytes)) != 1 ||
        EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, Bytes(m_key), nonce) != 1 ||
        EVP_EncryptUpdate(context.get(), body, &length, Bytes(plain),
                          static_cast<int>(plain.size())) != 1 ||
        EVP_EncryptFinal_ex(context.get(), body + length, &length) != 1 ||
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, static_cast<int>(kTagBytes),
                            body + plain.size()) != 1) {
        throw std::runtime_error("OpenSSL could not encrypt a configuration value");
    }
    return qm::wstring(kPrefix) + EncodeBase64(sealed) + qm::wstring(kSuffix);
}

bool ConfigEncryption::IsEncrypted(qm::wstring_view storedText) {
    return storedText.size() >= kPrefix.size() + kSuffix.size() &&
           storedText.starts_with(u"[enc:") && storedText.ends_with(kSuffix);
}

std::optional<qm::wstring> ConfigEncryption::Decrypt(qm::wstring_view storedText) const {
    if (!storedText.starts_with(kPrefix) || !storedText.ends_with(kSuffix) ||
        storedText.size() < kPrefix.size() + kSuffix.size()) {
        return std::nullopt;
    }
    std::optional<std::string> sealed = DecodeBase64(
        storedText.substr(kPrefix.size(), storedText.size() - kPrefix.size() - kSuffix.size()));
    if (!sealed || sealed->size() < kNonceBytes + kTagBytes ||
        (sealed->size() - kNonceBytes - kTagBytes) % 2 != 0) {
        return std::nullopt;
    }
    const size_t bodySize = sealed->size() - kNonceBytes - kTagBytes;
    unsigned char* nonce = Bytes(*sealed);
    unsigned char* body = nonce + kNonceBytes;
    std::string plain(bodySize, '\0');
    int length = 0;
    const CipherContext context = NewContext();
    if (!context ||
        EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, Bytes(m_key), nonce) != 1 ||
        EVP_DecryptUpdate(context.get(), Bytes(plain), &length, body, static_cast<int>(bodySize)) !=
            1 ||
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, static_cast<int>(kTagBytes),
                            body + bodySize) != 1 ||
        EVP_DecryptFinal_ex(context.get(), Bytes(plain) + length, &length) != 1) {
        return std::nullopt;
    }
    return FromUtf16Le(plain);
}

ConfigEncryption LoadConfigEncryption(const std::filesystem::path& machineFolder) {
    const std::filesystem::path path = ConfigKeyPath(machineFolder);
    std::error_code error;
    if (!std::filesystem::exists(path, error) && !error) {
        CreateKeyFile(path);
    }
    return ConfigEncryption(ReadKeyFile(path));
}

}  // namespace webrig::sim::iis7
