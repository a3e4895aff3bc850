#include "run_output.h"

#include <algorithm>
#include <atomic>
#include <regex>

#include "command_error.h"
#include "support/status_codes.h"

namespace webrig::cli {
namespace {

std::atomic<bool> g_interrupted{false};

extern "C" void OnInterrupt(int) {
    g_interrupted = true;
}

class ForwardingSink final : public IIISEvent {
  public:
    explicit ForwardingSink(RunOutput& output) : m_output(output) {}
    void LogMessage(const qm::wstring& text) override { m_output.Log(text); }
    void ReportError(const qm::wstring& text, int32_t code) override { m_output.Error(text, code); }
    void SetProgressRange(int32_t count, int32_t) override { m_output.Range(count); }
    int32_t CheckCancel() override { return m_output.Cancel(); }
    void ProgressStep(int32_t) override {}
    int32_t ShowProgress(const qm::wstring& text) override {
        m_output.Progress(text);
        return m_output.Cancel();
    }

  private:
    RunOutput& m_output;
};

constexpr size_t kBarWidth = 24;

}  // namespace

std::string DescribeStatus(int32_t code) {
    const qm::status_info* const info = qm::find_status(code);
    if (info != nullptr) {
        return std::to_string(code) + " (" + std::string(info->meaning) + ")";
    }
    char text[64];
    if (code < 0) {
        std::snprintf(text, sizeof text, "%d (HRESULT 0x%08X)", code, static_cast<uint32_t>(code));
    } else {
        std::snprintf(text, sizeof text, "%d (Windows error %d)", code, code);
    }
    return text;
}

std::string ExplainStatuses(const std::string& line) {
    // Only negative numbers: positive ones in log lines are mostly ports, counts and ids.
    static const std::regex kNumber("-[0-9]{3,10}");
    std::string notes;
    for (auto it = std::sregex_iterator(line.begin(), line.end(), kNumber);
         it != std::sregex_iterator(); ++it) {
        const long long value = std::stoll(it->str());
        if (value < INT32_MIN) {
            continue;
        }
        if (const qm::status_info* info = qm::find_status(static_cast<int32_t>(value))) {
            notes += " [" + it->str() + ": " + std::string(info->meaning) + "]";
        } else if (value < -0x40000000LL) {
            // An HRESULT: its hexadecimal form is what documentation lists.
            char hex[16];
            std::snprintf(hex, sizeof hex, "0x%08X", static_cast<uint32_t>(value));
            notes += " [" + it->str() + ": HRESULT " + hex + "]";
        }
    }
    return line + notes;
}

RunOutput::RunOutput(std::ostream& out, OutputOptions options)
    : m_out(out), m_options(std::move(options)) {
    if (!m_options.logPath.empty()) {
        m_log.open(m_options.logPath, std::ios::binary | std::ios::trunc);
        if (!m_log) {
            throw InputError("cannot write the log file " + m_options.logPath);
        }
    }
    g_interrupted = false;
    m_previousInterrupt = std::signal(SIGINT, OnInterrupt);
}

RunOutput::~RunOutput() {
    Finish();
    std::signal(SIGINT, m_previousInterrupt);
}

std::unique_ptr<IIISEvent> RunOutput::MakeSink() {
    return std::make_unique<ForwardingSink>(*this);
}

std::string RunOutput::Masked(const qm::wstring& text) const {
    qm::wstring masked = text;
    for (const qm::wstring& secret : m_options.secrets) {
        if (secret.empty()) {
            continue;
        }
        for (size_t at = masked.find(secret); at != qm::wstring::npos;
             at = masked.find(secret, at + 8)) {
            masked.replace(at, secret.size(), u"********");
        }
    }
    return qm::to_utf8(masked);
}

void RunOutput::WriteLog(const std::string& kind, const std::string& line) {
    if (m_log.is_open()) {
        m_log << kind << ": " << line << "\n";
        m_log.flush();
    }
}

void RunOutput::ClearBar() {
    if (m_barShown) {
        m_out << "\r\033[K" << std::flush;
        m_barShown = false;
    }
}

void RunOutput::DrawBar() {
    std::string bar;
    if (m_total > 0) {
        const size_t filled = std::min<size_t>(
            kBarWidth, kBarWidth * static_cast<size_t>(m_done) / static_cast<size_t>(m_total));
        bar = "[" + std::string(filled, '#') + std::string(kBarWidth - filled, ' ') + "] ";
    }
    std::string text = m_lastProgress;
    if (text.size() > 60) {
        text = text.substr(0, 57) + "...";
    }
    m_out << "\r\033[K" << bar << text << std::flush;
    m_barShown = true;
}

void RunOutput::Say(const std::string& line) {
    ClearBar();
    m_out << line << "\n";
    WriteLog("webrig", line);
    if (m_options.progressBar && !m_lastProgress.empty() && m_done < m_total) {
        DrawBar();
    }
}

void RunOutput::Finish() {
    ClearBar();
    m_out << std::flush;
}

void RunOutput::Log(const qm::wstring& text) {
    const std::string line = ExplainStatuses(Masked(text));
    WriteLog("log", line);
    if (m_options.verbose) {
        ClearBar();
        m_out << "  " << line << "\n";
        if (m_options.progressBar) {
            DrawBar();
        }
    }
}

void RunOutput::Error(const qm::wstring& text, int32_t code) {
    ++m_errors;
    const std::string line = Masked(text) + ": " + DescribeStatus(code);
    WriteLog("error", line);
    ClearBar();
    m_out << "error: " << line << "\n";
}

void RunOutput::Range(int32_t count) {
    m_total = std::max<int32_t>(count, 0);
    m_done = 0;
    WriteLog("progress", "range " + std::to_string(count));
}

void RunOutput::Progress(const qm::wstring& text) {
    const std::string line = Masked(text);
    ++m_done;
    WriteLog("progress", line);
    if (line.empty()) {
        return;
    }
    if (m_options.progressBar) {
        m_lastProgress = line;
        DrawBar();
    } else if (line != m_lastProgress) {
        m_lastProgress = line;
        m_out << "progress: " << line << "\n";
    }
}

int32_t RunOutput::Cancel() const {
    return g_interrupted ? IIISEvent::kCancelled : 0;
}

}  // namespace webrig::cli
