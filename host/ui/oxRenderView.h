#pragma once

#include "oxRenderSession.h"
#include "oxViewNavigation.h"

#include <QElapsedTimer>
#include <QImage>
#include <QPoint>
#include <QRect>
#include <QTimer>
#include <QWidget>

#include <array>
#include <memory>

class QLabel;

/// The main window's view of the scene: the active camera through the host's raytracer,
/// rendered progressively off the GUI thread (oxRenderSession) and shown with the display
/// settings of oxOSGWidget (channel post-processing, snapshot frames, render region).
///
/// Mouse: left drag orbits around the pivot, middle drag (or Shift + left) pans, right drag
/// and the wheel zoom towards the pivot. Keys: W/S fly forward and back, A/D sideways, Q/E
/// down and up, F frames the selection (everything without one), Home frames everything,
/// R switches the render region tool on and off. With the tool on, a left drag draws the
/// region, dragging its inside moves it and dragging an edge or corner resizes it; Delete
/// removes it. The region goes to oxOSGWidget in view pixels, and the named function
/// "renderRegionChanged" is called.
///
/// While the camera moves the first image comes at half the size (a quarter when that is too
/// slow) with one sample; once still
/// the view refines to oxOSGWidget's image samples. Any change of the scene starts the render
/// over; a jump of the active camera that the view didn't make itself (a viewpoint or camera
/// activated elsewhere) is played as a short transition.
class oxRenderView : public QWidget {
    Q_OBJECT
public:
    explicit oxRenderView(QWidget* parent = nullptr);
    ~oxRenderView() override;

    /// The image shown, at the render size (null before the first frame).
    const QImage& image() const { return m_image; }
    /// The frame behind image(): size, samples and time.
    const oxRenderSession::Frame& frameInfo() const { return m_frameInfo; }
    /// The render size: the view's image area.
    QSize renderSize() const;
    /// The status line's text.
    QString statusText() const;
    /// True until the view shows its request's full sample count.
    bool isRefining() const;

    /// The pose of the active camera, and setting it as a navigation step: the scene is
    /// modified, and the view previews until the camera rests.
    static oxViewPose cameraPose();
    void setCameraPose(const oxViewPose& pose);
    /// The point orbits and zooms turn around.
    osg::Vec3f pivot() const { return m_pivot; }

    /// The node F frames (null: everything).
    void setSelection(osg::NodePtr node) { m_selection = node ? node->getId() : 0; }
    void frameAll();
    void frameSelection();
    /// The world bounds of node's visible geometry (the whole model for null).
    static oxViewBounds bounds(osg::NodePtr node);

    bool isRegionToolActive() const { return m_regionTool; }
    void setRegionToolActive(bool active);
    /// The region in view pixels (x0, y0, x1, y1); empty without one.
    QRect region() const { return m_region; }

    /// Whether a transition to a camera pose is playing.
    bool isTransitioning() const { return m_transition.isActive(); }
    /// How long a transition lasts.
    static constexpr int transitionMs = 300;

signals:
    /// A new image is shown.
    void frameShown();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    enum class Drag { None, Orbit, Pan, Zoom, RegionDraw, RegionMove, RegionResize };

    QRect imageRect() const;
    void restart();
    void sceneChanged();
    void showLatestFrame();
    void stepTransition();
    void finishTransition();
    void commitRegion();
    void updateStatus();
    float sceneRadius();

    std::unique_ptr<oxRenderSession> m_session;
    QLabel* m_status = nullptr;
    QImage m_image;
    oxRenderSession::Frame m_frameInfo;
    uint64_t m_generation = 0;
    int m_listener = 0;
    int m_renderParameterListener = 0;
    bool m_restartWhenIdle = false;

    // Navigation.
    Drag m_drag = Drag::None;
    QPoint m_lastMouse;
    osg::Vec3f m_pivot{0, 0, 0};
    bool m_pivotKnown = false;
    osg::UInt32 m_selection = 0;
    QElapsedTimer m_lastMove;
    QTimer m_settle;
    float m_radius = -1.0f;
    int m_previewDivisor = 2;

    // The camera as the view last left it, to tell its own moves from jumps made elsewhere.
    osg::UInt32 m_camera = 0;
    oxViewPose m_pose;
    bool m_applyingPose = false;
    QTimer m_sceneTimer;
    QTimer m_transition;
    QElapsedTimer m_transitionClock;
    oxViewPose m_transitionFrom;
    oxViewPose m_transitionTo;

    // Region tool.
    bool m_regionTool = false;
    QRect m_region;
    QPoint m_regionAnchor;
    int m_regionEdges = 0; // bits: 1 left, 2 right, 4 top, 8 bottom
};
