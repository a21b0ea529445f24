#pragma once

#include <QFrame>
#include <QList>
#include <QPointer>

class QToolButton;

/// A section with a caption bar that folds its contents away. The contents are the frame's
/// own child widgets, laid out by whatever layout the frame is given (forms give it one page
/// widget). A collapsed frame shows the caption bar only.
class QOXCollapsibleFrame : public QFrame {
    Q_OBJECT
    Q_PROPERTY(QString caption READ caption WRITE setCaption)
    Q_PROPERTY(bool collapsed READ isCollapsed WRITE setCollapsed)
public:
    explicit QOXCollapsibleFrame(QWidget* parent = nullptr);

    QString caption() const;
    void setCaption(const QString& caption);
    bool isCollapsed() const { return m_collapsed; }

    /// The caption bar; clicking it toggles the frame.
    QToolButton* captionButton() const { return m_caption; }

    /// Applies fixLayout with labelColumnWidth to every collapsible frame below root, except
    /// those in skip, and brings their contents in line with their collapsed state (forms set
    /// the state before they create the contents).
    static void fixLayouts(QWidget* root, int labelColumnWidth,
                           const QList<QWidget*>* skip = nullptr);
    /// Gives the first column of every grid layout below widget at least labelColumnWidth
    /// device-independent pixels (scaled for the screen), so that sections line up.
    static void fixLayout(QWidget* widget, int labelColumnWidth);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    void setCollapsed(bool collapsed);
    void toggle();

signals:
    /// The frame was folded (collapsed true) or opened (false).
    void toggled(bool collapsed);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void applyCollapsedState();
    void updateCaptionGeometry();
    int captionHeight() const;
    int foldedWidth(bool minimum) const;

    QToolButton* m_caption = nullptr;
    bool m_collapsed = false;
    // Children hidden by folding; only these are shown again when the frame opens, so that a
    // child hidden on purpose stays hidden.
    QList<QPointer<QWidget>> m_folded;
};
