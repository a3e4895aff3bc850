#pragma once
// The event sink: how log lines, error reports, progress and the cancel question leave webrig.

#include <cstdint>

#include "support/wide_string.h"

class IIISEvent {
  public:
    virtual void LogMessage(const qm::wstring& text) = 0;                 // one log line
    virtual void ReportError(const qm::wstring& text, int32_t code) = 0;  // an error and its status
    virtual void SetProgressRange(int32_t count, int32_t increment) = 0;  // progress steps to come
    virtual int32_t CheckCancel() = 0;                                    // 2: the user cancelled
    virtual void ProgressStep(int32_t step) = 0;                          // never called by webrig
    virtual int32_t ShowProgress(const qm::wstring& text) = 0;            // one progress text
    virtual ~IIISEvent() = default;

    static constexpr int32_t kCancelled = 2;
};

// The sink the exports install: it lets nothing out and never sees a cancel.
class CIISProEvent final : public IIISEvent {
  public:
    void LogMessage(const qm::wstring&) override {}
    void ReportError(const qm::wstring&, int32_t) override {}
    void SetProgressRange(int32_t, int32_t) override {}
    int32_t CheckCancel() override { return 0; }
    void ProgressStep(int32_t) override {}
    int32_t ShowProgress(const qm::wstring&) override { return 0; }
};
