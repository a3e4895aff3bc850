// The readers of certificate files and of the registry's serialized certificates must never
// crash, and what they read must write back to the same bytes.

#include <cstdlib>
#include <span>

#include "platform/sim/certificates/certificate_file.h"
#include "platform/sim/certificates/key_provider_info.h"
#include "platform/sim/certificates/pfx_import.h"
#include "platform/sim/certificates/serialized_certificate.h"

namespace {

using namespace webrig::sim;

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::span<const std::byte> bytes(reinterpret_cast<const std::byte*>(data), size);
    if (const std::optional<CertificateObject> object = DecodeCertificateObject(bytes)) {
        Check(object->contentType != 0);
    }
    if (const std::optional<SerializedCertificate> element = ParseSerializedCertificate(bytes)) {
        // Properties are written in id order, so a blob that repeats or reorders them reads the
        // same but writes differently; reading the writing must give the same element.
        Check(ParseSerializedCertificate(WriteSerializedCertificate(*element)) == element);
    }
    ParseSerializedStore(bytes);
    if (const std::optional<KeyProviderInfo> info = ParseKeyProviderInfo(bytes)) {
        Check(ParseKeyProviderInfo(WriteKeyProviderInfo(*info)) == info);
    }
    PfxContents contents;
    ReadPfx(bytes, u"fuzz", contents);
    return 0;
}
