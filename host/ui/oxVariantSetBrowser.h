#pragma once

#include "oxdObject.h"

#include <QTreeWidget>

class QAction;
class QMenu;

/// The variant set module's dock: the scene's groups with their sets, then the sets without
/// group. Sets and groups are dragged from here into other views (as oxMimeUtils data),
/// renamed in place (F2 or the context menu), applied to the scene by a double click, and
/// handed to the Render Settings with "Add to Render Settings".
class oxVariantSetBrowser : public QTreeWidget {
    Q_OBJECT
public:
    explicit oxVariantSetBrowser(QWidget* parent = nullptr);

    /// The set or group an item stands for; an empty handle for anything else.
    static oxdVariantSetBase objectOf(const QTreeWidgetItem* item);
    /// The selected sets and groups, in the tree's order.
    QList<oxdVariantSetBase> selectedObjects() const;

    QMenu* getContextMenu() const { return contextMenu; }
    QAction* getAddToRenderSettingsAction() const { return addToRenderSettingsAction; }
    QAction* getRenameAction() const { return renameAction; }

public slots:
    /// Rebuilds the tree from the scene's variant set module.
    void rebuild();
    /// Hands the selected sets and groups to "addVariantSetsToRenderSettings".
    void addSelectionToRenderSettings();

protected:
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;
    QStringList mimeTypes() const override;

private:
    /// An item's text was edited: the set or group is renamed, or the old name comes back.
    void renameItem(QTreeWidgetItem* item);

    QMenu* contextMenu = nullptr;
    QAction* addToRenderSettingsAction = nullptr;
    QAction* renameAction = nullptr;
};
