#pragma once

#include <QString>

#include <cstddef>
#include <memory>

class QProgressDialog;

/// Progress of a long operation without cancel, over a known number of items: a progress
/// dialog in the GUI, a bar on a terminal in no-GUI operation, nothing otherwise.
class oxProgress {
public:
    /// The one progress display; never null.
    static oxProgress* the();

    /// Starts showing text for total items; flags are kept for the caller and change nothing.
    void initProgress(const QString& text, size_t total, int flags);
    /// One more item is done.
    void incrementProgress();
    /// Ends the display.
    void terminateProgress();

    bool isActive() const { return m_active; }
    /// The text, total and items done of the last progress started (kept after the end).
    const QString& getText() const { return m_text; }
    size_t getTotal() const { return m_total; }
    size_t getDone() const { return m_done; }

private:
    oxProgress() = default;
    void drawBar() const;

    QString m_text;
    size_t m_total = 0;
    size_t m_done = 0;
    bool m_active = false;
    bool m_terminal = false;
    std::unique_ptr<QProgressDialog> m_dialog;
};
