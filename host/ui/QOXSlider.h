#pragma once

#include <QWidget>

class QSlider;
class QDoubleSpinBox;

/// A slider over a floating point range with a field that shows and takes the value.
/// The slider moves in steps of singleStep; values in between can be typed.
class QOXSlider : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double minimum READ minimum WRITE setMinimum)
    Q_PROPERTY(double maximum READ maximum WRITE setMaximum)
    Q_PROPERTY(double singleStep READ singleStep WRITE setSingleStep)
    Q_PROPERTY(double pageStep READ pageStep WRITE setPageStep)
    Q_PROPERTY(double value READ value WRITE setValue NOTIFY valueChanged USER true)
    Q_PROPERTY(int decimals READ decimals WRITE setDecimals)
public:
    explicit QOXSlider(QWidget* parent = nullptr);

    double minimum() const;
    double maximum() const;
    double singleStep() const { return m_singleStep; }
    double pageStep() const { return m_pageStep; }
    double value() const;
    int decimals() const;

    void setMinimum(double minimum);
    void setMaximum(double maximum);
    /// Sets both ends; a maximum below minimum is raised to it. The value is clamped.
    void setRange(double minimum, double maximum);
    /// The step of one slider notch (must be above 0; anything else keeps the old step).
    void setSingleStep(double step);
    /// The step of page up and down; 0 makes them move by one notch.
    void setPageStep(double step);
    void setDecimals(int decimals);

    QSlider* slider() const { return m_slider; }
    QDoubleSpinBox* field() const { return m_field; }

public slots:
    /// Clamps to the range; emits valueChanged when the value changes.
    void setValue(double value);

signals:
    void valueChanged(double value);

private:
    void syncSlider();

    QSlider* m_slider;
    QDoubleSpinBox* m_field;
    double m_singleStep = 0.1;
    double m_pageStep = 1.0;
};
