#include "oxProgress.h"

#include "oxController.h"

#include <QApplication>
#include <QProgressDialog>

#include <algorithm>
#include <cstdio>
#include <string>

#include <unistd.h>

oxProgress* oxProgress::the()
{
    static oxProgress* progress = new oxProgress();
    return progress;
}

void oxProgress::initProgress(const QString& text, size_t total, int)
{
    terminateProgress();
    m_text = text;
    m_total = total;
    m_done = 0;
    m_active = true;
    if (oxController::isNoGUI()) {
        m_terminal = ::isatty(STDERR_FILENO) != 0;
    } else if (qobject_cast<QApplication*>(QCoreApplication::instance())) {
        m_dialog = std::make_unique<QProgressDialog>(text, QString(), 0, int(total));
        m_dialog->setWindowModality(Qt::ApplicationModal);
        m_dialog->setMinimumDuration(500);
    }
}

void oxProgress::incrementProgress()
{
    if (!m_active)
        return;
    ++m_done;
    if (m_terminal)
        drawBar();
    else if (m_dialog)
        m_dialog->setValue(int(std::min(m_done, m_total)));
}

void oxProgress::terminateProgress()
{
    if (m_terminal && m_active && m_done > 0)
        std::fputc('\n', stderr);
    m_dialog.reset();
    m_terminal = false;
    m_active = false;
}

void oxProgress::drawBar() const
{
    const int width = 30;
    const double fraction = m_total ? double(m_done) / double(m_total) : 1.0;
    const int filled = std::clamp(int(width * fraction), 0, width);
    std::fprintf(stderr, "\r%s [%s%s] %zu/%zu", m_text.toLocal8Bit().constData(),
                 std::string(size_t(filled), '#').c_str(),
                 std::string(size_t(width - filled), '-').c_str(), m_done, m_total);
    std::fflush(stderr);
}
