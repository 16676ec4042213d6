#include "scene/AT_Attr.h"

#include "scene/AT_AttrCmds.h"
#include "scene/AT_AttrSurrogate.h"
#include "scene/PIO_XML.h"

#include <QStringList>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>
#include <climits>
#include <set>
#include <typeinfo>

// ---- AT_AttrOwner, AT_AttrState ----

AT_AttrOwner::~AT_AttrOwner() = default;
MO_Node *AT_AttrOwner::attrOwnerNode() { return nullptr; }
void AT_AttrOwner::attrChanged(AT_Attr &) {}
CO_CommandManager *AT_AttrOwner::attrCommandManager() { return nullptr; }

AT_AttrState::~AT_AttrState() = default;

// ---- AT_Attr ----

struct AT_Attr::Impl {
    AT_AttrOwner *owner;
    AT_AttrMeta meta;
    bool dynamic = false;
    bool blocked = false;
    std::shared_ptr<AT_AttrSurrogate> surrogate;  // attached surrogate, or null
};

AT_Attr::AT_Attr(AT_AttrOwner *owner, AT_AttrMeta const &meta)
    : d_(std::make_unique<Impl>(Impl{owner, meta, false, false, nullptr}))
{
}

AT_Attr::~AT_Attr()
{
    if (d_->surrogate)
        d_->surrogate->attached_ = nullptr;
}

AT_AttrOwner *AT_Attr::owner() const { return d_->owner; }
MO_Node *AT_Attr::node() const { return d_->owner ? d_->owner->attrOwnerNode() : nullptr; }
AT_AttrMeta const &AT_Attr::meta() const { return d_->meta; }
QString const &AT_Attr::keyword() const { return d_->meta.keyword(); }
QString AT_Attr::xmlKeyword() const { return d_->meta.xmlKeyword(); }
QString const &AT_Attr::displayName() const { return d_->meta.displayName(); }
bool AT_Attr::isDynamic() const { return d_->dynamic; }
void AT_Attr::setDynamic(bool dynamic) { d_->dynamic = dynamic; }

std::unique_ptr<CO_Command> AT_Attr::setTextValue(double, QString const &) { return nullptr; }

std::unique_ptr<CO_Command> AT_Attr::addKeyframeCmd(int frame, bool useCurrentValue, bool constantSegment, bool replace)
{
    std::unique_ptr<AT_AttrState> before = saveState();
    std::unique_ptr<AT_AttrState> after = before->clone();
    if (!after->addKeyframe(frame, useCurrentValue, constantSegment, replace))
        return nullptr;
    return AT_AttrStateCmd::make(this, std::move(before), std::move(after));
}

std::unique_ptr<CO_Command> AT_Attr::removeKeyframesCmd(int from, int to)
{
    std::unique_ptr<AT_AttrState> before = saveState();
    std::unique_ptr<AT_AttrState> after = before->clone();
    if (after->removeKeyframes(from, to) == 0)
        return nullptr;
    return AT_AttrStateCmd::make(this, std::move(before), std::move(after));
}

void AT_Attr::writeXml(QXmlStreamWriter &writer) const
{
    writer.writeStartElement(xmlKeyword());
    if (d_->dynamic)
        writer.writeAttribute(QStringLiteral("type"), typeName());
    writeXmlContent(writer);
    writer.writeEndElement();
}

void AT_Attr::writeXmlContent(QXmlStreamWriter &) const {}

bool AT_Attr::setSurrogate(std::shared_ptr<AT_AttrSurrogate> const &surrogate)
{
    if (!surrogate || !acceptsSurrogate(*surrogate))
        return false;
    if (d_->surrogate)
        d_->surrogate->attached_ = nullptr;
    d_->surrogate = surrogate;
    surrogate->attached_ = this;
    notifyChanged();
    return true;
}

void AT_Attr::resetSurrogate()
{
    if (!d_->surrogate)
        return;
    d_->surrogate->attached_ = nullptr;
    d_->surrogate.reset();
    notifyChanged();
}

std::shared_ptr<AT_AttrSurrogate> const &AT_Attr::surrogate() const { return d_->surrogate; }

bool AT_Attr::acceptsSurrogate(AT_AttrSurrogate const &) const { return false; }
bool AT_Attr::isAnimatable() const { return false; }
std::vector<int> AT_Attr::keyframes() const { return {}; }
bool AT_Attr::isAnimated() const { return !keyframes().empty(); }

void AT_Attr::notifyChanged()
{
    if (d_->blocked)
        return;
    if (d_->owner)
        d_->owner->attrChanged(*this);
    tell();
}

void AT_Attr::setNotificationsBlocked(bool blocked) { d_->blocked = blocked; }

bool AT_SimpleAttr::acceptsSurrogate(AT_AttrSurrogate const &surrogate) const
{
    return dynamic_cast<AT_ScalarSimpleAttrSurrogate const *>(&surrogate) != nullptr;
}

// ---- AT_ComplexAttr ----

namespace {

// The states of a complex attribute's registered attributes, in order.
class CompositeState : public AT_AttrState {
public:
    std::vector<std::unique_ptr<AT_AttrState>> parts;

    std::unique_ptr<AT_AttrState> clone() const override
    {
        auto copy = std::make_unique<CompositeState>();
        for (auto const &part : parts)
            copy->parts.push_back(part->clone());
        return copy;
    }
    bool equals(AT_AttrState const &other) const override
    {
        auto const *o = dynamic_cast<CompositeState const *>(&other);
        if (!o || o->parts.size() != parts.size())
            return false;
        for (size_t i = 0; i < parts.size(); ++i)
            if (!parts[i]->equals(*o->parts[i]))
                return false;
        return true;
    }
    bool addKeyframe(int frame, bool useCurrentValue, bool constantSegment, bool replace) override
    {
        bool any = false;
        for (auto &part : parts)
            any = part->addKeyframe(frame, useCurrentValue, constantSegment, replace) || any;
        return any;
    }
    int removeKeyframes(int from, int to) override
    {
        int removed = 0;
        for (auto &part : parts)
            removed += part->removeKeyframes(from, to);
        return removed;
    }
};

// The state of an attribute without a value.
class NoValueState : public AT_AttrState {
public:
    std::unique_ptr<AT_AttrState> clone() const override { return std::make_unique<NoValueState>(); }
    bool equals(AT_AttrState const &other) const override
    {
        return dynamic_cast<NoValueState const *>(&other) != nullptr;
    }
    bool addKeyframe(int, bool, bool, bool) override { return false; }
    int removeKeyframes(int, int) override { return 0; }
};

// Reads an element without content (XML attributes are allowed and ignored).
class EmptyElementReader : public PIO_XML::ComponentReader {
public:
    std::shared_ptr<ComponentReader> startElement(PIO_XML::Context &ctx, QString const &name,
                                                  QXmlStreamAttributes const &) override
    {
        if (own_.isEmpty()) {
            own_ = name;
            return shared_from_this();
        }
        return errorHandler(ctx, QStringLiteral("expected no element inside <%1>, found <%2>").arg(own_, name));
    }

private:
    QString own_;  // the element's name once started
};

}  // namespace

struct AT_ComplexAttr::Impl {
    std::vector<AT_Attr *> attrs;  // registered, not owned
};

AT_ComplexAttr::AT_ComplexAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta)
    : AT_Attr(owner, meta), d_(std::make_unique<Impl>())
{
}

AT_ComplexAttr::~AT_ComplexAttr() = default;

bool AT_ComplexAttr::registerAttr(AT_Attr *attr)
{
    if (!attr || std::find(d_->attrs.begin(), d_->attrs.end(), attr) != d_->attrs.end())
        return false;
    d_->attrs.push_back(attr);
    return true;
}

bool AT_ComplexAttr::unregisterAttr(AT_Attr *attr)
{
    auto it = std::find(d_->attrs.begin(), d_->attrs.end(), attr);
    if (it == d_->attrs.end())
        return false;
    d_->attrs.erase(it);
    return true;
}

std::vector<AT_Attr *> const &AT_ComplexAttr::registeredAttrs() const { return d_->attrs; }
int AT_ComplexAttr::registeredCount() const { return static_cast<int>(d_->attrs.size()); }

AT_Attr *AT_ComplexAttr::registeredAttr(int index) const
{
    if (index < 0 || index >= registeredCount())
        return nullptr;
    return d_->attrs[static_cast<size_t>(index)];
}

AT_Attr *AT_ComplexAttr::findRegisteredAttr(QString const &name, int *place) const
{
    if (place)
        *place = -1;
    if (name.isEmpty())
        return nullptr;
    for (size_t i = 0; i < d_->attrs.size(); ++i) {
        AT_Attr *attr = d_->attrs[i];
        if (attr->xmlKeyword() == name || attr->keyword() == name) {
            if (place)
                *place = static_cast<int>(i);
            return attr;
        }
    }
    return nullptr;
}

bool AT_ComplexAttr::moveRegisteredAttr(int from, int to)
{
    int const n = registeredCount();
    if (from == to || from < 0 || to < 0 || from >= n || to >= n)
        return false;
    AT_Attr *attr = d_->attrs[static_cast<size_t>(from)];
    d_->attrs.erase(d_->attrs.begin() + from);
    d_->attrs.insert(d_->attrs.begin() + to, attr);
    return true;
}

QString AT_ComplexAttr::textValue(double frame) const
{
    QStringList parts;
    for (AT_Attr *attr : d_->attrs)
        parts << attr->textValue(frame);
    return parts.join(QLatin1Char(';'));
}

bool AT_ComplexAttr::isEquivalent(AT_Attr const &other) const
{
    auto const *o = dynamic_cast<AT_ComplexAttr const *>(&other);
    if (!o || o->typeName() != typeName() || o->registeredCount() != registeredCount())
        return false;
    for (size_t i = 0; i < d_->attrs.size(); ++i)
        if (!d_->attrs[i]->isEquivalent(*o->d_->attrs[i]))
            return false;
    return true;
}

std::shared_ptr<PIO_XML::ComponentReader> AT_ComplexAttr::componentReader()
{
    return std::make_shared<PIO_XML::AttrListReader>(d_->attrs, nullptr);
}

bool AT_ComplexAttr::isAnimatable() const
{
    return std::any_of(d_->attrs.begin(), d_->attrs.end(),
                       [](AT_Attr *attr) { return attr->isAnimatable(); });
}

std::vector<int> AT_ComplexAttr::keyframes() const
{
    std::set<int> all;
    for (AT_Attr *attr : d_->attrs)
        for (int frame : attr->keyframes())
            all.insert(frame);
    return {all.begin(), all.end()};
}

std::unique_ptr<AT_AttrState> AT_ComplexAttr::saveState() const
{
    auto state = std::make_unique<CompositeState>();
    for (AT_Attr *attr : d_->attrs)
        state->parts.push_back(attr->saveState());
    return state;
}

bool AT_ComplexAttr::restoreState(AT_AttrState const &state)
{
    auto const *s = dynamic_cast<CompositeState const *>(&state);
    if (!s || s->parts.size() != d_->attrs.size())
        return false;
    // Check every part before changing any, so that a bad state changes nothing.
    for (size_t i = 0; i < d_->attrs.size(); ++i) {
        std::unique_ptr<AT_AttrState> const mine = d_->attrs[i]->saveState();
        if (typeid(*mine) != typeid(*s->parts[i]))
            return false;
    }
    for (size_t i = 0; i < d_->attrs.size(); ++i)
        d_->attrs[i]->restoreState(*s->parts[i]);
    notifyChanged();
    return true;
}

bool AT_ComplexAttr::acceptsSurrogate(AT_AttrSurrogate const &) const { return false; }

void AT_ComplexAttr::writeXmlContent(QXmlStreamWriter &writer) const
{
    for (AT_Attr *attr : d_->attrs)
        attr->writeXml(writer);
}

// ---- groups and dynamic attributes ----

AT_GroupAttr::AT_GroupAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, int state)
    : AT_ComplexAttr(owner, meta), state_(state)
{
}

AT_GroupAttr::~AT_GroupAttr() = default;
QString AT_GroupAttr::TypeString() { return QStringLiteral("GROUP"); }

UT_DynKey const &AT_GroupAttr::staticTypeKey()
{
    static UT_DynKey const key("GROUP");
    return key;
}

QString AT_GroupAttr::typeName() const { return TypeString(); }
UT_DynKey const &AT_GroupAttr::typeKey() const { return staticTypeKey(); }
int AT_GroupAttr::state() const { return state_; }
void AT_GroupAttr::setState(int state) { state_ = state; }

AT_DynGroupAttr::AT_DynGroupAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta)
    : AT_GroupAttr(owner, meta)
{
    setDynamic(true);
}

AT_DynGroupAttr::~AT_DynGroupAttr() = default;
QString AT_DynGroupAttr::TypeString() { return QStringLiteral("DYN_GROUP"); }

UT_DynKey const &AT_DynGroupAttr::staticTypeKey()
{
    static UT_DynKey const key("DYN_GROUP");
    return key;
}

QString AT_DynGroupAttr::typeName() const { return TypeString(); }
UT_DynKey const &AT_DynGroupAttr::typeKey() const { return staticTypeKey(); }

AT_DynAttr::AT_DynAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta) : AT_Attr(owner, meta)
{
    setDynamic(true);
}

AT_DynAttr::~AT_DynAttr() = default;
QString AT_DynAttr::TypeString() { return QStringLiteral("DYN_ATTR"); }

UT_DynKey const &AT_DynAttr::staticTypeKey()
{
    static UT_DynKey const key("DYN_ATTR");
    return key;
}

QString AT_DynAttr::typeName() const { return TypeString(); }
UT_DynKey const &AT_DynAttr::typeKey() const { return staticTypeKey(); }
QString AT_DynAttr::textValue(double) const { return QString(); }

bool AT_DynAttr::isEquivalent(AT_Attr const &other) const
{
    return dynamic_cast<AT_DynAttr const *>(&other) && other.typeName() == typeName();
}

std::shared_ptr<PIO_XML::ComponentReader> AT_DynAttr::componentReader()
{
    return std::make_shared<EmptyElementReader>();
}

std::unique_ptr<AT_AttrState> AT_DynAttr::saveState() const { return std::make_unique<NoValueState>(); }

bool AT_DynAttr::restoreState(AT_AttrState const &state)
{
    return dynamic_cast<NoValueState const *>(&state) != nullptr;
}

// ---- surrogates ----

AT_AttrSurrogate::AT_AttrSurrogate(AT_Attr *attr, bool dirty, int frame, bool constantSegment,
                                   bool onKeyframe)
    : attr_(attr), dirty_(dirty), frame_(frame), constantSegment_(constantSegment),
      onKeyframe_(onKeyframe)
{
}

AT_AttrSurrogate::~AT_AttrSurrogate() = default;
AT_Attr *AT_AttrSurrogate::attr() const { return attr_; }
AT_Attr *AT_AttrSurrogate::attachedTo() const { return attached_; }
int AT_AttrSurrogate::frame() const { return frame_; }
bool AT_AttrSurrogate::isConstantSegment() const { return constantSegment_; }
bool AT_AttrSurrogate::isOnKeyframe() const { return onKeyframe_; }
bool AT_AttrSurrogate::isDirty() const { return dirty_; }

void AT_AttrSurrogate::changed()
{
    dirty_ = true;
    if (attached_)
        attached_->notifyChanged();
}

AT_ScalarSimpleAttrSurrogate::AT_ScalarSimpleAttrSurrogate(AT_SimpleAttr *attr, double value,
                                                           bool dirty, int frame,
                                                           bool constantSegment, bool onKeyframe)
    : AT_AttrSurrogate(attr, dirty, frame, constantSegment, onKeyframe), value_(value)
{
}

AT_ScalarSimpleAttrSurrogate::~AT_ScalarSimpleAttrSurrogate() = default;
double AT_ScalarSimpleAttrSurrogate::value() const { return value_; }
int AT_ScalarSimpleAttrSurrogate::intValue() const
{
    // Truncation of a value outside the int range is undefined: clamp first.
    if (std::isnan(value_))
        return 0;
    return static_cast<int>(std::clamp(value_, double(INT_MIN), double(INT_MAX)));
}
bool AT_ScalarSimpleAttrSurrogate::boolValue() const { return value_ != 0.0; }
bool AT_ScalarSimpleAttrSurrogate::isDirty() const { return AT_AttrSurrogate::isDirty(); }

void AT_ScalarSimpleAttrSurrogate::setValue(double value)
{
    if (value == value_)
        return;
    value_ = value;
    changed();
}
