#pragma once
// Private keys of the local machine, in the machine key folder of the simulated drive. Windows
// keeps each key container there in its own binary format; the simulation keeps each as
// "<container name>.pem", the key in unencrypted PKCS #8 PEM, readable by its owner only.

#include <string_view>

#include "platform/sim/certificates/serialized_certificate.h"
#include "platform/sim/files/sim_file_system.h"

namespace webrig::sim {

inline constexpr char16_t kMachineKeysFolder[] =
    u"C:\\ProgramData\\Microsoft\\Crypto\\RSA\\MachineKeys";

// Writes (or replaces) the container's key file with mode 0600; false when it cannot.
bool WriteMachineKey(const SimFileSystem& files, qm::wstring_view containerName,
                     std::string_view pem);

// Whether the certificate's key provider information names a machine key that exists.
bool HasMachineKey(const SimFileSystem& files, const SerializedCertificate& certificate);

}  // namespace webrig::sim
