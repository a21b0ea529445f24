#include "oxDialogResponder.h"

#include "oxController.h"
#include "oxLog.h"

#include <QAbstractButton>
#include <QColorDialog>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFileDialog>
#include <QInputDialog>
#include <QCheckBox>
#include <QMessageBox>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QQueue>
#include <QTimer>

namespace {

struct ResponderState {
    QPointer<oxDialogResponder> responder;
    QQueue<QString> answers;
    QVector<oxDialogResponder::Exchange> history;
    bool forced = false;
};

ResponderState& state()
{
    static ResponderState s;
    return s;
}

QString plain(const QString& text)
{
    QString result = text;
    result.remove(QLatin1Char('&'));
    return result;
}

QAbstractButton* buttonByText(const QList<QAbstractButton*>& buttons, const QString& text)
{
    for (QAbstractButton* button : buttons) {
        if (plain(button->text()) == plain(text))
            return button;
    }
    return nullptr;
}

bool takeAnswer(QString& answer)
{
    if (state().answers.isEmpty())
        return false;
    answer = state().answers.dequeue();
    return true;
}

void record(QDialog* dialog, const QString& question, const QString& answer)
{
    state().history.append({dialog->windowTitle(), question, answer});
    oxLog::info("Dialog '%s' asked '%s'; answered '%s'.", qPrintable(dialog->windowTitle()),
                qPrintable(question), qPrintable(answer));
}

void answerMessageBox(QMessageBox* box)
{
    QString question = box->text();
    if (!box->informativeText().isEmpty())
        question += QLatin1Char(' ') + box->informativeText();
    QAbstractButton* button = nullptr;
    QString answer;
    if (takeAnswer(answer)) {
        // "[x] Button" ticks the box's check box before pressing the button.
        static const QString ticked = QStringLiteral("[x] ");
        if (answer.startsWith(ticked) && box->checkBox()) {
            box->checkBox()->setChecked(true);
            answer = answer.mid(ticked.size());
        }
        button = buttonByText(box->buttons(), answer);
        if (!button)
            oxLog::warning("Dialog '%s' has no button '%s'; its default button answers.",
                           qPrintable(box->windowTitle()), qPrintable(answer));
    }
    if (!button)
        button = box->defaultButton();
    if (!button)
        button = box->escapeButton();
    if (!button && !box->buttons().isEmpty())
        button = box->buttons().front();
    if (!button) {
        record(box, question, QStringLiteral("(closed)"));
        box->reject();
        return;
    }
    record(box, question, plain(button->text()));
    button->click();
}

void answerInputDialog(QInputDialog* dialog)
{
    QString answer;
    if (takeAnswer(answer)) {
        switch (dialog->inputMode()) {
        case QInputDialog::IntInput:
            dialog->setIntValue(answer.toInt());
            break;
        case QInputDialog::DoubleInput:
            dialog->setDoubleValue(answer.toDouble());
            break;
        case QInputDialog::TextInput:
            dialog->setTextValue(answer);
            break;
        }
    }
    QString value = dialog->textValue();
    if (dialog->inputMode() == QInputDialog::IntInput)
        value = QString::number(dialog->intValue());
    else if (dialog->inputMode() == QInputDialog::DoubleInput)
        value = QString::number(dialog->doubleValue());
    record(dialog, dialog->labelText(), value);
    dialog->accept();
}

void answerFileDialog(QFileDialog* dialog)
{
    QString answer;
    if (!takeAnswer(answer)) {
        record(dialog, dialog->windowTitle(), QStringLiteral("Cancel"));
        dialog->reject();
        return;
    }
    dialog->selectFile(answer);
    record(dialog, dialog->windowTitle(), answer);
    // accept() of a file dialog checks the typed name; the chosen file stands as given.
    dialog->QDialog::accept();
}

void answerOtherDialog(QDialog* dialog)
{
    QList<QAbstractButton*> buttons;
    for (QAbstractButton* button : dialog->findChildren<QAbstractButton*>()) {
        if (button->isVisibleTo(dialog) && button->isEnabled())
            buttons.append(button);
    }
    QString answer;
    if (takeAnswer(answer)) {
        if (answer == QLatin1String("accept") || answer == QLatin1String("reject")) {
            record(dialog, dialog->windowTitle(), answer);
            answer == QLatin1String("accept") ? dialog->accept() : dialog->reject();
            return;
        }
        if (QAbstractButton* button = buttonByText(buttons, answer)) {
            record(dialog, dialog->windowTitle(), plain(button->text()));
            button->click();
            return;
        }
        oxLog::warning("Dialog '%s' has no button '%s'; its default button answers.",
                       qPrintable(dialog->windowTitle()), qPrintable(answer));
    }
    for (QAbstractButton* button : buttons) {
        auto* push = qobject_cast<QPushButton*>(button);
        if (push && push->isDefault()) {
            record(dialog, dialog->windowTitle(), plain(push->text()));
            push->click();
            return;
        }
    }
    record(dialog, dialog->windowTitle(), QStringLiteral("reject"));
    dialog->reject();
}

void answer(QDialog* dialog)
{
    if (!dialog->isVisible())
        return;
    if (auto* box = qobject_cast<QMessageBox*>(dialog))
        answerMessageBox(box);
    else if (auto* input = qobject_cast<QInputDialog*>(dialog))
        answerInputDialog(input);
    else if (auto* file = qobject_cast<QFileDialog*>(dialog))
        answerFileDialog(file);
    else if (auto* color = qobject_cast<QColorDialog*>(dialog)) {
        record(color, color->windowTitle(), QStringLiteral("OK"));
        color->accept();
    } else
        answerOtherDialog(dialog);
}

void installAtStart() { oxDialogResponder::install(); }

} // namespace

Q_COREAPP_STARTUP_FUNCTION(installAtStart)

oxDialogResponder::oxDialogResponder(QObject* parent) : QObject(parent)
{
    setObjectName(QStringLiteral("oxDialogResponder"));
}

void oxDialogResponder::install()
{
    QCoreApplication* application = QCoreApplication::instance();
    if (!application || state().responder)
        return;
    state().responder = new oxDialogResponder(application);
    application->installEventFilter(state().responder);
}

void oxDialogResponder::queueAnswer(const QString& answer) { state().answers.enqueue(answer); }

int oxDialogResponder::pendingAnswers() { return state().answers.size(); }

void oxDialogResponder::clear()
{
    state().answers.clear();
    state().history.clear();
}

void oxDialogResponder::setForced(bool forced) { state().forced = forced; }

bool oxDialogResponder::isActive() { return state().forced || oxController::isNoGUI(); }

const QVector<oxDialogResponder::Exchange>& oxDialogResponder::history() { return state().history; }

bool oxDialogResponder::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && watched->isWidgetType() && isActive()) {
        auto* dialog = qobject_cast<QDialog*>(watched);
        if (dialog && dialog->isModal() && !qobject_cast<QProgressDialog*>(dialog)) {
            // Answered from the dialog's own event loop, once it runs.
            QPointer<QDialog> guarded(dialog);
            QTimer::singleShot(0, this, [guarded]() {
                if (guarded)
                    answer(guarded);
            });
        }
    }
    return QObject::eventFilter(watched, event);
}
