#pragma once

#include <QDialog>

class QDialogButtonBox;
class QListWidget;
class QStackedWidget;
class oxPreferences;

/// The preferences dialog: the pages (oxPreferences with a widget) listed on the left, the
/// chosen page on the right, and OK, Apply, Cancel and Restore Defaults. The pages' widgets
/// are borrowed: they go back to their pages when the dialog closes.
class oxPreferencesDialog : public QDialog {
    Q_OBJECT
public:
    explicit oxPreferencesDialog(QWidget* parent = nullptr);
    ~oxPreferencesDialog() override;

    /// Shows the page of that name; false when there is none.
    bool selectPage(const QString& name);
    /// The page shown, or null when there are none.
    oxPreferences* currentPage() const;

    QListWidget* pageList() const { return m_list; }
    QDialogButtonBox* buttons() const { return m_buttons; }

    /// Apply: the pages' widgets become the preferences, which take effect and are saved.
    void apply();
    /// Restore Defaults: the shown page's widgets show its defaults (kept only by OK or Apply).
    void restoreDefaults();

    void done(int result) override;

private:
    void returnWidgets();

    QListWidget* m_list = nullptr;
    QStackedWidget* m_stack = nullptr;
    QDialogButtonBox* m_buttons = nullptr;
};
