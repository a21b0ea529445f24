#include "oxExportProgress.h"

#include "oxController.h"

#include <QApplication>
#include <QProgressDialog>

#include <algorithm>
#include <cstdio>

#include <unistd.h>

oxExportProgress::oxExportProgress(bool enabled, size_t total, const QString& title)
    : m_total(total), m_start(std::chrono::steady_clock::now())
{
    if (!enabled || total == 0)
        return;
    if (oxController::isNoGUI()) {
        m_terminal = ::isatty(STDERR_FILENO) != 0;
        m_text = true;
    } else if (qobject_cast<QApplication*>(QCoreApplication::instance())) {
        m_dialog = std::make_unique<QProgressDialog>(title, QObject::tr("Cancel"), 0,
                                                     int(total) * kRoundSteps);
        m_dialog->setWindowModality(Qt::ApplicationModal);
        m_dialog->setMinimumDuration(0);
        m_dialog->setValue(0);
    }
}

oxExportProgress::~oxExportProgress()
{
    if (m_terminal && m_done > 0)
        std::fputc('\n', stderr);
}

void oxExportProgress::round(int done, int rounds)
{
    if (rounds <= 0 || m_done >= m_total)
        return;
    const double fraction = (double(m_done) + double(done) / double(rounds)) / double(m_total);
    if (m_terminal) {
        drawBar(fraction, m_done, "");
    } else if (m_dialog) {
        m_dialog->setValue(int(m_done) * kRoundSteps + done * kRoundSteps / rounds);
        QCoreApplication::processEvents();
    }
}

void oxExportProgress::step(const std::string& name)
{
    ++m_done;
    const double elapsed =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    const int eta = int(elapsed / double(m_done) * double(m_total - m_done) + 0.5);
    if (m_terminal) {
        char text[32];
        std::snprintf(text, sizeof text, " ETA %d:%02d ", eta / 60, eta % 60);
        drawBar(double(m_done) / double(m_total), m_done, text);
    } else if (m_text) {
        std::fprintf(stderr, "Image writer: %zu/%zu written '%s', ETA %d s\n", m_done, m_total,
                     name.c_str(), eta);
    } else if (m_dialog) {
        m_dialog->setValue(int(m_done) * kRoundSteps);
        QCoreApplication::processEvents();
    }
}

bool oxExportProgress::canceled() const { return m_dialog && m_dialog->wasCanceled(); }

void oxExportProgress::drawBar(double fraction, size_t done, const char* eta)
{
    const int width = 30;
    const int filled = std::clamp(int(width * fraction), 0, width);
    std::fprintf(stderr, "\r[%s%s] %zu/%zu %s", std::string(size_t(filled), '#').c_str(),
                 std::string(size_t(width - filled), '-').c_str(), done, m_total, eta);
    std::fflush(stderr);
}
