#pragma once
// Attribute encryption as applicationHost.config stores secrets: "[enc:AesProvider:...:enc]".
// The key belongs to the simulated machine, so files move between machines only as IIS's own do.

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

}  // namespace webrig::sim::iis7
