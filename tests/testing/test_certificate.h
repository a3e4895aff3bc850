#pragma once
// Self-signed certificates made with OpenSSL for tests: the same certificate as DER, PEM and a
// password-protected PKCS #12 file, with OpenSSL's own SHA-1 fingerprint to compare with.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace webrig::testing {

struct TestCertificate {
    std::vector<std::byte> der;
    std::string pem;
    std::string fingerprint;  // X509_digest with SHA-1, upper-case hexadecimal

    // PKCS #12 with the certificate and its RSA key, encrypted with `password`.
    std::vector<std::byte> Pfx(std::string_view password) const;
    std::string keyPem;  // the private key, PKCS #8 PEM
};

// A fresh self-signed RSA certificate for "CN=<commonName>".
TestCertificate MakeTestCertificate(std::string_view commonName);

}  // namespace webrig::testing
