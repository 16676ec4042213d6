#include "scene/AT_AttrFactory.h"

#include "scene/AT_Attr.h"
#include "scene/AT_ShiftAndTraceUtil.h"
#include "scene/AT_ValueAttr.h"

#include <map>
#include <type_traits>

char const *not_registered::what() const noexcept { return "Class/key not registered"; }

namespace {

// Calls f with a null pointer of each host kind, in the order of the header comment.
template <class F>
void forEachHostKind(F &&f)
{
    f(static_cast<AT_BoolAttr *>(nullptr));
    f(static_cast<AT_IntAttr *>(nullptr));
    f(static_cast<AT_DoubleAttr *>(nullptr));
    f(static_cast<AT_StringAttr *>(nullptr));
    f(static_cast<AT_Position2dAttr *>(nullptr));
    f(static_cast<AT_Position3dAttr *>(nullptr));
    f(static_cast<AT_Rotation3dAttr *>(nullptr));
    f(static_cast<AT_GroupAttr *>(nullptr));
    f(static_cast<AT_DynGroupAttr *>(nullptr));
    f(static_cast<AT_DynAttr *>(nullptr));
    f(static_cast<AT_ShiftAndTraceUtil::ShiftAndTraceAttr *>(nullptr));
}

}  // namespace

struct AT_AttrFactorySingleton::Impl {
    struct Creators {
        DefaultCreator defaultCreator;
        Creator creator;
    };
    std::map<QString, Creators> classes;
};

AT_AttrFactorySingleton::AT_AttrFactorySingleton() : d_(std::make_unique<Impl>())
{
    forEachHostKind([this](auto *kind) {
        using A = std::remove_pointer_t<decltype(kind)>;
        registerClass(
            A::TypeString(), [] { return std::make_unique<A>(nullptr, AT_AttrMeta()); },
            [](AT_AttrOwner *owner, AT_AttrMeta const &meta) { return std::make_unique<A>(owner, meta); });
    });
}
AT_AttrFactorySingleton::~AT_AttrFactorySingleton() = default;

AT_AttrFactorySingleton &AT_AttrFactorySingleton::instance()
{
    static AT_AttrFactorySingleton factory;
    return factory;
}

bool AT_AttrFactorySingleton::registerClass(QString const &typeName, DefaultCreator defaultCreator,
                                            Creator creator)
{
    if (typeName.isEmpty() || !creator)
        return false;
    d_->classes[typeName] = Impl::Creators{std::move(defaultCreator), std::move(creator)};
    return true;
}

bool AT_AttrFactorySingleton::unregisterClass(QString const &typeName)
{
    return d_->classes.erase(typeName) != 0;
}

bool AT_AttrFactorySingleton::isRegistered(QString const &typeName) const
{
    return d_->classes.count(typeName) != 0;
}

QStringList AT_AttrFactorySingleton::typeNames() const
{
    QStringList names;
    for (auto const &entry : d_->classes)
        names << entry.first;
    return names;
}

std::unique_ptr<AT_Attr> AT_AttrFactorySingleton::create(QString const &typeName) const
{
    auto it = d_->classes.find(typeName);
    if (it == d_->classes.end())
        throw not_registered();
    return it->second.defaultCreator ? it->second.defaultCreator() : nullptr;
}

std::unique_ptr<AT_Attr> AT_AttrFactorySingleton::create(QString const &typeName, AT_AttrOwner *owner,
                                                         AT_AttrMeta const &meta) const
{
    auto it = d_->classes.find(typeName);
    if (it == d_->classes.end())
        throw not_registered();
    std::unique_ptr<AT_Attr> attr = it->second.creator(owner, meta);
    if (attr)
        attr->setDynamic(true);
    return attr;
}

struct AT_AttrMetaFactorySingleton::Impl {
    std::map<QString, Creator> classes;
    mutable std::map<QString, AT_AttrMeta> made;  // one meta per type name, made on first request
};

AT_AttrMetaFactorySingleton::AT_AttrMetaFactorySingleton() : d_(std::make_unique<Impl>())
{
    forEachHostKind([this](auto *kind) {
        using A = std::remove_pointer_t<decltype(kind)>;
        registerClass(A::TypeString(), [] { return std::make_unique<AT_AttrMetaContainer>(); });
    });
    // Display shifts are the tools' business, not an attribute editor's.
    registerClass(AT_ShiftAndTraceUtil::ShiftAndTraceAttr::TypeString(), [] {
        return std::make_unique<AT_AttrMetaContainer>(AT_ShiftAndTraceUtil::ShiftAndTraceAttr::Keyword(),
                                                      QStringLiteral("Shift and Trace"), AT_AttrMetaContainer::Hidden);
    });
}
AT_AttrMetaFactorySingleton::~AT_AttrMetaFactorySingleton() = default;

AT_AttrMetaFactorySingleton &AT_AttrMetaFactorySingleton::instance()
{
    static AT_AttrMetaFactorySingleton factory;
    return factory;
}

bool AT_AttrMetaFactorySingleton::registerClass(QString const &typeName, Creator creator)
{
    if (typeName.isEmpty() || !creator)
        return false;
    d_->classes[typeName] = std::move(creator);
    d_->made.erase(typeName);
    return true;
}

bool AT_AttrMetaFactorySingleton::unregisterClass(QString const &typeName)
{
    d_->made.erase(typeName);
    return d_->classes.erase(typeName) != 0;
}

bool AT_AttrMetaFactorySingleton::isRegistered(QString const &typeName) const
{
    return d_->classes.count(typeName) != 0;
}

AT_AttrMeta AT_AttrMetaFactorySingleton::meta(QString const &typeName) const
{
    auto made = d_->made.find(typeName);
    if (made != d_->made.end())
        return made->second;
    auto it = d_->classes.find(typeName);
    if (it == d_->classes.end())
        throw not_registered();
    std::shared_ptr<AT_AttrMetaContainer const> container = it->second();
    AT_AttrMeta const meta(container);
    d_->made.emplace(typeName, meta);
    return meta;
}
