// The value kinds of attributes: bool, int, double, string, 2D and 3D positions, 3D rotations.
//
// All but the string share one implementation, AT_AnimatedAttr<T, Base>: a local value and, for
// animatable kinds, keyframes at whole frames.
//   - No keys: every frame reads the local value.
//   - Before the first key and after the last the value is that key's value (constant).
//   - Between two keys doubles, positions and rotations are linear (componentwise, angles in
//     degrees without wrapping); ints and bools hold the earlier key's value, since a value between
//     two of theirs means nothing. A key flagged constant holds its value up to the next key.
// Reads take two optional status flags: `onKeyframe` (the frame is exactly a key's frame) and
// `constantSegment` (the value does not change over the segment that holds the frame: no keys,
// outside the keys, a constant key, or two equal keys).
//
// Values that are not finite, or outside the kind's range (AT_DoubleAttrMeta, AT_IntAttr's bounds),
// are refused by every setter, and a text that does not parse gives no command.
#pragma once

#include "base/Math/Vector.h"
#include "scene/AT_Attr.h"

#include <climits>
#include <memory>

namespace at_value {
template <class T, class Base>
class CurveChangeCmd;
}

template <class T, class Base>
class AT_AnimatedAttr : public Base {
public:
    using ValueType = T;
    ~AT_AnimatedAttr() override;

    static QString TypeString();
    static UT_DynKey const &staticTypeKey();
    QString typeName() const override;
    UT_DynKey const &typeKey() const override;

    T localValue() const;
    // Sets the local value at once (no command) and tells the owner. False when the value is the
    // same, not finite or out of range; then nothing changes.
    bool setLocalValue(T const &value);

    // The value at `frame`, under the surrogate when one is attached (then `onKeyframe` and
    // `constantSegment` come from the surrogate).
    T valueAt(double frame, bool *onKeyframe = nullptr, bool *constantSegment = nullptr) const;

    // False for attributes made non-linkable: they keep no keys and read their local value.
    bool isLinkable() const;
    bool hasKeyframe(int frame) const;
    // Sets or adds a key at once (no command). False when not animatable, invalid, outside the
    // frames of SC_Frames, or unchanged.
    bool setKeyframe(int frame, T const &value, bool constantSegment = false);
    // True when `value` is finite and in range.
    bool isAcceptable(T const &value) const;

    // A command that sets `value` at `frame` (truncated): on the key there when the attribute is
    // animated or `createKeyframe` holds and it is animatable (a new key gets `constantSegment`),
    // else on the local value. With `relative`, `value` is added to the value at the frame. Null
    // when nothing would change, the value is refused, or a surrogate is attached.
    // With `localOnly`, the local value is written even when the attribute is animated.
    std::unique_ptr<CO_Command> setValueCmd(double frame, T const &value, bool relative = false,
                                            bool createKeyframe = false,
                                            bool constantSegment = false, bool localOnly = false);

    QString textValue(double frame) const override;
    std::unique_ptr<CO_Command> setTextValue(double frame, QString const &text) override;
    bool isEquivalent(AT_Attr const &other) const override;
    std::shared_ptr<PIO_XML::ComponentReader> componentReader() override;
    bool isAnimatable() const override;
    std::vector<int> keyframes() const override;
    std::unique_ptr<AT_AttrState> saveState() const override;
    bool restoreState(AT_AttrState const &state) override;
    std::unique_ptr<CO_Command> addKeyframeCmd(int frame, bool useCurrentValue, bool constantSegment,
                                               bool replace) override;
    std::unique_ptr<CO_Command> removeKeyframesCmd(int from, int to) override;

protected:
    AT_AnimatedAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, T const &defaultValue,
                    bool linkable);
    // The kind's range; by default every finite value.
    virtual bool inRange(T const &value) const;
    bool acceptsSurrogate(AT_AttrSurrogate const &surrogate) const override;
    void writeXmlContent(QXmlStreamWriter &writer) const override;

private:
    friend class at_value::CurveChangeCmd<T, Base>;
    struct Impl;
    std::unique_ptr<Impl> d_;
};

extern template class AT_AnimatedAttr<bool, AT_SimpleAttr>;
extern template class AT_AnimatedAttr<int, AT_SimpleAttr>;
extern template class AT_AnimatedAttr<double, AT_SimpleAttr>;
extern template class AT_AnimatedAttr<Math::Point2d, AT_ComplexAttr>;
extern template class AT_AnimatedAttr<Math::Point3d, AT_ComplexAttr>;
extern template class AT_AnimatedAttr<Math::Angle3d, AT_ComplexAttr>;

// Never animated: a bool holds its local value.
class AT_BoolAttr : public AT_AnimatedAttr<bool, AT_SimpleAttr> {
public:
    AT_BoolAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, bool defaultValue = false);
    bool value(double frame, bool *onKeyframe = nullptr, bool *constantSegment = nullptr) const;
};

class AT_IntAttr : public AT_AnimatedAttr<int, AT_SimpleAttr> {
public:
    AT_IntAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, int defaultValue = 0,
               int minValue = INT_MIN, int maxValue = INT_MAX, int step = 1, bool linkable = true);
    int value(double frame, bool *onKeyframe = nullptr, bool *constantSegment = nullptr) const;

    int minValue() const;
    int maxValue() const;
    int step() const;
    // Narrowing the range does not change values already held.
    void setMinValue(int minValue);
    void setMaxValue(int maxValue);

protected:
    bool inRange(int const &value) const override;

private:
    int min_;
    int max_;
    int step_;
};

// Range from the meta when it is an AT_DoubleAttrMeta, else every finite value.
class AT_DoubleAttr : public AT_AnimatedAttr<double, AT_SimpleAttr> {
public:
    AT_DoubleAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, double defaultValue = 0.0,
                  bool linkable = true);
    double value(double frame, bool *onKeyframe = nullptr, bool *constantSegment = nullptr) const;
    double minValue() const;
    double maxValue() const;

protected:
    bool inRange(double const &value) const override;
};

// Field units.
class AT_Position2dAttr : public AT_AnimatedAttr<Math::Point2d, AT_ComplexAttr> {
public:
    AT_Position2dAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, bool linkable = true,
                      Math::Point2d const &defaultValue = Math::Point2d());
    Math::Point2d value(double frame) const;
    // Gives true; `constantSegment` as for valueAt.
    bool getValue(double frame, double &x, double &y, bool *constantSegment = nullptr) const;
};

class AT_Position3dAttr : public AT_AnimatedAttr<Math::Point3d, AT_ComplexAttr> {
public:
    AT_Position3dAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, bool linkable = true,
                      Math::Point3d const &defaultValue = Math::Point3d());
    Math::Point3d value(double frame) const;
    bool getValue(double frame, Math::Point3d &value, bool *onKeyframe = nullptr,
                  bool *constantSegment = nullptr) const;
};

// Degrees about x, y and z.
class AT_Rotation3dAttr : public AT_AnimatedAttr<Math::Angle3d, AT_ComplexAttr> {
public:
    AT_Rotation3dAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, bool linkable = true,
                      Math::Angle3d const &defaultValue = Math::Angle3d());
    Math::Angle3d value(double frame) const;
    bool getValue(double frame, Math::Angle3d &value, bool *onKeyframe = nullptr,
                  bool *constantSegment = nullptr) const;
};

// Text, never animated; it takes no surrogate. Written as the element's text.
class AT_StringAttr : public AT_SimpleAttr {
public:
    AT_StringAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta,
                  QString const &defaultValue = QString());
    ~AT_StringAttr() override;

    static QString TypeString();  // "STRING"
    static UT_DynKey const &staticTypeKey();
    QString typeName() const override;
    UT_DynKey const &typeKey() const override;

    QString const &localValue() const;
    // Texts refused by UT_isStorableText (a file could not hold them) are refused here too:
    // setLocalValue gives false and setTextValue null, and a file holding one does not read.
    bool setLocalValue(QString const &value);  // false when the same
    QString value(double frame) const;

    QString textValue(double frame) const override;
    std::unique_ptr<CO_Command> setTextValue(double frame, QString const &text) override;
    bool isEquivalent(AT_Attr const &other) const override;
    std::shared_ptr<PIO_XML::ComponentReader> componentReader() override;
    std::unique_ptr<AT_AttrState> saveState() const override;
    bool restoreState(AT_AttrState const &state) override;

protected:
    bool acceptsSurrogate(AT_AttrSurrogate const &surrogate) const override;
    void writeXmlContent(QXmlStreamWriter &writer) const override;

private:
    QString value_;
};
