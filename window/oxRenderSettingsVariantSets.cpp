// The variant set selection of the window: the record's list of groups with their chosen sets
// is the truth; the tree shows it and reports what the user does, and the list is checked
// against the variant set module whenever the module changes.

#include "oxRenderSettings.h"

#include "QOXCollapsibleFrame.h"
#include "oxController.h"
#include "oxFile.h"
#include "oxIconManager.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxMessageRW.h"
#include "oxPlatform.h"
#include "oxRenderAutomationVariantSetGroup.h"
#include "oxRenderPlan.h"
#include "oxVariantSetTree.h"
#include "oxVariants.h"

#include <QFileDialog>
#include <QIcon>
#include <QMessageBox>
#include <QPixmap>
#include <QSignalBlocker>

#include <algorithm>
#include <array>

namespace {

const char kConfigurationKey[] = "variantSetGroups";
const char kWriteFailedMessage[] = "Couldn't write varinat set configuration!";
const char kFolderClosedIcon[] = "scenegraph/FolderClosed.svg";
const char kFolderOpenIcon[] = "scenegraph/FolderOpen.svg";

using Group = oxRenderAutomationVariantSetGroup;

std::string ungrouped() { return Group::ungroupedName(); }

Group* findEntry(oxVariantSetGroups& groups, const std::string& name)
{
    const auto found = std::find_if(groups.begin(), groups.end(), [&](const Group& group) {
        return group.getGroupName() == name;
    });
    return found == groups.end() ? nullptr : &*found;
}

// The host's callbacks reach the window through its singleton.
template <void (oxRenderSettings::*Slot)()>
void windowCB(oxMessage&)
{
    if (oxRenderSettings* window = oxRenderSettings::instance())
        (window->*Slot)();
}

void addVariantSetsCB(oxMessage& message)
{
    QList<oxdVariantSetBase> objects;
    oxRenderSettings* window = oxRenderSettings::instance();
    if (window && getFromMessage(message, "variantSetBaseObjects", objects))
        window->addVariantSetObjects(objects);
}

void variantSetRenamedCB(oxMessage& message)
{
    std::string oldName, newName, groupName;
    getFromMessage(message, "oldName", oldName);
    getFromMessage(message, "newName", newName);
    getFromMessage(message, "groupName", groupName);
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->variantSetRenamed(oldName, newName, groupName);
}

void variantGroupRenamedCB(oxMessage& message)
{
    std::string oldName, newName;
    getFromMessage(message, "oldName", oldName);
    getFromMessage(message, "newName", newName);
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->variantGroupRenamed(oldName, newName);
}

constexpr auto kModuleChangedCB = &windowCB<&oxRenderSettings::onVariantSetsChanged>;

const std::array<oxNamedCallback, 9> kVariantCallbacks = {{
    {"addVariantSetsToRenderSettings", &addVariantSetsCB},
    {"variantSetRenamed", &variantSetRenamedCB},
    {"variantGroupRenamed", &variantGroupRenamedCB},
    {"variantSetAdded", kModuleChangedCB},
    {"variantSetChanged", kModuleChangedCB},
    {"variantSetRemoved", kModuleChangedCB},
    {"variantGroupAdded", kModuleChangedCB},
    {"variantGroupChanged", kModuleChangedCB},
    {"variantGroupRemoved", kModuleChangedCB},
}};

void setFolderIcon(QTreeWidgetItem* item, bool open)
{
    QTreeWidget* tree = item->treeWidget();
    const QSignalBlocker blocker(tree);
    item->setIcon(0, oxIconManager::get(QLatin1String(open ? kFolderOpenIcon : kFolderClosedIcon)));
}

} // namespace

void oxRenderSettings::connectVariantSets()
{
    using Self = oxRenderSettings;
    using Tree = oxVariantSetTree;
    connect(variantSetTree, &Tree::variantSetsDropped, this, &Self::addVariantSets);
    connect(variantSetTree, &Tree::variantGroupDropped, this,
            [this](const QString& name) { addVariantSetGroup(name.toStdString()); });
    connect(variantSetTree, &Tree::variantSetGroupRemoved, this,
            [this](const QString& name) { removeVariantSetGroup(name.toStdString()); });
    connect(variantSetTree, &Tree::orderChanged, this, &Self::reorderVariantSetGroups);
    connect(variantSetTree, &Tree::addAllVariantSets, this, &Self::addAllVariantSetGroups);
    connect(variantSetTree, &Tree::clearAllVariantSets, this, &Self::clearVariantSetGroups);
    connect(variantSetTree, &Tree::saveConfiguration, this,
            qOverload<>(&Self::saveVariantSetConfiguration));
    connect(variantSetTree, &Tree::loadConfiguration, this,
            qOverload<>(&Self::loadVariantSetConfiguration));
    connect(variantSetTree, &QTreeWidget::itemChanged, this, &Self::updateVariantSetList);
    connect(variantSetTree, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
        oxVariants::selectVariantSet(item->text(0).toUtf8().constData(),
                                     !currentPreset.variantSetViewpointsUsed);
    });
    connect(variantSetTree, &QTreeWidget::itemCollapsed, this,
            [](QTreeWidgetItem* item) { setFolderIcon(item, false); });
    connect(variantSetTree, &QTreeWidget::itemExpanded, this,
            [](QTreeWidgetItem* item) { setFolderIcon(item, true); });

    connect(_variantSetsUsed, &QCheckBox::stateChanged, this, &Self::changedVariantSetsUsed);
    connect(_variantSetViewpointsUsed, &QCheckBox::stateChanged, this,
            &Self::changedVariantSetViewpointsUsed);
    // The open section takes the free height; a closed one leaves it to the others.
    connect(_variantsCF, &QOXCollapsibleFrame::toggled, this, [this](bool collapsed) {
        QSizePolicy policy = _variantsCF->sizePolicy();
        policy.setVerticalStretch(collapsed ? 0 : 100);
        _variantsCF->setSizePolicy(policy);
    });
    connect(oxVariantSetsService::the(), &oxVariantSetsService::variantSetHierarchyChanged, this,
            &Self::onVariantSetsChanged);
    addCallbacks(kVariantCallbacks);
}

void oxRenderSettings::disconnectVariantSets() { removeCallbacks(kVariantCallbacks); }

void oxRenderSettings::changedVariantSetsUsed(int state)
{
    currentPreset.variantSetsUsed = state == Qt::Checked;
    updateVariantSetGUI();
}

void oxRenderSettings::changedVariantSetViewpointsUsed(int state)
{
    currentPreset.variantSetViewpointsUsed = state == Qt::Checked;
    updateVariantSetGUI();
}

void oxRenderSettings::showBadVariantSetNames(const QStringList& names)
{
    if (names.isEmpty())
        return;
    QMessageBox box(QMessageBox::Warning, oxPlatform::getAppVersionName(),
                    tr("Unable to use variant sets for rendering to file, they contain characters "
                       "that can not be used within a filename, e.g.") +
                        QStringLiteral(" \\ / : * ? \" < > |"),
                    QMessageBox::Ok, this);
    box.setDetailedText(names.join(QLatin1Char('\n')));
    box.exec();
}

void oxRenderSettings::addVariantSets(const QStringList& names)
{
    QStringList badNames;
    for (const QString& name : names) {
        const oxdVariantSet set = oxVariants::findVariantSet(name.toStdString());
        if (!set.isValid())
            continue;
        std::string groupName = set.getGroupName();
        if (groupName.empty())
            groupName = ungrouped();
        Group* entry = findEntry(currentPreset.variantSets, groupName);
        if (!entry) {
            currentPreset.variantSets.emplace_back(groupName);
            entry = &currentPreset.variantSets.back();
        }
        // A name already chosen is no bad name.
        if (!entry->hasActiveVariantSetName(set.getName()) &&
            !entry->addActiveVariantSetName(set.getName()))
            badNames << name;
    }
    showBadVariantSetNames(badNames);
    updateVariantSetGUI();
}

void oxRenderSettings::addVariantSetObjects(const QList<oxdVariantSetBase>& objects)
{
    QStringList sets;
    for (const oxdVariantSetBase& object : objects) {
        if (object.isTypeOf(oxdVariantSet::staticMetaObject))
            sets << QString::fromStdString(object.getName());
        else if (object.isTypeOf(oxdVariantSetGroup::staticMetaObject))
            addVariantSetGroup(object.getName());
    }
    addVariantSets(sets);
}

void oxRenderSettings::addAllVariantSetGroups()
{
    if (!oxVariantSetsService::the())
        return;
    oxMessage message;
    oxController::call("getSortedVariantSetGroups", message);
    std::vector<std::string> names;
    getFromMessage(message, kConfigurationKey, names);
    for (const std::string& name : names)
        addVariantSetGroup(name);
}

void oxRenderSettings::reorderVariantSetGroups()
{
    oxVariantSetGroups& groups = currentPreset.variantSets;
    if (variantSetTree->topLevelItemCount() != int(groups.size()))
        return;
    oxVariantSetGroups reordered;
    for (int i = 0; i < variantSetTree->topLevelItemCount(); ++i) {
        const Group* entry =
            findEntry(groups, variantSetTree->topLevelItem(i)->text(0).toStdString());
        if (!entry)
            return;
        reordered.push_back(*entry);
    }
    groups = std::move(reordered);
    updateVariantSetGUI();
}

void oxRenderSettings::readBackVariantSetTree()
{
    QStringList badNames;
    for (Group& entry : currentPreset.variantSets) {
        entry.clearActiveVariantSetNames();
        const QList<QTreeWidgetItem*> items = variantSetTree->findItems(
            QString::fromStdString(entry.getGroupName()), Qt::MatchExactly, 0);
        if (items.size() != 1)
            continue;
        QTreeWidgetItem* groupItem = items.front();
        for (int i = 0; i < groupItem->childCount(); ++i) {
            QTreeWidgetItem* item = groupItem->child(i);
            if (item->data(0, Qt::CheckStateRole).toInt() != Qt::Checked)
                continue;
            if (!entry.addActiveVariantSetName(item->text(0).toStdString()))
                badNames << item->text(0);
        }
    }
    showBadVariantSetNames(badNames);
    updateVariantSetGUI();
}

bool oxRenderSettings::validateVariantSets()
{
    oxVariantSetGroups& groups = currentPreset.variantSets;
    std::vector<std::string> missingGroups;
    bool dropped = false;
    for (Group& entry : groups) {
        const std::string& groupName = entry.getGroupName();
        const bool isUngrouped = groupName == ungrouped();
        if (!isUngrouped && !oxVariants::findVariantGroup(groupName).isValid()) {
            missingGroups.push_back(groupName);
            continue;
        }
        // A set is missing when the module lost it or moved it to another group.
        const std::string expectedGroup = isUngrouped ? std::string() : groupName;
        for (const std::string& name : std::vector<std::string>(entry.getActiveVariantSetNames())) {
            const oxdVariantSet set = oxVariants::findVariantSet(name);
            if (set.isValid() && set.getGroupName() == expectedGroup)
                continue;
            oxLog::error("%s", qPrintable(tr("Variant set with name '%1' not found in group '%2'. "
                                             "Removed it from render settings")
                                              .arg(QString::fromStdString(name),
                                                   QString::fromStdString(groupName))));
            entry.removeActiveVariantSetName(name);
            dropped = true;
        }
    }
    for (const std::string& groupName : missingGroups) {
        oxLog::error("%s", qPrintable(tr("Variant set group '%1' not found. Removed it from "
                                         "render settings")
                                          .arg(QString::fromStdString(groupName))));
        groups.erase(std::remove_if(groups.begin(), groups.end(),
                                    [&](const Group& g) { return g.getGroupName() == groupName; }),
                     groups.end());
        dropped = true;
    }
    return dropped;
}

void oxRenderSettings::onVariantSetsChanged()
{
    validateVariantSets();
    updateVariantSetGUI();
}

void oxRenderSettings::variantSetRenamed(const std::string& oldName, const std::string& newName,
                                         const std::string& groupName)
{
    Group* entry =
        findEntry(currentPreset.variantSets, groupName.empty() ? ungrouped() : groupName);
    if (!entry)
        return;
    if (entry->hasActiveVariantSetName(oldName)) {
        entry->removeActiveVariantSetName(oldName);
        if (!entry->addActiveVariantSetName(newName))
            showBadVariantSetNames({QString::fromStdString(newName)});
    }
    updateVariantSetGUI();
}

void oxRenderSettings::variantGroupRenamed(const std::string& oldName, const std::string& newName)
{
    if (Group* entry = findEntry(currentPreset.variantSets, oldName)) {
        entry->setGroupName(newName);
        updateVariantSetGUI();
    }
}

void oxRenderSettings::saveVariantSetConfiguration()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Save configuration"), QString(),
                                                      QStringLiteral("*.xml"));
    if (!path.isEmpty())
        saveVariantSetConfiguration(path);
}

void oxRenderSettings::loadVariantSetConfiguration()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Load configuration"), QString(),
                                                      QStringLiteral("*.xml"));
    if (!path.isEmpty())
        loadVariantSetConfiguration(path);
}

bool oxRenderSettings::saveVariantSetConfiguration(const QString& path)
{
    oxMessage message;
    message.set(kConfigurationKey, currentPreset.variantSets, true);
    if (!oxMessageRW::write(message, QFile::encodeName(path).constData())) {
        oxLog::error("%s", kWriteFailedMessage);
        return false;
    }
    return true;
}

bool oxRenderSettings::loadVariantSetConfiguration(const QString& path)
{
    oxMessage message;
    if (!oxMessageRW::read(message, QFile::encodeName(path).constData(), std::string())) {
        oxLog::error("oxRenderSettings: the variant set configuration '%s' can't be read (%s); "
                     "the selection stays as it was.",
                     qPrintable(path), oxMessageRW::lastError().c_str());
        return false;
    }
    oxVariantSetGroups groups;
    if (message.has(kConfigurationKey) && !getFromMessage(message, kConfigurationKey, groups)) {
        oxLog::error("oxRenderSettings: '%s' holds no variant set configuration; the selection "
                     "stays as it was.",
                     qPrintable(path));
        return false;
    }
    currentPreset.variantSets = std::move(groups);
    validateVariantSets();
    updateVariantSetGUI();
    return true;
}

void oxRenderSettings::refreshVariantSetGui()
{
    {
        const QSignalBlocker blocker(variantSetTree);
        variantSetTree->clear();
        const QIcon openFolder = oxIconManager::get(QLatin1String(kFolderOpenIcon));
        for (const Group& entry : currentPreset.variantSets) {
            const std::string& groupName = entry.getGroupName();
            const bool isUngrouped = groupName == ungrouped();
            QList<oxdVariantSet> sets;
            if (isUngrouped) {
                sets = oxVariants::getUngroupedVariantSets();
            } else {
                const oxdVariantSetGroup group = oxVariants::findVariantGroup(groupName);
                if (!group.isValid())
                    continue;
                sets = group.getVariantSets();
            }
            auto* groupItem = new oxVariantSetTreeItem(
                variantSetTree, QString::fromStdString(groupName), isUngrouped);
            groupItem->setIcon(0, openFolder);
            // The group shows ticked when every one of its sets is.
            const bool allChosen =
                !sets.isEmpty() && std::all_of(sets.begin(), sets.end(), [&](const auto& set) {
                    return entry.hasActiveVariantSetName(set.getName());
                });
            groupItem->setData(0, Qt::CheckStateRole, allChosen ? Qt::Checked : Qt::Unchecked);
            for (const oxdVariantSet& set : sets) {
                auto* item =
                    new oxVariantSetTreeItem(groupItem, QString::fromStdString(set.getName()));
                if (set.isValid())
                    item->setIcon(0, QIcon(QPixmap::fromImage(set.getPreview())));
                if (entry.hasActiveVariantSetName(set.getName()))
                    item->setData(0, Qt::CheckStateRole, Qt::Checked);
            }
            groupItem->setExpanded(true);
        }
        // The names sit beside large previews: the first column must be wide enough.
        variantSetTree->resizeColumnToContents(0);
    }
    {
        const QSignalBlocker usedBlocker(_variantSetsUsed);
        const QSignalBlocker viewBlocker(_variantSetViewpointsUsed);
        _variantSetsUsed->setCheckState(currentPreset.variantSetsUsed ? Qt::Checked
                                                                      : Qt::Unchecked);
        _variantSetViewpointsUsed->setCheckState(
            currentPreset.variantSetViewpointsUsed ? Qt::Checked : Qt::Unchecked);
        _variantSetViewpointsUsed->setEnabled(currentPreset.variantSetsUsed &&
                                              !currentPreset.isCameraTrackView());
    }
    refreshRenderStatistics();
    updateVariantSetExampleLabels();
    variantSetTree->updateActions();
}

void oxRenderSettings::updateVariantSetExampleLabels()
{
    const bool anyChosen =
        std::any_of(currentPreset.variantSets.begin(), currentPreset.variantSets.end(),
                    [](const Group& group) { return group.hasActiveVariantSets(); });
    if (!currentPreset.variantSetsUsed || !anyChosen) {
        _variantSetExampleName->clear();
        _variantSetExampleNamingScheme->clear();
        return;
    }
    const oxVariantSetRenderSettings settings(getCurrentRenderSettings());
    const QString baseName = QString::fromStdString(oxFile::getBaseName(currentPreset.filename));
    const QString extension = QString::fromStdString(currentPreset.getFileExtension(true));
    _variantSetExampleName->setText(settings.getExampleName(baseName) + extension);
    _variantSetExampleNamingScheme->setText(settings.getNamingScheme(baseName) + extension);
}
