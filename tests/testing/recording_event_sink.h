#pragma once
// An event sink for tests: keeps every line, error and progress text, answers as told, and can be
// told to throw or to leave a last-error value behind as a sink that writes a file would.

#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "host/iis_event.h"
#include "support/last_error.h"

namespace webrig::testing {

class RecordingEventSink final : public IIISEvent {
  public:
    void LogMessage(const qm::wstring& text) override {
        if (throwOnLog) {
            throw std::runtime_error("sink cannot log");
        }
        logLines.push_back(text);
        if (lastErrorAfterLog) {
            qm::set_last_error(*lastErrorAfterLog);
        }
    }
    void ReportError(const qm::wstring& text, int32_t code) override {
        if (throwOnError) {
            throw std::runtime_error("sink cannot report");
        }
        errors.emplace_back(text, code);
    }
    void SetProgressRange(int32_t, int32_t) override {}
    int32_t CheckCancel() override { return cancelAnswer; }
    void ProgressStep(int32_t) override {}
    int32_t ShowProgress(const qm::wstring& text) override {
        if (throwOnProgress) {
            throw std::runtime_error("sink cannot show progress");
        }
        progressTexts.push_back(text);
        return progressAnswer;
    }

    std::vector<qm::wstring> logLines;
    std::vector<std::pair<qm::wstring, int32_t>> errors;
    std::vector<qm::wstring> progressTexts;
    int32_t cancelAnswer = 0;
    int32_t progressAnswer = 0;
    bool throwOnLog = false;
    bool throwOnError = false;
    bool throwOnProgress = false;
    std::optional<uint32_t> lastErrorAfterLog;
};

}  // namespace webrig::testing
