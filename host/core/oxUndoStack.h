#pragma once

#include <QUndoCommand>
#include <QUndoStack>

/// The host's one undo stack. Commands are QUndoCommands; undo and redo go through
/// performUndo and performRedo, which tell listeners which command just ran, so that a module
/// can bring its own state back in line with what the command restored.
class oxUndoStack : public QUndoStack {
    Q_OBJECT
public:
    /// The stack; never null, never destroyed.
    static oxUndoStack* the();

    /// Undoes the command before the current index and emits undoPerformed with it; nothing
    /// when there is nothing to undo.
    void performUndo();
    /// Redoes the command at the current index and emits redoPerformed with it.
    void performRedo();

signals:
    void undoPerformed(const QUndoCommand* command);
    void redoPerformed(const QUndoCommand* command);

private:
    oxUndoStack() = default;
};

/// A command made of child commands that undo and redo together (QUndoCommand runs the
/// children). Its id tells listeners to look at the children.
class oxMultiCommand : public QUndoCommand {
public:
    explicit oxMultiCommand(const QString& text, QUndoCommand* parent = nullptr)
        : QUndoCommand(text, parent)
    {}
    static int commandId() { return 1000; }
    int id() const override { return commandId(); }
};
