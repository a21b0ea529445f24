#include "oxPreferencesDialog.h"

#include "oxPreferences.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

oxPreferencesDialog::oxPreferencesDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("oxPreferencesDialog"));
    setWindowTitle(tr("Preferences"));

    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("_pages"));
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_stack = new QStackedWidget(this);
    m_stack->setObjectName(QStringLiteral("_page_stack"));
    m_buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Apply |
                                 QDialogButtonBox::Cancel | QDialogButtonBox::RestoreDefaults,
                             this);

    auto* pages = new QHBoxLayout;
    pages->addWidget(m_list);
    pages->addWidget(m_stack, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(pages, 1);
    layout->addWidget(m_buttons);

    int widest = 0;
    for (oxPreferences* page : oxPreferences::getPages()) {
        QWidget* widget = page->getPreferencesGUI();
        if (!widget)
            continue;
        page->preferencesToWidgets();
        auto* item = new QListWidgetItem(page->getName(), m_list);
        item->setToolTip(page->getDescription());
        widest = std::max(widest, m_list->fontMetrics().horizontalAdvance(page->getName()));
        m_stack->addWidget(widget);
    }
    m_list->setFixedWidth(widest + 40);
    connect(m_list, &QListWidget::currentRowChanged, m_stack, &QStackedWidget::setCurrentIndex);
    if (m_list->count() > 0)
        m_list->setCurrentRow(0);

    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this,
            &oxPreferencesDialog::apply);
    connect(m_buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            &oxPreferencesDialog::restoreDefaults);
    resize(860, 680);
}

oxPreferencesDialog::~oxPreferencesDialog() { returnWidgets(); }

bool oxPreferencesDialog::selectPage(const QString& name)
{
    const QList<QListWidgetItem*> found = m_list->findItems(name, Qt::MatchExactly);
    if (found.isEmpty())
        return false;
    m_list->setCurrentItem(found.front());
    return true;
}

oxPreferences* oxPreferencesDialog::currentPage() const
{
    QWidget* shown = m_stack->currentWidget();
    if (!shown)
        return nullptr;
    for (oxPreferences* page : oxPreferences::getPages())
        if (page->getPreferencesGUI() == shown)
            return page;
    return nullptr;
}

void oxPreferencesDialog::apply() { oxPreferences::confirm(); }

void oxPreferencesDialog::restoreDefaults()
{
    if (oxPreferences* page = currentPage())
        oxPreferences::showDefaults(*page);
}

void oxPreferencesDialog::done(int result)
{
    if (result == QDialog::Accepted)
        apply();
    QDialog::done(result);
}

// The pages own their widgets; the dialog must not delete them with itself.
void oxPreferencesDialog::returnWidgets()
{
    while (m_stack->count() > 0) {
        QWidget* widget = m_stack->widget(0);
        m_stack->removeWidget(widget);
        widget->setParent(nullptr);
    }
}
