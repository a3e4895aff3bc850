#pragma once
// The host engine the command plays: it "loads" QMRT.DLL into the simulated process with the
// three functions webrig looks up (string table, text substitution, component file information)
// and hands QMIISComponentInstall an operation source whose recorder writes every item-created
// record to the journal.

#include <cstdint>
#include <map>

#include "host/host_functions.h"
#include "platform/host_objects.h"
#include "platform/sim/machine/machine.h"

namespace webrig::cli {

class Journal;

// What the host answers with: the string table (--strings) and the properties that text
// substitution puts in for [NAME] references (--property).
struct HostTables {
    std::map<qm::wstring, qm::wstring> strings;
    std::map<qm::wstring, qm::wstring> properties;
};

// Text substitution as the installer engine's formatted text: "[NAME]" becomes the property's
// value (empty for a property that is not set), "[\x]" becomes x; other brackets stay.
qm::wstring SubstituteProperties(qm::wstring_view text,
                                 const std::map<qm::wstring, qm::wstring>& properties);

// Reads a string table: one KEY=text a line, UTF-8; blank lines and lines starting with '#' or
// ';' are skipped. Throws InputError for a line without '='.
std::map<qm::wstring, qm::wstring> ReadStringTable(const std::string& path);

class CommandHost {
  public:
    // `folder` is the Windows folder the engine's module (and webrig's) is loaded from.
    // `journal` receives the records; nullptr for a host that records nothing (removal).
    CommandHost(sim::Machine& machine, HostTables tables, const qm::wstring& folder,
                Journal* journal);
    ~CommandHost();
    CommandHost(const CommandHost&) = delete;
    CommandHost& operator=(const CommandHost&) = delete;

    uint32_t context() const { return m_context; }
    // The `operations` argument of QMIISComponentInstall.
    void* operations() { return &m_source; }

  private:
    class Recorder final : public platform::IOperationRecorder {
      public:
        explicit Recorder(Journal* journal) : m_journal(journal) {}
        qm::hresult RecordOperation(std::span<const qm::wstring> record) override;

      private:
        Journal* m_journal;
    };
    class Source final : public platform::IHostOperationSource {
      public:
        explicit Source(Journal* journal) : m_recorder(std::make_shared<Recorder>(journal)) {}
        qm::hresult GetOperationRecorder(
            qm::wstring_view operationType,
            std::shared_ptr<platform::IOperationRecorder>& recorder) override;

      private:
        std::shared_ptr<Recorder> m_recorder;
    };

    static int32_t WEBRIG_HOST_CALL LoadString(uint32_t, const char16_t*, char16_t*, uint32_t);
    static int32_t WEBRIG_HOST_CALL Substitute(uint32_t, platform::Bstr*);
    static int32_t WEBRIG_HOST_CALL FileInfo(uint32_t, const char16_t*, const char16_t*,
                                             const char16_t*, uint32_t, uint32_t*, uint32_t);
    static CommandHost* Find(uint32_t context);

    sim::Machine& m_machine;
    HostTables m_tables;
    uint32_t m_context;
    platform::ModuleHandle m_module;
    Source m_source;
};

}  // namespace webrig::cli
