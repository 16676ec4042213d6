// What the user has chosen for the IK tool, for the whole process.
//
// One instance, made on the first call of instance(), holds the tool mode, the solver's iteration
// limit, root translation, shadow posing, the extraction filters and the interpolation choices.
// The tool, skeleton extraction and the panel read it; only the panel writes it, apart from the
// joint source and the skeleton root. Settings live in memory only: every start of the host begins
// with the defaults.
//
// Signals: settingsChanged() after a change, by the rule stated on each setter (changed: only when
// the value differs; always: on every call; silent: never, the caller takes care of it), and
// jointSelectionChanged() whenever a tool becomes the joint source.
//
// The active frame range is one rule for every part of the tool: activeFrameRange().
#pragma once

#include "host/HostAPI.h"

#include "bridge/SkeletonExtraction.h"

#include <set>
#include <vector>

class SkeletonDef;

class IKToolSettings : public QObject {
    Q_OBJECT
public:
    enum ToolMode { SetupMode = 0, ManipulationMode = 1 };
    enum InterpolationType { Altogether = 0, MoveAll = 1, Linear = 2, Cubic = 3 };

    // The live tool as the panel sees it: its selected joints, skeleton and keyframe clearing.
    // Never deleted through this interface.
    class SelectionJointSource {
    public:
        // Clears `out`, then fills it with the indices of the selected joints.
        virtual void selectedJoints(std::set<int> &out) = 0;
        virtual double currentFrame() = 0;
        // The skeleton of the current frame; made, empty, when there is none yet.
        virtual SkeletonDef &skeleton() = 0;
        // At least one frame of the active range is neither end nor the current frame.
        virtual bool canClearKeyframes() = 0;
        // "IK Clear All Affected Keyframes".
        virtual void clearKeyframes() = 0;

    protected:
        ~SelectionJointSource() = default;
    };

    // A row of the keyword table. Kept as data; nothing reads it.
    struct SmartKeyword {
        QString keyword;
        QString label;
        bool flags[3];
        double values[3];
    };

    static IKToolSettings &instance();
    ~IKToolSettings() override;

    int toolMode() const;
    int maxIterations() const;
    double rootTranslationGain() const;
    bool enableRootTranslation() const;
    bool enableShadowPosing() const;
    bool usePeg() const;
    bool useRead() const;
    bool useDeformer() const;
    bool interpolationEnabled() const;
    int fromFrame() const;
    int toFrame() const;
    bool useCurrentFrame() const;
    int interpolationType() const;
    std::vector<SmartKeyword> const &smartKeywords() const;

    void setToolMode(int mode);                        // changed
    void setMaxIterations(int iterations);             // changed
    void setRootTranslationGain(double gain);          // changed (exact comparison)
    void setEnableRootTranslation(bool enable);        // changed
    void setEnableShadowPosing(bool enable);           // changed
    void setUsePeg(bool use);                          // always
    void setUseRead(bool use);                         // always
    void setUseDeformer(bool use);                     // always
    void setInterpolationEnabled(bool enable);         // silent
    void setFrameRange(int from, int to);              // changed, one signal; stored as given, each brought within SC_Frames
    void setUseCurrentFrame(bool use);                 // changed
    void setInterpolationType(int type);               // silent

    // The live tool, or null. Setting emits jointSelectionChanged() every time; clearing sets null
    // only when `source` is the present one, and emits nothing.
    void setJointSource(SelectionJointSource *source);
    void clearJointSource(SelectionJointSource *source);
    SelectionJointSource *jointSource() const;

    // The root of the selected skeleton: the module, only while it is still a root; null when the
    // reference expired or the module lost its root status. Null empties it.
    void setSkeletonRoot(MO_Module *root);
    MO_Module *skeletonRoot() const;

    // The frames a manipulation affects, with `currentFrame` cut to an integer: both ends at the
    // current frame in setup mode or without interpolation; else fromFrame to toFrame (toFrame
    // replaced by the current frame with useCurrentFrame), swapped if from exceeds to.
    void activeFrameRange(double currentFrame, int &from, int &to) const;
    // True when the range from..to leaves a frame that is neither end nor `current`: at least 2
    // apart when `current` is an end, at least 3 otherwise.
    static bool canClearKeyframes(int from, int to, int current);

signals:
    void settingsChanged();
    void jointSelectionChanged();

private:
    IKToolSettings();
    template <class T>
    void setChanged(T &field, T value);
    void setKeywordOption(bool IKToolUtil::SetupKeywordOptions::*option, bool use);

    struct Impl;
    std::unique_ptr<Impl> d_;
};
