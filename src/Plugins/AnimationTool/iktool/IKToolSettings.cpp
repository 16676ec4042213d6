#include "iktool/IKToolSettings.h"

#include "bridge/SkeletonExtraction.h"
#include "skeleton/IKMetaData.h"

#include <algorithm>
#include <utility>

struct IKToolSettings::Impl {
    UT_SharedWeakPtr<MO_Module> skeletonRoot;
    int toolMode = ManipulationMode;            // SetupMode or ManipulationMode only
    SelectionJointSource *jointSource = nullptr;  // not owned
    int maxIterations = 120;
    std::vector<SmartKeyword> smartKeywords = {
        {QStringLiteral("hand"), QStringLiteral("Hand"), {true, true, false}, {1.0, 1.0, 1.0}},
        {QStringLiteral("foot"), QStringLiteral("Foot"), {true, true, false}, {1.0, 1.0, 1.0}},
        {QStringLiteral("bone"), QStringLiteral("Bone"), {true, false, false}, {1.0, 1.0, 1.0}},
    };
    double rootTranslationGain = 1.0;
    bool enableRootTranslation = true;
    bool enableShadowPosing = true;
    // usePeg, useRead and useDeformer are kept by the bridge, which reads them while extracting.
    bool interpolationEnabled = false;
    int fromFrame = 1;
    int toFrame = 12;
    bool useCurrentFrame = true;
    int interpolationType = Linear;
};

IKToolSettings &IKToolSettings::instance()
{
    static IKToolSettings settings;
    return settings;
}

IKToolSettings::IKToolSettings() : d_(std::make_unique<Impl>()) {}

IKToolSettings::~IKToolSettings() = default;

template <class T>
void IKToolSettings::setChanged(T &field, T value)
{
    if (field == value)
        return;
    field = value;
    emit settingsChanged();
}

int IKToolSettings::toolMode() const { return d_->toolMode; }
int IKToolSettings::maxIterations() const { return d_->maxIterations; }
double IKToolSettings::rootTranslationGain() const { return d_->rootTranslationGain; }
bool IKToolSettings::enableRootTranslation() const { return d_->enableRootTranslation; }
bool IKToolSettings::enableShadowPosing() const { return d_->enableShadowPosing; }
bool IKToolSettings::usePeg() const { return IKToolUtil::setupKeywordOptions().usePeg; }
bool IKToolSettings::useRead() const { return IKToolUtil::setupKeywordOptions().useRead; }
bool IKToolSettings::useDeformer() const { return IKToolUtil::setupKeywordOptions().useDeformer; }
bool IKToolSettings::interpolationEnabled() const { return d_->interpolationEnabled; }
int IKToolSettings::fromFrame() const { return d_->fromFrame; }
int IKToolSettings::toFrame() const { return d_->toFrame; }
bool IKToolSettings::useCurrentFrame() const { return d_->useCurrentFrame; }
int IKToolSettings::interpolationType() const { return d_->interpolationType; }
std::vector<IKToolSettings::SmartKeyword> const &IKToolSettings::smartKeywords() const { return d_->smartKeywords; }

void IKToolSettings::setToolMode(int mode)
{
    // Only the two modes are ever stored.
    setChanged(d_->toolMode, mode == SetupMode ? int(SetupMode) : int(ManipulationMode));
}

void IKToolSettings::setMaxIterations(int iterations) { setChanged(d_->maxIterations, iterations); }
void IKToolSettings::setRootTranslationGain(double gain) { setChanged(d_->rootTranslationGain, gain); }
void IKToolSettings::setEnableRootTranslation(bool enable) { setChanged(d_->enableRootTranslation, enable); }
void IKToolSettings::setEnableShadowPosing(bool enable) { setChanged(d_->enableShadowPosing, enable); }
void IKToolSettings::setUseCurrentFrame(bool use) { setChanged(d_->useCurrentFrame, use); }

void IKToolSettings::setUsePeg(bool use)
{
    setKeywordOption(&IKToolUtil::SetupKeywordOptions::usePeg, use);
}

void IKToolSettings::setUseRead(bool use)
{
    setKeywordOption(&IKToolUtil::SetupKeywordOptions::useRead, use);
}

void IKToolSettings::setUseDeformer(bool use)
{
    setKeywordOption(&IKToolUtil::SetupKeywordOptions::useDeformer, use);
}

// These three do not compare: the signal goes out on every call.
void IKToolSettings::setKeywordOption(bool IKToolUtil::SetupKeywordOptions::*option, bool use)
{
    IKToolUtil::SetupKeywordOptions options = IKToolUtil::setupKeywordOptions();
    options.*option = use;
    IKToolUtil::setSetupKeywordOptions(options);
    emit settingsChanged();
}

void IKToolSettings::setInterpolationEnabled(bool enable)
{
    d_->interpolationEnabled = enable;
}

void IKToolSettings::setFrameRange(int from, int to)
{
    from = std::clamp(from, SC_Frames::kFirst, SC_Frames::kLast);
    to = std::clamp(to, SC_Frames::kFirst, SC_Frames::kLast);
    if (d_->fromFrame == from && d_->toFrame == to)
        return;
    d_->fromFrame = from;
    d_->toFrame = to;
    emit settingsChanged();
}

void IKToolSettings::setInterpolationType(int type)
{
    d_->interpolationType = type;
}

void IKToolSettings::setJointSource(SelectionJointSource *source)
{
    d_->jointSource = source;
    emit jointSelectionChanged();
}

void IKToolSettings::clearJointSource(SelectionJointSource *source)
{
    if (d_->jointSource == source)
        d_->jointSource = nullptr;
}

IKToolSettings::SelectionJointSource *IKToolSettings::jointSource() const
{
    return d_->jointSource;
}

void IKToolSettings::setSkeletonRoot(MO_Module *root)
{
    d_->skeletonRoot = UT_SharedWeakPtr<MO_Module>(root);
}

MO_Module *IKToolSettings::skeletonRoot() const
{
    MO_Module *root = d_->skeletonRoot.get();
    return root && IKToolUtil::isRoot(root) ? root : nullptr;
}

void IKToolSettings::activeFrameRange(double currentFrame, int &from, int &to) const
{
    int const current = SC_Frames::toInt(currentFrame);  // towards zero
    from = to = current;
    if (d_->toolMode == SetupMode || !d_->interpolationEnabled)
        return;
    from = d_->fromFrame;
    to = d_->useCurrentFrame ? current : d_->toFrame;
    if (from > to)
        std::swap(from, to);
}

bool IKToolSettings::canClearKeyframes(int from, int to, int current)
{
    int const span = to - from;
    return current == from || current == to ? span >= 2 : span >= 3;
}
