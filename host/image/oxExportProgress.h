#pragma once

#include <QString>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

class QProgressDialog;

/// Progress of an export: a dialog with Cancel in the GUI, a bar with ETA on a terminal, plain
/// lines on any other standard error; nothing when disabled.
class oxExportProgress {
public:
    oxExportProgress(bool enabled, size_t total, const QString& title);
    ~oxExportProgress();
    oxExportProgress(const oxExportProgress&) = delete;
    oxExportProgress& operator=(const oxExportProgress&) = delete;

    /// Inside the running image: done of its rounds are finished. Lines of plain text stay one
    /// per image; the bar and the dialog move, and the dialog's Cancel button is heard.
    void round(int done, int rounds);
    /// One more image is written, under name.
    void step(const std::string& name);
    /// The dialog's Cancel was pressed.
    bool canceled() const;

private:
    static constexpr int kRoundSteps = 100; // dialog steps per image

    void drawBar(double fraction, size_t done, const char* eta);

    size_t m_total;
    size_t m_done = 0;
    std::chrono::steady_clock::time_point m_start;
    bool m_terminal = false;
    bool m_text = false;
    std::unique_ptr<QProgressDialog> m_dialog;
};
