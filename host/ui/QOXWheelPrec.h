#pragma once

#include <QWidget>

class QDoubleSpinBox;

/// A thumb wheel beside a value field. Dragging the wheel sideways changes the value by one
/// single step per notch (a tenth of it with Shift held, for precise work); the field takes
/// typed values.
class QOXWheelPrec : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double minimum READ minimum WRITE setMinimum)
    Q_PROPERTY(double maximum READ maximum WRITE setMaximum)
    Q_PROPERTY(double singleStep READ singleStep WRITE setSingleStep)
    Q_PROPERTY(double value READ value WRITE setValue NOTIFY valueChanged USER true)
    Q_PROPERTY(int decimals READ decimals WRITE setDecimals)
public:
    explicit QOXWheelPrec(QWidget* parent = nullptr);

    double minimum() const;
    double maximum() const;
    double singleStep() const;
    double value() const;
    int decimals() const;

    /// Sets both ends; the value is clamped into them. Limits and steps finer than the shown
    /// decimals raise the decimals.
    void setRange(double minimum, double maximum);
    void setMinimum(double minimum);
    void setMaximum(double maximum);
    void setSingleStep(double step);
    void setDecimals(int decimals);

    QDoubleSpinBox* field() const { return m_field; }
    /// Turns the wheel by notches, as a drag does.
    void turn(int notches, bool precise = false);

public slots:
    void setValue(double value);

signals:
    void valueChanged(double value);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showDecimalsOf(double value);

    QWidget* m_wheel;
    QDoubleSpinBox* m_field;
    int m_dragX = 0;
    int m_phase = 0;
};
