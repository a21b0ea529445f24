#include "QOXCollapsibleFrame.h"

#include "oxPlatform.h"

#include <QEvent>
#include <QGridLayout>
#include <QLayout>
#include <QToolButton>

#include <cmath>

QOXCollapsibleFrame::QOXCollapsibleFrame(QWidget* parent) : QFrame(parent)
{
    setFrameShape(QFrame::StyledPanel);
    setFrameShadow(QFrame::Plain);
    m_caption = new QToolButton(this);
    m_caption->setObjectName(QStringLiteral("qox_caption"));
    m_caption->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_caption->setArrowType(Qt::DownArrow);
    m_caption->setAutoRaise(true);
    m_caption->setFocusPolicy(Qt::TabFocus);
    QFont font = m_caption->font();
    font.setBold(true);
    m_caption->setFont(font);
    connect(m_caption, &QToolButton::clicked, this, &QOXCollapsibleFrame::toggle);
    // The layout that the form gives the frame lies below the caption bar.
    setContentsMargins(0, captionHeight(), 0, 0);
    updateCaptionGeometry();
}

QString QOXCollapsibleFrame::caption() const { return m_caption->text(); }

void QOXCollapsibleFrame::setCaption(const QString& caption)
{
    m_caption->setText(caption);
    updateCaptionGeometry();
}

void QOXCollapsibleFrame::setCollapsed(bool collapsed)
{
    if (m_collapsed == collapsed)
        return;
    m_collapsed = collapsed;
    m_caption->setArrowType(collapsed ? Qt::RightArrow : Qt::DownArrow);
    applyCollapsedState();
    emit toggled(collapsed);
}

void QOXCollapsibleFrame::toggle() { setCollapsed(!m_collapsed); }

void QOXCollapsibleFrame::applyCollapsedState()
{
    if (m_collapsed) {
        for (QObject* child : children()) {
            auto* widget = qobject_cast<QWidget*>(child);
            if (!widget || widget == m_caption || widget->isWindow() || widget->isHidden())
                continue;
            widget->hide();
            m_folded.append(widget);
        }
        setMaximumHeight(captionHeight() + 2 * frameWidth());
    } else {
        for (const QPointer<QWidget>& widget : m_folded) {
            if (widget && widget->parentWidget() == this)
                widget->show();
        }
        m_folded.clear();
        setMaximumHeight(QWIDGETSIZE_MAX);
    }
    updateGeometry();
}

int QOXCollapsibleFrame::captionHeight() const
{
    return std::max(m_caption->sizeHint().height(), fontMetrics().height() + 8);
}

void QOXCollapsibleFrame::updateCaptionGeometry()
{
    const int height = captionHeight();
    const QMargins margins = contentsMargins();
    if (margins.top() != height)
        setContentsMargins(margins.left(), height, margins.right(), margins.bottom());
    m_caption->setGeometry(frameWidth(), frameWidth(), std::max(0, width() - 2 * frameWidth()),
                           height - frameWidth());
}

int QOXCollapsibleFrame::foldedWidth(bool minimum) const
{
    // A folded frame keeps the width of its contents, so that opening it doesn't widen the
    // form around it.
    int margins = contentsMargins().left() + contentsMargins().right() + 2 * frameWidth();
    if (layout())
        margins += layout()->contentsMargins().left() + layout()->contentsMargins().right();
    int width = m_caption->sizeHint().width() + 2 * frameWidth();
    for (const QPointer<QWidget>& widget : m_folded) {
        if (widget)
            width =
                std::max(width, (minimum ? widget->minimumSizeHint() : widget->sizeHint()).width() +
                                    margins);
    }
    return width;
}

QSize QOXCollapsibleFrame::sizeHint() const
{
    const QSize hint = QFrame::sizeHint();
    const int width = std::max(hint.width(), foldedWidth(false));
    if (m_collapsed)
        return QSize(width, captionHeight() + 2 * frameWidth());
    return QSize(width, hint.height());
}

QSize QOXCollapsibleFrame::minimumSizeHint() const
{
    const QSize hint = QFrame::minimumSizeHint();
    const int width = std::max(hint.width(), foldedWidth(true));
    if (m_collapsed)
        return QSize(width, captionHeight() + 2 * frameWidth());
    return QSize(width, hint.height());
}

void QOXCollapsibleFrame::resizeEvent(QResizeEvent* event)
{
    QFrame::resizeEvent(event);
    updateCaptionGeometry();
}

void QOXCollapsibleFrame::showEvent(QShowEvent* event)
{
    // Contents created after setCollapsed(true) fold now.
    if (m_collapsed)
        applyCollapsedState();
    QFrame::showEvent(event);
}

void QOXCollapsibleFrame::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateCaptionGeometry();
}

void QOXCollapsibleFrame::fixLayouts(QWidget* root, int labelColumnWidth,
                                     const QList<QWidget*>* skip)
{
    if (!root)
        return;
    for (QOXCollapsibleFrame* frame : root->findChildren<QOXCollapsibleFrame*>()) {
        if (skip && skip->contains(frame))
            continue;
        fixLayout(frame, labelColumnWidth);
        if (frame->m_collapsed)
            frame->applyCollapsedState();
    }
}

void QOXCollapsibleFrame::fixLayout(QWidget* widget, int labelColumnWidth)
{
    if (!widget)
        return;
    const int width = static_cast<int>(std::lround(labelColumnWidth * oxPlatform::getDpiScaleX()));
    for (QGridLayout* grid : widget->findChildren<QGridLayout*>()) {
        if (grid->columnCount() > 0)
            grid->setColumnMinimumWidth(0, width);
    }
}
