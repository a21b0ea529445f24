#include "QOXMultiLevelComboBox.h"

#include <QAction>

#include <memory>

QOXComboBoxMenu::QOXComboBoxMenu(QWidget* parent) : QMenu(parent) {}

QAction* QOXComboBoxMenu::addItem(const QString& text, const QVariant& data)
{
    QAction* action = addAction(text);
    action->setData(data);
    return action;
}

QOXComboBoxMenu* QOXComboBoxMenu::addMenu(const QString& text, const QVariant& data)
{
    auto* menu = new QOXComboBoxMenu(this);
    menu->setTitle(text);
    menu->menuAction()->setData(data);
    QMenu::addMenu(menu);
    return menu;
}

QAction* QOXComboBoxMenu::findItem(const QVariant& data) const
{
    for (QAction* action : actions()) {
        if (action->isSeparator())
            continue;
        if (action->data().isValid() && action->data() == data)
            return action;
        if (auto* sub = qobject_cast<QOXComboBoxMenu*>(action->menu())) {
            if (QAction* found = sub->findItem(data))
                return found;
        }
    }
    return nullptr;
}

QOXMultiLevelComboBox::QOXMultiLevelComboBox(QWidget* parent) : QComboBox(parent) {}

QString QOXMultiLevelComboBox::resetText() const
{
    if (!m_resetText.isEmpty())
        return m_resetText;
    return count() > 0 ? itemText(0) : QString();
}

void QOXMultiLevelComboBox::setResetText(const QString& text) { m_resetText = text; }

void QOXMultiLevelComboBox::display(const QString& text, const QVariant& data)
{
    if (m_resetText.isEmpty() && count() > 0 && currentData().toUInt() == 0)
        m_resetText = itemText(0); // the form's first text is the reset text
    clear();
    addItem(text, data);
    setCurrentIndex(0);
    emit changed(text, data);
}

bool QOXMultiLevelComboBox::change(const QVariant& data)
{
    std::unique_ptr<QOXComboBoxMenu> menu(createMenu());
    QAction* action = menu ? menu->findItem(data) : nullptr;
    if (!action)
        return false;
    change(action);
    return true;
}

void QOXMultiLevelComboBox::change(QAction* action)
{
    if (!action)
        return;
    display(action->text(), action->data());
}

void QOXMultiLevelComboBox::reset() { display(resetText(), QVariant(0u)); }

void QOXMultiLevelComboBox::update()
{
    const QVariant data = currentData();
    if (!data.isValid() || data.toUInt() == 0)
        return;
    std::unique_ptr<QOXComboBoxMenu> menu(createMenu());
    QAction* action = menu ? menu->findItem(data) : nullptr;
    if (action) {
        if (action->text() != currentText())
            change(action);
        return;
    }
    m_lostData = data;
    reset();
}

void QOXMultiLevelComboBox::undo()
{
    if (!m_lostData.isValid())
        return;
    if (change(m_lostData))
        m_lostData = QVariant();
}

QOXComboBoxMenu* QOXMultiLevelComboBox::createMenu()
{
    auto* menu = new QOXComboBoxMenu(this);
    menu->addItem(resetText(), QVariant(0u));
    return menu;
}

void QOXMultiLevelComboBox::showPopup()
{
    std::unique_ptr<QOXComboBoxMenu> menu(createMenu());
    if (!menu)
        return;
    if (QAction* current = menu->findItem(currentData())) {
        current->setCheckable(true);
        current->setChecked(true);
    }
    QAction* chosen = menu->exec(mapToGlobal(QPoint(0, height())));
    if (chosen && !chosen->menu())
        change(chosen);
}
