#pragma once

#include <QMessageBox>

/// A message box whose text can be put into a scroll area of fixed size, for long lists
/// (of files, of objects) that would otherwise make the box taller than the screen.
class QOXScrollableMessageBox : public QMessageBox {
    Q_OBJECT
public:
    QOXScrollableMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text,
                            QMessageBox::StandardButtons buttons = QMessageBox::NoButton,
                            QWidget* parent = nullptr,
                            Qt::WindowFlags flags = Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);

    /// Moves the text into a scroll area of width x height device-independent pixels.
    /// Calling it again only resizes the area.
    void makeScrollable(int width, int height);
    bool isScrollable() const { return m_scrollArea != nullptr; }

private:
    QWidget* m_scrollArea = nullptr;
};
