#include "QOXSlider.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSlider>

#include <cmath>

QOXSlider::QOXSlider(QWidget* parent) : QWidget(parent)
{
    m_slider = new QSlider(Qt::Horizontal, this);
    m_slider->setObjectName(QStringLiteral("qox_slider"));
    m_field = new QDoubleSpinBox(this);
    m_field->setObjectName(QStringLiteral("qox_field"));
    m_field->setKeyboardTracking(false);
    m_field->setRange(0.0, 10.0);
    m_field->setDecimals(2);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_slider, 1);
    layout->addWidget(m_field);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    syncSlider();

    connect(m_slider, &QSlider::valueChanged, this,
            [this](int notch) { setValue(minimum() + notch * m_singleStep); });
    connect(m_field, qOverload<double>(&QDoubleSpinBox::valueChanged), this, [this](double v) {
        syncSlider();
        emit valueChanged(v);
    });
}

double QOXSlider::minimum() const { return m_field->minimum(); }
double QOXSlider::maximum() const { return m_field->maximum(); }
double QOXSlider::value() const { return m_field->value(); }
int QOXSlider::decimals() const { return m_field->decimals(); }

void QOXSlider::setMinimum(double minimum) { setRange(minimum, std::max(minimum, maximum())); }
void QOXSlider::setMaximum(double maximum) { setRange(std::min(minimum(), maximum), maximum); }

void QOXSlider::setRange(double minimum, double maximum)
{
    m_field->setRange(minimum, std::max(minimum, maximum));
    syncSlider();
}

void QOXSlider::setSingleStep(double step)
{
    if (!(step > 0.0))
        return;
    m_singleStep = step;
    m_field->setSingleStep(step);
    syncSlider();
}

void QOXSlider::setPageStep(double step)
{
    m_pageStep = step < 0.0 ? 0.0 : step;
    syncSlider();
}

void QOXSlider::setDecimals(int decimals) { m_field->setDecimals(decimals); }

void QOXSlider::setValue(double value) { m_field->setValue(value); }

void QOXSlider::syncSlider()
{
    const QSignalBlocker blocker(m_slider);
    const double span = maximum() - minimum();
    m_slider->setRange(0, static_cast<int>(std::ceil(span / m_singleStep - 1e-9)));
    m_slider->setPageStep(std::max(1, static_cast<int>(std::lround(m_pageStep / m_singleStep))));
    m_slider->setValue(static_cast<int>(std::lround((value() - minimum()) / m_singleStep)));
}
