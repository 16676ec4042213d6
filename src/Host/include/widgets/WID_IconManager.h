// The host's icon lookup: icons are found by file name in a list of search folders.
//
// A theme may give its icons a suffix, the icons extension: with the extension "-light", the icon
// "pen.png" is looked up as "pen-light.png" first, then as "pen.png". The default theme has no
// extension (the empty string), which also tells drawing code that the interface is dark.
#pragma once

#include <QColor>
#include <QIcon>
#include <QString>
#include <QStringList>

#include <memory>

class WID_IconManager {
public:
    static WID_IconManager &instance();

    // Adds a folder to the end of the search list; empty and repeated folders are ignored.
    void addSearchDirectory(QString const &folder);
    QStringList searchDirectories() const;

    QString iconsExtension() const;
    void setIconsExtension(QString const &extension);

    // The file of the icon `name`: an absolute name as it is, else the first match in the search
    // folders (the themed variant before the plain one in each folder); empty when none exists.
    QString findIconFile(QString const &name) const;
    // The icon of that name, bitmap or SVG; a null icon when the file is missing or unreadable.
    QIcon icon(QString const &name) const;
    // The icon painted over an opaque field of `background`, at the image's own size, so that it
    // shows the same on any widget. A null icon when the file is missing or unreadable.
    QIcon addBlendedIcon(QString const &name, QColor const &background) const;

    WID_IconManager(WID_IconManager const &) = delete;
    WID_IconManager &operator=(WID_IconManager const &) = delete;

private:
    WID_IconManager();
    ~WID_IconManager();

    struct Impl;
    std::unique_ptr<Impl> impl_;
};
