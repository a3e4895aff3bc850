#pragma once
// Attribute encryption as applicationHost.config stores secrets: "[enc:AesProvider:...:enc]".
// The key belongs to the simulated machine, so files move between machines only as IIS's own do.
//
// The cipher is AES-256-GCM: the base64 text holds a 12-byte nonce, the cipher text of the clear
// text's UTF-16LE bytes (so that any UTF-16 text comes back unchanged) and the 16-byte tag, which
// refuses damaged text and a wrong key alike.

#include <filesystem>
#include <optional>
#include <string>

#include "support/wide_string.h"

namespace webrig::sim::iis7 {

class ConfigEncryption {
  public:
    // `machineKey`: the machine's secret, 32 bytes.
    explicit ConfigEncryption(std::string machineKey);

    // A fresh random 32-byte key for a new machine.
    static std::string NewMachineKey();

    // "[enc:AesProvider:<base64>:enc]"; a new random IV each time.
    qm::wstring Encrypt(qm::wstring_view clearText) const;
    // True for text in the "[enc:...:enc]" form.
    static bool IsEncrypted(qm::wstring_view storedText);
    // The clear text, or nullopt when the text is not ours or was damaged.
    std::optional<qm::wstring> Decrypt(qm::wstring_view storedText) const;

  private:
    std::string m_key;
};

// The encryption of the machine in `machineFolder` (ConfigKeyPath). A machine made before
// machines had a key gets one now; when two processes race to make it, both end with the one
// that reached the disk first. Throws MachineError when the key cannot be read or written or
// is not 32 bytes.
ConfigEncryption LoadConfigEncryption(const std::filesystem::path& machineFolder);

}  // namespace webrig::sim::iis7
