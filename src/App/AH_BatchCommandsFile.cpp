// Batch commands that read and write files, and the preferences: open, save, render, print, pref.
#include "AH_BatchCommands.h"

#include "AH_Workspace.h"
#include "preference/PR_Preference.h"
#include "view/VW_View.h"

#include <QImage>
#include <QTextStream>

using namespace AH_BatchWords;

namespace {

bool checkPreference(QStringList const &a, QString &why)
{
    QString const type = a[1];
    QString const value = a.mid(2).join(QLatin1Char(' '));
    bool ok = type == QLatin1String("string");
    if (type == QLatin1String("bool"))
        ok = value == QLatin1String("true") || value == QLatin1String("false");
    else if (type == QLatin1String("int"))
        value.toInt(&ok);
    else if (type == QLatin1String("double")) {
        double v = 0.0;
        ok = toNumber(value, v);
    }
    why = QStringLiteral("a type among bool, int, double and string and a value of that type");
    return ok;
}

bool setPreference(AH_BatchContext &, QStringList const &a, QString &why)
{
    QString const value = a.mid(2).join(QLatin1Char(' '));
    QString const &type = a[1];
    bool ok = false;
    if (type == QLatin1String("bool"))
        ok = tuPref->setBoolValue(a[0], value == QLatin1String("true"));
    else if (type == QLatin1String("int"))
        ok = tuPref->setIntValue(a[0], value.toInt());
    else if (type == QLatin1String("double"))
        ok = tuPref->setDoubleValue(a[0], value.toDouble());
    else
        ok = tuPref->setStringValue(a[0], value);
    if (!ok)
        why = QStringLiteral("expected a preference key and value the store accepts");
    return ok;
}

} // namespace

void AH_AddFileCommands(AH_BatchCommandList &table)
{
    table.push_back({QStringLiteral("open"), 1, 1, QStringLiteral("FILE"), nullptr,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         QString error;
                         if (c.workspace().open(c.inputPath(a[0]), &error))
                             return true;
                         why = QStringLiteral("a scene file that reads: %1").arg(error);
                         return false;
                     }});
    table.push_back({QStringLiteral("save"), 1, 1, QStringLiteral("FILE"), nullptr,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         QString error;
                         if (c.workspace().save(c.outputPath(a[0]), &error))
                             return true;
                         why = QStringLiteral("a scene that saves: %1").arg(error);
                         return false;
                     }});
    table.push_back({QStringLiteral("render"), 1, 3, QStringLiteral("FILE.png [WIDTH HEIGHT]"),
                     [](QStringList const &a, QString &why) {
                         if (a.size() == 2) {
                             why = QStringLiteral("both WIDTH and HEIGHT or neither");
                             return false;
                         }
                         return a.size() == 1 || sizeAt(1)(a, why);
                     },
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         if (a.size() == 3)
                             c.view()->resize(a[1].toInt(), a[2].toInt());
                         QString const path = c.outputPath(a[0]);
                         if (c.view()->render().save(path, "PNG"))
                             return true;
                         why = QStringLiteral("expected a PNG file that can be written, not \"%1\"").arg(path);
                         return false;
                     }});
    table.push_back({QStringLiteral("print"), 3, 3, QStringLiteral("NODE ATTRIBUTE FRAME"), frameAt(2),
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         QString text;
                         if (!c.workspace().attributeText(a[0], a[1], a[2].toDouble(), &text, &why))
                             return false;
                         QTextStream &stream = c.output();
                         stream << a[0] << ' ' << a[1] << ' ' << a[2] << ": " << text << '\n';
                         stream.flush();
                         return true;
                     }});
    table.push_back({QStringLiteral("pref"), 3, -1, QStringLiteral("KEY bool|int|double|string VALUE"), checkPreference,
                     setPreference});
}
