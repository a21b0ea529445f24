#include "QOXVec2Control.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLocale>
#include <QSignalBlocker>

namespace {

// A spin box that keeps more decimals than it shows.
class Vec2Field : public QDoubleSpinBox {
public:
    explicit Vec2Field(QWidget* parent) : QDoubleSpinBox(parent) {}

    int shown = 2;
    bool exact = false;

    QString textFromValue(double value) const override
    {
        QString text = locale().toString(value, 'f', shown);
        text.remove(locale().groupSeparator());
        if (!exact && shown > 0 && text.contains(locale().decimalPoint())) {
            while (text.endsWith(QLatin1Char('0')))
                text.chop(1);
            if (text.endsWith(locale().decimalPoint()))
                text.chop(1);
        }
        return text;
    }
};

} // namespace

QOXVec2Control::QOXVec2Control(QWidget* parent) : QWidget(parent)
{
    m_x = new Vec2Field(this);
    m_x->setObjectName(QStringLiteral("qox_x"));
    m_y = new Vec2Field(this);
    m_y->setObjectName(QStringLiteral("qox_y"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QDoubleSpinBox* field : {m_x, m_y}) {
        field->setKeyboardTracking(false);
        field->setRange(0.0, 1.0e6);
        field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        layout->addWidget(field);
    }
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    applyDecimals();
    connect(m_x, qOverload<double>(&QDoubleSpinBox::valueChanged), this, &QOXVec2Control::changedX);
    connect(m_y, qOverload<double>(&QDoubleSpinBox::valueChanged), this, &QOXVec2Control::changedY);
}

double QOXVec2Control::x() const { return m_x->value(); }
double QOXVec2Control::y() const { return m_y->value(); }
double QOXVec2Control::minimum() const { return m_x->minimum(); }
double QOXVec2Control::maximum() const { return m_x->maximum(); }
double QOXVec2Control::singleStep() const { return m_x->singleStep(); }
QString QOXVec2Control::suffix() const { return m_x->suffix(); }

void QOXVec2Control::setMinimum(double minimum) { setRange(minimum, std::max(minimum, maximum())); }
void QOXVec2Control::setMaximum(double maximum) { setRange(std::min(minimum(), maximum), maximum); }

void QOXVec2Control::setRange(double minimum, double maximum)
{
    m_x->setRange(minimum, maximum);
    m_y->setRange(minimum, maximum);
}

void QOXVec2Control::setSingleStep(double step)
{
    m_x->setSingleStep(step);
    m_y->setSingleStep(step);
}

void QOXVec2Control::setSuffix(const QString& suffix)
{
    m_x->setSuffix(suffix);
    m_y->setSuffix(suffix);
}

void QOXVec2Control::setDecimals(int decimals)
{
    m_decimals = decimals;
    applyDecimals();
}

void QOXVec2Control::setDisplayDecimals(int decimals)
{
    m_displayDecimals = decimals;
    applyDecimals();
}

void QOXVec2Control::setUseExactDisplayDecimals(bool exact)
{
    m_exactDisplay = exact;
    applyDecimals();
}

void QOXVec2Control::applyDecimals()
{
    const int shown = m_displayDecimals < 0 ? m_decimals : std::min(m_displayDecimals, m_decimals);
    for (QDoubleSpinBox* field : {m_x, m_y}) {
        const QSignalBlocker blocker(field);
        const double value = field->value();
        field->setDecimals(m_decimals);
        auto* vec2 = static_cast<Vec2Field*>(field);
        vec2->shown = shown;
        vec2->exact = m_exactDisplay;
        field->setValue(value);
        // Re-render the text with the new display rule.
        field->setSuffix(field->suffix());
    }
}

void QOXVec2Control::setMinimumSpinerSize(int width, int height)
{
    m_x->setMinimumSize(width, height);
    m_y->setMinimumSize(width, height);
}

void QOXVec2Control::setMaximumSpinerSize(int width, int height)
{
    m_x->setMaximumSize(width, height);
    m_y->setMaximumSize(width, height);
}

void QOXVec2Control::setX(double x) { m_x->setValue(x); }

void QOXVec2Control::setY(double y) { m_y->setValue(y); }
