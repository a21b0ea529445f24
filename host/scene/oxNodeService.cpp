#include "oxNodeService.h"

#include "oxObjectService.h"
#include "oxSceneServices.h"
#include "oxUndoStack.h"

oxNodeService* oxNodeService::the()
{
    // Never destroyed: listeners may still disconnect during static destruction.
    static oxNodeService* service = new oxNodeService();
    return service;
}

oxdNode oxNodeService::handleOf(osg::NodePtr node)
{
    if (oxNodeUtils::isCamera(node))
        return oxdCameraNode(node);
    if (oxNodeUtils::isViewpoint(node))
        return oxdViewpointNode(node);
    if (oxNodeUtils::isCameraTrack(node))
        return oxdCameraTrackNode(node);
    return oxdNode(node);
}

bool oxNodeService::deleteNode(osg::NodePtr node)
{
    if (!node || !node->getParent())
        return false;
    // The handle is made while the node is in the tree; listeners learn what it was.
    const QList<oxdNode> removed{handleOf(node)};
    const osg::NodePtr parent = node->getParent();
    oxUndoStack::the()->push(new oxDeleteNodeUndoCommand(node));
    emit nodesRemoved(removed);
    // A camera track's viewpoints are a property of the track.
    if (oxNodeUtils::isCameraTrack(parent))
        oxObjectService::the()->notifyPropertyChanged(oxdCameraTrackNode(parent), "viewpoints");
    return true;
}

void oxNodeService::renameNode(osg::NodePtr node, const std::string& name)
{
    if (!node)
        return;
    node->setName(name);
    if (oxNodeUtils::isCamera(node))
        emit cameraNameChanged(handleOf(node));
    else if (oxNodeUtils::isCameraTrack(node))
        emit cameraTrackNameChanged(handleOf(node));
}

oxDeleteNodeUndoCommand::oxDeleteNodeUndoCommand(osg::NodePtr node, QUndoCommand* parent)
    : QUndoCommand(QStringLiteral("Delete %1").arg(QString::fromStdString(node->getName())),
                   parent),
      m_node(node), m_parent(node->getParent())
{
    for (size_t i = 0; i < m_parent->getNChildren(); ++i) {
        if (m_parent->getChild(i) == node)
            m_index = i;
    }
}

oxDeleteNodeUndoCommand::~oxDeleteNodeUndoCommand() = default;

void oxDeleteNodeUndoCommand::redo() { m_detached = m_parent->subChild(m_node); }

void oxDeleteNodeUndoCommand::undo()
{
    if (!m_detached)
        return;
    // Put back at the old place: append, then move the later siblings behind it.
    std::vector<std::unique_ptr<osg::Node>> later;
    while (m_parent->getNChildren() > m_index)
        later.push_back(m_parent->subChild(m_parent->getChild(m_index)));
    m_parent->addChild(std::move(m_detached));
    for (std::unique_ptr<osg::Node>& sibling : later)
        m_parent->addChild(std::move(sibling));
    if (oxNodeService* service = oxNodeService::the())
        emit service->nodesAdded({oxNodeService::handleOf(m_node)});
}
