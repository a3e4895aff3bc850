#include "platform/sim/certificates/serialized_certificate.h"

#include <gtest/gtest.h>

#include "platform/sim/certificates/key_provider_info.h"
#include "platform/sim/certificates/little_endian.h"
#include "testing/file_bytes.h"

namespace webrig::sim {
namespace {

using testing::Bytes;

std::vector<std::byte> Entry(uint32_t id, uint32_t encoding, std::string_view value,
                             uint32_t length) {
    std::vector<std::byte> out;
    AppendUint32(out, id);
    AppendUint32(out, encoding);
    AppendUint32(out, length);
    const std::vector<std::byte> bytes = Bytes(value);
    out.insert(out.end(), bytes.begin(), bytes.end());
    return out;
}

std::vector<std::byte> Join(std::initializer_list<std::vector<std::byte>> parts) {
    std::vector<std::byte> out;
    for (const auto& part : parts) {
        out.insert(out.end(), part.begin(), part.end());
    }
    return out;
}

TEST(SerializedCertificate, IsWrittenAsPropertyEntriesBeforeTheCertificate) {
    SerializedCertificate certificate;
    certificate.der = Bytes("DER");
    certificate.properties[11] = Bytes("nm");
    certificate.properties[3] = Bytes("hash");
    const std::vector<std::byte> expected =
        Join({Entry(3, 1, "hash", 4), Entry(11, 1, "nm", 2), Entry(32, 1, "DER", 3)});
    EXPECT_EQ(WriteSerializedCertificate(certificate), expected);
    EXPECT_EQ(ParseSerializedCertificate(expected), certificate);
}

TEST(SerializedCertificate, MalformedElementsAreRefused) {
    const std::vector<std::byte> cases[] = {
        {},
        Entry(32, 1, "DER", 4),                              // length past the end
        Join({Entry(32, 1, "DER", 3), Bytes("x")}),          // bytes after the certificate
        Join({Entry(0, 1, "", 0), Entry(32, 1, "DER", 3)}),  // an end entry first
        Join({Entry(0x10000, 1, "", 0), Entry(32, 1, "DER", 3)}),
        Entry(3, 1, "hash", 4),  // no certificate
        Bytes("short"),
    };
    for (const std::vector<std::byte>& bytes : cases) {
        EXPECT_FALSE(ParseSerializedCertificate(bytes));
    }
}

TEST(SerializedCertificate, AStoreNeedsItsHeaderAndEndEntry) {
    const std::vector<std::byte> element = Entry(32, 1, "DER", 3);
    const std::vector<std::byte> header = Bytes(std::string("\0\0\0\0CERT", 8));
    const std::vector<std::byte> end(12);
    EXPECT_EQ(ParseSerializedStore(Join({header, element, element, end}))->size(), 2u);
    EXPECT_EQ(ParseSerializedStore(Join({header, end}))->size(), 0u);
    EXPECT_FALSE(ParseSerializedStore(Join({header, element})));
    EXPECT_FALSE(ParseSerializedStore(Join({header, element, end, Bytes("x")})));
    EXPECT_FALSE(ParseSerializedStore(Join({Bytes(std::string("\0\0\0\0CERX", 8)), end})));
}

TEST(SerializedCertificate, KeyProviderInfoKeepsOffsetsInPlaceOfPointers) {
    const KeyProviderInfo info{u"AB", u"P", 24, 0x20, 1};
    const std::vector<std::byte> bytes = WriteKeyProviderInfo(info);
    ASSERT_EQ(bytes.size(), 28u + 6 + 4);
    EXPECT_EQ(ReadUint32(bytes, 0), 28u);
    EXPECT_EQ(ReadUint32(bytes, 4), 34u);
    EXPECT_EQ(ParseKeyProviderInfo(bytes), info);
    EXPECT_FALSE(ParseKeyProviderInfo(std::span(bytes).first(36)));
}

}  // namespace
}  // namespace webrig::sim
