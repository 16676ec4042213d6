// Builds widget trees from .ui files (Qt Designer forms) through QUiLoader, with the host's own
// widgets (UI_DoubleEditor) known by class name.
#pragma once

#include <QString>

class QWidget;

class GUT_WidgetFactory {
public:
    static GUT_WidgetFactory &Instance();

    // The widget tree of the form at `path`, given to `parent`; null when the file is missing or
    // is no valid form, with a message on standard error naming the file. Relative paths inside the
    // form (icons) are taken from the form's folder.
    QWidget *create(QString const &path, QWidget *parent = nullptr) const;

    GUT_WidgetFactory(GUT_WidgetFactory const &) = delete;
    GUT_WidgetFactory &operator=(GUT_WidgetFactory const &) = delete;

private:
    GUT_WidgetFactory() = default;
};
