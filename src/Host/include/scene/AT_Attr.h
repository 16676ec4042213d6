// Attributes: the values that nodes hold, and the base classes of every attribute kind.
//
// An attribute is made on an owner (the node that holds it, seen through the small interface
// AT_AttrOwner so that attributes need nothing else of the scene graph) with an AT_AttrMeta. It
// tells its owner and its listeners after every change of its value, its keyframes or its
// surrogate, so that evaluation caches can be dropped. Every attribute is a TUTeller already: a
// derived class that tells its own listeners (an array telling that its size changed) uses it
// rather than deriving from TUTeller a second time.
//
// Changes that must be undoable go through commands: setTextValue and the functions of
// AT_AttrCmds.h give a CO_Command (or null when nothing would change) for the caller to run with a
// CO_CommandManager. Such commands put back exactly what they changed (local value, keyframes and
// their flags): the value kinds record only the local value or the keys that change, the others
// swap whole value states (AT_AttrState).
//
// A surrogate (AT_AttrSurrogate.h) attached to an attribute replaces its value for every
// evaluation (value, getValue, textValue) until it is detached; while one is attached no command
// is made. localValue() and the stored keyframes are not affected by a surrogate.
//
// Kinds: AT_SimpleAttr (one value: bool, int, double, string), AT_ComplexAttr (registered
// sub-attributes; groups, positions and rotations), AT_DynAttr (a dynamic attribute without a value
// of its own). The value kinds are in AT_ValueAttr.h.
#pragma once

#include "base/TUTeller.h"
#include "base/UT_DynKey.h"
#include "command/CO_Command.h"
#include "scene/AT_AttrMeta.h"

#include <QString>

#include <memory>
#include <vector>

class AT_Attr;
class AT_AttrSurrogate;
class CO_CommandManager;
class MO_Node;
class QXmlStreamWriter;

namespace PIO_XML {
class ComponentReader;
}

// What an attribute needs of the node that holds it. The node class implements it; tests and
// tools may implement it on their own objects.
class AT_AttrOwner {
public:
    virtual ~AT_AttrOwner();

    // The owner as a node; null for owners that are not nodes.
    virtual MO_Node *attrOwnerNode();
    // Called after every change of one of the owner's attributes (value, keyframes, surrogate).
    virtual void attrChanged(AT_Attr &attr);
    // The command manager that records changes made outside commands (AT_KeyframeCmds::AddKeyframe);
    // null when there is none, and such changes are then not undoable.
    virtual CO_CommandManager *attrCommandManager();

    // Dynamic attributes, made from a type name (tu_node::CreateAttrCmd, scene files).
    // Takes ownership and appends `attr` to the owner's attributes; gives it back, or null if the
    // owner refuses it (the attribute is then destroyed).
    virtual AT_Attr *addDynamicAttr(std::unique_ptr<AT_Attr> attr) = 0;
    // Removes a dynamic attribute and gives up ownership; null if `attr` is not one of them.
    virtual std::unique_ptr<AT_Attr> takeDynamicAttr(AT_Attr *attr) = 0;
    // The attribute, static or dynamic, whose keyword is `keyword`; null when none.
    virtual AT_Attr *findAttr(QString const &keyword) const = 0;
};

// A saved value state of an attribute: its local value and keyframes. Opaque outside the
// attribute kind that made it; the operations below work on the copy, not on the attribute.
class AT_AttrState {
public:
    virtual ~AT_AttrState();
    virtual std::unique_ptr<AT_AttrState> clone() const = 0;
    virtual bool equals(AT_AttrState const &other) const = 0;
    // Adds a keyframe at `frame` holding the value the state has there (`useCurrentValue`) or
    // its local value. With `replace`, an existing key takes that value and flag again. False
    // when nothing changed or keyframes are not possible.
    virtual bool addKeyframe(int frame, bool useCurrentValue, bool constantSegment, bool replace) = 0;
    // Removes the keyframes in [from, to]; gives how many were removed.
    virtual int removeKeyframes(int from, int to) = 0;
};

class AT_Attr : public TUTeller {
public:
    AT_Attr(AT_AttrOwner *owner, AT_AttrMeta const &meta);
    ~AT_Attr() override;

    AT_AttrOwner *owner() const;
    MO_Node *node() const;  // the owner as a node, or null
    AT_AttrMeta const &meta() const;
    QString const &keyword() const;
    QString xmlKeyword() const;
    QString const &displayName() const;

    virtual QString typeName() const = 0;
    virtual UT_DynKey const &typeKey() const = 0;

    // A dynamic attribute was made from its type name and is written with it, so that reading
    // finds its factory. AT_DynAttr and AT_DynGroupAttr are always dynamic.
    bool isDynamic() const;
    void setDynamic(bool dynamic);

    // The value at `frame` as text: "true"/"false", integers in decimal, doubles in format 'g'
    // with 6 digits, several components separated by ", ".
    virtual QString textValue(double frame) const = 0;
    // A command that sets the value at `frame` from `text`: the key at the frame (truncated) when
    // the attribute is animated, else the local value. Null when the text does not parse, is out
    // of range, would change nothing, or a surrogate is attached. The base gives null.
    virtual std::unique_ptr<CO_Command> setTextValue(double frame, QString const &text);
    // Same kind and same values (local value and keyframes; for groups, pairwise).
    virtual bool isEquivalent(AT_Attr const &other) const = 0;

    // Writes the attribute's element, named by its XML keyword, with a "type" attribute when it
    // is dynamic, then its content (writeXmlContent).
    virtual void writeXml(QXmlStreamWriter &writer) const;
    // A new reader for this attribute's element (PIO_XML.h).
    virtual std::shared_ptr<PIO_XML::ComponentReader> componentReader() = 0;

    // Surrogates. Attaching replaces what was attached; an attribute refuses (false) a null
    // surrogate or one of another kind. Both tell the owner.
    bool setSurrogate(std::shared_ptr<AT_AttrSurrogate> const &surrogate);
    void resetSurrogate();
    std::shared_ptr<AT_AttrSurrogate> const &surrogate() const;

    // Keyframes. Animatable kinds hold keys unless made non-linkable or flagged NotAnimatable;
    // an attribute with keys is animated, one without uses its local value.
    virtual bool isAnimatable() const;
    virtual std::vector<int> keyframes() const;  // ascending
    bool isAnimated() const;

    // The whole value state, and its restoration (false for a state of another kind). Restoring
    // tells the owner.
    virtual std::unique_ptr<AT_AttrState> saveState() const = 0;
    virtual bool restoreState(AT_AttrState const &state) = 0;

    // Commands for keyframes, not yet executed; null when nothing would change. The base swaps
    // whole states (AT_AttrStateCmd); kinds with keys hold only the keys that change, so that a
    // command's memory does not grow with the length of the curve.
    //   addKeyframeCmd: as AT_AttrState::addKeyframe. removeKeyframesCmd: the keys in [from, to].
    virtual std::unique_ptr<CO_Command> addKeyframeCmd(int frame, bool useCurrentValue, bool constantSegment,
                                                       bool replace);
    virtual std::unique_ptr<CO_Command> removeKeyframesCmd(int from, int to);

    // Tells the owner (attrChanged) and the listeners (tell), unless notifications are blocked.
    void notifyChanged();
    // While blocked, changes tell nobody; the caller tells once it is done.
    void setNotificationsBlocked(bool blocked);

protected:
    virtual bool acceptsSurrogate(AT_AttrSurrogate const &surrogate) const;
    // XML attributes and children of the element; the base writes nothing.
    virtual void writeXmlContent(QXmlStreamWriter &writer) const;

private:
    friend class AT_AttrSurrogate;
    struct Impl;
    std::unique_ptr<Impl> d_;
};

// One value: the bool, int, double and string kinds. Its surrogate is an
// AT_ScalarSimpleAttrSurrogate.
class AT_SimpleAttr : public AT_Attr {
public:
    using AT_Attr::AT_Attr;

protected:
    bool acceptsSurrogate(AT_AttrSurrogate const &surrogate) const override;
};

// An attribute made of registered sub-attributes, in registration order (the order of the scene
// file). Registration does not transfer ownership: the sub-attributes belong to whoever made them
// (usually the derived class) and must outlive their registration.
class AT_ComplexAttr : public AT_Attr {
public:
    AT_ComplexAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta);
    ~AT_ComplexAttr() override;

    // Appends; a null or already registered attribute is ignored (false).
    bool registerAttr(AT_Attr *attr);
    bool unregisterAttr(AT_Attr *attr);
    std::vector<AT_Attr *> const &registeredAttrs() const;
    int registeredCount() const;
    AT_Attr *registeredAttr(int index) const;  // null out of range
    // The registered attribute whose XML keyword or keyword is `name`, and its place; an empty
    // name finds nothing (null, place -1).
    AT_Attr *findRegisteredAttr(QString const &name, int *place = nullptr) const;
    // Moves the attribute at `from` to `to`; nothing happens when they are equal or out of range.
    bool moveRegisteredAttr(int from, int to);

    // The registered attributes' text values, joined with ";".
    QString textValue(double frame) const override;
    // Same type name, same number of registered attributes, pairwise equivalent.
    bool isEquivalent(AT_Attr const &other) const override;
    std::shared_ptr<PIO_XML::ComponentReader> componentReader() override;
    // Animatable when one of the registered attributes is; keys are their union.
    bool isAnimatable() const override;
    std::vector<int> keyframes() const override;
    // The states of the registered attributes, in order.
    std::unique_ptr<AT_AttrState> saveState() const override;
    bool restoreState(AT_AttrState const &state) override;

protected:
    bool acceptsSurrogate(AT_AttrSurrogate const &surrogate) const override;
    void writeXmlContent(QXmlStreamWriter &writer) const override;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

// A plain group of registered attributes.
class AT_GroupAttr : public AT_ComplexAttr {
public:
    // `state` is the group's display state in attribute editors (0 folded, 1 unfolded).
    AT_GroupAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta, int state = 0);
    ~AT_GroupAttr() override;

    static QString TypeString();  // "GROUP"
    static UT_DynKey const &staticTypeKey();
    QString typeName() const override;
    UT_DynKey const &typeKey() const override;

    int state() const;
    void setState(int state);

private:
    int state_;
};

// A group made at run time from a type name; written with it. Derived classes give their own
// typeName and typeKey.
class AT_DynGroupAttr : public AT_GroupAttr {
public:
    AT_DynGroupAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta);
    ~AT_DynGroupAttr() override;

    static QString TypeString();  // "DYN_GROUP"
    static UT_DynKey const &staticTypeKey();
    QString typeName() const override;
    UT_DynKey const &typeKey() const override;
};

// A dynamic attribute without a value of its own: derived classes add their data. Written as an
// empty element with its type name; its text value is empty.
class AT_DynAttr : public AT_Attr {
public:
    AT_DynAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta);
    ~AT_DynAttr() override;

    static QString TypeString();  // "DYN_ATTR"
    static UT_DynKey const &staticTypeKey();
    QString typeName() const override;
    UT_DynKey const &typeKey() const override;

    QString textValue(double frame) const override;
    bool isEquivalent(AT_Attr const &other) const override;  // same type name
    std::shared_ptr<PIO_XML::ComponentReader> componentReader() override;
    std::unique_ptr<AT_AttrState> saveState() const override;
    bool restoreState(AT_AttrState const &state) override;
};
