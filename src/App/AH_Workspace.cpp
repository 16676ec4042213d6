#include "AH_Workspace.h"

#include "command/CO_CommandManager.h"
#include "plugin/PLUG_Services.h"
#include "scene/AT_Attr.h"
#include "scene/AT_ShiftAndTraceUtil.h"
#include "scene/CA_DrawingCmds.h"
#include "scene/SC_Frames.h"
#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "session/TUSceneChangeManager.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_View.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>

namespace {

// Tells the workspace whenever the undo stack of its session changes.
class CommandRelay : public TUListener {
public:
    explicit CommandRelay(AH_Workspace *workspace) : workspace_(workspace) {}
    void callBack(TUTeller *) override { emit workspace_->documentChanged(); }

private:
    AH_Workspace *workspace_;
};

bool fail(QString *error, QString const &message)
{
    if (error)
        *error = message;
    return false;
}

// Sets the scene's own length or frame rate (the other stays), and puts the former one back.
template <class T>
class SceneTimingCmd : public CO_Command {
public:
    using Getter = std::optional<T> (TUScene::*)() const;
    using Setter = bool (TUScene::*)(std::optional<T>);
    SceneTimingCmd(TUScene *scene, Getter get, Setter set, T value)
        : scene_(scene), set_(set), before_((scene->*get)()), after_(value)
    {
    }
    bool execute() override { return (scene_->*set_)(after_); }
    bool unexecute() override { return (scene_->*set_)(before_); }

private:
    TUScene *scene_;  // not owned; the command lives in the scene's session
    Setter set_;
    std::optional<T> before_;
    std::optional<T> after_;
};

QString unknownNode(QString const &name)
{
    return QStringLiteral("expected the name of a node of the scene, not \"%1\"").arg(name);
}

} // namespace

struct AH_Workspace::Impl {
    // One change manager for every scene the workspace opens, so that listeners connected once
    // (the plug-in's, at load) hear them all. It outlives the sessions: declared first.
    std::unique_ptr<TUSceneChangeManager> ownChanges;  // null when the application lends one
    TUSceneChangeManager *changes = nullptr;           // = ownChanges or the lent one; never null
    // The view refers to the session: it is declared after it and so destroyed before it.
    std::unique_ptr<SC_Session> session;
    std::unique_ptr<VW_View> view;
    std::unique_ptr<CommandRelay> relay;
    QString path;
};

AH_Workspace::AH_Workspace(QObject *parent) : AH_Workspace(nullptr, parent) {}

AH_Workspace::AH_Workspace(TUSceneChangeManager *changes, QObject *parent) : QObject(parent), d_(std::make_unique<Impl>())
{
    if (!changes) {
        d_->ownChanges = std::make_unique<TUSceneChangeManager>();
        changes = d_->ownChanges.get();
    }
    d_->changes = changes;
    d_->relay = std::make_unique<CommandRelay>(this);
    d_->view = std::make_unique<VW_View>(nullptr);
    install(std::make_unique<SC_Session>(std::make_unique<TUScene>(), d_->changes), QString());
    phone(&CX_Context::GetInstance());
    PLUG_Services::setInteractiveViewManager(this);
    // Drawings are drawn through their shifts only while Shift and Trace is on.
    VW_View *view = d_->view.get();
    connect(AT_ShiftAndTraceUtil::ShiftAndTraceStateManager::instance(),
            &AT_ShiftAndTraceUtil::ShiftAndTraceStateManager::onShiftAndTraceEnabledChanged, view,
            [view] { view->requestRedraw(); });
    d_->view->setToolId(CX_Context::GetInstance().currentToolId());
    // An undone length may leave the current frame beyond the scene's last one.
    connect(this, &AH_Workspace::documentChanged, this, [this] {
        if (d_->session->currentFrame() > frameCount())
            d_->session->setCurrentFrame(frameCount());
    });
}

AH_Workspace::~AH_Workspace()
{
    hangUpAll();
    d_->relay->hangUpAll();
    d_->view.reset();
    PLUG_Services::setSessionContext(nullptr);
    PLUG_Services::setSelection(nullptr);
    PLUG_Services::setCurrentFrameInterface(nullptr);
    PLUG_Services::setEditionStackInterface(nullptr);
    if (PLUG_Services::getInteractiveViewManager() == this)
        PLUG_Services::setInteractiveViewManager(nullptr);
}

void AH_Workspace::install(std::unique_ptr<SC_Session> session, QString const &path)
{
    // The view lets go of the old session (and its tool) before the session goes.
    d_->view->setSession(nullptr);
    d_->relay->hangUpAll();
    d_->session = std::move(session);
    d_->path = path;
    SC_Session *s = d_->session.get();
    PLUG_Services::setSessionContext(s);
    PLUG_Services::setSelection(s->getSelection());
    PLUG_Services::setCurrentFrameInterface(s);
    PLUG_Services::setEditionStackInterface(s);
    d_->relay->phone(s->commandManager());
    d_->view->setSession(s);
    d_->changes->emitSceneChanged();
    emit sessionChanged();
    emit documentChanged();
}

void AH_Workspace::redrawViewsAtFrame(int frame)
{
    if (static_cast<int>(d_->session->currentFrame()) == frame)
        d_->view->requestRedraw();
}

SC_Session *AH_Workspace::session() const
{
    return d_->session.get();
}

VW_View *AH_Workspace::view() const
{
    return d_->view.get();
}

QString AH_Workspace::filePath() const
{
    return d_->path;
}

bool AH_Workspace::isModified() const
{
    return d_->session->commandManager()->isModified();
}

bool AH_Workspace::open(QString const &path, QString *error)
{
    std::unique_ptr<TUScene> scene = TUSceneFile::readFile(path, error);
    if (!scene)
        return false;
    install(std::make_unique<SC_Session>(std::move(scene), d_->changes), path);
    return true;
}

bool AH_Workspace::save(QString const &path, QString *error)
{
    if (path.isEmpty())
        return fail(error, QStringLiteral("expected a file name to save to"));
    if (!TUSceneFile::writeFile(*d_->session->scene(), path, error))
        return false;
    d_->path = path;
    d_->session->commandManager()->setClean();
    emit documentChanged();
    return true;
}

void AH_Workspace::newScene()
{
    install(std::make_unique<SC_Session>(std::make_unique<TUScene>(), d_->changes), QString());
}

MO_Node *AH_Workspace::findNode(QString const &name) const
{
    return name.isEmpty() ? nullptr : d_->session->scene()->getRootGroup()->findNode(name);
}

AT_Attr *AH_Workspace::findAttr(MO_Node *node, QString const &path)
{
    if (!node || path.isEmpty())
        return nullptr;
    // Keywords may hold dots themselves ("com.quorvane.ikmetadata"): at each level the longest
    // run of parts that names an attribute is taken.
    QStringList const parts = path.split(QLatin1Char('.'));
    AT_Attr *attr = nullptr;
    for (int i = 0; i < parts.size();) {
        auto *complex = dynamic_cast<AT_ComplexAttr *>(attr);
        if (i > 0 && !complex)
            return nullptr;
        int end = int(parts.size());
        for (attr = nullptr; !attr && end > i; --end) {
            QString const keyword = parts.mid(i, end - i).join(QLatin1Char('.'));
            attr = i == 0 ? node->attr(keyword) : complex->findRegisteredAttr(keyword);
        }
        if (!attr)
            return nullptr;
        i = end + 1;  // the loop went one past the run that matched
    }
    return attr;
}

bool AH_Workspace::selectNodes(QStringList const &names, QString *error)
{
    std::vector<MO_Node *> nodes;
    for (QString const &name : names) {
        MO_Node *node = findNode(name);
        if (!node)
            return fail(error, unknownNode(name));
        nodes.push_back(node);
    }
    CO_CommandManager *manager = d_->session->commandManager();
    SL_Selection *selection = d_->session->getSelection();
    CO_CommandAccumScope step(manager, QStringLiteral("Selection"));
    SL_SelectionCommands::Scope scope(manager, selection);
    selection->set(nodes);
    return true;
}

bool AH_Workspace::setFrame(double frame, QString *error)
{
    if (!SC_Frames::contains(frame))
        return fail(error, QStringLiteral("expected %1, not %2").arg(SC_Frames::rangeText()).arg(frame));
    int const last = frameCount();
    if (frame < 1.0 || frame > last)
        return fail(error, QStringLiteral("expected a frame of the scene, from 1 to %1, not %2").arg(last).arg(frame));
    d_->session->setCurrentFrame(frame);
    return true;
}

int AH_Workspace::frameCount() const
{
    return d_->session->scene()->frameCount();
}

double AH_Workspace::frameRate() const
{
    return d_->session->scene()->frameRate();
}

bool AH_Workspace::setFrameCount(int count, QString *error)
{
    TUScene *scene = d_->session->scene();
    if (count < 1 || count > TUScene::kMaximumFrameCount)
        return fail(error, QStringLiteral("expected a length from 1 to %1 frames, not %2").arg(TUScene::kMaximumFrameCount).arg(count));
    if (scene->storedFrameCount() != count)
        d_->session->commandManager()->execute(
            std::make_unique<SceneTimingCmd<int>>(scene, &TUScene::storedFrameCount, &TUScene::setFrameCount, count),
            QStringLiteral("Scene Length"));
    if (d_->session->currentFrame() > count)
        d_->session->setCurrentFrame(count);
    return true;
}

bool AH_Workspace::setFrameRate(double rate, QString *error)
{
    TUScene *scene = d_->session->scene();
    if (!(std::isfinite(rate) && rate > 0.0 && rate <= TUScene::kMaximumFrameRate))
        return fail(error, QStringLiteral("expected a frame rate above 0 and at most %1, not %2").arg(TUScene::kMaximumFrameRate).arg(rate));
    if (scene->storedFrameRate() != rate)
        d_->session->commandManager()->execute(
            std::make_unique<SceneTimingCmd<double>>(scene, &TUScene::storedFrameRate, &TUScene::setFrameRate, rate),
            QStringLiteral("Frame Rate"));
    return true;
}

bool AH_Workspace::stepFrameForKey(int key, Qt::KeyboardModifiers modifiers)
{
    if (modifiers & ~Qt::KeypadModifier)
        return false;
    int const last = frameCount();
    int const current = std::clamp(static_cast<int>(d_->session->currentFrame()), 1, last);
    int next = current;
    switch (key) {
    case Qt::Key_Left: case Qt::Key_Comma: next = std::max(1, current - 1); break;
    case Qt::Key_Right: case Qt::Key_Period: next = std::min(last, current + 1); break;
    case Qt::Key_Home: next = 1; break;
    case Qt::Key_End: next = last; break;
    default: return false;
    }
    d_->session->setCurrentFrame(next);
    return true;
}

std::vector<int> AH_Workspace::selectedKeyframes() const
{
    std::set<int> frames;
    for (MO_Node *node : d_->session->getSelection()->nodes())
        for (auto a = node->attrsBegin(); a != node->attrsEnd(); ++a)
            for (int key : (*a)->keyframes())
                frames.insert(key);
    return std::vector<int>(frames.begin(), frames.end());
}

bool AH_Workspace::setTool(QString const &name, QString *error)
{
    CX_ToolIds::ID const id = TO_ToolFactory::instance().idForName(name);
    if (id == CX_ToolIds::None) {
        QStringList known;
        for (TO_ToolFactory::Registration const &r : TO_ToolFactory::instance().tools())
            known << r.descriptor.name;
        return fail(error, QStringLiteral("expected the name of a registered tool (%1), not \"%2\"")
                               .arg(known.isEmpty() ? QStringLiteral("none registered") : known.join(QStringLiteral(", ")), name));
    }
    CX_ToolRecord record = CX_Context::GetInstance().data();
    record.toolId = id;
    CX_Context::GetInstance().SetData(record, nullptr);
    return true;
}

AT_Attr *AH_Workspace::nodeAttr(QString const &node, QString const &attr, QString *error) const
{
    MO_Node *n = findNode(node);
    if (!n) {
        fail(error, unknownNode(node));
        return nullptr;
    }
    AT_Attr *a = findAttr(n, attr);
    if (!a)
        fail(error, QStringLiteral("expected an attribute of \"%1\", not \"%2\"").arg(node, attr));
    return a;
}

bool AH_Workspace::setAttribute(QString const &node, QString const &attr, QString const &value, QString *error)
{
    AT_Attr *a = nodeAttr(node, attr, error);
    if (!a)
        return false;
    double const frame = d_->session->currentFrame();
    if (a->textValue(frame) == value)
        return true;  // nothing to change
    std::unique_ptr<CO_Command> command = a->setTextValue(frame, value);
    if (!command)
        return fail(error, QStringLiteral("expected a value that \"%1\" of \"%2\" accepts, not \"%3\"").arg(attr, node, value));
    d_->session->commandManager()->execute(std::move(command), QStringLiteral("Set Value"));
    return true;
}

bool AH_Workspace::attributeText(QString const &node, QString const &attr, double frame, QString *text, QString *error)
{
    AT_Attr *a = nodeAttr(node, attr, error);
    if (!a)
        return false;
    if (!SC_Frames::contains(frame))
        return fail(error, QStringLiteral("expected %1, not %2").arg(SC_Frames::rangeText()).arg(frame));
    *text = a->textValue(frame);
    return true;
}

bool AH_Workspace::attributeKeys(QString const &node, QString const &attr, std::vector<int> *keys, QString *error)
{
    AT_Attr *a = nodeAttr(node, attr, error);
    if (!a)
        return false;
    *keys = a->keyframes();
    return true;
}

bool AH_Workspace::newDrawing(QString *error, QString *name)
{
    MO_ElementModule *element = SL_SelectionUtil::getFirstElement(d_->session->getSelection());
    if (!element)
        return fail(error, QStringLiteral("expected a drawing element to be selected"));
    int const frame = static_cast<int>(d_->session->currentFrame());
    std::unique_ptr<CO_Command> command = CA_DrawingCmds::newDrawing(*element, frame, name);
    if (!command)
        return fail(error, QStringLiteral("expected a free drawing name in \"%1\"").arg(element->instanceName()));
    d_->session->commandManager()->execute(std::move(command), QStringLiteral("New Drawing"));
    d_->view->requestRedraw();
    return true;
}

bool AH_Workspace::undo()
{
    return d_->session->commandManager()->undo();
}

bool AH_Workspace::redo()
{
    return d_->session->commandManager()->redo();
}

void AH_Workspace::callBack(TUTeller *)
{
    CX_ToolIds::ID const id = CX_Context::GetInstance().currentToolId();
    if (id == d_->view->toolId())
        return;
    d_->view->setToolId(id);
    emit toolChanged(d_->view->toolId());
}
