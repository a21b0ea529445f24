#include "oxVariantSetBrowser.h"

#include "oxController.h"
#include "oxIconManager.h"
#include "oxMessage.h"
#include "oxVariants.h"

#include <QHeaderView>
#include <QMenu>
#include <QPixmap>
#include <QSignalBlocker>

namespace {

// Items keep their object's id and whether it is a group; names are read from the scene.
constexpr int kIdRole = Qt::UserRole;
constexpr int kGroupRole = Qt::UserRole + 1;

QTreeWidgetItem* makeItem(const oxdVariantSetBase& object, bool group)
{
    auto* item = new QTreeWidgetItem(QStringList(QString::fromStdString(object.getName())));
    item->setData(0, kIdRole, object.getObjectId());
    item->setData(0, kGroupRole, group);
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled |
                   Qt::ItemIsEditable);
    return item;
}

template <typename Handle>
Handle findById(const QList<Handle>& handles, quint32 id)
{
    for (const Handle& handle : handles)
        if (handle.getObjectId() == id)
            return handle;
    return Handle();
}

} // namespace

oxVariantSetBrowser::oxVariantSetBrowser(QWidget* parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("variantSetBrowser"));
    setHeaderHidden(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setEditTriggers(QAbstractItemView::EditKeyPressed);
    setIconSize(oxVariantSetsService::the()->getIconSize() / 2);
    setContextMenuPolicy(Qt::CustomContextMenu);

    contextMenu = new QMenu(tr("Variant Sets"), this);
    addToRenderSettingsAction = contextMenu->addAction(
        oxIconManager::getIcon(QStringLiteral("CreateImage"), {}), tr("Add to Render Settings"));
    renameAction = contextMenu->addAction(tr("Rename"));
    connect(addToRenderSettingsAction, &QAction::triggered, this,
            &oxVariantSetBrowser::addSelectionToRenderSettings);
    connect(renameAction, &QAction::triggered, this, [this]() {
        if (QTreeWidgetItem* item = currentItem())
            editItem(item, 0);
    });
    connect(this, &QWidget::customContextMenuRequested, this, [this](const QPoint& position) {
        const bool any = !selectedItems().isEmpty();
        addToRenderSettingsAction->setEnabled(any);
        renameAction->setEnabled(currentItem() != nullptr);
        contextMenu->exec(viewport()->mapToGlobal(position));
    });
    connect(this, &QTreeWidget::itemDoubleClicked, this, [](QTreeWidgetItem* item) {
        if (!item->data(0, kGroupRole).toBool())
            oxVariants::selectVariantSet(item->text(0).toUtf8().constData(), false);
    });
    connect(this, &QTreeWidget::itemChanged, this, &oxVariantSetBrowser::renameItem);
    connect(oxVariantSetsService::the(), &oxVariantSetsService::variantSetHierarchyChanged, this,
            &oxVariantSetBrowser::rebuild);
    rebuild();
}

void oxVariantSetBrowser::rebuild()
{
    const QSignalBlocker blocker(this);
    clear();
    const QIcon folder = oxIconManager::get(QStringLiteral("scenegraph/FolderOpen.svg"));
    auto addSet = [](QTreeWidgetItem* item, const oxdVariantSet& set) {
        item->setIcon(0, QIcon(QPixmap::fromImage(set.getPreview())));
    };
    for (const oxdVariantSetGroup& group : oxVariants::getVariantSetGroups()) {
        QTreeWidgetItem* groupItem = makeItem(group, true);
        groupItem->setIcon(0, folder);
        addTopLevelItem(groupItem);
        for (const oxdVariantSet& set : group.getVariantSets()) {
            QTreeWidgetItem* item = makeItem(set, false);
            addSet(item, set);
            groupItem->addChild(item);
        }
        groupItem->setExpanded(true);
    }
    for (const oxdVariantSet& set : oxVariants::getUngroupedVariantSets()) {
        QTreeWidgetItem* item = makeItem(set, false);
        addSet(item, set);
        addTopLevelItem(item);
    }
}

oxdVariantSetBase oxVariantSetBrowser::objectOf(const QTreeWidgetItem* item)
{
    oxdVariantSetBase object;
    if (!item)
        return object;
    const quint32 id = item->data(0, kIdRole).toUInt();
    if (item->data(0, kGroupRole).toBool())
        object.assign(findById(oxVariants::getVariantSetGroups(), id));
    else
        object.assign(findById(oxVariants::getVariantSets(), id));
    return object;
}

QList<oxdVariantSetBase> oxVariantSetBrowser::selectedObjects() const
{
    QList<oxdVariantSetBase> objects;
    // selectedItems() is in the order of selection; walk the tree for its own order.
    for (QTreeWidgetItemIterator it(const_cast<oxVariantSetBrowser*>(this),
                                    QTreeWidgetItemIterator::Selected);
         *it; ++it) {
        const oxdVariantSetBase object = objectOf(*it);
        if (object.isValid())
            objects.append(object);
    }
    return objects;
}

void oxVariantSetBrowser::addSelectionToRenderSettings()
{
    const QList<oxdVariantSetBase> objects = selectedObjects();
    if (objects.isEmpty())
        return;
    oxMessage message;
    message.set("variantSetBaseObjects", objects, true);
    oxController::call("addVariantSetsToRenderSettings", message);
}

QMimeData* oxVariantSetBrowser::mimeData(const QList<QTreeWidgetItem*> items) const
{
    QList<oxdVariantSetBase> objects;
    for (const QTreeWidgetItem* item : items) {
        const oxdVariantSetBase object = objectOf(item);
        if (object.isValid())
            objects.append(object);
    }
    return oxMimeUtils::createVariantSetMimeData(objects);
}

QStringList oxVariantSetBrowser::mimeTypes() const
{
    return {QLatin1String(oxMimeUtils::variantSetMimeType())};
}

void oxVariantSetBrowser::renameItem(QTreeWidgetItem* item)
{
    const oxdVariantSetBase object = objectOf(item);
    const std::string oldName = object.getName();
    const std::string newName = item->text(0).trimmed().toStdString();
    if (!object.isValid() || oldName == newName)
        return;
    const bool renamed = item->data(0, kGroupRole).toBool()
                             ? oxVariants::renameVariantGroup(oldName, newName)
                             : oxVariants::renameVariantSet(oldName, newName);
    // A refused name goes back to the old one (the module said why in the log).
    if (!renamed) {
        const QSignalBlocker blocker(this);
        item->setText(0, QString::fromStdString(oldName));
    }
}
