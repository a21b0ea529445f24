#pragma once

#include <QDoubleSpinBox>
#include <QSpinBox>

/// The host's integer spin box. It takes wheel events only with keyboard focus, so that
/// scrolling a long form never changes a value by accident.
class QOXSpiner : public QSpinBox {
    Q_OBJECT
public:
    explicit QOXSpiner(QWidget* parent = nullptr);

protected:
    void wheelEvent(QWheelEvent* event) override;
};

/// The host's floating point spin box, with the same wheel rule as QOXSpiner.
class QOXDoubleSpiner : public QDoubleSpinBox {
    Q_OBJECT
public:
    explicit QOXDoubleSpiner(QWidget* parent = nullptr);

protected:
    void wheelEvent(QWheelEvent* event) override;
};
