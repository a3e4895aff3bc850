#pragma once
// What a run shows while webrig works: the command's event sink sends log lines, error reports
// and progress here. On a terminal the progress is one bar with the current progress text; in
// CI (no terminal) each new progress text is a plain line. --verbose prints the log lines,
// --log FILE writes everything. Known secrets are masked in every line that leaves.

#include <csignal>
#include <fstream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "host/iis_event.h"

namespace webrig::cli {

struct OutputOptions {
    bool verbose = false;
    // Draw a progress bar (the output is a terminal).
    bool progressBar = false;
    std::string logPath;
    // Texts that never leave: the values of password properties.
    std::vector<qm::wstring> secrets;
};

// A status for people: "-1322 (the ItemType of a virtual directory or website is empty or
// missing)", from the status table; HRESULTs in hexadecimal.
std::string DescribeStatus(int32_t code);

// A log line with each status code it mentions explained after it.
std::string ExplainStatuses(const std::string& line);

class RunOutput {
  public:
    RunOutput(std::ostream& out, OutputOptions options);
    ~RunOutput();
    RunOutput(const RunOutput&) = delete;
    RunOutput& operator=(const RunOutput&) = delete;

    // A sink for InitializeOn that forwards here; this object must outlive it.
    std::unique_ptr<IIISEvent> MakeSink();

    // One line of the command's own.
    void Say(const std::string& line);
    // Clears the progress bar at the end of a run.
    void Finish();

    const std::string& lastProgress() const { return m_lastProgress; }
    int errorCount() const { return m_errors; }

    void Log(const qm::wstring& text);
    void Error(const qm::wstring& text, int32_t code);
    void Range(int32_t count);
    void Progress(const qm::wstring& text);
    // 2 once the user has pressed Ctrl-C.
    int32_t Cancel() const;

  private:
    std::string Masked(const qm::wstring& text) const;
    void ClearBar();
    void DrawBar();
    void WriteLog(const std::string& kind, const std::string& line);

    std::ostream& m_out;
    OutputOptions m_options;
    std::ofstream m_log;
    std::string m_lastProgress;
    int32_t m_total = 0;
    int32_t m_done = 0;
    bool m_barShown = false;
    int m_errors = 0;
    void (*m_previousInterrupt)(int) = SIG_DFL;
};

}  // namespace webrig::cli
