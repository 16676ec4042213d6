// Surrogates: temporary values attached to attributes.
//
// While a surrogate is attached (AT_Attr::setSurrogate) every evaluation of the attribute reads the
// surrogate, and the attribute makes no command; the stored local value and keyframes stay as they
// are. A tool previews a value this way and writes it as a keyframe once, at the end of a gesture.
// Attribute and tool share the surrogate (std::shared_ptr); the attribute lets go of it on
// resetSurrogate or when another is attached.
//
// Construction arguments after the value: `dirty` (start dirty), the frame it stands for, and the
// two status flags that reads of the attribute give at that frame (constantSegment, onKeyframe;
// see AT_ValueAttr.h), which it gives back while attached.
#pragma once

#include "base/Math/Vector.h"

class AT_Attr;
class AT_SimpleAttr;
class AT_Position2dAttr;
class AT_Position3dAttr;
class AT_Rotation3dAttr;

class AT_AttrSurrogate {
public:
    virtual ~AT_AttrSurrogate();
    AT_AttrSurrogate(AT_AttrSurrogate const &) = delete;
    AT_AttrSurrogate &operator=(AT_AttrSurrogate const &) = delete;

    // The attribute it was made for. Careful: not tracked once the surrogate is detached; do not
    // use it after that attribute is gone.
    AT_Attr *attr() const;
    // The attribute it is attached to now, or null.
    AT_Attr *attachedTo() const;
    int frame() const;
    bool isConstantSegment() const;
    bool isOnKeyframe() const;
    // True once setValue changed the value (or when made dirty).
    virtual bool isDirty() const;

protected:
    AT_AttrSurrogate(AT_Attr *attr, bool dirty, int frame, bool constantSegment, bool onKeyframe);
    // Marks dirty and, when attached to its attribute, tells the attribute's owner.
    void changed();

private:
    friend class AT_Attr;
    AT_Attr *attr_;
    AT_Attr *attached_ = nullptr;  // set and cleared by AT_Attr
    bool dirty_;
    int frame_;
    bool constantSegment_;
    bool onKeyframe_;
};

// For bool, int and double attributes; the value is held as a double.
class AT_ScalarSimpleAttrSurrogate : public AT_AttrSurrogate {
public:
    AT_ScalarSimpleAttrSurrogate(AT_SimpleAttr *attr, double value, bool dirty = false,
                                 int frame = 0, bool constantSegment = false,
                                 bool onKeyframe = false);
    ~AT_ScalarSimpleAttrSurrogate() override;
    virtual double value() const;
    virtual int intValue() const;   // truncated towards zero
    virtual bool boolValue() const; // not zero
    virtual void setValue(double value);
    bool isDirty() const override;

private:
    double value_;
};

// Surrogate of a position or rotation attribute; getValue gives the same value at every frame.
template <class T>
class AT_ValueAttrSurrogate : public AT_AttrSurrogate {
public:
    ~AT_ValueAttrSurrogate() override = default;
    bool isDirty() const override { return AT_AttrSurrogate::isDirty(); }
    virtual void setValue(T const &value)
    {
        if (value == value_)
            return;
        value_ = value;
        changed();
    }
    virtual T getValue(double) const { return value_; }
    virtual T value() const { return value_; }

protected:
    AT_ValueAttrSurrogate(AT_Attr *attr, T const &value, bool dirty, int frame,
                          bool constantSegment, bool onKeyframe)
        : AT_AttrSurrogate(attr, dirty, frame, constantSegment, onKeyframe), value_(value)
    {
    }

private:
    T value_;
};

class AT_Position2dAttrSurrogate : public AT_ValueAttrSurrogate<Math::Point2d> {
public:
    AT_Position2dAttrSurrogate(AT_Position2dAttr *attr, Math::Point2d const &value,
                               bool dirty = false, int frame = 0, bool constantSegment = false,
                               bool onKeyframe = false);
};

class AT_Position3dAttrSurrogate : public AT_ValueAttrSurrogate<Math::Point3d> {
public:
    AT_Position3dAttrSurrogate(AT_Position3dAttr *attr, Math::Point3d const &value,
                               bool dirty = false, int frame = 0, bool constantSegment = false,
                               bool onKeyframe = false);
};

class AT_Rotation3dAttrSurrogate : public AT_ValueAttrSurrogate<Math::Angle3d> {
public:
    AT_Rotation3dAttrSurrogate(AT_Rotation3dAttr *attr, Math::Angle3d const &value,
                               bool dirty = false, int frame = 0, bool constantSegment = false,
                               bool onKeyframe = false);
};
