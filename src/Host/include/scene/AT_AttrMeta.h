// Metas: what all attributes of one kind share (keyword, XML keyword, display name, flags and, for
// doubles, the value range).
//
// The data sits in an AT_AttrMetaContainer; an AT_AttrMeta is a handle that shares it, so copying
// a meta is cheap and every attribute made from one meta sees the same container. Setters detach:
// changing a copy never changes the metas it was copied from (copy on write).
#pragma once

#include <QString>

#include <memory>

class AT_AttrMetaContainer {
public:
    // Flag values are bits; a meta's flags are any combination.
    enum Flags {
        NoFlags = 0,
        NodeDirtyOnChange = 1,  // a change of the attribute marks its node dirty
        Hidden = 2,             // not shown in attribute editors
        Builtin = 4,            // part of its node's kind, made with the node
        NotAnimatable = 8,      // holds no keyframes whatever its kind
    };

    AT_AttrMetaContainer(QString keyword = QString(), QString displayName = QString(),
                         int flags = NoFlags, QString xmlKeyword = QString());
    virtual ~AT_AttrMetaContainer();
    virtual std::unique_ptr<AT_AttrMetaContainer> clone() const;

    QString keyword;
    QString xmlKeyword;  // element name in scene files; the keyword when empty
    QString displayName;
    int flags = NoFlags;
};

// Range and editing of a double attribute. Values outside [minValue, maxValue] are refused.
class AT_DoubleAttrMetaContainer : public AT_AttrMetaContainer {
public:
    static constexpr double kDefaultValueStep = 0.1;

    AT_DoubleAttrMetaContainer(QString keyword, QString displayName, QString stepPreference,
                               double minValue, double maxValue, double editorMin,
                               double editorMax, double step, int flags = NoFlags);
    std::unique_ptr<AT_AttrMetaContainer> clone() const override;

    QString stepPreference;  // name of the preference holding the editor's step, may be empty
    double minValue;
    double maxValue;
    double editorMin;  // range of the editor's slider
    double editorMax;
    double step;
};

class AT_AttrMeta {
public:
    AT_AttrMeta();  // empty keyword, no flags
    AT_AttrMeta(QString const &keyword, QString const &displayName, int flags = 0);
    AT_AttrMeta(QString const &keyword, QString const &xmlKeyword, QString const &displayName,
                int flags);
    explicit AT_AttrMeta(std::shared_ptr<AT_AttrMetaContainer const> container);
    virtual ~AT_AttrMeta();

    QString const &keyword() const;
    QString xmlKeyword() const;  // never empty when the keyword is not
    QString const &displayName() const;
    int flags() const;
    bool hasFlag(int flag) const;
    bool isNodeDirtyOnChange() const;

    void setKeyword(QString const &keyword);
    void setXmlKeyword(QString const &xmlKeyword);
    void setDisplayName(QString const &displayName);
    void setFlags(int flags);

    AT_AttrMetaContainer const &container() const;
    // The double range, when this meta was made as an AT_DoubleAttrMeta; else null.
    AT_DoubleAttrMetaContainer const *doubleContainer() const;
    // True when both share one container (not merely equal data).
    bool sharesContainerWith(AT_AttrMeta const &other) const;

protected:
    AT_AttrMetaContainer &detach();

private:
    std::shared_ptr<AT_AttrMetaContainer const> d_;  // never null
};

class AT_DoubleAttrMeta : public AT_AttrMeta {
public:
    AT_DoubleAttrMeta(QString const &keyword, QString const &displayName,
                      QString const &stepPreference, double minValue, double maxValue,
                      double editorMin, double editorMax,
                      double step = AT_DoubleAttrMetaContainer::kDefaultValueStep, int flags = 0);
};
