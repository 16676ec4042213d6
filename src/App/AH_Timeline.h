// The timeline of animhost's window: the scene's frames from 1 to its length on a track that
// marks the frames holding keys of the selected nodes, the current frame, play and stop, and the
// scene's length and frame rate.
//
// AH_TimelineTrack is the track alone: it paints the frames and the marks it is given, and asks
// for the frame under the pointer on a press or a drag (frameRequested); it holds no scene.
// AH_Timeline puts it together with its buttons and spin boxes and keeps all of them in step with
// the workspace: the current frame, the scene's length and rate (changed through the workspace,
// so each change is an undo step), and the keys of the selection. Playing steps the current frame
// at the scene's frame rate and loops over its length.
#pragma once

#include <QWidget>

#include <memory>
#include <vector>

class AH_Workspace;

class AH_TimelineTrack : public QWidget {
    Q_OBJECT
public:
    explicit AH_TimelineTrack(QWidget *parent = nullptr);
    ~AH_TimelineTrack() override;

    int frameCount() const;
    int currentFrame() const;
    std::vector<int> const &keyframes() const;
    // The frames run from 1 to `count` (at least 1); the current one is shown; keys are marked.
    void setFrameCount(int count);
    void setCurrentFrame(int frame);
    void setKeyframes(std::vector<int> keys);

    // The frame whose cell holds the widget's x coordinate, clamped to 1 and frameCount(); and
    // the cell of a frame, the whole height of the track.
    int frameAt(double x) const;
    QRectF frameCell(int frame) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    // A press or a drag on the track asks for this frame.
    void frameRequested(int frame);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

class AH_Timeline : public QWidget {
    Q_OBJECT
public:
    explicit AH_Timeline(AH_Workspace &workspace, QWidget *parent = nullptr);
    ~AH_Timeline() override;

    AH_TimelineTrack *track() const;
    bool isPlaying() const;
    void play();
    void stop();

public slots:
    // Brings every widget up to date with the workspace (after a scene was opened or changed).
    void refresh();

private slots:
    void onSessionChanged();
    void onFrameChanged();
    void onPlayStep();

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
