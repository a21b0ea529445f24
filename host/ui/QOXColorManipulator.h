#pragma once

#include <QColor>
#include <QWidget>

class QToolButton;

/// A colour swatch; clicking it opens a colour dialog. Components are floats from 0 to 1.
class QOXColorManipulator : public QWidget {
    Q_OBJECT
public:
    explicit QOXColorManipulator(QWidget* parent = nullptr);

    float red() const { return m_rgb[0]; }
    float green() const { return m_rgb[1]; }
    float blue() const { return m_rgb[2]; }
    QColor color() const;

    /// Opens the colour dialog (answered by the dialog responder in headless runs); a colour
    /// chosen there is set and announced with colorChanged.
    void chooseColor();

    QSize sizeHint() const override;

public slots:
    /// Sets the colour, clamped to 0..1; emits colorChanged when it changes.
    void setColor(float r, float g, float b);

signals:
    void colorChanged(float r, float g, float b);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    float m_rgb[3] = {0.0f, 0.0f, 0.0f};
};
