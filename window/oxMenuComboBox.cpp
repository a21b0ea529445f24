#include "oxMenuComboBox.h"

#include "oxSceneServices.h"

#include <QAction>

const QString oxMenuComboBox::kCurrentText = QStringLiteral("Current");

oxComboboxMenu::oxComboboxMenu(const QString& currentText, unsigned currentId, QWidget* parent)
    : QOXComboBoxMenu(parent), m_currentId(currentId)
{
    QAction* current = addItem(currentText, QVariant(0u));
    if (currentId == 0) {
        current->setCheckable(true);
        current->setChecked(true);
    }
    oxUberCameraPool* pool = oxUberCameraPool::the();
    if (!pool)
        return;
    const std::vector<osg::NodePtr> defaults = pool->getDefaultCameras();
    const std::vector<osg::NodePtr> customs = pool->getCustomCameras();
    if (!defaults.empty() && !customs.empty())
        addSeparator();
    for (osg::NodePtr camera : defaults)
        addCamera(camera);
    if (!customs.empty())
        addSeparator();
    for (osg::NodePtr camera : customs)
        addCamera(camera);
    const std::vector<osg::NodePtr> unassigned = pool->getUnassignedViewpoints();
    if (!unassigned.empty()) {
        addSeparator();
        for (osg::NodePtr viewpoint : unassigned)
            addNode(this, viewpoint);
    }
}

void oxComboboxMenu::addNode(QOXComboBoxMenu* menu, osg::NodePtr node)
{
    const unsigned id = node ? node->getId() : 0u;
    QAction* action = menu->addItem(QString::fromStdString(oxNodeUtils::getName(node)), id);
    // Only the chosen entry is checkable, so the menu marks it and nothing else.
    if (id != 0 && id == m_currentId) {
        action->setCheckable(true);
        action->setChecked(true);
    }
}

void oxComboboxMenu::addCamera(osg::NodePtr camera)
{
    const std::vector<osg::NodePtr> viewpoints =
        oxUberCameraPool::filterNullPointer(oxUberCameraUtils::getViewpointNodes(camera));
    const std::vector<osg::NodePtr> tracks = oxUberCameraUtils::getCameraTrackNodes(camera);
    if (viewpoints.empty() && tracks.empty()) {
        addNode(this, camera);
        return;
    }
    const unsigned id = camera ? camera->getId() : 0u;
    QOXComboBoxMenu* sub = addMenu(QString::fromStdString(oxNodeUtils::getName(camera)), id);
    // A submenu can't be triggered itself, so the camera is also its first entry.
    addNode(sub, camera);
    sub->addSeparator();
    for (osg::NodePtr viewpoint : viewpoints)
        addNode(sub, viewpoint);
    for (osg::NodePtr track : tracks)
        addNode(sub, track);
}

oxMenuComboBox::oxMenuComboBox(QWidget* parent) : QOXMultiLevelComboBox(parent)
{
    setResetText(kCurrentText);
}

QOXComboBoxMenu* oxMenuComboBox::createMenu()
{
    return new oxComboboxMenu(resetText(), currentId(), this);
}
