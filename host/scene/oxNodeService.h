#pragma once

#include "oxdObject.h"

#include <QList>
#include <QObject>
#include <QUndoCommand>

#include <memory>

/// Structural changes of the scene's nodes, announced to modules: deletion (undoable through
/// oxUndoStack), additions and renames of cameras.
class oxNodeService : public QObject {
    Q_OBJECT
public:
    /// The service; never null, never destroyed.
    static oxNodeService* the();

    /// Detaches node from its parent as an undoable command on oxUndoStack, then emits
    /// nodesRemoved. False for a null node or the root of the tree.
    bool deleteNode(osg::NodePtr node);
    /// Renames node; a camera or camera track also emits its name signal.
    void renameNode(osg::NodePtr node, const std::string& name);

    /// Handles of the most specific kind for node: camera, viewpoint, camera track, else a
    /// plain node.
    static oxdNode handleOf(osg::NodePtr node);

signals:
    void nodesAdded(const QList<oxdNode>& nodes);
    void nodesRemoved(const QList<oxdNode>& nodes);
    void cameraNameChanged(const oxdNode& node);
    void cameraTrackNameChanged(const oxdNode& node);

private:
    oxNodeService() = default;
};

/// Deleting one node: redo detaches it and keeps it, undo puts it back at its old place.
/// The node keeps its id, so references by id find it again after undo.
class oxDeleteNodeUndoCommand : public QUndoCommand {
public:
    explicit oxDeleteNodeUndoCommand(osg::NodePtr node, QUndoCommand* parent = nullptr);
    ~oxDeleteNodeUndoCommand() override;

    static int commandId() { return 1001; }
    int id() const override { return commandId(); }
    void redo() override;
    void undo() override;

private:
    osg::NodePtr m_node;
    osg::NodePtr m_parent;
    size_t m_index = 0;
    std::unique_ptr<osg::Node> m_detached;
};
