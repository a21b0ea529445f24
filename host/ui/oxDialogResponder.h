#pragma once

#include <QObject>
#include <QString>
#include <QVector>

/// Answers modal dialogs when nobody can: in headless runs (oxController::isNoGUI) and when a
/// test forces it. Each answer is taken from a queue, first in first out, or is the dialog's
/// default when the queue is empty; question and answer are logged at info level, so a
/// headless run never waits on a dialog and its log tells what was decided.
///
/// What a queued answer means depends on the dialog:
/// - message box: the text of the button to press ("&" marks ignored); "[x] " before it ticks
///   the box's check box first;
/// - input dialog: the value to enter, then OK;
/// - file dialog: the file to choose, then accept;
/// - any other dialog: the text of a button of it, or "accept" or "reject".
/// Defaults: the message box's default button (else its escape button, else its first);
/// OK for input and colour dialogs; cancel for file dialogs; the default push button of other
/// dialogs, else reject. Progress dialogs are left alone.
class oxDialogResponder : public QObject {
    Q_OBJECT
public:
    struct Exchange {
        QString title;
        QString question;
        QString answer;
    };

    /// Hooks the responder into the application; done automatically when the application
    /// object is made. Idempotent.
    static void install();
    static void queueAnswer(const QString& answer);
    static int pendingAnswers();
    /// Drops queued answers and the history.
    static void clear();
    /// Answers dialogs even when the GUI is on (tests of a visible GUI).
    static void setForced(bool forced);
    static bool isActive();
    /// Every dialog answered since the last clear, in order.
    static const QVector<Exchange>& history();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit oxDialogResponder(QObject* parent);
};
