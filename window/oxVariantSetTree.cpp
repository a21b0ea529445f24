#include "oxVariantSetTree.h"

#include "oxIconManager.h"
#include "oxVariants.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>

namespace {

const char kTreeMimeType[] = "application/oxlin-drag-drop-variant-set-tree";

constexpr Qt::ItemFlags kSetFlags =
    Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsEnabled;
constexpr Qt::ItemFlags kGroupFlags = kSetFlags | Qt::ItemIsDragEnabled;
// Item type of the tree's entries, so that items of other kinds can't be taken for ours.
constexpr int kItemType = QTreeWidgetItem::UserType + 1;

bool isOwnDrag(const QMimeData* data)
{
    return data && data->hasFormat(QLatin1String(kTreeMimeType));
}

bool canAccept(const QMimeData* data)
{
    return oxMimeUtils::canHandleVariantSets(data) || isOwnDrag(data);
}

oxVariantSetTreeItem* treeItem(QTreeWidgetItem* item)
{
    return item && item->type() == kItemType ? static_cast<oxVariantSetTreeItem*>(item) : nullptr;
}

} // namespace

oxVariantSetTreeItem::oxVariantSetTreeItem(oxVariantSetTreeItem* group, const QString& name)
    : QTreeWidgetItem(group, kItemType)
{
    setFlags(kSetFlags);
    setData(0, Qt::DisplayRole, name);
    setData(0, Qt::CheckStateRole, Qt::Unchecked);
}

oxVariantSetTreeItem::oxVariantSetTreeItem(QTreeWidget* tree, const QString& name, bool internal)
    : QTreeWidgetItem(tree, kItemType), internal(internal)
{
    setFlags(internal ? kSetFlags : kGroupFlags);
    setData(0, Qt::DisplayRole, name);
    setData(0, Qt::CheckStateRole, Qt::Unchecked);
}

const char* oxVariantSetTree::mimeType() { return kTreeMimeType; }

oxVariantSetTree::oxVariantSetTree(QWidget* parent) : QTreeWidget(parent)
{
    setRootIsDecorated(false);
    setAcceptDrops(true);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::InternalMove);
    setDefaultDropAction(Qt::MoveAction);
    setHeaderHidden(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setAlternatingRowColors(true);
    setDropIndicatorShown(true);
    setColumnCount(2);
    setMinimumSize(0, 300);
    header()->setStretchLastSection(true);
    if (oxVariantSetsService* service = oxVariantSetsService::the())
        setIconSize(service->getIconSize());
    setContextMenuPolicy(Qt::CustomContextMenu);

    contextMenu = new QMenu(tr("Variant Sets"), this);
    contextMenu->setTearOffEnabled(false);
    activeAction = contextMenu->addAction(tr("Active"));
    activeAction->setCheckable(true);
    deleteAction =
        contextMenu->addAction(oxIconManager::getIcon(QStringLiteral("Delete"), {}), tr("Delete"));
    deleteAction->setShortcut(QKeySequence::Delete);
    deleteAction->setShortcutContext(Qt::WidgetShortcut);
    addAction(deleteAction);
    clearAction =
        contextMenu->addAction(oxIconManager::getIcon(QStringLiteral("Remove"), {}), tr("Clear"));
    contextMenu->addSeparator();
    addAllAction = contextMenu->addAction(oxIconManager::getIcon(QStringLiteral("CreateNew"), {}),
                                          tr("Add all from Variant Set Module"));
    contextMenu->addSeparator();
    saveAction = contextMenu->addAction(oxIconManager::getIcon(QStringLiteral("Save"), {}),
                                        tr("Save configuration"));
    loadAction = contextMenu->addAction(oxIconManager::getIcon(QStringLiteral("FileOpen"), {}),
                                        tr("Load configuration"));

    connect(activeAction, &QAction::triggered, this, &oxVariantSetTree::setSelectedActive);
    connect(deleteAction, &QAction::triggered, this, &oxVariantSetTree::deleteSelected);
    connect(clearAction, &QAction::triggered, this, &oxVariantSetTree::clearAllVariantSets);
    connect(addAllAction, &QAction::triggered, this, &oxVariantSetTree::addAllVariantSets);
    connect(saveAction, &QAction::triggered, this, &oxVariantSetTree::saveConfiguration);
    connect(loadAction, &QAction::triggered, this, &oxVariantSetTree::loadConfiguration);
    connect(this, &QWidget::customContextMenuRequested, this, &oxVariantSetTree::showContextMenu);
    connect(this, &QTreeWidget::itemSelectionChanged, this, &oxVariantSetTree::updateActions);
    connect(model(), &QAbstractItemModel::dataChanged, this,
            &oxVariantSetTree::propagateCheckState);
    updateActions();
}

void oxVariantSetTree::updateActions()
{
    const QList<QTreeWidgetItem*> selected = selectedItems();
    bool anyUnchecked = false;
    bool allDeletable = true;
    for (QTreeWidgetItem* item : selected) {
        anyUnchecked = anyUnchecked || item->data(0, Qt::CheckStateRole).toInt() != Qt::Checked;
        allDeletable = allDeletable && !item->parent();
    }
    const bool hasGroups = topLevelItemCount() > 0;
    activeAction->setEnabled(!selected.isEmpty());
    activeAction->setChecked(!selected.isEmpty() && !anyUnchecked);
    deleteAction->setEnabled(!selected.isEmpty() && allDeletable);
    clearAction->setEnabled(hasGroups);
    addAllAction->setEnabled(true);
    saveAction->setEnabled(hasGroups);
    loadAction->setEnabled(true);
}

void oxVariantSetTree::showContextMenu(const QPoint& position)
{
    updateActions();
    contextMenu->exec(viewport()->mapToGlobal(position));
}

void oxVariantSetTree::setSelectedActive(bool active)
{
    for (QTreeWidgetItem* item : selectedItems())
        item->setData(0, Qt::CheckStateRole, active ? Qt::Checked : Qt::Unchecked);
}

void oxVariantSetTree::deleteSelected()
{
    // Collect first: a listener may rebuild the tree while the signals go out.
    QStringList groups;
    for (QTreeWidgetItem* item : selectedItems()) {
        if (item->parent())
            continue;
        const oxVariantSetTreeItem* entry = treeItem(item);
        groups << (entry && entry->isNormalGroup() ? entry->getName() : QString());
    }
    for (const QString& group : groups)
        emit variantSetGroupRemoved(group);
}

void oxVariantSetTree::propagateCheckState(const QModelIndex& topLeft,
                                           const QModelIndex& bottomRight,
                                           const QVector<int>& roles)
{
    if (topLeft != bottomRight || !roles.contains(Qt::CheckStateRole))
        return;
    QTreeWidgetItem* item = itemFromIndex(topLeft);
    if (!item || item->childCount() == 0)
        return;
    const QVariant state = item->data(0, Qt::CheckStateRole);
    for (int i = 0; i < item->childCount(); ++i)
        item->child(i)->setData(0, Qt::CheckStateRole, state);
}

QMimeData* oxVariantSetTree::mimeData(const QList<QTreeWidgetItem*> items) const
{
    QMimeData* data = QTreeWidget::mimeData(items);
    if (data)
        data->setData(QLatin1String(kTreeMimeType), QByteArray());
    return data;
}

QStringList oxVariantSetTree::mimeTypes() const
{
    return QTreeWidget::mimeTypes()
           << QLatin1String(kTreeMimeType) << QLatin1String(oxMimeUtils::variantSetMimeType());
}

void oxVariantSetTree::dragEnterEvent(QDragEnterEvent* event)
{
    if (!canAccept(event->mimeData())) {
        event->ignore();
        return;
    }
    if (isOwnDrag(event->mimeData()))
        QTreeWidget::dragEnterEvent(event);
    else
        event->acceptProposedAction();
}

void oxVariantSetTree::dragMoveEvent(QDragMoveEvent* event)
{
    if (!canAccept(event->mimeData())) {
        event->ignore();
        return;
    }
    if (isOwnDrag(event->mimeData()))
        QTreeWidget::dragMoveEvent(event);
    else
        event->acceptProposedAction();
}

void oxVariantSetTree::dropEvent(QDropEvent* event)
{
    if (!isEnabled())
        return;
    const QMimeData* data = event->mimeData();
    if (!oxMimeUtils::canHandleVariantSets(data)) {
        // An internal move of a group.
        QTreeWidget::dropEvent(event);
        if (isOwnDrag(data))
            emit orderChanged();
        return;
    }
    event->acceptProposedAction();
    dropVariantSets(data);
}

void oxVariantSetTree::dropData(const QMimeData* data)
{
    if (isEnabled() && oxMimeUtils::canHandleVariantSets(data))
        dropVariantSets(data);
}

void oxVariantSetTree::dropVariantSets(const QMimeData* data)
{
    QStringList sets;
    for (const oxdVariantSetBase& object : oxMimeUtils::extractVariantSetBaseObjects(data)) {
        if (object.isTypeOf(oxdVariantSet::staticMetaObject))
            sets << QString::fromStdString(object.getName());
        else if (object.isTypeOf(oxdVariantSetGroup::staticMetaObject))
            emit variantGroupDropped(QString::fromStdString(object.getName()));
    }
    emit variantSetsDropped(sets);
}
