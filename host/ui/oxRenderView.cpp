#include "oxRenderView.h"

#include "oxController.h"
#include "oxDisplayCurve.h"
#include "oxMessage.h"
#include "oxOSGWidget.h"
#include "oxRenderParameter.h"
#include "oxScene.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace {

// Radians the camera turns per pixel of mouse travel.
constexpr float kTurnPerPixel = 0.01f;
// How long after the last move the view still counts as moving (previews, no refinement).
constexpr int kSettleMs = 150;
// Fraction of the way to the pivot one wheel notch and one pixel of right drag travel.
constexpr float kZoomPerNotch = 0.1f;
constexpr float kZoomPerPixel = 0.005f;
// Fly step per key press, as a fraction of the scene's radius.
constexpr float kFlyStep = 0.05f;
// Previews: the size divisor's range, and the latencies (ms) that make it coarser or finer.
constexpr int kMaxPreviewDivisor = 4;
constexpr double kPreviewSlowMs = 30.0;
constexpr double kPreviewFastMs = 10.0;
// Pixels around a region edge that grab the edge.
constexpr int kEdgeGrab = 6;

osg::UberCameraBase* activeCameraCore()
{
    osg::NodePtr node = oxScene::current().getActiveCamera();
    return node ? node->getCoreAs<osg::UberCameraBase>() : nullptr;
}

bool samePose(const oxViewPose& a, const oxViewPose& b)
{
    for (int i = 0; i < 3; ++i)
        if (std::fabs(a.position[i] - b.position[i]) > 1e-6f)
            return false;
    for (int i = 0; i < 4; ++i)
        if (std::fabs(a.orientation[i] - b.orientation[i]) > 1e-6f)
            return false;
    return true;
}

// The post-processing flags that pick channels: 6 red, 7 green, 8 blue, 9 luminance.
constexpr int kRedBit = 1 << 6, kGreenBit = 1 << 7, kBlueBit = 1 << 8, kLuminanceBit = 1 << 9;

// The 8-bit value a PNG export stores for a linear value (the sRGB curve, from a table so that
// a frame costs no power functions), so the view shows what is written.
inline int toByte(float value)
{
    static const oxDisplayCurve curve = oxDisplayCurve::sRGB();
    return int(oxApplyDisplayCurve(curve.table(), value) * 255.0f + 0.5f);
}

QImage displayImage(const oxRenderSession::Frame& frame)
{
    QImage image(frame.width, frame.height, QImage::Format_RGB32);
    const int flags = oxOSGWidget::getPostprocessingFlags();
    const bool luminance = flags & kLuminanceBit;
    const int channels = flags & (kRedBit | kGreenBit | kBlueBit);
    // Some but not all colour channels picked: the others are dark.
    const bool isolate = channels != 0 && channels != (kRedBit | kGreenBit | kBlueBit);
    const float keep[3] = {!isolate || (flags & kRedBit) ? 1.0f : 0.0f,
                           !isolate || (flags & kGreenBit) ? 1.0f : 0.0f,
                           !isolate || (flags & kBlueBit) ? 1.0f : 0.0f};
    for (int y = 0; y < frame.height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        const float* in = frame.rgba.data() + size_t(y) * size_t(frame.width) * 4;
        for (int x = 0; x < frame.width; ++x, in += 4) {
            if (luminance) {
                const int v = toByte(0.2126f * in[0] + 0.7152f * in[1] + 0.0722f * in[2]);
                line[x] = qRgb(v, v, v);
            } else {
                line[x] =
                    qRgb(toByte(in[0] * keep[0]), toByte(in[1] * keep[1]), toByte(in[2] * keep[2]));
            }
        }
    }
    return image;
}

// The largest rectangle of aspect width:height centred in area.
QRect fitted(const QRect& area, int width, int height)
{
    if (width <= 0 || height <= 0)
        return area;
    const double scale = std::min(double(area.width()) / width, double(area.height()) / height);
    const QSize size(int(width * scale + 0.5), int(height * scale + 0.5));
    return QRect(area.x() + (area.width() - size.width()) / 2,
                 area.y() + (area.height() - size.height()) / 2, size.width(), size.height());
}

} // namespace

oxRenderView::oxRenderView(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("renderView"));
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(320, 240);
    setAttribute(Qt::WA_OpaquePaintEvent);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch(1);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("renderViewStatus"));
    m_status->setContentsMargins(6, 2, 6, 2);
    m_status->setAutoFillBackground(true);
    layout->addWidget(m_status);

    // Frames arrive on the rendering thread; they are shown from the GUI thread's queue.
    m_session = std::make_unique<oxRenderSession>([this] {
        QMetaObject::invokeMethod(
            this, [this] { showLatestFrame(); }, Qt::QueuedConnection);
    });

    m_sceneTimer.setSingleShot(true);
    m_sceneTimer.setInterval(0);
    connect(&m_sceneTimer, &QTimer::timeout, this, &oxRenderView::sceneChanged);
    connect(oxController::instance(), &oxController::renderUpdateRequested, this, [this] {
        // The view's own camera moves have started their render already.
        if (!m_applyingPose && !m_sceneTimer.isActive())
            m_sceneTimer.start();
    });
    connect(oxController::instance(), &oxController::busyChanged, this, [this](bool busy) {
        if (!busy && m_restartWhenIdle)
            restart();
    });
    m_listener = oxOSGWidget::addListener([this](const char* parameter) {
        const std::string name = parameter;
        if (name == oxOSGWidget::cancelAntialiasingNotice) {
            finishTransition();
            m_session->stop();
            showLatestFrame(); // what was rendered before the stop, and nothing after it
        } else if (name == "PostprocessingFlags") {
            if (m_frameInfo.width > 0)
                m_image = displayImage(m_frameInfo);
            update();
        } else if (name.compare(0, 8, "Snapshot") == 0 || name == "RenderRegion") {
            update();
        } else if (name != "ViewWidth" && name != "ViewHeight" && !m_sceneTimer.isActive()) {
            m_sceneTimer.start();
        }
    });
    m_renderParameterListener = oxRenderParameter::addListener([this](const char*) {
        if (!m_sceneTimer.isActive())
            m_sceneTimer.start();
    });

    m_settle.setSingleShot(true);
    m_settle.setInterval(kSettleMs);
    connect(&m_settle, &QTimer::timeout, this, &oxRenderView::restart);
    m_transition.setInterval(15);
    connect(&m_transition, &QTimer::timeout, this, &oxRenderView::stepTransition);
    updateStatus();
}

oxRenderView::~oxRenderView()
{
    oxOSGWidget::removeListener(m_listener);
    oxRenderParameter::removeListener(m_renderParameterListener);
    m_session.reset(); // joins the rendering thread before the widget goes
}

QRect oxRenderView::imageRect() const
{
    return QRect(0, 0, width(), std::max(1, height() - m_status->sizeHint().height()));
}

QSize oxRenderView::renderSize() const { return imageRect().size(); }

bool oxRenderView::isRefining() const
{
    return m_session->isBusy() || m_frameInfo.generation != m_generation ||
           m_frameInfo.samples < m_frameInfo.targetSamples || m_frameInfo.preview;
}

QString oxRenderView::statusText() const { return m_status->text(); }

void oxRenderView::updateStatus()
{
    if (m_frameInfo.width == 0) {
        m_status->setText(tr("No image yet"));
        return;
    }
    const QSize size = renderSize();
    QString text = tr("%1 x %2  |  %3 of %4 samples  |  %5 ms")
                       .arg(size.width())
                       .arg(size.height())
                       .arg(m_frameInfo.preview ? 0 : m_frameInfo.samples)
                       .arg(m_frameInfo.targetSamples)
                       .arg(m_frameInfo.milliseconds, 0, 'f', 0);
    if (m_regionTool)
        text += tr("  |  Region tool: drag to draw, Delete removes, R leaves");
    m_status->setText(text);
}

// --- Rendering --------------------------------------------------------------------------

void oxRenderView::restart()
{
    m_restartWhenIdle = false;
    if (!isVisible())
        return;
    // An export has the raytracer's time; the view catches up when it is done.
    if (oxController::isBusy()) {
        m_restartWhenIdle = true;
        return;
    }
    const QSize size = renderSize();
    oxRenderSession::Request request;
    request.settings = oxRaytracer::Settings::fromHost(size.width(), size.height(), false);
    request.settings.samples = std::max(1, oxOSGWidget::getImageSamples());
    // The view shows the whole frame; the region is drawn over it.
    request.settings.region = {{0.0f, 0.0f, 1.0f, 1.0f}};
    const bool moving = m_drag == Drag::Orbit || m_drag == Drag::Pan || m_drag == Drag::Zoom ||
                        m_transition.isActive() ||
                        (m_lastMove.isValid() && m_lastMove.elapsed() < kSettleMs);
    request.previewDivisor = moving ? m_previewDivisor : 1;
    m_generation = m_session->start(request);
}

void oxRenderView::showLatestFrame()
{
    oxRenderSession::Frame frame;
    if (!m_session->latestFrame(frame) || frame.generation != m_generation)
        return;
    if (frame.generation == m_frameInfo.generation && frame.samples == m_frameInfo.samples &&
        frame.preview == m_frameInfo.preview)
        return; // this frame is on screen already
    if (frame.preview) {
        // Previews keep within a frame of the display: coarser when they come late, finer
        // again when there is time to spare.
        if (frame.milliseconds > kPreviewSlowMs && m_previewDivisor < kMaxPreviewDivisor)
            ++m_previewDivisor;
        else if (frame.milliseconds < kPreviewFastMs && m_previewDivisor > 2)
            --m_previewDivisor;
    }
    m_image = displayImage(frame);
    m_frameInfo = std::move(frame);
    updateStatus();
    update();
    emit frameShown();
}

void oxRenderView::sceneChanged()
{
    m_radius = -1.0f;
    osg::NodePtr node = oxScene::current().getActiveCamera();
    const osg::UInt32 camera = node ? node->getId() : 0;
    const oxViewPose pose = cameraPose();
    const bool knownCamera =
        m_camera != 0 && osg::FieldContainerFactory::the()->getContainer(m_camera) != nullptr;
    if (knownCamera && isVisible() && !oxController::isBusy() && !samePose(pose, m_pose)) {
        // A jump made elsewhere (a viewpoint, another camera): played from where the view was.
        m_transitionFrom = m_pose;
        m_transitionTo = pose;
        m_camera = camera;
        m_transitionClock.start();
        if (!m_transition.isActive())
            m_transition.start();
        stepTransition();
        return;
    }
    m_camera = camera;
    m_pose = pose;
    restart();
}

void oxRenderView::stepTransition()
{
    const float t = std::min(1.0f, float(m_transitionClock.elapsed()) / float(transitionMs));
    if (t >= 1.0f) {
        finishTransition();
        return;
    }
    osg::UberCameraBase* core = activeCameraCore();
    if (!core) {
        m_transition.stop();
        return;
    }
    m_pose = oxViewNavigation::interpolate(m_transitionFrom, m_transitionTo, t);
    m_session->stop(); // the rendering thread reads the camera at the start of each chunk
    core->position = m_pose.position;
    core->orientation = m_pose.orientation;
    restart();
}

void oxRenderView::finishTransition()
{
    if (!m_transition.isActive())
        return;
    m_transition.stop();
    if (osg::UberCameraBase* core = activeCameraCore()) {
        m_session->stop();
        core->position = m_transitionTo.position;
        core->orientation = m_transitionTo.orientation;
    }
    m_pose = m_transitionTo;
    restart();
}

// --- Camera -----------------------------------------------------------------------------

oxViewPose oxRenderView::cameraPose()
{
    oxViewPose pose;
    if (const osg::UberCameraBase* core = activeCameraCore()) {
        pose.position = core->position;
        pose.orientation = core->orientation;
    }
    return pose;
}

void oxRenderView::setCameraPose(const oxViewPose& pose)
{
    osg::NodePtr node = oxScene::current().getActiveCamera();
    osg::UberCameraBase* core = node ? node->getCoreAs<osg::UberCameraBase>() : nullptr;
    if (!core)
        return;
    m_transition.stop();
    // A move: previews until the camera rests for a moment.
    m_lastMove.start();
    m_settle.start();
    m_session->stop(); // the rendering thread reads the camera at the start of each chunk
    core->position = pose.position;
    core->orientation = pose.orientation;
    m_pose = pose;
    m_camera = node->getId();
    // The change protocol marks the scene modified and tells the other views; this view
    // restarts on its own.
    m_applyingPose = true;
    osg::commitChanges(core, ~osg::BitVector(0));
    m_applyingPose = false;
    restart();
}

oxViewBounds oxRenderView::bounds(osg::NodePtr node)
{
    oxSceneSnapshot snapshot;
    oxScene::current().snapshot(snapshot);
    oxViewBounds result;
    std::unordered_set<osg::UInt32> below;
    if (node) {
        std::vector<osg::NodePtr> stack{node};
        while (!stack.empty()) {
            osg::NodePtr current = stack.back();
            stack.pop_back();
            below.insert(current->getId());
            for (size_t i = 0; i < current->getNChildren(); ++i)
                stack.push_back(current->getChild(i));
        }
    }
    for (size_t t = 0; t < snapshot.triangleObject.size(); ++t) {
        if (node && !below.count(snapshot.triangleObject[t]))
            continue;
        for (size_t corner = 0; corner < 3; ++corner) {
            const size_t v = snapshot.indices[t * 3 + corner];
            result.add({snapshot.positions[v * 3], snapshot.positions[v * 3 + 1],
                        snapshot.positions[v * 3 + 2]});
        }
    }
    return result;
}

float oxRenderView::sceneRadius()
{
    if (m_radius < 0.0f)
        m_radius = std::max(1e-3f, bounds(nullptr).radius());
    return m_radius;
}

void oxRenderView::frameAll()
{
    const oxViewBounds box = bounds(nullptr);
    const osg::UberCameraBase* core = activeCameraCore();
    if (box.empty || !core)
        return;
    const QSize size = renderSize();
    const float aspect = float(size.width()) / float(std::max(1, size.height()));
    float fov = core->getFov();
    if (core->getFovMode() != 0) // horizontal: the vertical one follows from the aspect
        fov =
            2.0f * std::atan(std::tan(fov * float(M_PI) / 360.0f) / aspect) * 180.0f / float(M_PI);
    m_pivot = box.center();
    m_pivotKnown = true;
    setCameraPose(oxViewNavigation::frame(cameraPose(), box, fov, aspect));
}

void oxRenderView::frameSelection()
{
    auto* node =
        dynamic_cast<osg::Node*>(osg::FieldContainerFactory::the()->getContainer(m_selection));
    if (!node) {
        frameAll();
        return;
    }
    const oxViewBounds box = bounds(node);
    const osg::UberCameraBase* core = activeCameraCore();
    if (box.empty || !core)
        return;
    const QSize size = renderSize();
    const float aspect = float(size.width()) / float(std::max(1, size.height()));
    m_pivot = box.center();
    m_pivotKnown = true;
    setCameraPose(oxViewNavigation::frame(cameraPose(), box, core->getFov(), aspect));
}

// --- Events -----------------------------------------------------------------------------

void oxRenderView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    const QSize size = renderSize();
    oxOSGWidget::setViewWidth(size.width());
    oxOSGWidget::setViewHeight(size.height());
    m_pose = cameraPose();
    osg::NodePtr node = oxScene::current().getActiveCamera();
    m_camera = node ? node->getId() : 0;
    restart();
}

void oxRenderView::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    finishTransition();
    m_session->stop();
}

void oxRenderView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (!isVisible())
        return;
    const QSize size = renderSize();
    oxOSGWidget::setViewWidth(size.width());
    oxOSGWidget::setViewHeight(size.height());
    restart();
}

void oxRenderView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect area = imageRect();
    painter.fillRect(area, QColor(48, 48, 48));
    if (!m_image.isNull()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform, m_frameInfo.preview);
        painter.drawImage(area, m_image);
    }

    QRect frameRect = area;
    if (oxOSGWidget::getSnapshotFrame()) {
        const std::array<int, 2> size = oxOSGWidget::getSnapshotFrameSize();
        frameRect = fitted(area, size[0], size[1]);
        painter.setPen(QPen(QColor(255, 200, 0), 1));
        painter.drawRect(frameRect.adjusted(0, 0, -1, -1));
    }
    if (oxOSGWidget::getSnapshotInnerFrame()) {
        const std::array<int, 5> inset = oxOSGWidget::getSnapshotInnerFrameInsets();
        auto px = [&](int value, int extent) { return inset[4] ? value * extent / 100 : value; };
        const QRect inner =
            frameRect.adjusted(px(inset[0], frameRect.width()), px(inset[3], frameRect.height()),
                               -px(inset[1], frameRect.width()), -px(inset[2], frameRect.height()));
        painter.setPen(QPen(QColor(255, 200, 0), 1, Qt::DashLine));
        painter.drawRect(inner.adjusted(0, 0, -1, -1));
    }
    if (oxOSGWidget::getSnapshotRuleOfThirds()) {
        painter.setPen(QPen(QColor(255, 255, 255, 140), 1));
        for (int i = 1; i < 3; ++i) {
            const int x = frameRect.x() + frameRect.width() * i / 3;
            const int y = frameRect.y() + frameRect.height() * i / 3;
            painter.drawLine(x, frameRect.top(), x, frameRect.bottom());
            painter.drawLine(frameRect.left(), y, frameRect.right(), y);
        }
    }
    const bool hasRegion = m_region.isValid() && oxOSGWidget::hasValidRegion();
    if (hasRegion || (m_regionTool && m_drag == Drag::RegionDraw)) {
        if (m_regionTool) {
            // Outside the region is dimmed while it is edited.
            QRegion outside(area);
            outside -= QRegion(m_region);
            painter.setClipRegion(outside);
            painter.fillRect(area, QColor(0, 0, 0, 110));
            painter.setClipping(false);
        }
        painter.setPen(QPen(QColor(80, 200, 255), 1, m_regionTool ? Qt::SolidLine : Qt::DashLine));
        painter.drawRect(m_region.adjusted(0, 0, -1, -1));
    }
}

void oxRenderView::mousePressEvent(QMouseEvent* event)
{
    m_lastMouse = event->pos();
    if (m_regionTool && event->button() == Qt::LeftButton) {
        const QPoint p = event->pos();
        const QRect r = m_region;
        m_regionEdges = 0;
        if (r.isValid() && r.adjusted(-kEdgeGrab, -kEdgeGrab, kEdgeGrab, kEdgeGrab).contains(p)) {
            if (std::abs(p.x() - r.left()) <= kEdgeGrab)
                m_regionEdges |= 1;
            else if (std::abs(p.x() - (r.right() + 1)) <= kEdgeGrab)
                m_regionEdges |= 2;
            if (std::abs(p.y() - r.top()) <= kEdgeGrab)
                m_regionEdges |= 4;
            else if (std::abs(p.y() - (r.bottom() + 1)) <= kEdgeGrab)
                m_regionEdges |= 8;
        }
        if (m_regionEdges)
            m_drag = Drag::RegionResize;
        else if (r.isValid() && r.contains(p))
            m_drag = Drag::RegionMove;
        else {
            m_drag = Drag::RegionDraw;
            m_regionAnchor = p;
            m_region = QRect(p, QSize(0, 0));
        }
        return;
    }
    if (event->button() == Qt::MiddleButton ||
        (event->button() == Qt::LeftButton && (event->modifiers() & Qt::ShiftModifier)))
        m_drag = Drag::Pan;
    else if (event->button() == Qt::LeftButton)
        m_drag = Drag::Orbit;
    else if (event->button() == Qt::RightButton)
        m_drag = Drag::Zoom;
    if (!m_pivotKnown && m_drag != Drag::None) {
        // The first orbit turns around the model's centre, as far ahead as the model is.
        const oxViewPose pose = cameraPose();
        const osg::Vec3f center = bounds(nullptr).center();
        const osg::Vec3f f = oxViewNavigation::forward(pose);
        float ahead = 0.0f;
        for (int i = 0; i < 3; ++i)
            ahead += (center[i] - pose.position[i]) * f[i];
        ahead = ahead > 1e-3f ? ahead : sceneRadius();
        for (int i = 0; i < 3; ++i)
            m_pivot[i] = pose.position[i] + f[i] * ahead;
        m_pivotKnown = true;
    }
}

void oxRenderView::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint delta = event->pos() - m_lastMouse;
    m_lastMouse = event->pos();
    const QRect area = imageRect();
    switch (m_drag) {
    case Drag::None:
        return;
    case Drag::RegionDraw:
        // Corner to corner, the pixel under the mouse not included: a drag of n pixels spans n.
        m_region = QRect(QPoint(std::min(m_regionAnchor.x(), event->pos().x()),
                                std::min(m_regionAnchor.y(), event->pos().y())),
                         QSize(std::abs(event->pos().x() - m_regionAnchor.x()),
                               std::abs(event->pos().y() - m_regionAnchor.y()))) &
                   area;
        update();
        return;
    case Drag::RegionMove:
        m_region.translate(delta);
        m_region.moveLeft(std::clamp(m_region.left(), 0, area.width() - m_region.width()));
        m_region.moveTop(std::clamp(m_region.top(), 0, area.height() - m_region.height()));
        update();
        return;
    case Drag::RegionResize: {
        const QPoint p(std::clamp(event->pos().x(), 0, area.width()),
                       std::clamp(event->pos().y(), 0, area.height()));
        int x0 = m_region.left(), y0 = m_region.top();
        int x1 = m_region.left() + m_region.width(), y1 = m_region.top() + m_region.height();
        if (m_regionEdges & 1)
            x0 = p.x();
        if (m_regionEdges & 2)
            x1 = p.x();
        if (m_regionEdges & 4)
            y0 = p.y();
        if (m_regionEdges & 8)
            y1 = p.y();
        m_region = QRect(QPoint(std::min(x0, x1), std::min(y0, y1)),
                         QSize(std::abs(x1 - x0), std::abs(y1 - y0)));
        update();
        return;
    }
    case Drag::Orbit:
        setCameraPose(oxViewNavigation::orbit(cameraPose(), m_pivot, -delta.x() * kTurnPerPixel,
                                              -delta.y() * kTurnPerPixel));
        return;
    case Drag::Pan: {
        // One pixel moves the scene at the pivot's depth by one pixel.
        const oxViewPose pose = cameraPose();
        const osg::UberCameraBase* core = activeCameraCore();
        float distance = 0.0f;
        for (int i = 0; i < 3; ++i)
            distance += (m_pivot[i] - pose.position[i]) * (m_pivot[i] - pose.position[i]);
        const float fov = core ? core->getFov() : 45.0f;
        const float perPixel = 2.0f * std::sqrt(distance) * std::tan(fov * float(M_PI) / 360.0f) /
                               float(std::max(1, area.height()));
        const oxViewPose moved =
            oxViewNavigation::pan(pose, -delta.x() * perPixel, delta.y() * perPixel);
        for (int i = 0; i < 3; ++i)
            m_pivot[i] += moved.position[i] - pose.position[i];
        setCameraPose(moved);
        return;
    }
    case Drag::Zoom:
        setCameraPose(oxViewNavigation::dolly(cameraPose(), m_pivot, delta.y() * kZoomPerPixel));
        return;
    }
}

void oxRenderView::mouseReleaseEvent(QMouseEvent*)
{
    const Drag drag = m_drag;
    m_drag = Drag::None;
    if (drag == Drag::RegionDraw || drag == Drag::RegionMove || drag == Drag::RegionResize)
        commitRegion();
}

void oxRenderView::wheelEvent(QWheelEvent* event)
{
    if (!m_pivotKnown)
        m_pivot = bounds(nullptr).center(), m_pivotKnown = true;
    const float notches = float(event->angleDelta().y()) / 120.0f;
    setCameraPose(oxViewNavigation::dolly(cameraPose(), m_pivot, notches * kZoomPerNotch));
}

void oxRenderView::keyPressEvent(QKeyEvent* event)
{
    const float step = sceneRadius() * kFlyStep;
    const oxViewPose pose = cameraPose();
    switch (event->key()) {
    case Qt::Key_W:
        setCameraPose(oxViewNavigation::fly(pose, step, 0, 0));
        break;
    case Qt::Key_S:
        setCameraPose(oxViewNavigation::fly(pose, -step, 0, 0));
        break;
    case Qt::Key_A:
        setCameraPose(oxViewNavigation::fly(pose, 0, -step, 0));
        break;
    case Qt::Key_D:
        setCameraPose(oxViewNavigation::fly(pose, 0, step, 0));
        break;
    case Qt::Key_Q:
        setCameraPose(oxViewNavigation::fly(pose, 0, 0, -step));
        break;
    case Qt::Key_E:
        setCameraPose(oxViewNavigation::fly(pose, 0, 0, step));
        break;
    case Qt::Key_F:
        frameSelection();
        break;
    case Qt::Key_Home:
        frameAll();
        break;
    case Qt::Key_R:
        setRegionToolActive(!m_regionTool);
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (m_regionTool) {
            m_region = QRect();
            commitRegion();
        }
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

// --- Region -----------------------------------------------------------------------------

void oxRenderView::setRegionToolActive(bool active)
{
    m_regionTool = active;
    if (active && oxOSGWidget::hasValidRegion()) {
        // The tool edits the region the window holds, whoever set it.
        const std::array<float, 4> r = oxOSGWidget::getUserDefinedRenderRegion();
        m_region = QRect(QPoint(int(r[0]), int(r[1])), QPoint(int(r[2]) - 1, int(r[3]) - 1));
    }
    oxOSGWidget::displayRegionRenderHelpText(0, active ? 1 : 0);
    updateStatus();
    update();
}

void oxRenderView::commitRegion()
{
    oxOSGWidget* window = oxOSGWidget::getMGLW(-1);
    m_region = m_region.normalized() & imageRect();
    // A click without a drag leaves no region.
    if (m_region.width() < 2 || m_region.height() < 2) {
        m_region = QRect();
        oxOSGWidget::invalidateRenderRegion(window);
    } else {
        const QSize size = renderSize();
        const std::array<float, 4> rect{{float(m_region.left()), float(m_region.top()),
                                         float(m_region.left() + m_region.width()),
                                         float(m_region.top() + m_region.height())}};
        oxOSGWidget::setUserDefinedRenderRegion(window, rect, size.width(), size.height());
        oxOSGWidget::updateRenderRegion(window);
    }
    // The Render Settings window adopts the region through this callback.
    oxMessage message;
    oxController::call("renderRegionChanged", message);
    update();
}
