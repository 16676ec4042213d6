#include "AH_Timeline.h"

#include "AH_Workspace.h"
#include "scene/SC_Frames.h"
#include "session/SC_Session.h"
#include "session/TUSceneChangeManager.h"
#include "scene/TUScene.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QSpinBox>
#include <QStyle>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kMargin = 6;           // pixels left and right of the frames
constexpr int kTrackHeight = 34;     // pixels: the numbers on top, the cells below
constexpr int kNumberHeight = 13;    // pixels of the row of frame numbers
QColor const kCellColor(236, 236, 236);
QColor const kCurrentColor(40, 120, 255);
QColor const kKeyColor(240, 150, 20);

// A step between numbered frames that leaves room for the numbers: 1, 2, 5, 10, 20, 50...
int numberStep(double cellWidth)
{
    static int const steps[] = {1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000, 50000};
    for (int step : steps)
        if (step * cellWidth >= 28.0)
            return step;
    return 100000;
}

} // namespace

struct AH_TimelineTrack::Impl {
    int count = 24;        // >= 1
    int current = 1;
    std::vector<int> keys;  // ascending

    double cellWidth(int width) const { return std::max(1.0, double(width - 2 * kMargin)) / count; }
};

AH_TimelineTrack::AH_TimelineTrack(QWidget *parent) : QWidget(parent), d_(std::make_unique<Impl>())
{
    setMouseTracking(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

AH_TimelineTrack::~AH_TimelineTrack() = default;

int AH_TimelineTrack::frameCount() const
{
    return d_->count;
}

int AH_TimelineTrack::currentFrame() const
{
    return d_->current;
}

std::vector<int> const &AH_TimelineTrack::keyframes() const
{
    return d_->keys;
}

void AH_TimelineTrack::setFrameCount(int count)
{
    d_->count = std::max(1, count);
    update();
}

void AH_TimelineTrack::setCurrentFrame(int frame)
{
    d_->current = frame;
    update();
}

void AH_TimelineTrack::setKeyframes(std::vector<int> keys)
{
    d_->keys = std::move(keys);
    update();
}

int AH_TimelineTrack::frameAt(double x) const
{
    int const frame = static_cast<int>(std::floor((x - kMargin) / d_->cellWidth(width()))) + 1;
    return std::clamp(frame, 1, d_->count);
}

QRectF AH_TimelineTrack::frameCell(int frame) const
{
    double const w = d_->cellWidth(width());
    return QRectF(kMargin + (frame - 1) * w, 0.0, w, height());
}

QSize AH_TimelineTrack::sizeHint() const
{
    return QSize(600, kTrackHeight);
}

QSize AH_TimelineTrack::minimumSizeHint() const
{
    return QSize(100, kTrackHeight);
}

void AH_TimelineTrack::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.fillRect(rect(), palette().window());
    double const w = d_->cellWidth(width());
    QRectF const cells(kMargin, kNumberHeight, width() - 2 * kMargin, height() - kNumberHeight - 1);
    p.fillRect(cells, kCellColor);

    // Frame lines where there is room for them, numbers at a readable step.
    int const step = numberStep(w);
    p.setPen(palette().color(QPalette::Mid));
    QFont font = p.font();
    font.setPixelSize(10);
    p.setFont(font);
    for (int f = 1; f <= d_->count; ++f) {
        double const x = kMargin + (f - 1) * w;
        bool const numbered = f == 1 || f % step == 0;
        if (w >= 4.0 || numbered)
            p.drawLine(QPointF(x, numbered ? kNumberHeight - 3 : kNumberHeight), QPointF(x, cells.bottom()));
        if (numbered) {
            p.setPen(palette().color(QPalette::WindowText));
            p.drawText(QRectF(x + 2, 0, 60, kNumberHeight), Qt::AlignLeft | Qt::AlignVCenter, QString::number(f));
            p.setPen(palette().color(QPalette::Mid));
        }
    }

    // The current frame: its cell filled.
    if (d_->current >= 1 && d_->current <= d_->count) {
        QRectF const cell = frameCell(d_->current).adjusted(0, kNumberHeight, 0, -1);
        p.fillRect(cell.adjusted(0, 0, std::max(0.0, 2.0 - cell.width()), 0), kCurrentColor);
    }

    // Keys: a diamond in the middle of their cell.
    p.setRenderHint(QPainter::Antialiasing);
    double const r = std::clamp(w / 2.0 - 1.0, 2.5, 5.0);
    double const y = kNumberHeight + (height() - kNumberHeight) / 2.0;
    for (int key : d_->keys) {
        if (key < 1 || key > d_->count)
            continue;
        double const x = frameCell(key).center().x();
        QPainterPath diamond;
        diamond.moveTo(x, y - r);
        diamond.lineTo(x + r, y);
        diamond.lineTo(x, y + r);
        diamond.lineTo(x - r, y);
        diamond.closeSubpath();
        p.fillPath(diamond, key == d_->current ? QColor(Qt::white) : kKeyColor);
        p.setPen(QPen(QColor(90, 50, 0), 1.0));
        p.drawPath(diamond);
    }
}

void AH_TimelineTrack::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    emit frameRequested(frameAt(event->localPos().x()));
}

void AH_TimelineTrack::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        emit frameRequested(frameAt(event->localPos().x()));
}

// ---------------------------------------------------------------------------------------------

struct AH_Timeline::Impl {
    explicit Impl(AH_Workspace &w) : workspace(w) {}

    AH_Workspace &workspace;
    QToolButton *play = nullptr;
    QSpinBox *frame = nullptr;
    AH_TimelineTrack *track = nullptr;
    QSpinBox *length = nullptr;
    QDoubleSpinBox *rate = nullptr;
    QTimer timer;
    QMetaObject::Connection changeConnections[2];
    bool syncing = false;  // true while the widgets are set from the workspace
};

AH_Timeline::AH_Timeline(AH_Workspace &workspace, QWidget *parent) : QWidget(parent), d_(std::make_unique<Impl>(workspace))
{
    auto *layout = new QHBoxLayout(this);
    d_->play = new QToolButton(this);
    d_->play->setObjectName(QStringLiteral("playButton"));
    d_->play->setCheckable(true);
    d_->play->setIcon(style()->standardIcon(QStyle::SP_MediaPlay));
    d_->play->setToolTip(tr("Play and stop, looping over the scene's frames"));
    layout->addWidget(d_->play);
    layout->addWidget(new QLabel(tr("Frame"), this));
    d_->frame = new QSpinBox(this);
    d_->frame->setObjectName(QStringLiteral("frameSpin"));
    layout->addWidget(d_->frame);
    d_->track = new AH_TimelineTrack(this);
    d_->track->setObjectName(QStringLiteral("timeline"));
    layout->addWidget(d_->track, 1);
    layout->addWidget(new QLabel(tr("Length"), this));
    d_->length = new QSpinBox(this);
    d_->length->setObjectName(QStringLiteral("lengthSpin"));
    d_->length->setRange(1, TUScene::kMaximumFrameCount);
    d_->length->setKeyboardTracking(false);  // one undo step per value entered, not per digit
    layout->addWidget(d_->length);
    d_->rate = new QDoubleSpinBox(this);
    d_->rate->setObjectName(QStringLiteral("rateSpin"));
    d_->rate->setRange(0.01, TUScene::kMaximumFrameRate);
    d_->rate->setDecimals(2);
    d_->rate->setSuffix(tr(" fps"));
    d_->rate->setKeyboardTracking(false);
    layout->addWidget(d_->rate);

    auto setFrame = [this](int frame) {
        if (!d_->syncing)
            d_->workspace.setFrame(frame, nullptr);
    };
    connect(d_->track, &AH_TimelineTrack::frameRequested, this, setFrame);
    connect(d_->frame, QOverload<int>::of(&QSpinBox::valueChanged), this, setFrame);
    connect(d_->length, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int count) {
        if (!d_->syncing)
            d_->workspace.setFrameCount(count, nullptr);
    });
    connect(d_->rate, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this](double rate) {
        if (!d_->syncing)
            d_->workspace.setFrameRate(rate, nullptr);
    });
    connect(d_->play, &QToolButton::toggled, this, [this](bool on) { on ? play() : stop(); });
    connect(&d_->timer, &QTimer::timeout, this, &AH_Timeline::onPlayStep);
    connect(&workspace, &AH_Workspace::sessionChanged, this, &AH_Timeline::onSessionChanged);
    // Keys, the length and the rate change with the undo stack.
    connect(&workspace, &AH_Workspace::documentChanged, this, &AH_Timeline::refresh);
    onSessionChanged();
}

AH_Timeline::~AH_Timeline() = default;

AH_TimelineTrack *AH_Timeline::track() const
{
    return d_->track;
}

bool AH_Timeline::isPlaying() const
{
    return d_->timer.isActive();
}

void AH_Timeline::play()
{
    d_->timer.start(std::max(1, int(std::lround(1000.0 / d_->workspace.frameRate()))));
    d_->syncing = true;
    d_->play->setChecked(true);
    d_->play->setIcon(style()->standardIcon(QStyle::SP_MediaStop));
    d_->syncing = false;
}

void AH_Timeline::stop()
{
    d_->timer.stop();
    d_->syncing = true;
    d_->play->setChecked(false);
    d_->play->setIcon(style()->standardIcon(QStyle::SP_MediaPlay));
    d_->syncing = false;
}

void AH_Timeline::onPlayStep()
{
    // The next frame is within the scene by construction: the workspace need not count the
    // scene's frames again to check it.
    int const last = d_->workspace.frameCount();
    int const next = SC_Frames::toInt(d_->workspace.session()->currentFrame()) + 1;
    d_->workspace.session()->setCurrentFrame(next > last ? 1 : next);
}

void AH_Timeline::refresh()
{
    int const last = d_->workspace.frameCount();
    d_->syncing = true;
    d_->frame->setRange(1, last);
    d_->track->setFrameCount(last);
    d_->track->setKeyframes(d_->workspace.selectedKeyframes());
    d_->length->setValue(last);
    d_->rate->setValue(d_->workspace.frameRate());
    d_->syncing = false;
    if (isPlaying())
        d_->timer.setInterval(std::max(1, int(std::lround(1000.0 / d_->workspace.frameRate()))));
    onFrameChanged();
}

void AH_Timeline::onSessionChanged()
{
    for (auto &c : d_->changeConnections)
        disconnect(c);
    TUSceneChangeManager *changes = d_->workspace.session()->changeManager();
    d_->changeConnections[0] = connect(changes, &TUSceneChangeManager::currentFrameChanged, this, &AH_Timeline::onFrameChanged);
    d_->changeConnections[1] = connect(changes, &TUSceneChangeManager::selectionChanged, this, [this] {
        d_->track->setKeyframes(d_->workspace.selectedKeyframes());
    });
    refresh();
}

void AH_Timeline::onFrameChanged()
{
    int const frame = static_cast<int>(d_->workspace.session()->currentFrame());
    d_->syncing = true;
    d_->frame->setValue(frame);
    d_->track->setCurrentFrame(frame);
    d_->syncing = false;
}
