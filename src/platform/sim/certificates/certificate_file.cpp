#include "platform/sim/certificates/certificate_file.h"

#include <string_view>

#include "platform/certificates.h"
#include "platform/sim/certificates/certificate_der.h"

namespace webrig::sim {
namespace {

namespace cert_content = platform::cert_content;

std::optional<CertificateObject> DecodeBinary(std::span<const std::byte> bytes, uint32_t format) {
    CertificateObject object;
    object.formatType = format;
    if (IsCertificateDer(bytes)) {
        object.contentType = cert_content::certificate;
        object.certificate.der.assign(bytes.begin(), bytes.end());
        return object;
    }
    if (ParseSerializedStore(bytes)) {
        object.contentType = cert_content::serialized_store;
        return object;
    }
    if (IsPfxDer(bytes)) {
        object.contentType = cert_content::pfx;
        return object;
    }
    std::optional<SerializedCertificate> serialized = ParseSerializedCertificate(bytes);
    if (serialized && IsCertificateDer(serialized->der)) {
        object.contentType = cert_content::serialized_certificate;
        object.certificate = std::move(*serialized);
        return object;
    }
    return std::nullopt;
}

int Base64Value(char c) {
    if (c >= 'A' && c <= 'Z') {
        return c - 'A';
    }
    if (c >= 'a' && c <= 'z') {
        return c - 'a' + 26;
    }
    if (c >= '0' && c <= '9') {
        return c - '0' + 52;
    }
    return c == '+' ? 62 : c == '/' ? 63 : -1;
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The text between a "-----BEGIN ...-----" line and the next "-----END", or all of it.
std::string_view Body(std::string_view text) {
    const size_t begin = text.find("-----BEGIN ");
    if (begin == std::string_view::npos) {
        return text;
    }
    const size_t headerEnd = text.find("-----", begin + 11);
    if (headerEnd == std::string_view::npos) {
        return {};
    }
    const size_t start = headerEnd + 5;
    const size_t end = text.find("-----END", start);
    return end == std::string_view::npos ? std::string_view() : text.substr(start, end - start);
}

}  // namespace

std::optional<std::vector<std::byte>> DecodeBase64Text(std::span<const std::byte> bytes) {
    const std::string_view body =
        Body(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    std::vector<std::byte> out;
    uint32_t bits = 0;
    int count = 0;
    int padding = 0;
    size_t symbols = 0;
    for (const char c : body) {
        if (IsBlank(c)) {
            continue;
        }
        ++symbols;
        if (c == '=') {
            ++padding;
            continue;
        }
        const int value = Base64Value(c);
        if (value < 0 || padding > 0) {
            return std::nullopt;
        }
        bits = (bits << 6) | static_cast<uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            out.push_back(static_cast<std::byte>((bits >> count) & 0xFFu));
        }
    }
    if (symbols == 0 || symbols % 4 != 0 || padding > 2) {
        return std::nullopt;
    }
    return out;
}

std::optional<CertificateObject> DecodeCertificateObject(std::span<const std::byte> bytes) {
    if (std::optional<CertificateObject> binary =
            DecodeBinary(bytes, platform::cert_format::binary)) {
        return binary;
    }
    const std::optional<std::vector<std::byte>> decoded = DecodeBase64Text(bytes);
    if (!decoded) {
        return std::nullopt;
    }
    return DecodeBinary(*decoded, platform::cert_format::base64);
}

}  // namespace webrig::sim
