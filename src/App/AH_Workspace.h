// The document side of animhost, shared by the window and by batch scripts: the open scene with
// its session, the one camera view, and the operations a user performs on them (open, save,
// select, set the frame, choose a tool, set an attribute). Each operation reports a failure as a
// message without a source position; the caller adds the file and line it knows of.
//
// The workspace keeps the session services of PLUG_Services pointing at the open session, and
// listens to CX_Context: whoever changes the current tool (the tool bar, a plug-in action, a
// script) makes the view create that tool. Every scene it opens reports to one change manager,
// given by the application (AH_Host's, which plug-ins connect to when they load) or its own.
#pragma once

#include "base/TUTeller.h"
#include "plugin/PLUG_InteractiveViewManager.h"
#include "tool/CX_Context.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class AT_Attr;
class MO_Node;
class SC_Session;
class TUSceneChangeManager;
class VW_View;

class AH_Workspace : public QObject, public TUListener, public PLUG_InteractiveViewManager {
    Q_OBJECT
public:
    explicit AH_Workspace(QObject *parent = nullptr);
    // `changes` is not owned and must outlive the workspace; null: the workspace makes its own.
    explicit AH_Workspace(TUSceneChangeManager *changes, QObject *parent = nullptr);
    ~AH_Workspace() override;

    SC_Session *session() const;  // never null: an empty scene until one is opened
    VW_View *view() const;        // never null
    // The file the scene was opened from or last saved to; empty for a new scene.
    QString filePath() const;
    bool isModified() const;

    // Replaces the open scene by the file's. On failure the open scene stays and `error` tells why
    // ("<file>:<line>: expected ...").
    bool open(QString const &path, QString *error);
    bool save(QString const &path, QString *error);
    void newScene();

    // The node of that instance name, or null.
    MO_Node *findNode(QString const &name) const;
    // The attribute of a node by keyword; "a.b" names the sub-attribute b of a, and a keyword may hold
    // dots itself (the longest one that matches is taken). Null when missing.
    static AT_Attr *findAttr(MO_Node *node, QString const &path);

    // Makes the selection exactly these nodes, as one undoable step "Selection". Unknown names
    // are refused and nothing changes.
    bool selectNodes(QStringList const &names, QString *error);
    // The scene's frames run from 1 to frameCount(); a frame outside them is refused with a message
    // naming the range.
    bool setFrame(double frame, QString *error);
    int frameCount() const;
    double frameRate() const;
    // Give the scene a length or a frame rate of its own, as one undo step ("Scene Length",
    // "Frame Rate"); out of range values are refused (TUScene). A current frame beyond a new,
    // shorter length goes to the last frame.
    bool setFrameCount(int count, QString *error);
    bool setFrameRate(double rate, QString *error);
    // The frame keys of the timeline, for keys that nothing else took: Left and "," go one frame
    // back, Right and "." one forward, Home to the first frame and End to the last (without
    // modifiers). True when `key` is one of them, even at the end of the range.
    bool stepFrameForKey(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    // The frames that hold keys of any attribute of the selected nodes, ascending, each once.
    std::vector<int> selectedKeyframes() const;
    // Makes the named tool current (CX_Context), as the tool bar does.
    bool setTool(QString const &name, QString *error);
    // Sets the attribute from text at the current frame, as one undoable step "Set Value".
    bool setAttribute(QString const &node, QString const &attr, QString const &value, QString *error);
    // The attribute's value at `frame` as text.
    bool attributeText(QString const &node, QString const &attr, double frame, QString *text, QString *error);
    // The frames that hold keyframes of the attribute, ascending.
    bool attributeKeys(QString const &node, QString const &attr, std::vector<int> *keys, QString *error);

    // Adds an empty drawing to the first selected drawing element, named by the next free number
    // and exposed at the current frame (the frames after keep what they showed), as one undoable
    // step "New Drawing". `name` (may be null) receives its name.
    bool newDrawing(QString *error, QString *name = nullptr);

    bool undo();
    bool redo();

    // PLUG_InteractiveViewManager: the one view redraws when it shows that frame.
    void redrawViewsAtFrame(int frame) override;

signals:
    // A new scene was opened (the session object changed).
    void sessionChanged();
    // The undo stack changed: something was done, undone or redone.
    void documentChanged();
    // The view's current tool changed.
    void toolChanged(CX_ToolIds::ID id);

private:
    // The attribute `attr` of the node named `node`; null with `error` set when either is missing.
    AT_Attr *nodeAttr(QString const &node, QString const &attr, QString *error) const;
    void callBack(TUTeller *teller) override;
    void install(std::unique_ptr<SC_Session> session, QString const &path);

    struct Impl;
    std::unique_ptr<Impl> d_;
};
