#pragma once

#include <QTreeWidget>
#include <QTreeWidgetItem>

class QAction;
class QMenu;

/// An entry of the variant set tree: a group (top-level item) or one of its sets (child).
/// Column 0 holds the name, the icon and the check state (role Qt::CheckStateRole: 2 checked,
/// 0 unchecked).
class oxVariantSetTreeItem : public QTreeWidgetItem {
public:
    /// A set item below group.
    oxVariantSetTreeItem(oxVariantSetTreeItem* group, const QString& name);
    /// A group item at the end of tree. internal marks the pseudo group of ungrouped sets,
    /// which can't be dragged and isn't a group of the variant set module.
    oxVariantSetTreeItem(QTreeWidget* tree, const QString& name, bool internal);

    QString getName() const { return text(0); }
    /// A group of the module (a top-level item not built as internal).
    bool isNormalGroup() const { return !parent() && !internal; }
    bool isChecked() const { return data(0, Qt::CheckStateRole).toInt() == Qt::Checked; }

private:
    bool internal = false;
};

/// The chosen variant sets of the Render Settings window, grouped. Variant sets and groups
/// are dropped in from the variant set module; groups are reordered by dragging them; the
/// context menu ticks, deletes, clears, adds all and saves or loads a configuration. The tree
/// only shows and reports: the window keeps the selection and rebuilds the tree from it.
class oxVariantSetTree : public QTreeWidget {
    Q_OBJECT
public:
    /// The format the tree's own drags carry, besides QTreeWidget's.
    static const char* mimeType();

    explicit oxVariantSetTree(QWidget* parent = nullptr);

    /// The context menu and its entries, for the window and for tests.
    QMenu* getContextMenu() const { return contextMenu; }
    QAction* getActiveAction() const { return activeAction; }
    QAction* getDeleteAction() const { return deleteAction; }
    QAction* getClearAction() const { return clearAction; }
    QAction* getAddAllAction() const { return addAllAction; }
    QAction* getSaveAction() const { return saveAction; }
    QAction* getLoadAction() const { return loadAction; }

    /// Recomputes which entries of the context menu can be used.
    void updateActions();
    /// Emits variantSetGroupRemoved for each selected top-level item: its name for a group of
    /// the module, "" for the pseudo group of ungrouped sets. Set items are skipped.
    void deleteSelected();
    /// Ticks (true) or unticks every selected item.
    void setSelectedActive(bool active);
    /// Handles a drop of data as a drop on the tree (what dropEvent does), for callers without
    /// an event.
    void dropData(const QMimeData* data);

signals:
    void variantSetsDropped(QStringList variantSets);
    void variantGroupDropped(QString name);
    void variantSetGroupRemoved(QString name);
    void orderChanged();
    void addAllVariantSets();
    void clearAllVariantSets();
    void saveConfiguration();
    void loadConfiguration();

protected:
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;
    QStringList mimeTypes() const override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void showContextMenu(const QPoint& position);
    void propagateCheckState(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                             const QVector<int>& roles);
    /// Emits the signals of a drop of variant sets or groups from the variant set module.
    void dropVariantSets(const QMimeData* data);

    QMenu* contextMenu = nullptr;
    QAction* activeAction = nullptr;
    QAction* deleteAction = nullptr;
    QAction* clearAction = nullptr;
    QAction* addAllAction = nullptr;
    QAction* saveAction = nullptr;
    QAction* loadAction = nullptr;
};
