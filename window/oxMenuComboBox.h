#pragma once

#include "QOXMultiLevelComboBox.h"
#include "oxScene.h"

/// The menu of the view chooser: "Current", the scene's default and custom cameras (a camera
/// with viewpoints or camera tracks as a submenu of them), then the viewpoints that belong to
/// no camera. Each entry carries its node's id as unsigned data, "Current" 0.
class oxComboboxMenu : public QOXComboBoxMenu {
    Q_OBJECT
public:
    /// Builds the menu from the current scene's camera pool; the entry whose id equals
    /// currentId is checkable and checked.
    oxComboboxMenu(const QString& currentText, unsigned currentId, QWidget* parent = nullptr);

private:
    void addNode(QOXComboBoxMenu* menu, osg::NodePtr node);
    void addCamera(osg::NodePtr camera);

    unsigned m_currentId;
};

/// The view chooser: a closed combo box showing the chosen view's name, which opens the menu
/// of the scene's cameras.
class oxMenuComboBox : public QOXMultiLevelComboBox {
    Q_OBJECT
public:
    explicit oxMenuComboBox(QWidget* parent = nullptr);

    /// The text of the first entry, which stands for the view the render widget shows.
    static const QString kCurrentText;

    /// The id of the node shown; 0 for "Current".
    unsigned currentId() const { return currentData().toUInt(); }

protected:
    QOXComboBoxMenu* createMenu() override;
};
