#include "QOXSpiner.h"

#include <QWheelEvent>

QOXSpiner::QOXSpiner(QWidget* parent) : QSpinBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setKeyboardTracking(false);
}

void QOXSpiner::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QSpinBox::wheelEvent(event);
    else
        event->ignore();
}

QOXDoubleSpiner::QOXDoubleSpiner(QWidget* parent) : QDoubleSpinBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setKeyboardTracking(false);
}

void QOXDoubleSpiner::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QDoubleSpinBox::wheelEvent(event);
    else
        event->ignore();
}
