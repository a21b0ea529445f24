#include "oxScriptEditor.h"

#include "oxIconManager.h"
#include "oxLog.h"
#include "oxPythonHighlighter.h"
#include "oxScript.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QSaveFile>
#include <QScrollBar>
#include <QSplitter>
#include <QTextDocumentFragment>
#include <QTextCodec>
#include <QThread>
#include <QToolBar>
#include <QVBoxLayout>

#include <mutex>

namespace {

const char kScriptName[] = "<script editor>";
const char kIndent[] = "    ";

// Without its common indentation, so that lines selected from inside a block run on their own.
QString dedented(const QString& code)
{
    QStringList lines = code.split(QLatin1Char('\n'));
    QString common;
    bool first = true;
    for (const QString& line : lines) {
        if (line.trimmed().isEmpty())
            continue;
        int indent = 0;
        while (indent < line.size() &&
               (line[indent] == QLatin1Char(' ') || line[indent] == QLatin1Char('\t')))
            ++indent;
        if (first) {
            common = line.left(indent);
            first = false;
            continue;
        }
        int shared = 0;
        while (shared < common.size() && shared < indent && common[shared] == line[shared])
            ++shared;
        common.truncate(shared);
    }
    if (common.isEmpty())
        return code;
    for (QString& line : lines)
        line = line.startsWith(common) ? line.mid(common.size()) : QString();
    return lines.join(QLatin1Char('\n'));
}

// The platform's fixed-width font; some platforms (offscreen) answer with a proportional one.
QFont monospaceFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (QFontInfo(font).fixedPitch())
        return font;
    font.setFamily(QStringLiteral("monospace"));
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    return font;
}

// The cursor, the interpreter's responsiveness and the Run action for the length of one run,
// restored on every way out.
class RunScope {
public:
    RunScope(QAction* run, bool& running)
        : m_run(run), m_running(running), m_wasResponsive(oxScript::isKeepResponsive())
    {
        m_running = true;
        m_run->setEnabled(false);
        QApplication::setOverrideCursor(Qt::BusyCursor);
        // The pane should fill while a long script runs, not only after it.
        oxScript::setKeepResponsive(true);
    }
    ~RunScope()
    {
        oxScript::setKeepResponsive(m_wasResponsive);
        QApplication::restoreOverrideCursor();
        m_run->setEnabled(true);
        m_running = false;
    }
    RunScope(const RunScope&) = delete;
    RunScope& operator=(const RunScope&) = delete;

private:
    QAction* m_run;
    bool& m_running;
    const bool m_wasResponsive;
};

} // namespace

// The interpreter's streams and the log may call from any thread (a script's own threads
// print, render workers log), and the log calls copies of its sinks, so a call may even come
// after removeSink. The relay touches the pane only on the editor's thread and only while the
// editor lives: direct on that thread, queued from others (a queued call dies with its target).
class oxScriptEditor::Relay {
public:
    explicit Relay(oxScriptEditor* editor) : m_editor(editor) {}

    void detach()
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        m_editor = nullptr;
    }

    void deliver(Source source, const QString& text)
    {
        // Recursive: appending on the GUI thread may itself log.
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        oxScriptEditor* editor = m_editor;
        if (!editor)
            return;
        if (QThread::currentThread() == editor->thread()) {
            editor->append(source, text);
            return;
        }
        QMetaObject::invokeMethod(
            editor, [editor, source, text] { editor->append(source, text); }, Qt::QueuedConnection);
    }

private:
    std::recursive_mutex m_mutex;
    oxScriptEditor* m_editor;
};

oxScriptEditor::oxScriptEditor(QWidget* parent)
    : QWidget(parent), m_relay(std::make_shared<Relay>(this))
{
    setObjectName(QStringLiteral("scriptEditor"));
    const QFont mono = monospaceFont();

    m_editor = new QPlainTextEdit(this);
    m_editor->setObjectName(QStringLiteral("scriptEditorText"));
    m_editor->setFont(mono);
    m_editor->setLineWrapMode(QPlainTextEdit::NoWrap);
    // Tabs that come with an opened file line up with the four spaces the Tab key inserts.
    m_editor->setTabStopDistance(QFontMetricsF(mono).horizontalAdvance(QLatin1Char(' ')) * 4);
    m_editor->setPlaceholderText(
        tr("Python code. Ctrl+Return runs the selection, or the whole script."));
    m_editor->installEventFilter(this);
    m_highlighter = new oxPythonHighlighter(m_editor->document());

    m_output = new QPlainTextEdit(this);
    m_output->setObjectName(QStringLiteral("scriptEditorOutput"));
    m_output->setFont(mono);
    m_output->setReadOnly(true);
    m_output->setUndoRedoEnabled(false);
    // A chatty script or log must not grow the pane without bound.
    m_output->setMaximumBlockCount(10000);

    auto* tools = new QToolBar(this);
    tools->setObjectName(QStringLiteral("scriptEditorTools"));
    tools->setIconSize(QSize(16, 16));
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);

    m_run = new QAction(oxIconManager::getIcon(QStringLiteral("StartRendering"), QString()),
                        tr("Run"), this);
    m_run->setObjectName(QStringLiteral("scriptEditorRunAction"));
    m_run->setShortcuts(
        {QKeySequence(Qt::CTRL + Qt::Key_Return), QKeySequence(Qt::CTRL + Qt::Key_Enter)});
    // Only while the focus is in the editor: the main window has shortcuts of its own.
    m_run->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_run->setToolTip(tr("Runs the selection, or the whole script (Ctrl+Return)"));
    connect(m_run, &QAction::triggered, this, &oxScriptEditor::runScript);
    addAction(m_run);
    tools->addAction(m_run);
    tools->widgetForAction(m_run)->setObjectName(QStringLiteral("scriptEditorRun"));

    QAction* clear = tools->addAction(oxIconManager::getIcon(QStringLiteral("Delete"), QString()),
                                      tr("Clear Output"), this, &oxScriptEditor::clearOutput);
    clear->setToolTip(tr("Empties the output pane"));
    tools->addSeparator();
    QAction* open = tools->addAction(oxIconManager::getIcon(QStringLiteral("FileOpen"), QString()),
                                     tr("Open..."), this, &oxScriptEditor::openFileDialog);
    open->setToolTip(tr("Opens a Python script (.py) in the editor"));
    QAction* save = tools->addAction(oxIconManager::getIcon(QStringLiteral("FileSave"), QString()),
                                     tr("Save..."), this, &oxScriptEditor::saveFileDialog);
    save->setToolTip(tr("Saves the script as a Python file (.py)"));

    auto* splitter = new QSplitter(Qt::Vertical, this);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(m_editor);
    splitter->addWidget(m_output);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(tools);
    layout->addWidget(splitter, 1);

    const std::shared_ptr<Relay> relay = m_relay;
    m_outputListener =
        oxScript::addOutputListener([relay](oxScript::Stream stream, const std::string& text) {
            relay->deliver(stream == oxScript::Error ? Source::Error : Source::Output,
                           QString::fromStdString(text));
        });
    m_logSink = oxLog::addSink([relay](oxLog::Level level, const std::string& text) {
        // Sinks see every message; the pane shows what the log itself shows.
        if (level > oxLog::getLevel())
            return;
        const Source source = level == oxLog::Error     ? Source::LogError
                              : level == oxLog::Warning ? Source::LogWarning
                                                        : Source::LogOther;
        relay->deliver(source, QLatin1Char('[') + QLatin1String(oxLog::levelName(level)) +
                                   QLatin1String("] ") + QString::fromStdString(text));
    });
}

oxScriptEditor::~oxScriptEditor()
{
    oxLog::removeSink(m_logSink);
    oxScript::removeOutputListener(m_outputListener);
    m_relay->detach();
}

void oxScriptEditor::runScript()
{
    // A script that lets events through could press Run again; runs of the editor don't nest.
    if (m_running)
        return;
    const QTextCursor cursor = m_editor->textCursor();
    const QString code = cursor.hasSelection() ? dedented(cursor.selection().toPlainText())
                                               : m_editor->toPlainText();
    if (code.trimmed().isEmpty())
        return;

    oxScript::Outcome outcome;
    {
        RunScope scope(m_run, m_running);
        outcome = oxScript::execute(code.toStdString(), kScriptName);
    }
    // An exception's traceback has already come through the log.
    if (outcome.kind == oxScript::Outcome::Exit)
        append(Source::Note, tr("Script exited with status %1.").arg(outcome.exitCode));
}

void oxScriptEditor::clearOutput() { m_output->clear(); }

void oxScriptEditor::append(Source source, const QString& raw)
{
    QString text = raw;
    text.remove(QLatin1Char('\r'));
    if (text.isEmpty())
        return;

    QScrollBar* bar = m_output->verticalScrollBar();
    // Follow new text only when the reader hasn't scrolled back.
    const bool follow = bar->value() == bar->maximum();

    QTextCursor cursor(m_output->document());
    cursor.movePosition(QTextCursor::End);
    // Stream text arrives in pieces (print sends its line end apart); log lines and notes are
    // whole lines of their own.
    if (source != Source::Output && source != Source::Error) {
        if (!cursor.atBlockStart())
            cursor.insertText(QStringLiteral("\n"), QTextCharFormat());
        while (text.endsWith(QLatin1Char('\n')))
            text.chop(1);
        text += QLatin1Char('\n');
    }

    QTextCharFormat format;
    switch (source) {
    case Source::Output:
        break;
    case Source::Error:
    case Source::LogError:
        format.setForeground(QColor(0xc6, 0x28, 0x28));
        break;
    case Source::LogWarning:
        format.setForeground(QColor(0xb0, 0x5a, 0x00));
        break;
    case Source::LogOther:
        format.setForeground(QColor(0x70, 0x70, 0x70));
        break;
    case Source::Note:
        format.setFontItalic(true);
        break;
    }
    cursor.insertText(text, format);
    if (follow)
        bar->setValue(bar->maximum());
}

bool oxScriptEditor::openFile(const QString& path)
{
    const QString shown = QDir::toNativeSeparators(path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        showFailure(tr("\"%1\" couldn't be opened: %2. The editor is unchanged.")
                        .arg(shown, file.errorString()));
        return false;
    }
    const QByteArray data = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        showFailure(tr("\"%1\" couldn't be read: %2. The editor is unchanged.")
                        .arg(shown, file.errorString()));
        return false;
    }
    // Python reads its sources as UTF-8; anything else would be garbled on the next save.
    QTextCodec::ConverterState state;
    QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(data.constData(), data.size(), &state);
    if (state.invalidChars > 0) {
        showFailure(tr("\"%1\" couldn't be opened: it isn't UTF-8 text. The editor is "
                       "unchanged.")
                        .arg(shown));
        return false;
    }
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    m_editor->setPlainText(text);
    m_editor->document()->setModified(false);
    m_fileName = path;
    return true;
}

bool oxScriptEditor::saveFile(const QString& path)
{
    const QString shown = QDir::toNativeSeparators(path);
    const QByteArray data = m_editor->toPlainText().toUtf8();
    // QSaveFile writes a temporary file beside path and renames it over path on commit, so a
    // failure never leaves a half-written script.
    QSaveFile file(path);
    bool written = file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
    QString problem = file.errorString();
    if (written) {
        written = file.commit();
        problem = file.errorString();
    } else {
        file.cancelWriting();
    }
    if (!written) {
        showFailure(tr("\"%1\" couldn't be saved: %2. The file is unchanged; choose another "
                       "folder or name.")
                        .arg(shown, problem));
        return false;
    }
    m_editor->document()->setModified(false);
    m_fileName = path;
    return true;
}

void oxScriptEditor::openFileDialog()
{
    QTextDocument* document = m_editor->document();
    if (document->isModified() && !document->isEmpty() &&
        QMessageBox::question(this, tr("Script Editor"),
                              tr("The script in the editor has unsaved changes. Discard them and "
                                 "open another file?"),
                              QMessageBox::Discard | QMessageBox::Cancel,
                              QMessageBox::Cancel) != QMessageBox::Discard)
        return;
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Open Script"), QFileInfo(m_fileName).path(),
                                     tr("Python scripts (*.py);;All files (*)"));
    if (!path.isEmpty())
        openFile(path);
}

void oxScriptEditor::saveFileDialog()
{
    QFileDialog dialog(this, tr("Save Script"), m_fileName,
                       tr("Python scripts (*.py);;All files (*)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    // The dialog adds the suffix before it asks about overwriting, so the question names the
    // file that will really be replaced.
    dialog.setDefaultSuffix(QStringLiteral("py"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    saveFile(dialog.selectedFiles().constFirst());
}

void oxScriptEditor::showFailure(const QString& message)
{
    QMessageBox::warning(this, tr("Script Editor"), message);
}

bool oxScriptEditor::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_editor && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Tab && (key->modifiers() & ~Qt::KeypadModifier) == 0) {
            m_editor->insertPlainText(QString::fromLatin1(kIndent));
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
