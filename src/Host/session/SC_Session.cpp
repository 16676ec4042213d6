#include "session/SC_Session.h"

#include "command/CO_CommandManager.h"
#include "command/SC_InteractiveDragManager.h"
#include "scene/SC_Frames.h"
#include "scene/TUScene.h"
#include "session/SL_Selection.h"
#include "session/TUSceneChangeManager.h"

#include <cmath>

namespace {

// Turns each call of a teller into one call of the change manager.
class ChangeRelay : public TUListener {
public:
    ChangeRelay(TUSceneChangeManager *changes, void (TUSceneChangeManager::*send)()) : changes_(changes), send_(send) {}
    void callBack(TUTeller *) override { (changes_->*send_)(); }

private:
    TUSceneChangeManager *changes_;
    void (TUSceneChangeManager::*send_)();
};

} // namespace

struct SC_Session::Impl {
    // Declaration order is destruction order reversed: the relay and the drag manager go before
    // what they point at, and the scene goes last.
    std::unique_ptr<TUScene> scene;
    std::unique_ptr<CO_CommandManager> commands = std::make_unique<CO_CommandManager>();
    std::unique_ptr<TUSceneChangeManager> ownChanges;  // null when the caller lends one
    TUSceneChangeManager *changes;                     // = ownChanges or the lent one; never null
    std::unique_ptr<SL_Selection> selection = std::make_unique<SL_Selection>();
    std::unique_ptr<SC_InteractiveDragManager> drags = std::make_unique<SC_InteractiveDragManager>(commands.get());
    // Every change of the selection goes out as selectionChanged.
    std::unique_ptr<ChangeRelay> relay;
    // The node changes gathered while commands ran go out once their undo step is recorded,
    // undone or redone: a change made outside the view (a panel, a menu, a script) is heard at
    // once, not at the next release of the mouse in the view.
    std::unique_ptr<ChangeRelay> steps;
    Math::Matrix4x4 camera;  // camera space to scene space
    double frame = 1.0;      // = the current frame; finite
};

SC_Session::SC_Session(std::unique_ptr<TUScene> scene) : SC_Session(std::move(scene), nullptr) {}

SC_Session::SC_Session(std::unique_ptr<TUScene> scene, TUSceneChangeManager *changes) : d_(std::make_unique<Impl>())
{
    if (!changes) {
        d_->ownChanges = std::make_unique<TUSceneChangeManager>();
        changes = d_->ownChanges.get();
    }
    d_->changes = changes;
    d_->relay = std::make_unique<ChangeRelay>(changes, &TUSceneChangeManager::emitSelectionChanged);
    d_->steps = std::make_unique<ChangeRelay>(changes, &TUSceneChangeManager::notify);
    d_->scene = scene ? std::move(scene) : std::make_unique<TUScene>();
    d_->scene->setSceneCommon(this);
    d_->scene->setProjectCommon(this);
    d_->scene->setCommandManager(d_->commands.get());
    d_->changes->setCurrentScene(d_->scene.get());
    d_->scene->setNodeChangedHandler([changes](MO_Node const *node) { changes->emitNodeChanged(node); });
    d_->relay->phone(d_->selection.get());
    d_->steps->phone(d_->commands.get());
}

SC_Session::~SC_Session()
{
    d_->relay->hangUpAll();
    d_->steps->hangUpAll();
    d_->scene->setSceneCommon(nullptr);
    d_->scene->setProjectCommon(nullptr);
    d_->scene->setCommandManager(nullptr);
    d_->scene->setNodeChangedHandler(nullptr);
}

TUScene *SC_Session::scene() const
{
    return d_->scene.get();
}

CO_CommandManager *SC_Session::commandManager() const
{
    return d_->commands.get();
}

TUSceneChangeManager *SC_Session::changeManager() const
{
    return d_->changes;
}

Math::Matrix4x4 SC_Session::cameraMatrix(MO_FrameKey const &) const
{
    return d_->camera;
}

void SC_Session::setCameraMatrix(Math::Matrix4x4 const &matrix)
{
    d_->camera = matrix;
}

SL_Selection *SC_Session::getSelection() const
{
    return d_->selection.get();
}

SC_InteractiveDragManager *SC_Session::dragManager() const
{
    return d_->drags.get();
}

double SC_Session::currentFrame(SC_SceneCommon const *) const
{
    return d_->frame;
}

void SC_Session::setCurrentFrame(double frame)
{
    if (!SC_Frames::contains(frame) || frame == d_->frame)
        return;
    d_->frame = frame;
    d_->changes->emitCurrentFrameChanged();
}

TUScene *SC_Session::currentScene() const
{
    return d_->scene.get();
}
