#pragma once
// A host engine for tests: it loads a "QMRT.DLL" into the simulated process with the functions
// webrig looks up, answers from tables the test fills, and keeps a log of every call.

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/host_functions.h"
#include "platform/host_objects.h"
#include "platform/sim/machine/machine.h"

namespace webrig::testing {

// Which of its functions the test host's module exports.
struct HostExports {
    bool loadString = true;
    bool textSubstitute = true;
    bool componentFileInfo = true;
};

class TestHost {
  public:
    struct FileInfoCall {
        uint32_t context;
        qm::wstring media;
        qm::wstring feature;
        qm::wstring component;
        uint32_t selector;
        uint32_t reserved;
    };

    // Loads the host module from `folder` (a Windows path) with the chosen exports; webrig's own
    // module is moved into the same folder unless `ownModuleFolder` says otherwise.
    explicit TestHost(sim::Machine& machine, HostExports exports = {},
                      qm::wstring folder = u"C:\\Temp\\Setup", qm::wstring ownModuleFolder = {});
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    // The host context to give webrig: identifies this host to its functions.
    uint32_t context() const { return m_context; }
    platform::ModuleHandle module() const { return m_module; }

    // The string table: identifier to text. An identifier not in it fails to load.
    std::map<qm::wstring, qm::wstring> strings;
    // Text substitution: every occurrence of a key is replaced by its value.
    std::map<qm::wstring, qm::wstring> substitutions;
    // Substitution hands back a null BSTR for these texts.
    std::set<qm::wstring> substituteToNull;
    // "_ComponentFileInfo": the flags reported per component and the function's result.
    std::map<qm::wstring, uint32_t> componentFlags;
    int32_t fileInfoResult = 0;

    // What webrig asked, kept while `recordCalls` is true.
    bool recordCalls = true;
    std::vector<qm::wstring> loadStringKeys;
    std::vector<uint32_t> loadStringCapacities;
    std::vector<FileInfoCall> fileInfoCalls;

  private:
    static int32_t WEBRIG_HOST_CALL LoadString(uint32_t, const char16_t*, char16_t*, uint32_t);
    static int32_t WEBRIG_HOST_CALL Substitute(uint32_t, platform::Bstr*);
    static int32_t WEBRIG_HOST_CALL FileInfo(uint32_t, const char16_t*, const char16_t*,
                                             const char16_t*, uint32_t, uint32_t*, uint32_t);
    static TestHost* Find(uint32_t context);

    sim::Machine& m_machine;
    uint32_t m_context;
    platform::ModuleHandle m_module;
};

// The host's operation source with a recorder that keeps every record it is given.
class RecordingOperationSource final : public platform::IHostOperationSource {
  public:
    class Recorder final : public platform::IOperationRecorder {
      public:
        qm::hresult RecordOperation(std::span<const qm::wstring> record) override;
        std::vector<std::vector<qm::wstring>> records;
        qm::hresult failWith = qm::hr::ok;
    };

    qm::hresult GetOperationRecorder(
        qm::wstring_view operationType,
        std::shared_ptr<platform::IOperationRecorder>& recorder) override;

    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
    std::vector<qm::wstring> requestedTypes;
    qm::hresult failWith = qm::hr::ok;
};

}  // namespace webrig::testing
