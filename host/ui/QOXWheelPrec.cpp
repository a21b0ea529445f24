#include "QOXWheelPrec.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace {
// Pixels of drag per notch of the wheel.
constexpr int kPixelsPerNotch = 4;
constexpr int kMaxDecimals = 8;
} // namespace

QOXWheelPrec::QOXWheelPrec(QWidget* parent) : QWidget(parent)
{
    m_field = new QDoubleSpinBox(this);
    m_field->setObjectName(QStringLiteral("qox_field"));
    m_field->setKeyboardTracking(false);
    m_field->setDecimals(3);
    m_field->setRange(0.0, 1.0e6);
    m_wheel = new QWidget(this);
    m_wheel->setObjectName(QStringLiteral("qox_wheel"));
    m_wheel->setMinimumSize(60, 18);
    m_wheel->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_wheel->setCursor(Qt::SizeHorCursor);
    m_wheel->installEventFilter(this);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_field);
    layout->addWidget(m_wheel, 1);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(m_field, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
            &QOXWheelPrec::valueChanged);
}

double QOXWheelPrec::minimum() const { return m_field->minimum(); }
double QOXWheelPrec::maximum() const { return m_field->maximum(); }
double QOXWheelPrec::singleStep() const { return m_field->singleStep(); }
double QOXWheelPrec::value() const { return m_field->value(); }
int QOXWheelPrec::decimals() const { return m_field->decimals(); }

void QOXWheelPrec::setRange(double minimum, double maximum)
{
    showDecimalsOf(minimum);
    m_field->setRange(minimum, maximum);
}

void QOXWheelPrec::setMinimum(double minimum)
{
    showDecimalsOf(minimum);
    m_field->setMinimum(minimum);
}

void QOXWheelPrec::setMaximum(double maximum) { m_field->setMaximum(maximum); }

void QOXWheelPrec::setSingleStep(double step)
{
    showDecimalsOf(step);
    m_field->setSingleStep(step);
}

void QOXWheelPrec::showDecimalsOf(double value)
{
    // The field rounds its limits and steps to its decimals; a limit of 0.00001 needs five.
    int decimals = m_field->decimals();
    while (decimals < kMaxDecimals && std::abs(value * std::pow(10.0, decimals) -
                                               std::round(value * std::pow(10.0, decimals))) > 1e-6)
        ++decimals;
    m_field->setDecimals(decimals);
}
void QOXWheelPrec::setDecimals(int decimals) { m_field->setDecimals(decimals); }
void QOXWheelPrec::setValue(double value) { m_field->setValue(value); }

void QOXWheelPrec::turn(int notches, bool precise)
{
    const double step = precise ? singleStep() / 10.0 : singleStep();
    m_phase = (m_phase + notches) % 8;
    m_wheel->update();
    setValue(value() + notches * step);
}

bool QOXWheelPrec::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_wheel)
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        m_dragX = mouse->pos().x();
        return true;
    }
    case QEvent::MouseMove: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (!(mouse->buttons() & Qt::LeftButton) || !isEnabled())
            return true;
        const int notches = (mouse->pos().x() - m_dragX) / kPixelsPerNotch;
        if (notches != 0) {
            m_dragX += notches * kPixelsPerNotch;
            turn(notches, mouse->modifiers() & Qt::ShiftModifier);
        }
        return true;
    }
    case QEvent::Paint: {
        QPainter painter(m_wheel);
        const QRect r = m_wheel->rect().adjusted(0, 1, -1, -2);
        const QPalette& pal = m_wheel->palette();
        painter.setPen(pal.color(QPalette::Mid));
        painter.setBrush(pal.color(isEnabled() ? QPalette::Button : QPalette::Window));
        painter.drawRoundedRect(r, 3, 3);
        painter.setPen(pal.color(isEnabled() ? QPalette::Dark : QPalette::Midlight));
        for (int x = r.left() + 3 + m_phase; x < r.right() - 2; x += 8)
            painter.drawLine(x, r.top() + 3, x, r.bottom() - 3);
        return true;
    }
    default:
        return QWidget::eventFilter(watched, event);
    }
}
