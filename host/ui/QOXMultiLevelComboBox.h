#pragma once

#include <QComboBox>
#include <QMenu>
#include <QVariant>

/// The cascading menu of a QOXMultiLevelComboBox. Entries carry their data in
/// QAction::data; a submenu carries its data in its menu action.
class QOXComboBoxMenu : public QMenu {
    Q_OBJECT
public:
    explicit QOXComboBoxMenu(QWidget* parent = nullptr);

    /// Adds an entry with text and data.
    QAction* addItem(const QString& text, const QVariant& data = QVariant());
    /// Adds a submenu with text whose menu action carries data.
    QOXComboBoxMenu* addMenu(const QString& text, const QVariant& data = QVariant());
    /// The first entry (depth first, submenus' own actions included) whose data equals data,
    /// or null.
    QAction* findItem(const QVariant& data) const;
};

/// A closed combo box that opens a cascading menu instead of a list. It holds one item: the
/// chosen entry's text, with the entry's data as user data (role Qt::UserRole). Subclasses
/// fill the menu in createMenu, which runs anew each time the menu is needed.
class QOXMultiLevelComboBox : public QComboBox {
    Q_OBJECT
    Q_PROPERTY(QString resetText READ resetText WRITE setResetText)
public:
    explicit QOXMultiLevelComboBox(QWidget* parent = nullptr);

    /// The text shown by reset(); the form's first item text when it has one.
    QString resetText() const;
    void setResetText(const QString& text);

    /// Shows the entry of the menu whose data equals data; false (and nothing changes) when
    /// the menu has no such entry. Emits changed.
    bool change(const QVariant& data);
    /// Shows action's text and data and emits changed.
    void change(QAction* action);
    /// Shows the reset text with data 0 and emits changed.
    void reset();
    /// Re-reads the shown entry from a fresh menu: its text follows a rename; when the entry
    /// is gone the box resets and remembers the entry for undo().
    void update();
    /// Shows the entry that the last update() found gone, if the menu has it again.
    void undo();

    void showPopup() override;

signals:
    /// The shown entry changed (through the menu, change, reset or update).
    void changed(const QString& text, const QVariant& data);

protected:
    /// Builds the menu; the caller owns it. The default offers the reset entry only.
    virtual QOXComboBoxMenu* createMenu();

private:
    void display(const QString& text, const QVariant& data);

    QString m_resetText;
    QVariant m_lostData;
};
