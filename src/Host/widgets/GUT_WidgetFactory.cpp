#include "widgets/GUT_WidgetFactory.h"

#include "widgets/UI_DoubleEditor.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUiLoader>

#include <cstdio>

namespace {

// QUiLoader that also makes the host's own widgets.
class HostUiLoader : public QUiLoader {
public:
    using QUiLoader::QUiLoader;

    QWidget *createWidget(QString const &className, QWidget *parent, QString const &name) override
    {
        if (className == QLatin1String("UI_DoubleEditor")) {
            auto *editor = new UI_DoubleEditor(parent);
            editor->setObjectName(name);
            return editor;
        }
        return QUiLoader::createWidget(className, parent, name);
    }
};

void report(QString const &path, QString const &what)
{
    std::fprintf(stderr, "%s: cannot build the form, %s\n", qUtf8Printable(path), qUtf8Printable(what));
    std::fflush(stderr);
}

}  // namespace

GUT_WidgetFactory &GUT_WidgetFactory::Instance()
{
    static GUT_WidgetFactory factory;
    return factory;
}

QWidget *GUT_WidgetFactory::create(QString const &path, QWidget *parent) const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        report(path, QStringLiteral("cannot read the file (%1)").arg(file.errorString()));
        return nullptr;
    }
    HostUiLoader loader;
    loader.setWorkingDirectory(QFileInfo(path).absoluteDir());
    QWidget *widget = loader.load(&file, parent);
    if (!widget)
        report(path, loader.errorString());
    return widget;
}
