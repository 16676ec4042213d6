#include "action/AC_ShortcutManager.h"

#include "preference/PR_Preference.h"

#include <QFile>
#include <QXmlStreamReader>

#include <cstdio>
#include <optional>
#include <set>
#include <vector>

namespace {

// One key combination read from portable text, or nothing when the text is not one.
std::optional<QKeySequence> readKey(QString const &text)
{
    QKeySequence const key = QKeySequence::fromString(text, QKeySequence::PortableText);
    if (key.count() != 1 || (key[0] & ~Qt::KeyboardModifierMask) == Qt::Key_unknown
        || (key[0] & ~Qt::KeyboardModifierMask) == 0)
        return std::nullopt;
    return key;
}

// Reads a shortcut file; on failure gives "line N: what was expected".
std::optional<QString> parse(QFile &file, std::vector<AC_ShortcutManager::Shortcut> &shortcuts)
{
    QXmlStreamReader xml(&file);
    auto failure = [&xml](QString const &what) {
        return std::optional<QString>(QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(what));
    };
    auto keyAttribute = [&](QXmlStreamAttributes const &attributes, QLatin1String name,
                            QKeySequence &key) -> std::optional<QString> {
        QString const text = attributes.value(name).toString();
        std::optional<QKeySequence> const read = readKey(text);
        if (!read)
            return failure(QStringLiteral("\"%1\" is not one key combination such as \"Ctrl+K\"").arg(text));
        key = *read;
        return std::nullopt;
    };
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("shortcuts"))
        return failure(xml.hasError() ? xml.errorString() : QStringLiteral("expected the element <shortcuts>"));
    std::set<QString> ids;
    while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("shortcut"))
            return failure(QStringLiteral("expected <shortcut>, found <%1>").arg(xml.name()));
        QXmlStreamAttributes const attributes = xml.attributes();
        AC_ShortcutManager::Shortcut shortcut;
        shortcut.id = attributes.value(QLatin1String("id")).toString();
        shortcut.text = attributes.value(QLatin1String("text")).toString();
        shortcut.responderIdentity = attributes.value(QLatin1String("responder")).toString();
        shortcut.slot = attributes.value(QLatin1String("slot")).toString();
        shortcut.preference = attributes.value(QLatin1String("preference")).toString();
        if (shortcut.id.isEmpty())
            return failure(QStringLiteral("<shortcut> without an id"));
        if (shortcut.slot.isEmpty())
            return failure(QStringLiteral("shortcut \"%1\" has no slot").arg(shortcut.id));
        if (!ids.insert(shortcut.id).second)
            return failure(QStringLiteral("shortcut \"%1\" is given twice").arg(shortcut.id));
        if (attributes.hasAttribute(QLatin1String("key")))
            if (auto error = keyAttribute(attributes, QLatin1String("key"), shortcut.key))
                return error;
        while (xml.readNextStartElement()) {
            if (xml.name() != QLatin1String("key"))
                return failure(QStringLiteral("expected <key set=\"...\" value=\"...\"/>, found <%1>").arg(xml.name()));
            QXmlStreamAttributes const keyAttributes = xml.attributes();
            QString const set = keyAttributes.value(QLatin1String("set")).toString();
            if (set.isEmpty())
                return failure(QStringLiteral("<key> without a set"));
            QKeySequence key;
            if (auto error = keyAttribute(keyAttributes, QLatin1String("value"), key))
                return error;
            shortcut.setKeys[set] = key;
            xml.skipCurrentElement();
        }
        if (xml.hasError())
            break;
        shortcuts.push_back(std::move(shortcut));
    }
    while (!xml.hasError() && !xml.atEnd())
        xml.readNext();
    if (xml.hasError())
        return failure(xml.errorString());
    return std::nullopt;
}

}  // namespace

QString const AC_ShortcutManager::DefaultSetName = QStringLiteral("Default");

struct AC_ShortcutManager::Impl {
    std::vector<Shortcut> shortcuts;  // in the order first loaded
    QString currentSet = DefaultSetName;
    std::map<QString, int> activeCodes;  // id -> key code in the current set

    Shortcut *find(QString const &id)
    {
        for (Shortcut &s : shortcuts)
            if (s.id == id)
                return &s;
        return nullptr;
    }
};

AC_ShortcutManager::AC_ShortcutManager(QObject *parent) : QObject(parent), impl_(std::make_unique<Impl>()) {}

AC_ShortcutManager::~AC_ShortcutManager() = default;

bool AC_ShortcutManager::loadShortcuts(QString const &path)
{
    QFile file(path);
    std::optional<QString> error;
    std::vector<Shortcut> loaded;
    if (!file.open(QIODevice::ReadOnly))
        error = QStringLiteral("cannot read the file (%1)").arg(file.errorString());
    else
        error = parse(file, loaded);
    if (error) {
        std::fprintf(stderr, "%s: shortcuts not loaded, %s\n", qUtf8Printable(path), qUtf8Printable(*error));
        std::fflush(stderr);
        return false;
    }
    for (Shortcut &shortcut : loaded) {
        if (Shortcut *existing = impl_->find(shortcut.id))
            *existing = std::move(shortcut);
        else
            impl_->shortcuts.push_back(std::move(shortcut));
    }
    return true;
}

QString AC_ShortcutManager::currentShortcutSetName() const
{
    return impl_->currentSet;
}

QStringList AC_ShortcutManager::shortcutSetNames() const
{
    std::set<QString> names{DefaultSetName};
    for (Shortcut const &s : impl_->shortcuts)
        for (auto const &entry : s.setKeys)
            names.insert(entry.first);
    return QStringList(names.begin(), names.end());
}

bool AC_ShortcutManager::applyShortcutSet(QString const &name)
{
    if (name.isEmpty())
        return false;
    impl_->currentSet = name;
    impl_->activeCodes.clear();
    for (Shortcut const &s : impl_->shortcuts) {
        if (!s.preference.isEmpty() && !tuPref->getBoolValue(s.preference, false))
            continue;  // its feature is switched off
        auto const inSet = s.setKeys.find(name);
        QKeySequence const &key = inSet != s.setKeys.end() ? inSet->second : s.key;
        if (!key.isEmpty())
            impl_->activeCodes[s.id] = key[0];
    }
    emit shortcutsApplied();
    return true;
}

AC_ShortcutManager::Shortcut const *AC_ShortcutManager::shortcut(QString const &id) const
{
    return impl_->find(id);
}

int AC_ShortcutManager::keyCode(QString const &id) const
{
    auto const it = impl_->activeCodes.find(id);
    return it == impl_->activeCodes.end() ? 0 : it->second;
}

QString AC_ShortcutManager::shortcutForKeyCode(int code) const
{
    if (code == 0)
        return QString();
    for (Shortcut const &s : impl_->shortcuts)
        if (keyCode(s.id) == code)
            return s.id;
    return QString();
}
