#include "QOXScrollableMessageBox.h"

#include <QGridLayout>
#include <QLabel>
#include <QScrollArea>

QOXScrollableMessageBox::QOXScrollableMessageBox(QMessageBox::Icon icon, const QString& title,
                                                 const QString& text,
                                                 QMessageBox::StandardButtons buttons,
                                                 QWidget* parent, Qt::WindowFlags flags)
    : QMessageBox(icon, title, text, buttons, parent, flags)
{}

void QOXScrollableMessageBox::makeScrollable(int width, int height)
{
    if (m_scrollArea) {
        m_scrollArea->setFixedSize(width, height);
        return;
    }
    // QMessageBox puts its text into a label of this name in its grid layout.
    auto* label = findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    auto* grid = qobject_cast<QGridLayout*>(layout());
    if (!label || !grid)
        return;
    const int index = grid->indexOf(label);
    if (index < 0)
        return;
    int row = 0, column = 0, rowSpan = 1, columnSpan = 1;
    grid->getItemPosition(index, &row, &column, &rowSpan, &columnSpan);
    grid->removeWidget(label);

    auto* area = new QScrollArea(this);
    area->setObjectName(QStringLiteral("qox_scroll_area"));
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    area->setWidget(label);
    area->setFixedSize(width, height);
    grid->addWidget(area, row, column, rowSpan, columnSpan);
    m_scrollArea = area;
}
