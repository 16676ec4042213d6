// The host's preference store: typed values under string keys that outlive a run.
//
// One store is global: `tuPref`. The application loads it from a file before it opens any
// plug-in, since plug-ins read preferences in their static initialisers, and saves it at exit.
// Each value has one of five types (bool, int, double, RGBA colour, string); a getter of another
// type than the stored one gives the caller's default. Every real change emits
// preferenceChanged() once; setting a value equal to the stored one emits nothing.
//
// The file is XML, one element per value, named after its type:
//
//   <?xml version="1.0" encoding="UTF-8"?>
//   <preferences version="1">
//     <bool key="QV_HAS_NEW_IK_TOOL" value="true"/>
//     <int key="ikJointSize" value="5"/>
//     <double key="SP_TRANSLATE_SCALE_FACTOR" value="0.5"/>
//     <rgba key="ikBoneColor" value="#ffff0000"/>      (#AARRGGBB)
//     <string key="lastScene" value="walk.xml"/>
//   </preferences>
//
// A damaged file (malformed XML, an unknown element, a missing key, a value that does not read
// as its type, a key given twice) is never used in part: the store keeps its defaults, a message
// naming the file and the line goes to standard error, and the file is renamed aside with the
// suffix ".damaged" (then ".damaged.1", ".damaged.2", ...) so that the next save cannot
// overwrite it.
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>

// One stored value. Pointers to items stay valid until the store is loaded again or destroyed.
class PR_PreferenceItem {
public:
    enum class Type { Bool, Int, Double, Rgba, String };

    PR_PreferenceItem(QString key, Type type, QVariant value)
        : key_(std::move(key)), type_(type), value_(std::move(value)) {}

    QString const &key() const { return key_; }
    Type type() const { return type_; }
    // Holds a bool, int, double, uint (0xAARRGGBB) or QString, according to type().
    QVariant const &value() const { return value_; }

private:
    friend class PR_Preference;
    QString key_;
    Type type_;
    QVariant value_;
};

class PR_Preference : public QObject {
    Q_OBJECT
public:
    enum class LoadResult {
        Loaded,   // the file was read; the store holds its values
        Missing,  // no file yet; the store is empty and the defaults stand
        Damaged,  // the file was set aside (see above); the store is empty
    };

    explicit PR_Preference(QObject *parent = nullptr);
    ~PR_Preference() override;

    // Where the host keeps its preferences when no path is given on the command line:
    // <user configuration folder>/animhost/preferences.xml.
    static QString defaultFilePath();

    // Replaces the contents of the store by those of `path`, which becomes the file of save().
    // Emits preferenceChanged() once if any value differs afterwards.
    LoadResult load(QString const &path);
    // Writes the store to the file of the last load (atomically: the old file is replaced only
    // once the new one is complete). False, with a message on standard error, when the file
    // cannot be written or no file was loaded.
    bool save() const;
    QString filePath() const;

    // The item of that key, or null.
    PR_PreferenceItem const *find(QString const &key) const;

    // Getters give the stored value, or `defaultValue` when the key is missing or holds another
    // type. Setters store the value and create the key; they refuse (false, nothing changes) an
    // empty key, a key or string with characters a file cannot hold (control characters other
    // than tab, line feed and carriage return), and a double that is NaN or infinite.
    bool getBoolValue(QString const &key, bool defaultValue) const;
    bool setBoolValue(QString const &key, bool value);
    int getIntValue(QString const &key, int defaultValue) const;
    bool setIntValue(QString const &key, int value);
    double getDoubleValue(QString const &key, double defaultValue) const;
    bool setDoubleValue(QString const &key, double value);
    // Colours are 0xAARRGGBB words (a QRgb); all four bytes are kept.
    unsigned int getRgbaValue(QString const &key, unsigned int const &defaultValue) const;
    bool setRgbaValue(QString const &key, unsigned int const &value);
    QString getStringValue(QString const &key, QString const &defaultValue) const;
    bool setStringValue(QString const &key, QString const &value);

    // Forgets a key; emits preferenceChanged() if it existed.
    bool remove(QString const &key);
    // All keys, sorted.
    QStringList keys() const;

signals:
    void preferenceChanged();

private:
    bool set(QString const &key, PR_PreferenceItem::Type type, QVariant const &value);

    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The host's global preference store. Never null.
extern PR_Preference *const tuPref;
