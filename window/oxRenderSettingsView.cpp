// The view chooser: _view shows the record's view and opens the menu of the scene's cameras;
// a choice from the menu goes into the record as an undoable step, and the chooser follows
// deletions of cameras and their undo.

#include "oxRenderSettings.h"

#include "oxMenuComboBox.h"
#include "oxNodeService.h"
#include "oxObjectService.h"
#include "oxSceneServices.h"
#include "oxUndoStack.h"

#include <QUndoCommand>

namespace {

// A choice of view made by the user: undo puts the view before it back.
class oxViewUndoCommand : public QUndoCommand {
public:
    oxViewUndoCommand(oxRenderSettings& window, std::string before, std::string after)
        : QUndoCommand(QObject::tr("Change View")), m_window(window), m_before(std::move(before)),
          m_after(std::move(after))
    {}
    void redo() override { m_window.setViewPath(m_after); }
    void undo() override { m_window.setViewPath(m_before); }

private:
    oxRenderSettings& m_window;
    const std::string m_before;
    const std::string m_after;
};

bool isCameraNode(const oxdNode& node)
{
    const osg::NodePtr n = node.getNode();
    // A handle of a removed node no longer reaches it; its class still says what it was.
    if (!n)
        return node.isTypeOf(oxdCameraNode::staticMetaObject) ||
               node.isTypeOf(oxdViewpointNode::staticMetaObject) ||
               node.isTypeOf(oxdCameraTrackNode::staticMetaObject);
    return oxNodeUtils::isCamera(n) || oxNodeUtils::isViewpoint(n) || oxNodeUtils::isCameraTrack(n);
}

// A deletion of nodes, alone or inside a command of several, is what can take the chosen
// view away and give it back.
bool deletesNodes(const QUndoCommand* command)
{
    if (!command)
        return false;
    if (command->id() == oxDeleteNodeUndoCommand::commandId())
        return true;
    if (command->id() == oxMultiCommand::commandId()) {
        for (int i = 0; i < command->childCount(); ++i) {
            if (command->child(i)->id() == oxDeleteNodeUndoCommand::commandId())
                return true;
        }
    }
    return false;
}

} // namespace

void oxRenderSettings::connectView()
{
    connect(_view, &QOXMultiLevelComboBox::changed, this, &oxRenderSettings::changedView);
    oxNodeService* nodes = oxNodeService::the();
    connect(nodes, &oxNodeService::nodesAdded, this, &oxRenderSettings::cameraNodesChanged);
    connect(nodes, &oxNodeService::nodesRemoved, this, &oxRenderSettings::cameraNodesChanged);
    connect(nodes, &oxNodeService::cameraNameChanged, _view, &QOXMultiLevelComboBox::update);
    connect(nodes, &oxNodeService::cameraTrackNameChanged, _view, &QOXMultiLevelComboBox::update);
    // A camera track's viewpoints feed the statistics while the view is that track.
    connect(oxObjectService::the(), &oxObjectService::propertyChangedBS, this,
            [this](const oxdObject& object, const QByteArray&) {
                if (object.isTypeOf(oxdCameraTrackNode::staticMetaObject) &&
                    currentPreset.isCameraTrackView())
                    updateRenderStatistics();
            });
    connect(oxUndoStack::the(), &oxUndoStack::undoPerformed, this,
            &oxRenderSettings::undoneOrRedone);
    connect(oxUndoStack::the(), &oxUndoStack::redoPerformed, this,
            &oxRenderSettings::undoneOrRedone);
}

osg::NodePtr oxRenderSettings::getCurrentView() const { return currentPreset.getViewNode(); }

osg::NodePtr oxRenderSettings::getSelectedViewNode() const
{
    const unsigned id = _view->currentData().toUInt();
    if (id == 0)
        return nullptr;
    return dynamic_cast<osg::Node*>(osg::FieldContainerFactory::the()->getContainer(id));
}

void oxRenderSettings::setViewPath(const std::string& path)
{
    currentPreset.view = path;
    updateGUI();
    updateRenderStatistics();
}

void oxRenderSettings::changedView(const QString&, const QVariant&)
{
    oxUberCameraPool* cameras = oxUberCameraPool::the();
    if (!cameras)
        return;
    // The chooser following the scene (a camera deleted, its deletion undone) isn't a choice
    // of the user's, and must not stand on the undo stack above the deletion.
    if (viewFollowLock) {
        setView(getSelectedViewNode());
        return;
    }
    const osg::NodePtr node = getSelectedViewNode();
    const std::string path = node ? oxNodeUtils::getUniquePath(node, cameras->getRoot()) : "";
    if (path == currentPreset.view)
        return;
    oxUndoStack::the()->push(new oxViewUndoCommand(*this, currentPreset.view, path));
}

void oxRenderSettings::cameraNodesChanged(const QList<oxdNode>& nodes)
{
    bool cameras = false;
    for (const oxdNode& node : nodes)
        cameras = cameras || isCameraNode(node);
    if (!cameras)
        return;
    const oxScopedFlag follow(viewFollowLock);
    _view->update();
    updateRenderStatistics();
}

void oxRenderSettings::undoneOrRedone(const QUndoCommand* command)
{
    if (!deletesNodes(command))
        return;
    const oxScopedFlag follow(viewFollowLock);
    _view->undo();
}
