#include "PLUG_EntryReader.h"

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

#include <cstdio>
#include <set>

namespace {

class Reader {
public:
    Reader(QFile &file, QString source, bool submenus) : xml_(&file), source_(std::move(source)), submenus_(submenus) {}

    std::optional<PLUG_EntryReader::File> read(QString const &rootName, QString &error)
    {
        PLUG_EntryReader::File result;
        if (!xml_.readNextStartElement() || xml_.name() != rootName) {
            fail(xml_.hasError() ? xml_.errorString() : QStringLiteral("expected the element <%1>").arg(rootName));
        } else {
            result.text = xml_.attributes().value(QLatin1String("text")).toString();
            readEntries(result.entries);
            while (!failed_ && !xml_.atEnd())
                xml_.readNext();
            if (!failed_ && xml_.hasError())
                fail(xml_.errorString());
        }
        if (failed_) {
            error = error_;
            return std::nullopt;
        }
        return result;
    }

private:
    void fail(QString const &what)
    {
        if (failed_)
            return;
        failed_ = true;
        error_ = QStringLiteral("line %1: %2").arg(xml_.lineNumber()).arg(what);
    }

    QString attribute(QLatin1String name) const { return xml_.attributes().value(name).toString(); }

    // Reads the children of the current element up to its end.
    void readEntries(std::vector<PLUG_ActionEntry> &entries)
    {
        std::set<QString> ids;
        while (!failed_ && xml_.readNextStartElement()) {
            PLUG_ActionEntry entry;
            entry.source = source_;
            entry.id = attribute(QLatin1String("id"));
            entry.text = attribute(QLatin1String("text"));
            entry.icon = attribute(QLatin1String("icon"));
            if (xml_.name() == QLatin1String("separator")) {
                entry.kind = PLUG_ActionEntry::Kind::Separator;
                xml_.skipCurrentElement();
            } else if (xml_.name() == QLatin1String("item")) {
                entry.kind = PLUG_ActionEntry::Kind::Item;
                entry.responderIdentity = attribute(QLatin1String("responder"));
                entry.slot = attribute(QLatin1String("slot"));
                QString const checkable = attribute(QLatin1String("checkable"));
                if (checkable == QLatin1String("true"))
                    entry.checkable = true;
                else if (!checkable.isEmpty() && checkable != QLatin1String("false"))
                    return fail(QStringLiteral("checkable is \"true\" or \"false\", not \"%1\"").arg(checkable));
                if (entry.id.isEmpty() || entry.slot.isEmpty())
                    return fail(QStringLiteral("an <item> needs an id and a slot"));
                xml_.skipCurrentElement();
            } else if (submenus_ && xml_.name() == QLatin1String("menu")) {
                entry.kind = PLUG_ActionEntry::Kind::Submenu;
                if (entry.id.isEmpty())
                    return fail(QStringLiteral("a <menu> inside a menu needs an id"));
                readEntries(entry.children);
            } else {
                return fail(QStringLiteral("expected <item>, <separator>%1, found <%2>")
                                .arg(submenus_ ? QStringLiteral(" or <menu>") : QString(), xml_.name()));
            }
            if (entry.kind != PLUG_ActionEntry::Kind::Separator && !ids.insert(entry.id).second)
                return fail(QStringLiteral("the id \"%1\" is given twice").arg(entry.id));
            entries.push_back(std::move(entry));
        }
        if (!failed_ && xml_.hasError())
            fail(xml_.errorString());
    }

    QXmlStreamReader xml_;
    QString source_;
    bool submenus_;
    bool failed_ = false;
    QString error_;
};

}  // namespace

std::optional<PLUG_EntryReader::File> PLUG_EntryReader::read(QString const &path, QString const &rootName,
                                                             bool submenus, QString &error)
{
    QFile file(path);
    std::optional<File> result;
    if (!file.open(QIODevice::ReadOnly))
        error = QStringLiteral("cannot read the file (%1)").arg(file.errorString());
    else
        result = Reader(file, QFileInfo(path).absoluteFilePath(), submenus).read(rootName, error);
    if (!result) {
        error = path + QStringLiteral(": ") + error;
        std::fprintf(stderr, "%s\n", qUtf8Printable(error));
        std::fflush(stderr);
    }
    return result;
}
