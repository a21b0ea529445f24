// The window's named lists of settings: finding, saving under a name, renaming and deleting
// presets, and the preset menu that offers them.

#include "oxRenderSettings.h"

#include "oxPresetGUII.h"
#include "oxRenderSettingsPresetFile.h"

#include <QAction>
#include <QActionGroup>
#include <QInputDialog>
#include <QKeySequence>
#include <QMessageBox>

namespace {
const char kDefaultPresetName[] = "Default";
} // namespace

int oxRenderSettings::findPresetIndex(const std::string& name,
                                      const oxRenderSettingsPresets& list) const
{
    if (name.empty())
        return -1;
    for (size_t i = 0; i < list.size(); ++i) {
        if (list[i] && list[i]->name == name)
            return static_cast<int>(i);
    }
    return -1;
}

oxRenderSettingsPresetSPtr oxRenderSettings::findPreset(const std::string& name,
                                                        const oxRenderSettingsPresets& list) const
{
    const int index = findPresetIndex(name, list);
    return index < 0 ? nullptr : list[static_cast<size_t>(index)];
}

void oxRenderSettings::saveCurrentSettingsAs(const std::string& name, oxRenderSettingsPresets& list)
{
    oxRenderSettingsPresetSPtr captured = getCurrentRenderSettings();
    captured->name = name;
    // An existing entry is overwritten in place, so that pointers to it and its position in
    // the menu stay.
    if (const oxRenderSettingsPresetSPtr existing = findPreset(name, list))
        *existing = *captured;
    else
        list.push_back(captured);
}

void oxRenderSettings::savePreset()
{
    if (currentPreset.name.empty())
        return;
    saveCurrentSettingsAs(currentPreset.name, presets);
    updatePresetMenu();
    savePresetFile(presets);
}

void oxRenderSettings::savePresetAs()
{
    bool accepted = false;
    const QString text =
        QInputDialog::getText(this, tr("Preset Name"), tr("Enter the name of the preset:"),
                              QLineEdit::Normal, QString(), &accepted);
    // The default settings are no stored preset; their name is refused even from a
    // cancelled dialog, so that the user learns why.
    if (text == QLatin1String(kDefaultPresetName)) {
        QMessageBox::warning(this, tr("RenderSettings"),
                             tr("You can't overwrite the default settings!"));
        return;
    }
    if (!accepted || text.isEmpty())
        return;
    saveCurrentSettingsAs(text.toStdString(), presets);
    updatePresetMenu();
    savePresetFile(presets);
}

void oxRenderSettings::deletePresetByName(const std::string& name)
{
    const int index = findPresetIndex(name, presets);
    if (index < 0)
        return;
    presets.erase(presets.begin() + index);
    if (currentPreset.name == name)
        currentPreset.name.clear();
}

void oxRenderSettings::deletePresets(const QVector<QString>& names)
{
    for (const QString& name : names)
        deletePresetByName(name.toStdString());
    updatePresetMenu();
    savePresetFile(presets);
}

void oxRenderSettings::renamePreset(const QString& oldName, const QString& newName)
{
    const std::string from = oldName.toUtf8().toStdString();
    const std::string to = newName.toUtf8().toStdString();
    const oxRenderSettingsPresetSPtr preset = findPreset(from, presets);
    if (!preset)
        return;
    if (!to.empty() && findPreset(to, presets))
        return;
    preset->name = to;
    if (currentPreset.name == from)
        currentPreset.name = to;
    updatePresetMenu();
    savePresetFile(presets);
}

void oxRenderSettings::editPresets()
{
    if (!presetGUI)
        return;
    presetGUI->show();
    presetGUI->raise();
}

void oxRenderSettings::updatePresets()
{
    updatePresetMenu();
    savePresetFile(presets);
}

void oxRenderSettings::updatePresetMenu()
{
    if (!_presetsMenu || !presetActionGroup || !presetGUI)
        return;
    // New entries go in before the old ones leave, so that the menu is never empty.
    const QList<QAction*> previous = _presetsMenu->actions();
    presetGUI->clearPresets();

    const bool newerFile = oxRenderSettingsPreset::getLoadedFileVersion() >
                           oxRenderSettingsPreset::getCurrentFileVersion();
    QAction* save = _presetsMenu->addAction(tr("Save"), this, &oxRenderSettings::savePreset);
    save->setShortcut(QKeySequence());
    save->setEnabled(!currentPreset.name.empty() && !newerFile);
    QAction* saveAs =
        _presetsMenu->addAction(tr("Save As..."), this, &oxRenderSettings::savePresetAs);
    saveAs->setEnabled(!newerFile);
    _presetsMenu->addAction(tr("Edit..."), this, &oxRenderSettings::editPresets);
    _presetsMenu->addSeparator();

    QAction* defaults = _presetsMenu->addAction(tr(kDefaultPresetName), this,
                                                &oxRenderSettings::applyDefaultPreset);
    defaults->setCheckable(true);
    defaults->setActionGroup(presetActionGroup);
    defaults->setChecked(currentPreset.name.empty());
    _presetsMenu->addSeparator();

    for (const oxRenderSettingsPresetSPtr& preset : presets) {
        if (!preset)
            continue;
        const QString name = QString::fromStdString(preset->name);
        QAction* entry =
            _presetsMenu->addAction(name, this, &oxRenderSettings::applyPresetFromMenu);
        entry->setCheckable(true);
        entry->setActionGroup(presetActionGroup);
        entry->setChecked(preset->name == currentPreset.name);
        presetGUI->addPreset(name);
    }
    presetGUI->setCurrentPreset(QString::fromStdString(currentPreset.name));

    for (QAction* action : previous) {
        _presetsMenu->removeAction(action);
        action->deleteLater();
    }
}
