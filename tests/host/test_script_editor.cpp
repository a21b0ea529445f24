#include "QOXDockWindowManager.h"
#include "oxDialogResponder.h"
#include "oxLog.h"
#include "oxMainWindow.h"
#include "oxPythonHighlighter.h"
#include "oxScript.h"
#include "oxScriptEditor.h"

#include "oxTestSupport.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextLayout>

#include <memory>
#include <thread>

namespace {

const QColor kRed(0xc6, 0x28, 0x28);

class ScriptEditorTest : public oxTest {
protected:
    // One interpreter per process: it can't be restarted once stopped.
    static void SetUpTestSuite() { ASSERT_TRUE(oxScript::start()); }

    void SetUp() override { oxDialogResponder::clear(); }

    void run(const QString& code)
    {
        m_editor.editor()->setPlainText(code);
        m_editor.runScript();
    }
    std::string pane() const { return m_editor.output()->toPlainText().toStdString(); }
    std::string lastLine() const
    {
        const QStringList lines = m_editor.output()->toPlainText().split('\n', Qt::SkipEmptyParts);
        return lines.isEmpty() ? std::string() : lines.constLast().toStdString();
    }
    // The colour of the pane's line that contains text.
    QColor colourOf(const QString& text) const
    {
        const QTextBlock block = m_editor.output()->document()->find(text).block();
        return block.isValid() && !block.textFormats().isEmpty()
                   ? block.textFormats().constFirst().format.foreground().color()
                   : QColor();
    }

    oxScriptEditor m_editor;
};

} // namespace

TEST_F(ScriptEditorTest, RunsTheWholeTextOrOnlyTheSelection)
{
    run("print('first')\nprint('second')\n");
    EXPECT_EQ(pane(), "first\nsecond\n");
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_TRUE(m_editor.runAction()->isEnabled());

    // A line selected from inside a block runs on its own, dedented.
    m_editor.clearOutput();
    m_editor.editor()->setPlainText("if True:\n    print('outer')\n    print('inner')\n");
    QTextCursor cursor(m_editor.editor()->document()->findBlockByNumber(2));
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    m_editor.editor()->setTextCursor(cursor);
    m_editor.runScript();
    EXPECT_EQ(pane(), "inner\n");

    // sys.exit ends the script, not the program, and says so.
    run("import sys\nprint('before')\nsys.exit(3)\nprint('after')\n");
    EXPECT_EQ(pane(), "inner\nbefore\nScript exited with status 3.\n");

    m_editor.editor()->clear();
    QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t"));
    QApplication::sendEvent(m_editor.editor(), &tab);
    EXPECT_EQ(m_editor.editor()->toPlainText(), "    ");
}

TEST_F(ScriptEditorTest, ExceptionShowsItsTracebackAndTheEditorKeepsWorking)
{
    const std::string traceback = "Traceback (most recent call last):\n"
                                  "  File \"<script editor>\", line 3, in <module>\n"
                                  "ValueError: boom";
    expectLog(oxLog::Error, traceback);
    run("import sys\nsys.stderr.write('careful\\n')\nraise ValueError('boom')\n");
    EXPECT_EQ(pane(), "careful\n[error] " + traceback + "\n");
    EXPECT_EQ(colourOf("careful"), kRed);
    EXPECT_EQ(colourOf("ValueError: boom"), kRed);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    run("print('still here')");
    EXPECT_EQ(lastLine(), "still here");
}

TEST_F(ScriptEditorTest, ShowsLogLinesFromAnyThreadWhileItExists)
{
    expectLog(oxLog::Warning, "disk nearly full");
    oxLog::warning("disk nearly full");
    oxLog::debug("below the log level");
    std::thread([] { oxLog::info("from a worker"); }).join();
    EXPECT_EQ(pane(), "[warning] disk nearly full\n");
    QCoreApplication::processEvents();
    EXPECT_EQ(pane(), "[warning] disk nearly full\n[info] from a worker\n");

    // A line posted from a worker to an editor that is gone before it arrives is dropped.
    auto gone = std::make_unique<oxScriptEditor>();
    std::thread([] { oxLog::info("late"); }).join();
    gone.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(lastLine(), "[info] late");
}

TEST_F(ScriptEditorTest, OpenAndSaveRoundTripAndFailuresSayWhy)
{
    oxTempDir dir;
    const QString path = QString::fromStdString(dir.file("tool.py"));
    const QString code = QString::fromUtf8("# Grüße\ndef f():\n\treturn 1\n");
    m_editor.editor()->setPlainText(code);
    ASSERT_TRUE(m_editor.saveFile(path));
    EXPECT_EQ(oxReadFile(path.toStdString()), code.toStdString());
    EXPECT_FALSE(m_editor.editor()->document()->isModified());

    oxScriptEditor other;
    ASSERT_TRUE(other.openFile(path));
    EXPECT_EQ(other.editor()->toPlainText(), code);
    EXPECT_EQ(other.fileName(), path);

    // A save into a missing folder writes nothing, and the message names the file.
    const QString missing = QString::fromStdString(dir.file("no/such/tool.py"));
    m_editor.editor()->setPlainText("print('changed')\n");
    EXPECT_FALSE(m_editor.saveFile(missing));
    ASSERT_EQ(oxDialogResponder::history().size(), 1);
    const QString saveMessage = oxDialogResponder::history()[0].question;
    EXPECT_TRUE(saveMessage.startsWith("\"" + missing + "\" couldn't be saved: "))
        << saveMessage.toStdString();
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(dir.file("no"))));
    EXPECT_EQ(m_editor.fileName(), path);

    // Failed opens leave the editor's text alone.
    const std::string binary = dir.file("latin1.py");
    FILE* file = std::fopen(binary.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    std::fputs("# Gr\xfc\xdf"
               "e\n",
               file);
    std::fclose(file);
    EXPECT_FALSE(other.openFile(QString::fromStdString(binary)));
    EXPECT_FALSE(other.openFile(QString::fromStdString(dir.file("absent.py"))));
    EXPECT_EQ(other.editor()->toPlainText(), code);
    ASSERT_EQ(oxDialogResponder::history().size(), 3);
    EXPECT_EQ(oxDialogResponder::history()[1].question,
              "\"" + QString::fromStdString(binary) +
                  "\" couldn't be opened: it isn't UTF-8 text. The editor is unchanged.");
    EXPECT_TRUE(
        oxDialogResponder::history()[2].question.contains("absent.py\" couldn't be opened: "));
}

TEST_F(ScriptEditorTest, HighlightsStringsAcrossLinesAndCommentsOutsideThem)
{
    m_editor.editor()->setPlainText("x = '''start\n# inside\nend'''  # note\n"
                                    "@tool\ndef run(a, b=0x1F):\n    return print(a @ b, 1e-3)\n");
    const auto* highlighter = m_editor.findChild<oxPythonHighlighter*>();
    ASSERT_NE(highlighter, nullptr);
    QTextDocument* document = m_editor.editor()->document();
    // The role of the character at column of line (-1 when plain).
    const auto roleAt = [&](int line, int column) {
        for (const QTextLayout::FormatRange& range :
             document->findBlockByNumber(line).layout()->formats())
            if (column >= range.start && column < range.start + range.length)
                for (int role = 0; role < oxPythonHighlighter::RoleCount; ++role)
                    if (range.format == highlighter->roleFormat(oxPythonHighlighter::Role(role)))
                        return role;
        return -1;
    };
    EXPECT_EQ(roleAt(0, 0), -1);
    EXPECT_EQ(roleAt(0, 4), oxPythonHighlighter::String);
    EXPECT_EQ(roleAt(1, 0), oxPythonHighlighter::String); // not a comment
    EXPECT_EQ(roleAt(2, 5), oxPythonHighlighter::String);
    EXPECT_EQ(roleAt(2, 10), oxPythonHighlighter::Comment);
    EXPECT_EQ(roleAt(3, 1), oxPythonHighlighter::Decorator);
    EXPECT_EQ(roleAt(4, 0), oxPythonHighlighter::Keyword);
    EXPECT_EQ(roleAt(4, 4), oxPythonHighlighter::Definition);
    EXPECT_EQ(roleAt(4, 16), oxPythonHighlighter::Number);
    EXPECT_EQ(roleAt(5, 11), oxPythonHighlighter::Builtin);
    EXPECT_EQ(roleAt(5, 19), -1);                          // @ between operands is an operator
    EXPECT_EQ(roleAt(5, 26), oxPythonHighlighter::Number); // the exponent's sign
}

TEST_F(ScriptEditorTest, MainWindowDocksItHiddenAtTheBottomWithAWindowMenuEntry)
{
    oxMainWindow window;
    window.show();
    QOXDockWidget* dock = window.dockWindowManager()->getDockWidget("ScriptEditor");
    ASSERT_NE(dock, nullptr);
    EXPECT_EQ(dock->widget(), window.scriptEditor());
    EXPECT_EQ(dock->windowTitle(), "Script Editor");
    EXPECT_EQ(dock->text(), "Script Editor");
    EXPECT_EQ(window.dockWidgetArea(dock), Qt::BottomDockWidgetArea);
    EXPECT_FALSE(dock->isVisible());

    QAction* entry = nullptr;
    for (QAction* action : window.windowMenu()->actions())
        if (action->text() == "Script Editor")
            entry = action;
    ASSERT_NE(entry, nullptr);
    entry->trigger();
    EXPECT_TRUE(dock->isVisible());
    for (const char* name : {"scriptEditorText", "scriptEditorOutput", "scriptEditorRun"})
        EXPECT_NE(dock->findChild<QWidget*>(name), nullptr) << name;
}
