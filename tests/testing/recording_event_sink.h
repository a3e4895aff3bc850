#pragma once
// An event sink for tests: keeps every line, error and progress text, answers as told, and can be
// told to throw.

#include <stdexcept>
#include <utility>
#include <vector>

#include "host/iis_event.h"

namespace webrig::testing {

class RecordingEventSink final : public IIISEvent {
  public:
    void LogMessage(const qm::wstring& text) override {
        if (throwOnLog) {
            throw std::runtime_error("sink cannot log");
        }
        logLines.push_back(text);
    }
    void ReportError(const qm::wstring& text, int32_t code) override {
        if (throwOnError) {
            throw std::runtime_error("sink cannot report");
        }
        errors.emplace_back(text, code);
    }
    void SetProgressRange(int32_t count, int32_t increment) override {
        progressRanges.emplace_back(count, increment);
    }
    int32_t CheckCancel() override {
        ++cancelChecks;
        return cancelAnswer;
    }
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
    std::vector<std::pair<int32_t, int32_t>> progressRanges;
    std::vector<qm::wstring> progressTexts;
    int cancelChecks = 0;
    int32_t cancelAnswer = 0;
    int32_t progressAnswer = 0;
    bool throwOnLog = false;
    bool throwOnError = false;
    bool throwOnProgress = false;
};

}  // namespace webrig::testing
