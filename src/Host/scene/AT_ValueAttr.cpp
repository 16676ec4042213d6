#include "scene/AT_ValueAttr.h"
#include "base/UT_StorableText.h"

#include "scene/AT_AttrCmds.h"
#include "scene/AT_AttrSurrogate.h"
#include "scene/PIO_XML.h"
#include "scene/SC_Frames.h"

#include <QRegularExpression>
#include <QStringList>
#include <QXmlStreamWriter>

#include <array>
#include <cfloat>
#include <cmath>
#include <map>
#include <optional>
#include <utility>
#include <vector>
#include <type_traits>

namespace at_value {

// How one component reads and writes.
enum class Scalar { Bool, Int, Real };

template <class T>
struct Traits;

template <>
struct Traits<bool> {
    static constexpr int N = 1;
    static constexpr Scalar scalar = Scalar::Bool;
    static constexpr bool animatable = false;
    static char const *typeName() { return "BOOL"; }
    static char const *name(int) { return "value"; }
    static std::array<double, N> toArray(bool v) { return {v ? 1.0 : 0.0}; }
    static bool fromArray(std::array<double, N> const &a) { return a[0] != 0.0; }
};

template <>
struct Traits<int> {
    static constexpr int N = 1;
    static constexpr Scalar scalar = Scalar::Int;
    static constexpr bool animatable = true;
    static char const *typeName() { return "INT"; }
    static char const *name(int) { return "value"; }
    static std::array<double, N> toArray(int v) { return {double(v)}; }
    static int fromArray(std::array<double, N> const &a) { return static_cast<int>(a[0]); }
};

template <>
struct Traits<double> {
    static constexpr int N = 1;
    static constexpr Scalar scalar = Scalar::Real;
    static constexpr bool animatable = true;
    static char const *typeName() { return "DOUBLE"; }
    static char const *name(int) { return "value"; }
    static std::array<double, N> toArray(double v) { return {v}; }
    static double fromArray(std::array<double, N> const &a) { return a[0]; }
};

template <>
struct Traits<Math::Point2d> {
    static constexpr int N = 2;
    static constexpr Scalar scalar = Scalar::Real;
    static constexpr bool animatable = true;
    static char const *typeName() { return "POSITION_2D"; }
    static char const *name(int i) { return i == 0 ? "x" : "y"; }
    static std::array<double, N> toArray(Math::Point2d const &v) { return {v.x, v.y}; }
    static Math::Point2d fromArray(std::array<double, N> const &a) { return {a[0], a[1]}; }
};

template <>
struct Traits<Math::Point3d> {
    static constexpr int N = 3;
    static constexpr Scalar scalar = Scalar::Real;
    static constexpr bool animatable = true;
    static char const *typeName() { return "POSITION_3D"; }
    static char const *name(int i) { return i == 0 ? "x" : i == 1 ? "y" : "z"; }
    static std::array<double, N> toArray(Math::Point3d const &v) { return {v.x, v.y, v.z}; }
    static Math::Point3d fromArray(std::array<double, N> const &a) { return {a[0], a[1], a[2]}; }
};

template <>
struct Traits<Math::Angle3d> {
    static constexpr int N = 3;
    static constexpr Scalar scalar = Scalar::Real;
    static constexpr bool animatable = true;
    static char const *typeName() { return "ROTATION_3D"; }
    static char const *name(int i) { return i == 0 ? "x" : i == 1 ? "y" : "z"; }
    static std::array<double, N> toArray(Math::Angle3d const &v) { return {v.x, v.y, v.z}; }
    static Math::Angle3d fromArray(std::array<double, N> const &a) { return {a[0], a[1], a[2]}; }
};

// True when every component can be held: finite, and for ints whole and within range.
template <class T>
bool representable(std::array<double, Traits<T>::N> const &a)
{
    for (double v : a) {
        if (!std::isfinite(v))
            return false;
        if (Traits<T>::scalar == Scalar::Int && (v != std::trunc(v) || v < INT_MIN || v > INT_MAX))
            return false;
    }
    return true;
}

QString scalarText(Scalar scalar, double v, bool forXml)
{
    switch (scalar) {
    case Scalar::Bool:
        return v != 0.0 ? QStringLiteral("true") : QStringLiteral("false");
    case Scalar::Int:
        return QString::number(static_cast<qlonglong>(v));
    case Scalar::Real:
        break;
    }
    return forXml ? PIO_XML::numberText(v) : QString::number(v, 'g', 6);
}

bool parseScalar(Scalar scalar, QString const &text, double &out)
{
    switch (scalar) {
    case Scalar::Bool:
        if (text == QLatin1String("true") || text == QLatin1String("1"))
            out = 1.0;
        else if (text == QLatin1String("false") || text == QLatin1String("0"))
            out = 0.0;
        else
            return false;
        return true;
    case Scalar::Int: {
        bool ok = false;
        int const v = text.toInt(&ok);
        if (ok)
            out = v;
        return ok;
    }
    case Scalar::Real:
        break;
    }
    return PIO_XML::parseNumber(text, out);
}

QString expectedScalar(Scalar scalar)
{
    switch (scalar) {
    case Scalar::Bool:
        return QStringLiteral("true or false");
    case Scalar::Int:
        return QStringLiteral("a whole number");
    case Scalar::Real:
        break;
    }
    return QStringLiteral("a finite number");
}

template <class T>
struct Key {
    T value;
    bool constant = false;  // holds its value up to the next key
    bool operator==(Key const &o) const { return value == o.value && constant == o.constant; }
};

template <class T>
struct Curve {
    T local{};
    std::map<int, Key<T>> keys;
    bool operator==(Curve const &o) const { return local == o.local && keys == o.keys; }

    T at(double frame, bool *onKey = nullptr, bool *constant = nullptr) const
    {
        bool on = false;
        bool flat = true;
        T const v = evaluate(frame, on, flat);
        if (onKey)
            *onKey = on;
        if (constant)
            *constant = flat;
        return v;
    }

private:
    T evaluate(double frame, bool &onKey, bool &constant) const
    {
        if (keys.empty())
            return local;
        if (std::isnan(frame))
            frame = 0.0;
        auto const first = keys.begin();
        auto const last = std::prev(keys.end());
        if (frame < first->first)
            return first->second.value;
        if (frame > last->first)
            return last->second.value;
        auto it = std::prev(keys.upper_bound(static_cast<int>(std::floor(frame))));
        onKey = frame == it->first;
        auto const next = std::next(it);
        if (next == keys.end())
            return it->second.value;
        bool const linear = Traits<T>::scalar == Scalar::Real;
        constant = it->second.constant || !linear || it->second.value == next->second.value;
        if (onKey || constant)
            return it->second.value;
        double const t = (frame - it->first) / double(next->first - it->first);
        auto a = Traits<T>::toArray(it->second.value);
        auto const b = Traits<T>::toArray(next->second.value);
        for (size_t i = 0; i < a.size(); ++i)
            a[i] += (b[i] - a[i]) * t;
        return Traits<T>::fromArray(a);
    }
};

template <class T>
class CurveState : public AT_AttrState {
public:
    CurveState(Curve<T> c, bool canAnimate) : curve(std::move(c)), animatable(canAnimate) {}

    Curve<T> curve;
    bool animatable;  // whether keys may be added

    std::unique_ptr<AT_AttrState> clone() const override
    {
        return std::make_unique<CurveState>(curve, animatable);
    }
    bool equals(AT_AttrState const &other) const override
    {
        auto const *o = dynamic_cast<CurveState const *>(&other);
        return o && o->curve == curve;
    }
    bool addKeyframe(int frame, bool useCurrentValue, bool constantSegment, bool replace) override
    {
        if (!animatable)
            return false;
        Key<T> const key{useCurrentValue ? curve.at(frame) : curve.local, constantSegment};
        auto it = curve.keys.find(frame);
        if (it == curve.keys.end()) {
            curve.keys.emplace(frame, key);
            return true;
        }
        if (!replace || it->second == key)
            return false;
        it->second = key;
        return true;
    }
    int removeKeyframes(int from, int to) override
    {
        if (from > to)
            return 0;
        auto const begin = curve.keys.lower_bound(from);
        auto const end = curve.keys.upper_bound(to);
        int const n = static_cast<int>(std::distance(begin, end));
        curve.keys.erase(begin, end);
        return n;
    }
};

template <class T>
T fromSurrogate(AT_AttrSurrogate const &surrogate, double frame, T const &fallback)
{
    if constexpr (std::is_arithmetic_v<T>) {
        (void)frame;
        auto const *s = dynamic_cast<AT_ScalarSimpleAttrSurrogate const *>(&surrogate);
        if (!s)
            return fallback;
        if constexpr (std::is_same_v<T, bool>)
            return s->boolValue();
        else if constexpr (std::is_same_v<T, int>)
            return s->intValue();
        else
            return s->value();
    } else {
        auto const *s = dynamic_cast<AT_ValueAttrSurrogate<T> const *>(&surrogate);
        return s ? s->getValue(frame) : fallback;
    }
}

// Reads the components of a value from the XML attributes of `element`.
template <class T>
bool readComponents(PIO_XML::Context &ctx, QString const &element,
                    QXmlStreamAttributes const &attributes, T &value)
{
    using Tr = Traits<T>;
    std::array<double, Tr::N> a{};
    for (int i = 0; i < Tr::N; ++i) {
        QString const name = QString::fromLatin1(Tr::name(i));
        if (!attributes.hasAttribute(name)) {
            ctx.fail(QStringLiteral("expected attribute \"%1\" on <%2>").arg(name, element));
            return false;
        }
        QString const text = attributes.value(name).toString();
        if (!parseScalar(Tr::scalar, text, a[static_cast<size_t>(i)])) {
            ctx.fail(QStringLiteral("expected %1 for \"%2\" on <%3>, found \"%4\"")
                         .arg(expectedScalar(Tr::scalar), name, element, text));
            return false;
        }
    }
    value = Tr::fromArray(a);
    return true;
}

template <class T, class Base>
class ValueReader : public PIO_XML::ComponentReader {
public:
    explicit ValueReader(AT_AnimatedAttr<T, Base> *attr) : attr_(attr) {}

    std::shared_ptr<ComponentReader> startElement(PIO_XML::Context &ctx, QString const &name,
                                                  QXmlStreamAttributes const &attributes) override
    {
        if (depth_ == 0) {
            own_ = name;
            if (!readComponents(ctx, name, attributes, staged_.local))
                return nullptr;
            if (!attr_->isAcceptable(staged_.local))
                return errorHandler(ctx, QStringLiteral("expected a value within the range of <%1>").arg(own_));
            depth_ = 1;
            return shared_from_this();
        }
        if (depth_ == 2)
            return errorHandler(ctx, QStringLiteral("expected no element inside <key> of <%1>, found <%2>").arg(own_, name));
        if (name != QLatin1String("key"))
            return errorHandler(ctx, QStringLiteral("expected <key> inside <%1>, found <%2>").arg(own_, name));
        if (!attr_->isAnimatable())
            return errorHandler(ctx, QStringLiteral("expected no <key> inside <%1>, which is not animatable").arg(own_));
        QString const frameText = attributes.value(QLatin1String("frame")).toString();
        bool ok = false;
        int const frame = frameText.toInt(&ok);
        if (!ok || !SC_Frames::contains(frame))
            return errorHandler(ctx, QStringLiteral("expected a whole frame number from %1 to %2 in <key frame=\"...\"> of <%3>, found \"%4\"")
                                         .arg(SC_Frames::kFirst).arg(SC_Frames::kLast).arg(own_, frameText));
        if (staged_.keys.count(frame))
            return errorHandler(ctx, QStringLiteral("expected one key per frame in <%1>, found frame %2 twice").arg(own_).arg(frame));
        Key<T> key{};
        if (!readComponents(ctx, QStringLiteral("key"), attributes, key.value))
            return nullptr;
        if (!attr_->isAcceptable(key.value))
            return errorHandler(ctx, QStringLiteral("expected a key value within the range of <%1> at frame %2").arg(own_).arg(frame));
        QString const constant = attributes.value(QLatin1String("constant")).toString();
        if (!constant.isEmpty() && constant != QLatin1String("true") && constant != QLatin1String("false"))
            return errorHandler(ctx, QStringLiteral("expected constant=\"true\" or \"false\" in <key> of <%1>, found \"%2\"").arg(own_, constant));
        key.constant = constant == QLatin1String("true");
        staged_.keys.emplace(frame, key);
        depth_ = 2;
        return shared_from_this();
    }

    bool endElement(PIO_XML::Context &ctx, QString const &) override
    {
        if (depth_ == 2) {
            depth_ = 1;
            return true;
        }
        depth_ = 0;
        auto state = std::make_shared<CurveState<T>>(staged_, attr_->isAnimatable());
        AT_AnimatedAttr<T, Base> *attr = attr_;
        ctx.onSuccess([attr, state] { attr->restoreState(*state); });
        return true;
    }

private:
    AT_AnimatedAttr<T, Base> *attr_;
    QString own_;    // the attribute's element name
    int depth_ = 0;  // 0 before the element, 1 inside it, 2 inside a key
    Curve<T> staged_;
};

}  // namespace at_value

using namespace at_value;

// ---- AT_AnimatedAttr ----

template <class T, class Base>
struct AT_AnimatedAttr<T, Base>::Impl {
    Curve<T> curve;
    bool linkable = true;
};

namespace at_value {

// An undo record of an animated attribute that holds only what changed: the local value before and
// after, when it changed, and each key that changed, absent or present before and after. Its size
// grows with the keys it changes, never with the length of the curve.
//
// Careful: it puts back its own keys and nothing else, so it is exact only where the undo stack
// holds it, run in order with the commands before and after it (as every command is).
template <class T, class Base>
class CurveChangeCmd : public AT_AttrChangeCmd {
public:
    using Attr = AT_AnimatedAttr<T, Base>;
    struct KeyChange {
        int frame;
        std::optional<Key<T>> before;  // absent: no key there
        std::optional<Key<T>> after;
    };

    explicit CurveChangeCmd(Attr *attr) : attr_(attr) {}

    void changeLocal(T const &before, T const &after) { local_ = std::make_pair(before, after); }
    void changeKey(int frame, std::optional<Key<T>> const &before, std::optional<Key<T>> const &after)
    {
        keys_.push_back(KeyChange{frame, before, after});
    }
    bool isEmpty() const { return !local_ && keys_.empty(); }

    AT_Attr *attr() const override { return attr_; }
    bool execute() override { return apply(true); }
    bool unexecute() override { return apply(false); }

private:
    bool apply(bool forward)
    {
        Curve<T> &curve = attr_->d_->curve;
        if (local_)
            curve.local = forward ? local_->second : local_->first;
        for (KeyChange const &change : keys_) {
            std::optional<Key<T>> const &key = forward ? change.after : change.before;
            if (key)
                curve.keys[change.frame] = *key;
            else
                curve.keys.erase(change.frame);
        }
        attr_->notifyChanged();
        return true;
    }

    Attr *attr_;
    std::optional<std::pair<T, T>> local_;  // before, after
    std::vector<KeyChange> keys_;
};

}  // namespace at_value

template <class T, class Base>
AT_AnimatedAttr<T, Base>::AT_AnimatedAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta,
                                          T const &defaultValue, bool linkable)
    : Base(owner, meta), d_(std::make_unique<Impl>())
{
    d_->curve.local = defaultValue;
    d_->linkable = linkable && Traits<T>::animatable;
}

template <class T, class Base>
AT_AnimatedAttr<T, Base>::~AT_AnimatedAttr() = default;

template <class T, class Base>
QString AT_AnimatedAttr<T, Base>::TypeString()
{
    return QString::fromLatin1(Traits<T>::typeName());
}

template <class T, class Base>
UT_DynKey const &AT_AnimatedAttr<T, Base>::staticTypeKey()
{
    static UT_DynKey const key(Traits<T>::typeName());
    return key;
}

template <class T, class Base>
QString AT_AnimatedAttr<T, Base>::typeName() const { return TypeString(); }

template <class T, class Base>
UT_DynKey const &AT_AnimatedAttr<T, Base>::typeKey() const { return staticTypeKey(); }

template <class T, class Base>
T AT_AnimatedAttr<T, Base>::localValue() const { return d_->curve.local; }

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::setLocalValue(T const &value)
{
    if (!isAcceptable(value) || value == d_->curve.local)
        return false;
    d_->curve.local = value;
    this->notifyChanged();
    return true;
}

template <class T, class Base>
T AT_AnimatedAttr<T, Base>::valueAt(double frame, bool *onKeyframe, bool *constantSegment) const
{
    if (auto const &s = this->surrogate()) {
        if (onKeyframe)
            *onKeyframe = s->isOnKeyframe();
        if (constantSegment)
            *constantSegment = s->isConstantSegment();
        return fromSurrogate<T>(*s, frame, d_->curve.local);
    }
    return d_->curve.at(frame, onKeyframe, constantSegment);
}

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::isLinkable() const { return d_->linkable; }

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::hasKeyframe(int frame) const { return d_->curve.keys.count(frame) != 0; }

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::setKeyframe(int frame, T const &value, bool constantSegment)
{
    if (!isAnimatable() || !isAcceptable(value) || !SC_Frames::contains(frame))
        return false;
    Key<T> const key{value, constantSegment};
    auto it = d_->curve.keys.find(frame);
    if (it != d_->curve.keys.end() && it->second == key)
        return false;
    d_->curve.keys[frame] = key;
    this->notifyChanged();
    return true;
}

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::isAcceptable(T const &value) const
{
    return representable<T>(Traits<T>::toArray(value)) && inRange(value);
}

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::inRange(T const &) const { return true; }

template <class T, class Base>
std::unique_ptr<CO_Command> AT_AnimatedAttr<T, Base>::setValueCmd(double frame, T const &value,
                                                                  bool relative, bool createKeyframe,
                                                                  bool constantSegment, bool localOnly)
{
    // A key lies within the frames a scene may hold (SC_Frames).
    if (this->surrogate() || !SC_Frames::contains(frame))
        return nullptr;
    T target = value;
    if (relative) {
        auto a = Traits<T>::toArray(valueAt(frame));
        auto const b = Traits<T>::toArray(value);
        for (size_t i = 0; i < a.size(); ++i)
            a[i] += b[i];
        if (!representable<T>(a))
            return nullptr;
        target = Traits<T>::fromArray(a);
    }
    if (!isAcceptable(target))
        return nullptr;
    auto command = std::make_unique<CurveChangeCmd<T, Base>>(this);
    if (!localOnly && isAnimatable() && (!d_->curve.keys.empty() || createKeyframe)) {
        int const frameKey = static_cast<int>(frame);
        auto const it = d_->curve.keys.find(frameKey);
        if (it == d_->curve.keys.end()) {
            command->changeKey(frameKey, std::nullopt, Key<T>{target, constantSegment});
        } else if (!(it->second.value == target)) {
            command->changeKey(frameKey, it->second, Key<T>{target, it->second.constant});
        }
    } else if (!(d_->curve.local == target)) {
        command->changeLocal(d_->curve.local, target);
    }
    if (command->isEmpty())
        return nullptr;
    return command;
}

template <class T, class Base>
QString AT_AnimatedAttr<T, Base>::textValue(double frame) const
{
    auto const a = Traits<T>::toArray(valueAt(frame));
    QStringList parts;
    for (double v : a)
        parts << scalarText(Traits<T>::scalar, v, false);
    return parts.join(QStringLiteral(", "));
}

template <class T, class Base>
std::unique_ptr<CO_Command> AT_AnimatedAttr<T, Base>::setTextValue(double frame, QString const &text)
{
    static QRegularExpression const separators(QStringLiteral("[,\\s]+"));
    QStringList const parts = text.trimmed().split(separators, Qt::SkipEmptyParts);
    std::array<double, Traits<T>::N> a{};
    if (parts.size() != Traits<T>::N)
        return nullptr;
    for (int i = 0; i < Traits<T>::N; ++i)
        if (!parseScalar(Traits<T>::scalar, parts[i], a[static_cast<size_t>(i)]))
            return nullptr;
    return setValueCmd(frame, Traits<T>::fromArray(a));
}

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::isEquivalent(AT_Attr const &other) const
{
    auto const *o = dynamic_cast<AT_AnimatedAttr const *>(&other);
    return o && o->d_->curve == d_->curve;
}

template <class T, class Base>
std::shared_ptr<PIO_XML::ComponentReader> AT_AnimatedAttr<T, Base>::componentReader()
{
    return std::make_shared<ValueReader<T, Base>>(this);
}

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::isAnimatable() const
{
    return d_->linkable && !this->meta().hasFlag(AT_AttrMetaContainer::NotAnimatable);
}

template <class T, class Base>
std::vector<int> AT_AnimatedAttr<T, Base>::keyframes() const
{
    std::vector<int> frames;
    for (auto const &key : d_->curve.keys)
        frames.push_back(key.first);
    return frames;
}

template <class T, class Base>
std::unique_ptr<AT_AttrState> AT_AnimatedAttr<T, Base>::saveState() const
{
    return std::make_unique<CurveState<T>>(d_->curve, isAnimatable());
}

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::restoreState(AT_AttrState const &state)
{
    auto const *s = dynamic_cast<CurveState<T> const *>(&state);
    if (!s)
        return false;
    if (!(s->curve == d_->curve)) {
        d_->curve = s->curve;
        this->notifyChanged();
    }
    return true;
}

template <class T, class Base>
std::unique_ptr<CO_Command> AT_AnimatedAttr<T, Base>::addKeyframeCmd(int frame, bool useCurrentValue,
                                                                     bool constantSegment, bool replace)
{
    if (!isAnimatable())
        return nullptr;
    Curve<T> const &curve = d_->curve;
    Key<T> const key{useCurrentValue ? curve.at(frame) : curve.local, constantSegment};
    auto const it = curve.keys.find(frame);
    if (it != curve.keys.end() && (!replace || it->second == key))
        return nullptr;
    auto command = std::make_unique<CurveChangeCmd<T, Base>>(this);
    command->changeKey(frame, it == curve.keys.end() ? std::nullopt : std::optional<Key<T>>(it->second), key);
    return command;
}

template <class T, class Base>
std::unique_ptr<CO_Command> AT_AnimatedAttr<T, Base>::removeKeyframesCmd(int from, int to)
{
    if (from > to)
        return nullptr;
    auto const begin = d_->curve.keys.lower_bound(from);
    auto const end = d_->curve.keys.upper_bound(to);
    if (begin == end)
        return nullptr;
    auto command = std::make_unique<CurveChangeCmd<T, Base>>(this);
    for (auto it = begin; it != end; ++it)
        command->changeKey(it->first, it->second, std::nullopt);
    return command;
}

template <class T, class Base>
bool AT_AnimatedAttr<T, Base>::acceptsSurrogate(AT_AttrSurrogate const &surrogate) const
{
    if constexpr (std::is_arithmetic_v<T>)
        return dynamic_cast<AT_ScalarSimpleAttrSurrogate const *>(&surrogate) != nullptr;
    else
        return dynamic_cast<AT_ValueAttrSurrogate<T> const *>(&surrogate) != nullptr;
}

template <class T, class Base>
void AT_AnimatedAttr<T, Base>::writeXmlContent(QXmlStreamWriter &writer) const
{
    auto writeComponents = [&writer](T const &value) {
        auto const a = Traits<T>::toArray(value);
        for (int i = 0; i < Traits<T>::N; ++i)
            writer.writeAttribute(QString::fromLatin1(Traits<T>::name(i)),
                                  scalarText(Traits<T>::scalar, a[static_cast<size_t>(i)], true));
    };
    writeComponents(d_->curve.local);
    for (auto const &[frame, key] : d_->curve.keys) {
        writer.writeStartElement(QStringLiteral("key"));
        writer.writeAttribute(QStringLiteral("frame"), QString::number(frame));
        writeComponents(key.value);
        if (key.constant)
            writer.writeAttribute(QStringLiteral("constant"), QStringLiteral("true"));
        writer.writeEndElement();
    }
}

template class AT_AnimatedAttr<bool, AT_SimpleAttr>;
template class AT_AnimatedAttr<int, AT_SimpleAttr>;
template class AT_AnimatedAttr<double, AT_SimpleAttr>;
template class AT_AnimatedAttr<Math::Point2d, AT_ComplexAttr>;
template class AT_AnimatedAttr<Math::Point3d, AT_ComplexAttr>;
template class AT_AnimatedAttr<Math::Angle3d, AT_ComplexAttr>;

// ---- the kinds ----

AT_BoolAttr::AT_BoolAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, bool defaultValue)
    : AT_AnimatedAttr(owner, meta, defaultValue, false)
{
}

bool AT_BoolAttr::value(double frame, bool *onKeyframe, bool *constantSegment) const
{
    return valueAt(frame, onKeyframe, constantSegment);
}

AT_IntAttr::AT_IntAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, int defaultValue,
                       int minValue, int maxValue, int step, bool linkable)
    : AT_AnimatedAttr(owner, meta, defaultValue, linkable), min_(minValue), max_(maxValue), step_(step)
{
}

int AT_IntAttr::value(double frame, bool *onKeyframe, bool *constantSegment) const
{
    return valueAt(frame, onKeyframe, constantSegment);
}

int AT_IntAttr::minValue() const { return min_; }
int AT_IntAttr::maxValue() const { return max_; }
int AT_IntAttr::step() const { return step_; }
void AT_IntAttr::setMinValue(int minValue) { min_ = minValue; }
void AT_IntAttr::setMaxValue(int maxValue) { max_ = maxValue; }
bool AT_IntAttr::inRange(int const &value) const { return value >= min_ && value <= max_; }

AT_DoubleAttr::AT_DoubleAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, double defaultValue,
                             bool linkable)
    : AT_AnimatedAttr(owner, meta, defaultValue, linkable)
{
}

double AT_DoubleAttr::value(double frame, bool *onKeyframe, bool *constantSegment) const
{
    return valueAt(frame, onKeyframe, constantSegment);
}

double AT_DoubleAttr::minValue() const
{
    auto const *range = meta().doubleContainer();
    return range ? range->minValue : -DBL_MAX;
}

double AT_DoubleAttr::maxValue() const
{
    auto const *range = meta().doubleContainer();
    return range ? range->maxValue : DBL_MAX;
}

bool AT_DoubleAttr::inRange(double const &value) const
{
    return value >= minValue() && value <= maxValue();
}

AT_Position2dAttr::AT_Position2dAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, bool linkable,
                                     Math::Point2d const &defaultValue)
    : AT_AnimatedAttr(owner, meta, defaultValue, linkable)
{
}

Math::Point2d AT_Position2dAttr::value(double frame) const { return valueAt(frame); }

bool AT_Position2dAttr::getValue(double frame, double &x, double &y, bool *constantSegment) const
{
    Math::Point2d const p = valueAt(frame, nullptr, constantSegment);
    x = p.x;
    y = p.y;
    return true;
}

AT_Position3dAttr::AT_Position3dAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, bool linkable,
                                     Math::Point3d const &defaultValue)
    : AT_AnimatedAttr(owner, meta, defaultValue, linkable)
{
}

Math::Point3d AT_Position3dAttr::value(double frame) const { return valueAt(frame); }

bool AT_Position3dAttr::getValue(double frame, Math::Point3d &value, bool *onKeyframe,
                                 bool *constantSegment) const
{
    value = valueAt(frame, onKeyframe, constantSegment);
    return true;
}

AT_Rotation3dAttr::AT_Rotation3dAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, bool linkable,
                                     Math::Angle3d const &defaultValue)
    : AT_AnimatedAttr(owner, meta, defaultValue, linkable)
{
}

Math::Angle3d AT_Rotation3dAttr::value(double frame) const { return valueAt(frame); }

bool AT_Rotation3dAttr::getValue(double frame, Math::Angle3d &value, bool *onKeyframe,
                                 bool *constantSegment) const
{
    value = valueAt(frame, onKeyframe, constantSegment);
    return true;
}

AT_Position2dAttrSurrogate::AT_Position2dAttrSurrogate(AT_Position2dAttr *attr, Math::Point2d const &value,
                                                       bool dirty, int frame, bool constantSegment,
                                                       bool onKeyframe)
    : AT_ValueAttrSurrogate(attr, value, dirty, frame, constantSegment, onKeyframe)
{
}

AT_Position3dAttrSurrogate::AT_Position3dAttrSurrogate(AT_Position3dAttr *attr, Math::Point3d const &value,
                                                       bool dirty, int frame, bool constantSegment,
                                                       bool onKeyframe)
    : AT_ValueAttrSurrogate(attr, value, dirty, frame, constantSegment, onKeyframe)
{
}

AT_Rotation3dAttrSurrogate::AT_Rotation3dAttrSurrogate(AT_Rotation3dAttr *attr, Math::Angle3d const &value,
                                                       bool dirty, int frame, bool constantSegment,
                                                       bool onKeyframe)
    : AT_ValueAttrSurrogate(attr, value, dirty, frame, constantSegment, onKeyframe)
{
}

// ---- strings ----

namespace {

class StringState : public AT_AttrState {
public:
    explicit StringState(QString v) : value(std::move(v)) {}
    QString value;

    std::unique_ptr<AT_AttrState> clone() const override { return std::make_unique<StringState>(value); }
    bool equals(AT_AttrState const &other) const override
    {
        auto const *o = dynamic_cast<StringState const *>(&other);
        return o && o->value == value;
    }
    bool addKeyframe(int, bool, bool, bool) override { return false; }
    int removeKeyframes(int, int) override { return 0; }
};

class StringReader : public PIO_XML::ComponentReader {
public:
    explicit StringReader(AT_StringAttr *attr) : attr_(attr) {}

    std::shared_ptr<ComponentReader> startElement(PIO_XML::Context &ctx, QString const &name,
                                                  QXmlStreamAttributes const &) override
    {
        if (!started_) {
            started_ = true;
            own_ = name;
            return shared_from_this();
        }
        return errorHandler(ctx, QStringLiteral("expected text inside <%1>, found <%2>").arg(own_, name));
    }
    bool endElement(PIO_XML::Context &ctx, QString const &) override
    {
        auto state = std::make_shared<StringState>(text_);
        AT_StringAttr *attr = attr_;
        ctx.onSuccess([attr, state] { attr->restoreState(*state); });
        return true;
    }
    bool handleCDATA(PIO_XML::Context &, QString const &text) override
    {
        text_ += text;
        return true;
    }

private:
    AT_StringAttr *attr_;
    bool started_ = false;
    QString own_;
    QString text_;
};

}  // namespace

AT_StringAttr::AT_StringAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, QString const &defaultValue)
    : AT_SimpleAttr(owner, meta), value_(defaultValue)
{
}

AT_StringAttr::~AT_StringAttr() = default;
QString AT_StringAttr::TypeString() { return QStringLiteral("STRING"); }

UT_DynKey const &AT_StringAttr::staticTypeKey()
{
    static UT_DynKey const key("STRING");
    return key;
}

QString AT_StringAttr::typeName() const { return TypeString(); }
UT_DynKey const &AT_StringAttr::typeKey() const { return staticTypeKey(); }
QString const &AT_StringAttr::localValue() const { return value_; }

bool AT_StringAttr::setLocalValue(QString const &value)
{
    if (value == value_ || !UT_isStorableText(value))
        return false;
    value_ = value;
    notifyChanged();
    return true;
}

QString AT_StringAttr::value(double) const { return value_; }
QString AT_StringAttr::textValue(double) const { return value_; }

std::unique_ptr<CO_Command> AT_StringAttr::setTextValue(double, QString const &text)
{
    if (!UT_isStorableText(text))
        return nullptr;
    return AT_AttrStateCmd::make(this, saveState(), std::make_unique<StringState>(text));
}

bool AT_StringAttr::isEquivalent(AT_Attr const &other) const
{
    auto const *o = dynamic_cast<AT_StringAttr const *>(&other);
    return o && o->value_ == value_;
}

std::shared_ptr<PIO_XML::ComponentReader> AT_StringAttr::componentReader()
{
    return std::make_shared<StringReader>(this);
}

std::unique_ptr<AT_AttrState> AT_StringAttr::saveState() const
{
    return std::make_unique<StringState>(value_);
}

bool AT_StringAttr::restoreState(AT_AttrState const &state)
{
    auto const *s = dynamic_cast<StringState const *>(&state);
    if (!s)
        return false;
    setLocalValue(s->value);
    return true;
}

bool AT_StringAttr::acceptsSurrogate(AT_AttrSurrogate const &) const { return false; }

void AT_StringAttr::writeXmlContent(QXmlStreamWriter &writer) const
{
    // A reader turns a carriage return of the text into a line feed ("\r\n" into one "\n"), so
    // each is written as a character reference; the stream escapes the rest (<, >, &).
    QStringList const pieces = value_.split(QLatin1Char('\r'));
    for (int i = 0; i < pieces.size(); ++i) {
        if (i > 0)
            writer.writeEntityReference(QStringLiteral("#13"));
        if (!pieces[i].isEmpty())
            writer.writeCharacters(pieces[i]);
    }
}
