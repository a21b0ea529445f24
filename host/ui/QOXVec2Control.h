#pragma once

#include <QWidget>

class QDoubleSpinBox;

/// Two linked number fields for a pair (width and height, x and y). The display may show
/// fewer decimals than the value keeps.
class QOXVec2Control : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double minimum READ minimum WRITE setMinimum)
    Q_PROPERTY(double maximum READ maximum WRITE setMaximum)
    Q_PROPERTY(double singleStep READ singleStep WRITE setSingleStep)
    Q_PROPERTY(QString suffix READ suffix WRITE setSuffix)
    Q_PROPERTY(int decimals READ decimals WRITE setDecimals)
public:
    explicit QOXVec2Control(QWidget* parent = nullptr);

    double x() const;
    double y() const;
    double minimum() const;
    double maximum() const;
    double singleStep() const;
    QString suffix() const;
    int decimals() const { return m_decimals; }
    int displayDecimals() const { return m_displayDecimals; }

    /// Both fields take values from minimum to maximum; values are clamped.
    void setMinimum(double minimum);
    void setMaximum(double maximum);
    void setRange(double minimum, double maximum);
    void setSingleStep(double step);
    void setSuffix(const QString& suffix);
    /// Decimals the value keeps; the display follows unless setDisplayDecimals says less.
    void setDecimals(int decimals);
    /// Decimals shown; trailing zeros are dropped unless exact display decimals are used.
    void setDisplayDecimals(int decimals);
    void setUseExactDisplayDecimals(bool exact);
    void setMinimumSpinerSize(int width, int height);
    void setMaximumSpinerSize(int width, int height);

    QDoubleSpinBox* xField() const { return m_x; }
    QDoubleSpinBox* yField() const { return m_y; }

public slots:
    /// Sets a field; emits changedX or changedY when the value changes.
    void setX(double x);
    void setY(double y);

signals:
    void changedX(double x);
    void changedY(double y);

private:
    void applyDecimals();

    QDoubleSpinBox* m_x;
    QDoubleSpinBox* m_y;
    int m_decimals = 2;
    int m_displayDecimals = -1;
    bool m_exactDisplay = false;
};
