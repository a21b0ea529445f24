#pragma once

#include <QString>
#include <QWidget>

#include <memory>

class QAction;
class QPlainTextEdit;
class oxPythonHighlighter;

/// The host's Script Editor: a Python code editor over an output pane. Run executes the
/// selection (or the whole text) in the embedded interpreter; the pane shows, as they come,
/// what the script prints, Python's standard error (red), and the host's log lines, prefixed
/// with their level, for as long as the editor exists.
class oxScriptEditor : public QWidget {
    Q_OBJECT
public:
    explicit oxScriptEditor(QWidget* parent = nullptr);
    ~oxScriptEditor() override;

    /// The code editor (object name "scriptEditorText").
    QPlainTextEdit* editor() const { return m_editor; }
    /// The read-only output pane (object name "scriptEditorOutput").
    QPlainTextEdit* output() const { return m_output; }
    /// The Run action (Ctrl+Return); its tool button is named "scriptEditorRun".
    QAction* runAction() const { return m_run; }
    /// The .py file last opened or saved; empty before the first.
    QString fileName() const { return m_fileName; }

    /// Replaces the editor's text by the UTF-8 text of path. On failure shows a message that
    /// names the file and the problem, leaves the editor as it was and returns false.
    bool openFile(const QString& path);
    /// Writes the editor's text as UTF-8 to path, through a temporary file in the same folder
    /// that replaces path only once complete. On failure shows a message that names the file
    /// and the problem, leaves path as it was and returns false.
    bool saveFile(const QString& path);

public slots:
    /// Runs the selection, or the whole text when nothing is selected, as "<script editor>".
    /// A selection is dedented first, so that a block cut from inside a function runs. A
    /// sys.exit ends the script only, with a note of its status in the pane.
    void runScript();
    /// Empties the output pane.
    void clearOutput();
    /// Asks for a .py file and opens it (after asking before unsaved changes are dropped).
    void openFileDialog();
    /// Asks for a file name and saves the script under it (".py" added when it has none).
    void saveFileDialog();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Where a piece of pane text comes from; it decides colour and line breaks.
    enum class Source { Output, Error, LogError, LogWarning, LogOther, Note };
    // Carries text from the interpreter's streams and the log into the pane; defined in the
    // .cpp file.
    class Relay;

    void append(Source source, const QString& text);
    void showFailure(const QString& message);

    QPlainTextEdit* m_editor = nullptr;
    QPlainTextEdit* m_output = nullptr;
    oxPythonHighlighter* m_highlighter = nullptr;
    QAction* m_run = nullptr;
    QString m_fileName;
    bool m_running = false;
    std::shared_ptr<Relay> m_relay;
    int m_outputListener = 0;
    int m_logSink = 0;
};
