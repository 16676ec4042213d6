#include "preference/PR_Preference.h"

#include "preference/PR_CachedPreferences.h"
#include "base/UT_StorableText.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <cmath>
#include <cstdio>
#include <map>
#include <optional>

namespace {

using Type = PR_PreferenceItem::Type;
using ItemMap = std::map<QString, PR_PreferenceItem>;

struct TypeName {
    Type type;
    char const *element;
};
constexpr TypeName typeNames[] = {
    {Type::Bool, "bool"}, {Type::Int, "int"}, {Type::Double, "double"},
    {Type::Rgba, "rgba"}, {Type::String, "string"},
};

char const *elementOf(Type type)
{
    for (TypeName const &t : typeNames)
        if (t.type == type)
            return t.element;
    return "";
}

std::optional<Type> typeOf(QStringRef element)
{
    for (TypeName const &t : typeNames)
        if (element == QLatin1String(t.element))
            return t.type;
    return std::nullopt;
}

QString valueToText(PR_PreferenceItem const &item)
{
    QVariant const &v = item.value();
    switch (item.type()) {
    case Type::Bool: return v.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case Type::Int: return QString::number(v.toInt());
    case Type::Double: return QString::number(v.toDouble(), 'g', 17);  // 17 digits: exact round trip
    case Type::Rgba: return QStringLiteral("#%1").arg(v.toUInt(), 8, 16, QLatin1Char('0'));
    case Type::String: return v.toString();
    }
    return QString();
}

// The value of `text` read as `type`, or nothing when it does not read as one.
std::optional<QVariant> valueFromText(Type type, QString const &text)
{
    bool ok = false;
    switch (type) {
    case Type::Bool:
        if (text == QLatin1String("true"))
            return QVariant(true);
        if (text == QLatin1String("false"))
            return QVariant(false);
        return std::nullopt;
    case Type::Int: {
        int const v = text.toInt(&ok);
        return ok ? std::optional<QVariant>(QVariant(v)) : std::nullopt;
    }
    case Type::Double: {
        double const v = text.toDouble(&ok);
        return ok && std::isfinite(v) ? std::optional<QVariant>(QVariant(v)) : std::nullopt;
    }
    case Type::Rgba: {
        if (text.size() != 9 || !text.startsWith(QLatin1Char('#')))
            return std::nullopt;
        uint const v = text.midRef(1).toUInt(&ok, 16);
        return ok ? std::optional<QVariant>(QVariant(v)) : std::nullopt;
    }
    case Type::String:
        return QVariant(text);
    }
    return std::nullopt;
}

bool sameContents(ItemMap const &a, ItemMap const &b)
{
    if (a.size() != b.size())
        return false;
    for (auto ia = a.begin(), ib = b.begin(); ia != a.end(); ++ia, ++ib)
        if (ia->first != ib->first || ia->second.type() != ib->second.type()
            || ia->second.value() != ib->second.value())
            return false;
    return true;
}

// Reads a preference file into `items`; on failure gives "line N: what was expected".
std::optional<QString> parse(QFile &file, ItemMap &items)
{
    QXmlStreamReader xml(&file);
    auto failure = [&xml](QString const &what) {
        return std::optional<QString>(QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(what));
    };
    if (!xml.readNextStartElement())
        return failure(xml.hasError() ? xml.errorString()
                                      : QStringLiteral("expected the element <preferences>"));
    if (xml.name() != QLatin1String("preferences"))
        return failure(QStringLiteral("expected the element <preferences>, found <%1>").arg(xml.name()));
    while (xml.readNextStartElement()) {
        std::optional<Type> const type = typeOf(xml.name());
        if (!type)
            return failure(QStringLiteral("unknown element <%1>; expected one of bool, int, double, "
                                          "rgba, string")
                               .arg(xml.name()));
        QXmlStreamAttributes const attributes = xml.attributes();
        QString const key = attributes.value(QLatin1String("key")).toString();
        if (key.isEmpty())
            return failure(QStringLiteral("<%1> without a key").arg(xml.name()));
        // The setters' rule: what could not be saved again is not loaded either.
        if (!UT_isStorableText(key))
            return failure(QStringLiteral("the key of <%1> holds characters a file cannot hold (%2)")
                               .arg(xml.name(), UT_storableTextRule()));
        if (!attributes.hasAttribute(QLatin1String("value")))
            return failure(QStringLiteral("\"%1\" has no value").arg(key));
        QString const text = attributes.value(QLatin1String("value")).toString();
        if (*type == Type::String && !UT_isStorableText(text))
            return failure(QStringLiteral("\"%1\": the value holds characters a file cannot hold (%2)")
                               .arg(key, UT_storableTextRule()));
        std::optional<QVariant> const value = valueFromText(*type, text);
        if (!value)
            return failure(QStringLiteral("\"%1\": \"%2\" is not a valid %3 value")
                               .arg(key, text, QLatin1String(elementOf(*type))));
        if (!items.emplace(key, PR_PreferenceItem(key, *type, *value)).second)
            return failure(QStringLiteral("\"%1\" is given twice").arg(key));
        xml.skipCurrentElement();
    }
    if (!xml.hasError()) {
        // Anything after the root element other than comments and blanks is an error too.
        while (!xml.atEnd())
            xml.readNext();
    }
    if (xml.hasError())
        return failure(xml.errorString());
    return std::nullopt;
}

// Renames `path` to the first free "<path>.damaged[.N]"; the new name, or empty on failure.
QString setAside(QString const &path)
{
    QString target = path + QStringLiteral(".damaged");
    for (int n = 1; QFileInfo::exists(target); ++n)
        target = path + QStringLiteral(".damaged.%1").arg(n);
    return QFile::rename(path, target) ? target : QString();
}

void report(QString const &message)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(message));
    std::fflush(stderr);
}

}  // namespace

struct PR_Preference::Impl {
    ItemMap items;
    QString path;
    // Set when a damaged file could not be renamed: save() must not write over it.
    bool fileProtected = false;
};

PR_Preference::PR_Preference(QObject *parent) : QObject(parent), impl_(std::make_unique<Impl>()) {}

PR_Preference::~PR_Preference() = default;

QString PR_Preference::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QStringLiteral("/animhost/preferences.xml");
}

PR_Preference::LoadResult PR_Preference::load(QString const &path)
{
    impl_->path = path;
    impl_->fileProtected = false;
    ItemMap loaded;
    LoadResult result = LoadResult::Loaded;
    QFile file(path);
    if (!file.exists()) {
        result = LoadResult::Missing;
    } else if (!file.open(QIODevice::ReadOnly)) {
        report(QStringLiteral("%1: cannot read the preferences (%2); using the defaults")
                   .arg(path, file.errorString()));
        impl_->fileProtected = true;
        result = LoadResult::Damaged;
    } else if (std::optional<QString> const error = parse(file, loaded)) {
        file.close();
        loaded.clear();
        result = LoadResult::Damaged;
        QString const aside = setAside(path);
        impl_->fileProtected = aside.isEmpty();
        report(QStringLiteral("%1: damaged preference file, %2; using the defaults. %3")
                   .arg(path, *error,
                        aside.isEmpty() ? QStringLiteral("The file could not be renamed and will not be "
                                                         "overwritten.")
                                        : QStringLiteral("The file was kept as %1.").arg(aside)));
    }
    bool const changed = !sameContents(impl_->items, loaded);
    impl_->items = std::move(loaded);
    if (changed)
        emit preferenceChanged();
    return result;
}

bool PR_Preference::save() const
{
    if (impl_->path.isEmpty()) {
        report(QStringLiteral("preferences: no file to save to"));
        return false;
    }
    if (impl_->fileProtected) {
        report(QStringLiteral("%1: not saving the preferences over a file that could not be read")
                   .arg(impl_->path));
        return false;
    }
    QDir().mkpath(QFileInfo(impl_->path).absolutePath());
    QSaveFile file(impl_->path);
    if (!file.open(QIODevice::WriteOnly)) {
        report(QStringLiteral("%1: cannot save the preferences (%2)").arg(impl_->path, file.errorString()));
        return false;
    }
    QXmlStreamWriter xml(&file);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("preferences"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1"));
    for (auto const &entry : impl_->items) {
        PR_PreferenceItem const &item = entry.second;
        xml.writeEmptyElement(QLatin1String(elementOf(item.type())));
        xml.writeAttribute(QStringLiteral("key"), item.key());
        xml.writeAttribute(QStringLiteral("value"), valueToText(item));
    }
    xml.writeEndDocument();
    if (xml.hasError()) {
        // The stream could not encode a key or a value: nothing is written over the old file.
        file.cancelWriting();
        report(QStringLiteral("%1: cannot save the preferences (a key or value could not be encoded)").arg(impl_->path));
        return false;
    }
    if (!file.commit()) {
        report(QStringLiteral("%1: cannot save the preferences (%2)").arg(impl_->path, file.errorString()));
        return false;
    }
    return true;
}

QString PR_Preference::filePath() const
{
    return impl_->path;
}

PR_PreferenceItem const *PR_Preference::find(QString const &key) const
{
    auto const it = impl_->items.find(key);
    return it == impl_->items.end() ? nullptr : &it->second;
}

bool PR_Preference::set(QString const &key, Type type, QVariant const &value)
{
    if (key.isEmpty() || !UT_isStorableText(key))
        return false;
    auto const it = impl_->items.find(key);
    if (it != impl_->items.end()) {
        if (it->second.type_ == type && it->second.value_ == value)
            return true;
        it->second.type_ = type;
        it->second.value_ = value;
    } else {
        impl_->items.emplace(key, PR_PreferenceItem(key, type, value));
    }
    emit preferenceChanged();
    return true;
}

bool PR_Preference::getBoolValue(QString const &key, bool defaultValue) const
{
    PR_PreferenceItem const *item = find(key);
    return item && item->type() == Type::Bool ? item->value().toBool() : defaultValue;
}

bool PR_Preference::setBoolValue(QString const &key, bool value)
{
    return set(key, Type::Bool, QVariant(value));
}

int PR_Preference::getIntValue(QString const &key, int defaultValue) const
{
    PR_PreferenceItem const *item = find(key);
    return item && item->type() == Type::Int ? item->value().toInt() : defaultValue;
}

bool PR_Preference::setIntValue(QString const &key, int value)
{
    return set(key, Type::Int, QVariant(value));
}

double PR_Preference::getDoubleValue(QString const &key, double defaultValue) const
{
    PR_PreferenceItem const *item = find(key);
    return item && item->type() == Type::Double ? item->value().toDouble() : defaultValue;
}

bool PR_Preference::setDoubleValue(QString const &key, double value)
{
    if (!std::isfinite(value))
        return false;
    return set(key, Type::Double, QVariant(value));
}

unsigned int PR_Preference::getRgbaValue(QString const &key, unsigned int const &defaultValue) const
{
    PR_PreferenceItem const *item = find(key);
    return item && item->type() == Type::Rgba ? item->value().toUInt() : defaultValue;
}

bool PR_Preference::setRgbaValue(QString const &key, unsigned int const &value)
{
    return set(key, Type::Rgba, QVariant(value));
}

QString PR_Preference::getStringValue(QString const &key, QString const &defaultValue) const
{
    PR_PreferenceItem const *item = find(key);
    return item && item->type() == Type::String ? item->value().toString() : defaultValue;
}

bool PR_Preference::setStringValue(QString const &key, QString const &value)
{
    if (!UT_isStorableText(value))
        return false;
    return set(key, Type::String, QVariant(value));
}

bool PR_Preference::remove(QString const &key)
{
    if (impl_->items.erase(key) == 0)
        return false;
    emit preferenceChanged();
    return true;
}

QStringList PR_Preference::keys() const
{
    QStringList result;
    for (auto const &entry : impl_->items)
        result << entry.first;
    return result;
}

namespace {

PR_Preference *globalStore()
{
    static PR_Preference store;
    static bool const followed = [] {
        QObject::connect(&store, &PR_Preference::preferenceChanged, &PR_CachedPreferences::refresh);
        return true;
    }();
    (void)followed;
    return &store;
}

}  // namespace

PR_Preference *const tuPref = globalStore();
