#include "testing/test_host.h"

#include <algorithm>

namespace webrig::testing {
namespace {

std::map<uint32_t, TestHost*>& Hosts() {
    static std::map<uint32_t, TestHost*> hosts;
    return hosts;
}

uint32_t NextContext() {
    static uint32_t next = 0x5100;
    return ++next;
}

}  // namespace

TestHost::TestHost(sim::Machine& machine, HostExports exports, qm::wstring folder,
                   qm::wstring ownModuleFolder)
    : m_machine(machine), m_context(NextContext()) {
    std::map<std::string, platform::ProcAddress> functions;
    if (exports.loadString) {
        functions[host::kLoadStringExport] = reinterpret_cast<platform::ProcAddress>(&LoadString);
    }
    if (exports.textSubstitute) {
        functions[host::kTextSubstituteExport] =
            reinterpret_cast<platform::ProcAddress>(&Substitute);
    }
    if (exports.componentFileInfo) {
        functions[host::kComponentFileInfoExport] =
            reinterpret_cast<platform::ProcAddress>(&FileInfo);
    }
    m_module = machine.simModules().LoadModule(folder + u"\\" + host::kHostModuleName, functions);
    const qm::wstring& ownFolder = ownModuleFolder.empty() ? folder : ownModuleFolder;
    machine.simModules().SetOwnModulePath(ownFolder + u"\\" + host::kOwnModuleName);
    Hosts()[m_context] = this;
}

TestHost::~TestHost() {
    Hosts().erase(m_context);
    m_machine.simModules().UnloadModule(m_module);
}

TestHost* TestHost::Find(uint32_t context) {
    const auto found = Hosts().find(context);
    return found == Hosts().end() ? nullptr : found->second;
}

int32_t WEBRIG_HOST_CALL TestHost::LoadString(uint32_t context, const char16_t* key,
                                              char16_t* buffer, uint32_t capacity) {
    TestHost* const host = Find(context);
    if (host == nullptr) {
        return -1;
    }
    if (host->recordCalls) {
        host->loadStringKeys.emplace_back(key);
        host->loadStringCapacities.push_back(capacity);
    }
    const auto found = host->strings.find(key);
    if (found == host->strings.end()) {
        return -1;
    }
    const qm::wstring& text = found->second;
    if (text.size() + 1 > capacity) {
        return static_cast<int32_t>(text.size());
    }
    std::copy(text.begin(), text.end(), buffer);
    buffer[text.size()] = u'\0';
    return 0;
}

int32_t WEBRIG_HOST_CALL TestHost::Substitute(uint32_t context, platform::Bstr* text) {
    TestHost* const host = Find(context);
    if (host == nullptr || text == nullptr) {
        return -1;
    }
    platform::Automation& automation = host->m_machine.automation();
    qm::wstring value(*text, automation.SysStringLen(*text));
    automation.SysFreeString(*text);
    if (host->substituteToNull.contains(value)) {
        *text = nullptr;
        return 0;
    }
    for (const auto& [from, to] : host->substitutions) {
        for (size_t at = value.find(from); at != qm::wstring::npos;
             at = value.find(from, at + to.size())) {
            value.replace(at, from.size(), to);
        }
    }
    *text = automation.SysAllocStringLen(value);
    return 0;
}

int32_t WEBRIG_HOST_CALL TestHost::FileInfo(uint32_t context, const char16_t* media,
                                            const char16_t* feature, const char16_t* component,
                                            uint32_t selector, uint32_t* result,
                                            uint32_t reserved) {
    TestHost* const host = Find(context);
    if (host == nullptr) {
        return -1;
    }
    if (host->recordCalls) {
        host->fileInfoCalls.push_back({context, media, feature, component, selector, reserved});
    }
    const auto found = host->componentFlags.find(component);
    *result = found == host->componentFlags.end() ? 0 : found->second;
    return host->fileInfoResult;
}

qm::hresult RecordingOperationSource::Recorder::RecordOperation(
    std::span<const qm::wstring> record) {
    if (qm::failed(failWith)) {
        return failWith;
    }
    records.emplace_back(record.begin(), record.end());
    return qm::hr::ok;
}

qm::hresult RecordingOperationSource::GetOperationRecorder(
    qm::wstring_view operationType, std::shared_ptr<platform::IOperationRecorder>& result) {
    requestedTypes.emplace_back(operationType);
    if (qm::failed(failWith)) {
        return failWith;
    }
    result = recorder;
    return qm::hr::ok;
}

}  // namespace webrig::testing
