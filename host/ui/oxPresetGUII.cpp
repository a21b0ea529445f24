#include "oxPresetGUII.h"

#include "oxPlatform.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
// The item's name before an edit, to tell a rename from what it renames.
constexpr int kNameRole = Qt::UserRole + 1;
} // namespace

oxPresetGUII::oxPresetGUII(QWidget* parent) : QWidget(parent, Qt::Dialog)
{
    setObjectName(QStringLiteral("oxPresetGUII"));
    setWindowTitle(tr("Edit Presets"));
    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("_presetList"));
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setEditTriggers(QAbstractItemView::EditKeyPressed);

    m_apply = new QPushButton(tr("Apply"), this);
    m_apply->setObjectName(QStringLiteral("_applyPreset"));
    m_rename = new QPushButton(tr("Rename"), this);
    m_rename->setObjectName(QStringLiteral("_renamePreset"));
    m_delete = new QPushButton(tr("Delete"), this);
    m_delete->setObjectName(QStringLiteral("_deletePresets"));
    auto* close = new QDialogButtonBox(QDialogButtonBox::Close, this);

    auto* buttons = new QVBoxLayout();
    buttons->addWidget(m_apply);
    buttons->addWidget(m_rename);
    buttons->addWidget(m_delete);
    buttons->addStretch(1);
    auto* row = new QHBoxLayout();
    row->addWidget(m_list, 1);
    row->addLayout(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addWidget(close);
    resize(360, 300);

    connect(close, &QDialogButtonBox::rejected, this, &QWidget::hide);
    connect(m_apply, &QPushButton::clicked, this, [this]() {
        if (QListWidgetItem* item = m_list->currentItem())
            emit presetActivated(item->data(kNameRole).toString());
    });
    connect(m_list, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        emit presetActivated(item->data(kNameRole).toString());
    });
    connect(m_rename, &QPushButton::clicked, this, &oxPresetGUII::startRename);
    connect(m_delete, &QPushButton::clicked, this, &oxPresetGUII::deleteSelected);
    connect(m_list, &QListWidget::itemChanged, this, &oxPresetGUII::itemEdited);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &oxPresetGUII::updateButtons);
    updateButtons();
}

void oxPresetGUII::clearPresets()
{
    m_filling = true;
    m_list->clear();
    m_filling = false;
    updateButtons();
}

void oxPresetGUII::addPreset(const QString& name)
{
    m_filling = true;
    auto* item = new QListWidgetItem(name, m_list);
    item->setData(kNameRole, name);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    QFont font = item->font();
    font.setBold(name == m_current);
    item->setFont(font);
    m_filling = false;
}

void oxPresetGUII::setCurrentPreset(const QString& name)
{
    m_current = name;
    m_filling = true;
    for (int i = 0; i < m_list->count(); ++i) {
        QListWidgetItem* item = m_list->item(i);
        QFont font = item->font();
        font.setBold(item->data(kNameRole).toString() == name);
        item->setFont(font);
        if (font.bold())
            m_list->setCurrentItem(item);
    }
    m_filling = false;
    updateButtons();
}

QStringList oxPresetGUII::presets() const
{
    QStringList names;
    for (int i = 0; i < m_list->count(); ++i)
        names << m_list->item(i)->data(kNameRole).toString();
    return names;
}

bool oxPresetGUII::renamePreset(const QString& from, const QString& to)
{
    const QString name = to.trimmed();
    QString problem;
    if (name.isEmpty())
        problem = tr("A preset needs a name.");
    else if (name == QLatin1String("Default"))
        problem = tr("The name \"Default\" belongs to the default settings. Choose another name.");
    else if (name != from && presets().contains(name))
        problem = tr("A preset named \"%1\" exists already. Choose another name.").arg(name);
    if (!problem.isEmpty()) {
        QMessageBox::warning(this, oxPlatform::getAppVersionName(), problem);
        return false;
    }
    if (name != from)
        emit presetRenamed(from, name);
    return true;
}

void oxPresetGUII::deleteSelected()
{
    QVector<QString> names;
    for (QListWidgetItem* item : m_list->selectedItems())
        names.append(item->data(kNameRole).toString());
    if (names.isEmpty())
        return;
    const QString question = names.size() == 1
                                 ? tr("Delete the preset \"%1\"?").arg(names.front())
                                 : tr("Delete the %1 selected presets?").arg(names.size());
    if (QMessageBox::question(this, oxPlatform::getAppVersionName(), question,
                              QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::No) != QMessageBox::Yes)
        return;
    emit presetsDeleted(names);
}

void oxPresetGUII::startRename()
{
    if (QListWidgetItem* item = m_list->currentItem())
        m_list->editItem(item);
}

void oxPresetGUII::itemEdited(QListWidgetItem* item)
{
    if (m_filling)
        return;
    const QString from = item->data(kNameRole).toString();
    const QString to = item->text();
    if (to == from)
        return;
    const bool accepted = renamePreset(from, to);
    // The owner fills the list again after a rename; until then, or when refused, the item
    // shows the name it has.
    m_filling = true;
    item->setText(from);
    m_filling = false;
    (void)accepted;
}

void oxPresetGUII::updateButtons()
{
    const bool selected = !m_list->selectedItems().isEmpty();
    m_rename->setEnabled(m_list->selectedItems().size() == 1);
    m_delete->setEnabled(selected);
    m_apply->setEnabled(m_list->selectedItems().size() == 1);
}
