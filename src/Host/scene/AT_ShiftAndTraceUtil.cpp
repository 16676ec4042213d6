#include "scene/AT_ShiftAndTraceUtil.h"

#include "command/CO_CommandManager.h"
#include "scene/AT_AttrCmds.h"
#include "scene/AT_AttrFactory.h"
#include "scene/MO_Module.h"
#include "scene/PIO_XML.h"
#include "scene/SC_SceneMetrics.h"

#include <QXmlStreamWriter>

#include <cmath>

namespace AT_ShiftAndTraceUtil {

namespace {

// The names of the seven values, in PositionData's order, as written in scene files.
struct Field {
    char const *name;
    double PositionData::*value;
};
constexpr Field kFields[] = {
    {"rotation", &PositionData::rotation}, {"pivotX", &PositionData::pivotX},
    {"pivotY", &PositionData::pivotY},     {"scaleX", &PositionData::scaleX},
    {"scaleY", &PositionData::scaleY},     {"positionX", &PositionData::positionX},
    {"positionY", &PositionData::positionY},
};

using ShiftMap = std::map<CA_CelKey, PositionData>;

// The whole value of the attribute: whether it is there, and its shifts (empty when removed).
class ShiftState : public AT_AttrState {
public:
    ShiftState(bool removed, ShiftMap shifts) : removed(removed), shifts(std::move(shifts)) {}
    std::unique_ptr<AT_AttrState> clone() const override { return std::make_unique<ShiftState>(*this); }
    bool equals(AT_AttrState const &other) const override
    {
        auto const *o = dynamic_cast<ShiftState const *>(&other);
        return o && o->removed == removed && o->shifts == shifts;
    }
    bool addKeyframe(int, bool, bool, bool) override { return false; }
    int removeKeyframes(int, int) override { return 0; }

    bool removed;
    ShiftMap shifts;
};

QString expectedIn(QString const &what, QString const &where)
{
    return QStringLiteral("expected %1 in <%2>").arg(what, where);
}

// Reads <shiftAndTrace> and its <shift> children; applies them only when the whole file was read.
class ShiftReader : public PIO_XML::ComponentReader {
public:
    explicit ShiftReader(ShiftAndTraceAttr *attr) : attr_(attr) {}

    std::shared_ptr<ComponentReader> startElement(PIO_XML::Context &ctx, QString const &name,
                                                  QXmlStreamAttributes const &attributes) override
    {
        if (own_.isEmpty()) {
            own_ = name;
            // Look-ups find the shifts of a drawing element under one name only.
            if (name != ShiftAndTraceAttr::Keyword())
                return errorHandler(ctx, QStringLiteral("expected the type %1 on <%2> only, found it on <%3>")
                                             .arg(ShiftAndTraceAttr::TypeString(), ShiftAndTraceAttr::Keyword(), name));
            if (!dynamic_cast<MO_ElementModule *>(attr_->node()))
                return errorHandler(ctx, QStringLiteral("expected <%1> on a drawing element only").arg(name));
            return shared_from_this();
        }
        if (name != QLatin1String("shift") || inShift_)
            return errorHandler(ctx, expectedIn(QStringLiteral("only <shift> elements"), own_));
        inShift_ = true;
        CA_CelKey key;
        PositionData data;
        if (!readShift(ctx, attributes, key, data))
            return nullptr;
        if (!shifts_.emplace(key, data).second)
            return errorHandler(ctx, QStringLiteral("expected one <shift> per drawing in <%1>, found \"%2\" twice")
                                         .arg(own_, key.drawing()));
        return shared_from_this();
    }

    bool endElement(PIO_XML::Context &ctx, QString const &name) override
    {
        if (name == QLatin1String("shift") && inShift_) {
            inShift_ = false;
            return true;
        }
        auto state = std::make_shared<ShiftState>(false, shifts_);
        ShiftAndTraceAttr *attr = attr_;
        ctx.onSuccess([attr, state] { attr->restoreState(*state); });
        return true;
    }

private:
    static bool readShift(PIO_XML::Context &ctx, QXmlStreamAttributes const &attributes, CA_CelKey &key,
                          PositionData &data)
    {
        QString element, drawing;
        for (QXmlStreamAttribute const &a : attributes) {
            QString const attrName = a.name().toString();
            if (attrName == QLatin1String("element")) {
                element = a.value().toString();
                continue;
            }
            if (attrName == QLatin1String("drawing")) {
                drawing = a.value().toString();
                continue;
            }
            Field const *field = nullptr;
            for (Field const &f : kFields)
                if (attrName == QLatin1String(f.name))
                    field = &f;
            if (!field) {
                errorHandler(ctx, QStringLiteral("expected element, drawing and the seven values on <shift>, found \"%1\"")
                                      .arg(attrName));
                return false;
            }
            double value = 0.0;
            if (!PIO_XML::parseNumber(a.value().toString(), value) || std::fabs(value) > ShiftAndTraceAttr::kLimit) {
                errorHandler(ctx, QStringLiteral("expected a finite number of magnitude at most 1e9 for \"%1\" on <shift>, found \"%2\"")
                                      .arg(attrName, a.value().toString()));
                return false;
            }
            data.*(field->value) = value;
        }
        key = CA_CelKey(element, drawing);
        if (!key.isValid()) {
            errorHandler(ctx, QStringLiteral("expected a drawing name on <shift>"));
            return false;
        }
        return true;
    }

    ShiftAndTraceAttr *attr_;
    QString own_;          // the attribute's element once started
    bool inShift_ = false; // inside a <shift>
    ShiftMap shifts_;
};

}  // namespace

// ---- PositionData ----

bool PositionData::operator==(PositionData const &o) const
{
    for (Field const &f : kFields)
        if (this->*(f.value) != o.*(f.value))
            return false;
    return true;
}

bool PositionData::isStorable() const
{
    for (Field const &f : kFields) {
        double const v = this->*(f.value);
        if (!std::isfinite(v) || std::fabs(v) > ShiftAndTraceAttr::kLimit)
            return false;
    }
    return true;
}

// ---- ShiftAndTraceAttr ----

struct ShiftAndTraceAttr::Impl {
    bool removed = false;
    ShiftMap shifts;  // valid keys, storable data; empty while removed
};

ShiftAndTraceAttr::ShiftAndTraceAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta)
    : AT_Attr(owner, meta), d_(std::make_unique<Impl>())
{
    setDynamic(true);
}

ShiftAndTraceAttr::~ShiftAndTraceAttr() = default;

QString ShiftAndTraceAttr::TypeString() { return QStringLiteral("SHIFT_AND_TRACE"); }
QString ShiftAndTraceAttr::Keyword() { return QStringLiteral("shiftAndTrace"); }

UT_DynKey const &ShiftAndTraceAttr::staticTypeKey()
{
    static UT_DynKey const key("SHIFT_AND_TRACE");
    return key;
}

QString ShiftAndTraceAttr::typeName() const { return TypeString(); }
UT_DynKey const &ShiftAndTraceAttr::typeKey() const { return staticTypeKey(); }

PositionData ShiftAndTraceAttr::positionFor(CA_CelKey const &key) const
{
    auto const found = d_->shifts.find(key);
    return found == d_->shifts.end() ? PositionData() : found->second;
}

bool ShiftAndTraceAttr::hasPositionFor(CA_CelKey const &key) const { return d_->shifts.count(key) != 0; }
std::map<CA_CelKey, PositionData> const &ShiftAndTraceAttr::positions() const { return d_->shifts; }
bool ShiftAndTraceAttr::isRemoved() const { return d_->removed; }

bool ShiftAndTraceAttr::changeTo(std::unique_ptr<AT_AttrState> after)
{
    std::unique_ptr<CO_Command> command = AT_AttrStateCmd::make(this, saveState(), std::move(after));
    if (!command)
        return false;
    CO_CommandManager *manager = owner() ? owner()->attrCommandManager() : nullptr;
    return manager ? manager->execute(std::move(command), QStringLiteral("Shift and Trace")) : command->execute();
}

bool ShiftAndTraceAttr::setPositionFor(CA_CelKey const &key, PositionData const &data)
{
    if (!key.isValid() || !data.isStorable() || d_->removed)
        return false;
    ShiftMap shifts = d_->shifts;
    shifts[key] = data;
    changeTo(std::make_unique<ShiftState>(false, std::move(shifts)));
    return true;
}

bool ShiftAndTraceAttr::clearPositionFor(CA_CelKey const &key)
{
    ShiftMap shifts = d_->shifts;
    if (shifts.erase(key) == 0)
        return false;
    return changeTo(std::make_unique<ShiftState>(d_->removed, std::move(shifts)));
}

void ShiftAndTraceAttr::makeDirty()
{
    if (MO_Node *n = node())
        n->setDirty();
}

QString ShiftAndTraceAttr::textValue(double) const { return QString::number(d_->shifts.size()); }

bool ShiftAndTraceAttr::isEquivalent(AT_Attr const &other) const
{
    auto const *o = dynamic_cast<ShiftAndTraceAttr const *>(&other);
    return o && o->d_->removed == d_->removed && o->d_->shifts == d_->shifts;
}

void ShiftAndTraceAttr::writeXml(QXmlStreamWriter &writer) const
{
    if (d_->removed || d_->shifts.empty())
        return;
    AT_Attr::writeXml(writer);
}

void ShiftAndTraceAttr::writeXmlContent(QXmlStreamWriter &writer) const
{
    for (auto const &entry : d_->shifts) {
        writer.writeEmptyElement(QStringLiteral("shift"));
        writer.writeAttribute(QStringLiteral("element"), entry.first.element());
        writer.writeAttribute(QStringLiteral("drawing"), entry.first.drawing());
        for (Field const &f : kFields)
            writer.writeAttribute(QLatin1String(f.name), PIO_XML::numberText(entry.second.*(f.value)));
    }
}

std::shared_ptr<PIO_XML::ComponentReader> ShiftAndTraceAttr::componentReader()
{
    return std::make_shared<ShiftReader>(this);
}

std::unique_ptr<AT_AttrState> ShiftAndTraceAttr::saveState() const
{
    return std::make_unique<ShiftState>(d_->removed, d_->shifts);
}

bool ShiftAndTraceAttr::restoreState(AT_AttrState const &state)
{
    auto const *s = dynamic_cast<ShiftState const *>(&state);
    if (!s)
        return false;
    d_->removed = s->removed;
    d_->shifts = s->shifts;
    notifyChanged();
    return true;
}

// ---- state ----

struct ShiftAndTraceStateManager::Impl {
    bool enabled = false;
    bool showPegs = true;
    bool showPegsIfSelected = false;
    bool showCrossHair = true;
    Position_t pegPosition = PegsBottom;
    std::vector<Math::Point2d> crossHairs;  // field units
    ShiftAndTraceAbstractSelection *selection = nullptr;         // not owned
    ShiftAndTracePickingHandleGenerator *generator = nullptr;    // not owned
};

// The one way into the manager's state for the free functions of this family.
struct StateAccess {
    static ShiftAndTraceStateManager::Impl &state() { return *ShiftAndTraceStateManager::instance()->d_; }
    static void setEnabled(bool enabled)
    {
        ShiftAndTraceStateManager *manager = ShiftAndTraceStateManager::instance();
        if (manager->d_->enabled == enabled)
            return;
        manager->d_->enabled = enabled;
        emit manager->onShiftAndTraceEnabledChanged();
    }
};

ShiftAndTraceStateManager::ShiftAndTraceStateManager() : d_(std::make_unique<Impl>()) {}
ShiftAndTraceStateManager::~ShiftAndTraceStateManager() = default;

ShiftAndTraceStateManager *ShiftAndTraceStateManager::instance()
{
    // Careful: never destroyed. A plug-in's selection or pick generator may be a static made
    // before the manager's first use, so it goes away after the manager would, and still
    // unregisters itself here on its way out.
    static ShiftAndTraceStateManager *const manager = new ShiftAndTraceStateManager;
    return manager;
}

bool shiftAndTraceEnabled() { return StateAccess::state().enabled; }
void setShiftAndTraceEnabled(bool enabled) { StateAccess::setEnabled(enabled); }
bool shiftAndTraceShowPegs() { return StateAccess::state().showPegs; }
void setShiftAndTraceShowPegs(bool show) { StateAccess::state().showPegs = show; }
bool shiftAndTraceShowPegsIfSelected() { return StateAccess::state().showPegsIfSelected; }
void setShiftAndTraceShowPegsIfSelected(bool toolIsCurrent) { StateAccess::state().showPegsIfSelected = toolIsCurrent; }
bool shiftAndTraceShowCrossHair() { return StateAccess::state().showCrossHair; }
void setShiftAndTraceShowCrossHair(bool show) { StateAccess::state().showCrossHair = show; }
Position_t shiftAndTracePegPosition() { return StateAccess::state().pegPosition; }

void setShiftAndTracePegPosition(Position_t position)
{
    if (static_cast<unsigned>(position) < static_cast<unsigned>(kPegPositionCount))
        StateAccess::state().pegPosition = position;
}

std::vector<Math::Point2d> &crossHairList() { return StateAccess::state().crossHairs; }

bool pegsShown()
{
    return shiftAndTraceEnabled() && shiftAndTraceShowPegs() && shiftAndTraceShowPegsIfSelected();
}

bool crossHairsShown() { return shiftAndTraceEnabled() && shiftAndTraceShowCrossHair(); }

ShiftAndTraceAbstractSelection::ShiftAndTraceAbstractSelection() = default;
ShiftAndTraceAbstractSelection::~ShiftAndTraceAbstractSelection()
{
    // A selection that goes away unpublished must not be asked any more.
    if (StateAccess::state().selection == this)
        StateAccess::state().selection = nullptr;
}
bool ShiftAndTraceAbstractSelection::isSelected(MO_ElementModule *, CA_CelKey const &) { return false; }
void ShiftAndTraceAbstractSelection::setInstance(ShiftAndTraceAbstractSelection *selection)
{
    StateAccess::state().selection = selection;
}
ShiftAndTraceAbstractSelection *ShiftAndTraceAbstractSelection::instance() { return StateAccess::state().selection; }

ShiftAndTracePickingHandleGenerator::~ShiftAndTracePickingHandleGenerator()
{
    if (StateAccess::state().generator == this)
        StateAccess::state().generator = nullptr;
}

void setShiftAndTracePickingHandleGenerator(ShiftAndTracePickingHandleGenerator *generator)
{
    StateAccess::state().generator = generator;
}

ShiftAndTracePickingHandleGenerator *shiftAndTracePickingHandleGenerator() { return StateAccess::state().generator; }

// ---- storage ----

namespace {
ShiftAndTraceAttr *attrOf(MO_ElementModule const *module)
{
    return module ? dynamic_cast<ShiftAndTraceAttr *>(module->findAttr(ShiftAndTraceAttr::Keyword())) : nullptr;
}
}  // namespace

ShiftAndTraceAttr *shiftAndTraceFor(MO_ElementModule const *module)
{
    ShiftAndTraceAttr *attr = attrOf(module);
    return attr && !attr->isRemoved() ? attr : nullptr;
}

ShiftAndTraceAttr *addShiftAndTrace(MO_ElementModule *module)
{
    if (!module)
        return nullptr;
    if (ShiftAndTraceAttr *attr = attrOf(module)) {
        if (attr->isRemoved())
            attr->restoreState(ShiftState(false, ShiftMap()));
        return attr;
    }
    AT_AttrMeta const meta = AT_AttrMetaFactorySingleton::instance().meta(ShiftAndTraceAttr::TypeString());
    return static_cast<ShiftAndTraceAttr *>(module->addDynamicAttr(std::make_unique<ShiftAndTraceAttr>(module, meta)));
}

bool removeShiftAndTrace(MO_ElementModule *module)
{
    ShiftAndTraceAttr *attr = shiftAndTraceFor(module);
    if (!attr)
        return false;
    attr->changeTo(std::make_unique<ShiftState>(true, ShiftMap()));
    return true;
}

// ---- rendering ----

Math::Matrix4x4 offsetMatrix(PositionData const &data, SC_SceneMetrics const &metrics)
{
    double const px = data.pivotX * metrics.fieldToOglX(), py = data.pivotY * metrics.fieldToOglY();
    double const qx = data.positionX * metrics.fieldToOglX(), qy = data.positionY * metrics.fieldToOglY();
    Math::Matrix4x4 m;
    m.translate(px + qx, py + qy);
    m.rotateDegrees(data.rotation);
    m.scale(data.scaleX, data.scaleY);
    m.translate(-px, -py);
    return m;
}

Math::Matrix4x4 renderingOffsetMatrixForDrawing(MO_ElementModule const *module, CA_CelKey const &key)
{
    ShiftAndTraceAttr const *attr = shiftAndTraceFor(module);
    if (!attr || !attr->hasPositionFor(key))
        return Math::Matrix4x4();
    return offsetMatrix(attr->positionFor(key), module->sceneMetrics());
}

Math::Matrix4x4 renderingOffsetMatrixForFrame(MO_ElementModule const *module, double frame)
{
    OC_DrawingPtr const drawing = module ? module->oglDrawing(frame) : OC_DrawingPtr();
    return drawing.isDrawing() ? renderingOffsetMatrixForDrawing(module, drawing->celKey()) : Math::Matrix4x4();
}

bool renderingOffsetForFrame(MO_ElementModule const *module, double frame, PositionData &data)
{
    ShiftAndTraceAttr const *attr = shiftAndTraceFor(module);
    OC_DrawingPtr const drawing = attr ? module->oglDrawing(frame) : OC_DrawingPtr();
    if (!drawing.isDrawing())
        return false;
    data = attr->positionFor(drawing->celKey());
    return attr->hasPositionFor(drawing->celKey());
}

Math::Matrix4x4 displayModelMatrix(MO_ElementModule const &module, CA_CelKey const &key,
                                   Math::Matrix4x4 const &modelMatrix)
{
    return shiftAndTraceEnabled() ? modelMatrix * renderingOffsetMatrixForDrawing(&module, key) : modelMatrix;
}

Math::Matrix4x4 drawingViewModelMatrix() { return Math::Matrix4x4(); }

Math::Point2d centerPegPosition(Position_t position)
{
    // Inside the default field (12 field units from the centre on each axis), so that the pegs of
    // unshifted drawings show in a camera view of the whole field.
    constexpr double kInset = 10.0;
    switch (position) {
    case PegsTop: return Math::Point2d(0.0, kInset);
    case PegsLeft: return Math::Point2d(-kInset, 0.0);
    case PegsRight: return Math::Point2d(kInset, 0.0);
    case PegsBottom: break;
    }
    return Math::Point2d(0.0, -kInset);
}

Math::Point2d getCenterPegPosition() { return centerPegPosition(shiftAndTracePegPosition()); }

VS_RGBA getOutlineColour() { return VS_RGBA(255, 120, 0); }

}  // namespace AT_ShiftAndTraceUtil
