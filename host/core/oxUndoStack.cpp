#include "oxUndoStack.h"

oxUndoStack* oxUndoStack::the()
{
    // Never destroyed: listeners may still disconnect during static destruction.
    static oxUndoStack* stack = new oxUndoStack();
    return stack;
}

void oxUndoStack::performUndo()
{
    if (!canUndo())
        return;
    const QUndoCommand* done = command(index() - 1);
    undo();
    emit undoPerformed(done);
}

void oxUndoStack::performRedo()
{
    if (!canRedo())
        return;
    const QUndoCommand* done = command(index());
    redo();
    emit redoPerformed(done);
}
