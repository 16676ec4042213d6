// Factories of attributes and metas keyed by type name, for dynamic attributes: a scene file or a
// tu_node::CreateAttrCmd names a type, the factory makes the attribute. The host's own kinds
// ("BOOL", "INT", "DOUBLE", "STRING", "POSITION_2D", "POSITION_3D", "ROTATION_3D", "GROUP",
// "DYN_GROUP", "DYN_ATTR", "SHIFT_AND_TRACE") are registered when a factory is first used; plug-ins register theirs
// at load. Asking for a type name nobody registered throws not_registered.
#pragma once

#include "scene/AT_AttrMeta.h"

#include <QString>
#include <QStringList>

#include <exception>
#include <functional>
#include <memory>

class AT_Attr;
class AT_AttrOwner;

class not_registered : public std::exception {
public:
    char const *what() const noexcept override;  // "Class/key not registered"
};

class AT_AttrFactorySingleton {
public:
    using DefaultCreator = std::function<std::unique_ptr<AT_Attr>()>;
    using Creator = std::function<std::unique_ptr<AT_Attr>(AT_AttrOwner *, AT_AttrMeta const &)>;

    static AT_AttrFactorySingleton &instance();

    // Registering a name again replaces its creators. An empty name or a null `creator` is refused.
    bool registerClass(QString const &typeName, DefaultCreator defaultCreator, Creator creator);
    bool unregisterClass(QString const &typeName);
    bool isRegistered(QString const &typeName) const;
    QStringList typeNames() const;  // sorted

    // What the creator without arguments gives (may be null). Throws not_registered.
    std::unique_ptr<AT_Attr> create(QString const &typeName) const;
    // Makes the attribute on `owner` with `meta` and marks it dynamic. Throws not_registered;
    // gives null when the creator does.
    std::unique_ptr<AT_Attr> create(QString const &typeName, AT_AttrOwner *owner,
                                    AT_AttrMeta const &meta) const;

private:
    AT_AttrFactorySingleton();
    ~AT_AttrFactorySingleton();
    struct Impl;
    std::unique_ptr<Impl> d_;
};

class AT_AttrMetaFactorySingleton {
public:
    using Creator = std::function<std::unique_ptr<AT_AttrMetaContainer>()>;

    static AT_AttrMetaFactorySingleton &instance();

    bool registerClass(QString const &typeName, Creator creator);
    bool unregisterClass(QString const &typeName);
    bool isRegistered(QString const &typeName) const;

    // The meta the factory holds for `typeName`, made once and shared. Throws not_registered.
    AT_AttrMeta meta(QString const &typeName) const;

private:
    AT_AttrMetaFactorySingleton();
    ~AT_AttrMetaFactorySingleton();
    struct Impl;
    std::unique_ptr<Impl> d_;
};
