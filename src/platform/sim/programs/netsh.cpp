#include "platform/sim/programs/netsh.h"

#include <arpa/inet.h>

#include <array>
#include <optional>

#include "platform/sim/certificates/certificate_der.h"
#include "platform/sim/certificates/machine_keys.h"
#include "platform/sim/certificates/system_store.h"
#include "platform/sim/text/hex_digit.h"
#include "support/case_insensitive.h"

namespace webrig::sim {
namespace {

namespace key_access = platform::key_access;
using platform::RegValue;

constexpr uint32_t kAlreadyExists = 183;
constexpr uint32_t kNoSuchLogonSession = 1312;

const char* kParameterIncorrect = "The parameter is incorrect.";
const char* kMissingParameters =
    "One or more essential parameters were not entered.\n"
    "Verify the required parameters, and reenter them.";

ProgramRun Failed(std::string output) {
    return {1, std::move(output)};
}

ProgramRun AddFailed(uint32_t error) {
    std::string text;
    switch (error) {
        case kAlreadyExists:
            text = "Cannot create a file when that file already exists.";
            break;
        case kNoSuchLogonSession:
            text = "A specified logon session does not exist. It may already have been terminated.";
            break;
        case qm::win32::access_denied:
            text = "Access is denied.";
            break;
        default:
            text = "The system cannot write to the specified device.";
            break;
    }
    return Failed("SSL Certificate add failed, Error: " + std::to_string(error) + "\n" + text);
}

std::optional<std::vector<std::byte>> ParseHex(qm::wstring_view text) {
    if (text.empty() || text.size() % 2 != 0) {
        return std::nullopt;
    }
    std::vector<std::byte> bytes;
    for (size_t i = 0; i < text.size(); i += 2) {
        const int high = HexDigit(text[i]);
        const int low = HexDigit(text[i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<std::byte>(high * 16 + low));
    }
    return bytes;
}

// A GUID with or without braces, as the 16 bytes of the GUID structure (the first three fields
// little-endian).
std::optional<std::vector<std::byte>> ParseGuid(qm::wstring_view text) {
    if (text.size() == 38 && text.front() == u'{' && text.back() == u'}') {
        text = text.substr(1, 36);
    }
    if (text.size() != 36 || text[8] != u'-' || text[13] != u'-' || text[18] != u'-' ||
        text[23] != u'-') {
        return std::nullopt;
    }
    qm::wstring digits;
    for (size_t i = 0; i < text.size(); ++i) {
        if (i != 8 && i != 13 && i != 18 && i != 23) {
            digits += text[i];
        }
    }
    std::optional<std::vector<std::byte>> bytes = ParseHex(digits);
    if (!bytes) {
        return std::nullopt;
    }
    std::vector<std::byte>& b = *bytes;
    std::swap(b[0], b[3]);
    std::swap(b[1], b[2]);
    std::swap(b[4], b[5]);
    std::swap(b[6], b[7]);
    return bytes;
}

// "a.b.c.d:port" or "[v6 address]:port" as HTTP.sys names the binding; nullopt when invalid.
std::optional<qm::wstring> ParseIpPort(qm::wstring_view text) {
    const size_t colon = text.rfind(u':');
    if (colon == qm::wstring_view::npos || colon + 1 == text.size() || text.size() - colon > 6) {
        return std::nullopt;
    }
    uint32_t port = 0;
    for (const char16_t c : text.substr(colon + 1)) {
        if (c < u'0' || c > u'9') {
            return std::nullopt;
        }
        port = port * 10 + static_cast<uint32_t>(c - u'0');
    }
    std::string address = qm::to_utf8(text.substr(0, colon));
    const bool v6 = address.size() > 2 && address.front() == '[' && address.back() == ']';
    if (v6) {
        address = address.substr(1, address.size() - 2);
    }
    std::array<unsigned char, 16> binary{};
    char canonical[INET6_ADDRSTRLEN] = {};
    const int family = v6 ? AF_INET6 : AF_INET;
    if (port == 0 || port > 65535 || ::inet_pton(family, address.c_str(), binary.data()) != 1 ||
        ::inet_ntop(family, binary.data(), canonical, sizeof canonical) == nullptr) {
        return std::nullopt;
    }
    const std::string name = v6 ? "[" + std::string(canonical) + "]" : std::string(canonical);
    return qm::from_utf8(name + ":" + std::to_string(port));
}

RegValue Binary(std::vector<std::byte> bytes) {
    RegValue value;
    value.type = platform::reg_type::binary;
    value.data = std::move(bytes);
    return value;
}

}  // namespace

ProgramRun Netsh::Run(const std::vector<qm::wstring>& arguments) {
    if (arguments.size() >= 3 && qm::iequals(arguments[0], u"http") &&
        qm::iequals(arguments[1], u"add") && qm::iequals(arguments[2], u"sslcert")) {
        return AddSslCert({arguments.begin() + 3, arguments.end()});
    }
    return {};
}

ProgramRun Netsh::AddSslCert(const std::vector<qm::wstring>& parameters) {
    std::optional<qm::wstring> ipPort;
    std::optional<std::vector<std::byte>> hash;
    std::optional<std::vector<std::byte>> appId;
    qm::wstring storeName = u"MY";
    for (const qm::wstring& parameter : parameters) {
        const size_t equals = parameter.find(u'=');
        if (equals == qm::wstring::npos) {
            return Failed(kParameterIncorrect);
        }
        const qm::wstring_view tag = qm::wstring_view(parameter).substr(0, equals);
        const qm::wstring_view value = qm::wstring_view(parameter).substr(equals + 1);
        if (qm::iequals(tag, u"ipport") && (ipPort = ParseIpPort(value))) {
            continue;
        }
        if (qm::iequals(tag, u"certhash") && (hash = ParseHex(value))) {
            continue;
        }
        if (qm::iequals(tag, u"appid") && (appId = ParseGuid(value))) {
            continue;
        }
        if (qm::iequals(tag, u"certstorename") && !value.empty()) {
            storeName = value;
            continue;
        }
        return Failed(kParameterIncorrect);
    }
    if (!ipPort || !hash || !appId) {
        return Failed(kMissingParameters);
    }
    const qm::wstring keyPath = qm::wstring(kSslBindingInfoKey) + u"\\" + *ipPort;
    platform::ScopedRegKey binding(m_registry);
    if (m_registry.OpenKey(platform::kLocalMachine, keyPath, key_access::read, binding.receive()) ==
        0) {
        return AddFailed(kAlreadyExists);
    }
    // HTTP.sys takes only a certificate of the store that has its private key.
    Thumbprint thumbprint{};
    std::optional<SerializedCertificate> certificate;
    if (hash->size() == thumbprint.size()) {
        std::copy(hash->begin(), hash->end(), thumbprint.begin());
        certificate = SystemStore(m_registry, storeName).Find(thumbprint);
    }
    if (!certificate || !HasMachineKey(m_files, *certificate)) {
        return AddFailed(kNoSuchLogonSession);
    }
    bool created = false;
    uint32_t error = m_registry.CreateKey(platform::kLocalMachine, keyPath, key_access::all_access,
                                          binding.receive(), &created);
    const std::pair<const char16_t*, RegValue> values[] = {
        {u"AppId", Binary(*appId)},
        {u"DefaultCertCheckMode", RegValue::Dword(0)},
        {u"DefaultFlags", RegValue::Dword(0)},
        {u"DefaultRevocationFreshnessTime", RegValue::Dword(0)},
        {u"DefaultRevocationUrlRetrievalTimeout", RegValue::Dword(0)},
        {u"SslCertHash", Binary(*hash)},
        {u"SslCertStoreName", RegValue::String(storeName)},
    };
    for (const auto& [name, value] : values) {
        if (error == 0) {
            error = m_registry.SetValue(binding.get(), name, value);
        }
    }
    if (error != 0) {
        binding.reset();
        if (created) {
            m_registry.DeleteKey(platform::kLocalMachine, keyPath);
        }
        return AddFailed(error);
    }
    return {0, "SSL Certificate successfully added"};
}

}  // namespace webrig::sim
