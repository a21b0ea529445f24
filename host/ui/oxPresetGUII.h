#pragma once

#include <QVector>
#include <QWidget>

class QListWidget;
class QListWidgetItem;
class QPushButton;

/// A dialog that lists named presets and lets the user rename and delete them and make one
/// current. It only announces what the user did; the owner changes its presets and fills
/// the list again.
class oxPresetGUII : public QWidget {
    Q_OBJECT
public:
    explicit oxPresetGUII(QWidget* parent = nullptr);

    void clearPresets();
    void addPreset(const QString& name);
    /// Marks name as the current preset (bold, selected); an unknown name marks none.
    void setCurrentPreset(const QString& name);
    QStringList presets() const;
    QString currentPreset() const { return m_current; }
    QListWidget* list() const { return m_list; }

    /// Asks for a rename of from to to: refused with a message when to is empty, equal to
    /// another preset's name or to "Default"; otherwise presetRenamed is emitted.
    bool renamePreset(const QString& from, const QString& to);
    /// Asks whether to delete the selected presets and, when confirmed, emits presetsDeleted.
    void deleteSelected();

signals:
    void presetRenamed(const QString& from, const QString& to);
    void presetsDeleted(const QVector<QString>& names);
    void presetActivated(const QString& name);

private:
    void startRename();
    void itemEdited(QListWidgetItem* item);
    void updateButtons();

    QListWidget* m_list;
    QPushButton* m_rename;
    QPushButton* m_delete;
    QPushButton* m_apply;
    QString m_current;
    bool m_filling = false;
};
