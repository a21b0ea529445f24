#include "QOXColorManipulator.h"

#include <QColorDialog>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionFrame>

#include <algorithm>

QOXColorManipulator::QOXColorManipulator(QWidget* parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QColor QOXColorManipulator::color() const { return QColor::fromRgbF(m_rgb[0], m_rgb[1], m_rgb[2]); }

void QOXColorManipulator::setColor(float r, float g, float b)
{
    const float rgb[3] = {std::clamp(r, 0.0f, 1.0f), std::clamp(g, 0.0f, 1.0f),
                          std::clamp(b, 0.0f, 1.0f)};
    if (std::equal(rgb, rgb + 3, m_rgb))
        return;
    std::copy(rgb, rgb + 3, m_rgb);
    update();
    emit colorChanged(m_rgb[0], m_rgb[1], m_rgb[2]);
}

void QOXColorManipulator::chooseColor()
{
    QColorDialog dialog(color(), this);
    dialog.setObjectName(QStringLiteral("qox_color_dialog"));
    dialog.setWindowTitle(tr("Select Color"));
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QColor chosen = dialog.selectedColor();
    // The dialog works in 8 bits per channel; the same colour chosen again changes nothing.
    if (chosen.isValid() && chosen.rgb() != color().rgb())
        setColor(static_cast<float>(chosen.redF()), static_cast<float>(chosen.greenF()),
                 static_cast<float>(chosen.blueF()));
}

QSize QOXColorManipulator::sizeHint() const { return QSize(80, fontMetrics().height() + 8); }

void QOXColorManipulator::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect r = rect().adjusted(1, 1, -2, -2);
    painter.setPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid));
    QColor fill = color();
    if (!isEnabled())
        fill.setAlphaF(0.35);
    painter.setBrush(fill);
    painter.drawRect(r);
}

void QOXColorManipulator::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        chooseColor();
}

void QOXColorManipulator::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return)
        chooseColor();
    else
        QWidget::keyPressEvent(event);
}
