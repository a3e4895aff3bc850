#include "platform/sim/registry/wow64_shared_keys.h"

#include "support/case_insensitive.h"

namespace webrig::sim {
namespace {

struct Rule {
    const char16_t* path;  // below SOFTWARE
    bool shared;
};

// Microsoft's "Registry Keys Affected by WOW64", the column for Windows 7 and later.
constexpr Rule kRules[] = {
    {u"Classes", true},
    {u"Classes\\CLSID", false},
    {u"Classes\\DirectShow", false},
    {u"Classes\\Interface", false},
    {u"Classes\\Media Type", false},
    {u"Classes\\MediaFoundation", false},
    {u"Clients", true},
    {u"Microsoft\\COM3", true},
    {u"Microsoft\\Cryptography\\Calais\\Current", true},
    {u"Microsoft\\Cryptography\\Calais\\Readers", true},
    {u"Microsoft\\Cryptography\\Services", true},
    {u"Microsoft\\CTF\\SystemShared", true},
    {u"Microsoft\\CTF\\TIP", true},
    {u"Microsoft\\DFS", true},
    {u"Microsoft\\Driver Signing", true},
    {u"Microsoft\\EnterpriseCertificates", true},
    {u"Microsoft\\EventSystem", true},
    {u"Microsoft\\MSMQ", true},
    {u"Microsoft\\Non-Driver Signing", true},
    {u"Microsoft\\Notepad\\DefaultFonts", true},
    {u"Microsoft\\OLE", true},
    {u"Microsoft\\RAS", true},
    {u"Microsoft\\RPC", true},
    {u"Microsoft\\SOFTWARE\\Microsoft\\Shared Tools\\MSInfo", true},
    {u"Microsoft\\SystemCertificates", true},
    {u"Microsoft\\TermServLicensing", true},
    {u"Microsoft\\TransactionServer", true},
    {u"Microsoft\\Windows\\CurrentVersion\\App Paths", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Control Panel\\Cursors\\Schemes", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Explorer\\AutoplayHandlers", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Explorer\\DriveIcons", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Explorer\\KindMap", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Group Policy", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Policies", true},
    {u"Microsoft\\Windows\\CurrentVersion\\PreviewHandlers", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Setup", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Telephony\\Locations", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Console", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\FontDpi", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\FontLink", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\FontMapper", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Fonts", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\FontSubstitutes", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Gre_Initialize", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Image File Execution Options", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Language Pack", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\NetworkCards", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Perflib", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Ports", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Print", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\ProfileList", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Time Zones", true},
    {u"Policies", true},
    {u"RegisteredApplications", true},
};

// How many names of `rule` lead `path` below SOFTWARE; 0 when the rule is not an ancestor.
size_t Match(const Rule& rule, const std::vector<qm::wstring>& path) {
    qm::wstring_view rest = rule.path;
    size_t depth = 1;
    while (true) {
        const size_t separator = rest.find(u'\\');
        const qm::wstring_view name = rest.substr(0, separator);
        if (depth >= path.size() || !qm::iequals(path[depth], name)) {
            return 0;
        }
        if (separator == qm::wstring_view::npos) {
            return depth;
        }
        rest.remove_prefix(separator + 1);
        ++depth;
    }
}

}  // namespace

bool IsSharedUnderWow64(const std::vector<qm::wstring>& path) {
    size_t deepest = 0;
    bool shared = false;
    for (const Rule& rule : kRules) {
        const size_t depth = Match(rule, path);
        if (depth > deepest) {
            deepest = depth;
            shared = rule.shared;
        }
    }
    return shared;
}

}  // namespace webrig::sim
