#include "preference/PR_CachedPreferences.h"
#include "preference/PR_Preference.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>
#include <limits>

namespace {

QByteArray readAll(QString const &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(QString const &path, QByteArray const &contents)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(contents);
}

class PreferenceFile : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString path() const { return dir.path() + "/config/animhost/preferences.xml"; }
    QString flatPath() const { return dir.path() + "/preferences.xml"; }
};

TEST_F(PreferenceFile, AMissingFileLeavesTheDefaultsAndIsCreatedBySave)
{
    PR_Preference store;
    EXPECT_EQ(store.load(path()), PR_Preference::LoadResult::Missing);
    EXPECT_TRUE(store.keys().isEmpty());
    EXPECT_EQ(store.find("QV_HAS_NEW_IK_TOOL"), nullptr);
    EXPECT_TRUE(store.getBoolValue("QV_HAS_NEW_IK_TOOL", true));
    EXPECT_EQ(store.getIntValue("ikJointSize", 5), 5);

    ASSERT_TRUE(store.setIntValue("ikJointSize", 9));
    ASSERT_TRUE(store.save());  // creates the missing folders
    PR_Preference reread;
    EXPECT_EQ(reread.load(path()), PR_Preference::LoadResult::Loaded);
    EXPECT_EQ(reread.getIntValue("ikJointSize", 5), 9);
}

TEST_F(PreferenceFile, EveryTypeRoundTripsExactlyThroughTheFile)
{
    QString const awkward = QString::fromUtf8(" lead & <tag> \"quoted\" 'single'\ttab\nline\r\nend é 日本 🙂 ");
    PR_Preference store;
    store.load(flatPath());
    ASSERT_TRUE(store.setBoolValue("b.true", true));
    ASSERT_TRUE(store.setBoolValue("b.false", false));
    ASSERT_TRUE(store.setIntValue("i.min", INT_MIN));
    ASSERT_TRUE(store.setIntValue("i.max", INT_MAX));
    ASSERT_TRUE(store.setDoubleValue("d.tenth", 0.1));
    ASSERT_TRUE(store.setDoubleValue("d.tiny", -4.9e-324));
    ASSERT_TRUE(store.setDoubleValue("d.huge", std::numeric_limits<double>::max()));
    ASSERT_TRUE(store.setRgbaValue("c.clear", 0x00000000u));
    ASSERT_TRUE(store.setRgbaValue("c.halfRed", 0x80FF0000u));
    ASSERT_TRUE(store.setRgbaValue("c.white", 0xFFFFFFFFu));
    ASSERT_TRUE(store.setStringValue("s.awkward", awkward));
    ASSERT_TRUE(store.setStringValue("s.empty", QString()));
    ASSERT_TRUE(store.setStringValue(QString::fromUtf8("key with spaces & ünïcode"), "x"));
    ASSERT_TRUE(store.save());

    PR_Preference reread;
    ASSERT_EQ(reread.load(flatPath()), PR_Preference::LoadResult::Loaded);
    EXPECT_EQ(reread.keys(), store.keys());
    EXPECT_TRUE(reread.getBoolValue("b.true", false));
    EXPECT_FALSE(reread.getBoolValue("b.false", true));
    EXPECT_EQ(reread.getIntValue("i.min", 0), INT_MIN);
    EXPECT_EQ(reread.getIntValue("i.max", 0), INT_MAX);
    EXPECT_EQ(reread.getDoubleValue("d.tenth", 0.0), 0.1);
    EXPECT_EQ(reread.getDoubleValue("d.tiny", 0.0), -4.9e-324);
    EXPECT_EQ(reread.getDoubleValue("d.huge", 0.0), std::numeric_limits<double>::max());
    EXPECT_EQ(reread.getRgbaValue("c.clear", 1u), 0x00000000u);
    EXPECT_EQ(reread.getRgbaValue("c.halfRed", 1u), 0x80FF0000u);
    EXPECT_EQ(reread.getRgbaValue("c.white", 1u), 0xFFFFFFFFu);
    EXPECT_EQ(reread.getStringValue("s.awkward", ""), awkward);
    EXPECT_EQ(reread.getStringValue("s.empty", "default"), QString());
    ASSERT_NE(reread.find("s.empty"), nullptr);
    EXPECT_EQ(reread.find("s.empty")->type(), PR_PreferenceItem::Type::String);
    EXPECT_EQ(reread.getStringValue(QString::fromUtf8("key with spaces & ünïcode"), ""), "x");
}

TEST(Preference, ColoursKeepAllFourBytesIncludingAlpha)
{
    PR_Preference store;
    for (unsigned int colour : {0x00112233u, 0x7F112233u, 0xFE000000u, 0x01FFFFFFu}) {
        ASSERT_TRUE(store.setRgbaValue("colour", colour));
        EXPECT_EQ(store.getRgbaValue("colour", 0xFFFFFFFFu), colour);
    }
}

TEST(Preference, AGetterOfAnotherTypeThanTheStoredOneGivesTheDefault)
{
    PR_Preference store;
    store.setIntValue("size", 7);
    EXPECT_EQ(store.getIntValue("size", 1), 7);
    EXPECT_TRUE(store.getBoolValue("size", true));
    EXPECT_EQ(store.getDoubleValue("size", 2.5), 2.5);
    EXPECT_EQ(store.getRgbaValue("size", 3u), 3u);
    EXPECT_EQ(store.getStringValue("size", "d"), "d");
    // Setting another type replaces the item.
    store.setStringValue("size", "large");
    EXPECT_EQ(store.getIntValue("size", 1), 1);
    EXPECT_EQ(store.getStringValue("size", "d"), "large");
}

TEST(Preference, TheSignalFiresOncePerRealChangeOnly)
{
    PR_Preference store;
    QSignalSpy spy(&store, &PR_Preference::preferenceChanged);

    store.setBoolValue("flag", true);  // new key
    EXPECT_EQ(spy.count(), 1);
    store.setBoolValue("flag", true);  // same value
    EXPECT_EQ(spy.count(), 1);
    store.setBoolValue("flag", false);
    EXPECT_EQ(spy.count(), 2);
    store.setIntValue("flag", 0);  // same key, another type: a change
    EXPECT_EQ(spy.count(), 3);
    store.setRgbaValue("c", 0xFF000000u);
    store.setRgbaValue("c", 0xFF000000u);
    store.setRgbaValue("c", 0x7F000000u);  // only alpha differs
    EXPECT_EQ(spy.count(), 5);
    store.setDoubleValue("d", 0.5);
    store.setDoubleValue("d", 0.5);
    store.setStringValue("s", "a");
    store.setStringValue("s", "a");
    EXPECT_EQ(spy.count(), 7);
    EXPECT_TRUE(store.remove("s"));
    EXPECT_FALSE(store.remove("s"));
    EXPECT_EQ(spy.count(), 8);
}

TEST_F(PreferenceFile, LoadingSignalsOnceWhenTheContentsDifferAndNotOtherwise)
{
    {
        PR_Preference writer;
        writer.load(flatPath());
        writer.setIntValue("a", 1);
        writer.setIntValue("b", 2);
        ASSERT_TRUE(writer.save());
    }
    PR_Preference store;
    QSignalSpy spy(&store, &PR_Preference::preferenceChanged);
    store.load(flatPath());
    EXPECT_EQ(spy.count(), 1);
    store.load(flatPath());
    EXPECT_EQ(spy.count(), 1);
}

TEST(Preference, InvalidInputsAreRefusedAndChangeNothing)
{
    QString const control = QString("bad") + QChar(0x01);
    QString const nul = QString("bad") + QChar(0x00) + "x";
    QString const loneSurrogate = QString("bad") + QChar(0xD800);
    QString const nonCharacter = QString("bad") + QChar(0xFFFF);
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const inf = std::numeric_limits<double>::infinity();

    struct Case {
        char const *what;
        std::function<bool(PR_Preference &)> set;
    };
    Case const cases[] = {
        {"empty key, bool", [](PR_Preference &p) { return p.setBoolValue("", true); }},
        {"empty key, int", [](PR_Preference &p) { return p.setIntValue(QString(), 3); }},
        {"control character in key", [&](PR_Preference &p) { return p.setIntValue(control, 3); }},
        {"NaN double", [&](PR_Preference &p) { return p.setDoubleValue("d", nan); }},
        {"+inf double", [&](PR_Preference &p) { return p.setDoubleValue("d", inf); }},
        {"-inf double", [&](PR_Preference &p) { return p.setDoubleValue("d", -inf); }},
        {"NUL in string", [&](PR_Preference &p) { return p.setStringValue("s", nul); }},
        {"lone surrogate in string", [&](PR_Preference &p) { return p.setStringValue("s", loneSurrogate); }},
        {"non-character in string", [&](PR_Preference &p) { return p.setStringValue("s", nonCharacter); }},
        {"lone surrogate in key", [&](PR_Preference &p) { return p.setRgbaValue(loneSurrogate, 1u); }},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        PR_Preference store;
        store.setDoubleValue("d", 0.25);
        store.setStringValue("s", "kept");
        QStringList const keysBefore = store.keys();
        QSignalSpy spy(&store, &PR_Preference::preferenceChanged);
        EXPECT_FALSE(c.set(store));
        EXPECT_EQ(spy.count(), 0);
        EXPECT_EQ(store.keys(), keysBefore);
        EXPECT_EQ(store.getDoubleValue("d", 0.0), 0.25);
        EXPECT_EQ(store.getStringValue("s", ""), "kept");
    }
}

// A damaged file: a message naming the file and line, the defaults, the file set aside as it was.
TEST_F(PreferenceFile, ADamagedFileIsReportedSetAsideAndTheDefaultsUsed)
{
    struct Case {
        char const *what;
        char const *contents;
        int line;  // of the fault
    };
    Case const cases[] = {
        {"truncated", "<?xml version=\"1.0\"?>\n<preferences>\n  <int key=\"a\" value=\"1\"/>\n  <int key=", 4},
        {"wrong root", "<?xml version=\"1.0\"?>\n<settings/>\n", 2},
        {"unknown element", "<preferences>\n<int key=\"a\" value=\"1\"/>\n<colour key=\"c\" value=\"1\"/>\n</preferences>\n", 3},
        {"missing key", "<preferences>\n<bool value=\"true\"/>\n</preferences>\n", 2},
        {"missing value", "<preferences>\n<bool key=\"b\"/>\n</preferences>\n", 2},
        {"int with letters", "<preferences>\n\n<int key=\"a\" value=\"12abc\"/>\n</preferences>\n", 3},
        {"int out of range", "<preferences>\n<int key=\"a\" value=\"4294967296\"/>\n</preferences>\n", 2},
        {"double nan", "<preferences>\n<double key=\"d\" value=\"nan\"/>\n</preferences>\n", 2},
        {"double inf", "<preferences>\n<double key=\"d\" value=\"inf\"/>\n</preferences>\n", 2},
        {"bool yes", "<preferences>\n<bool key=\"b\" value=\"yes\"/>\n</preferences>\n", 2},
        {"short colour", "<preferences>\n<rgba key=\"c\" value=\"#fff\"/>\n</preferences>\n", 2},
        {"colour without hash", "<preferences>\n<rgba key=\"c\" value=\"ffff00000\"/>\n</preferences>\n", 2},
        {"key twice", "<preferences>\n<int key=\"a\" value=\"1\"/>\n<int key=\"a\" value=\"2\"/>\n</preferences>\n", 3},
        {"garbage after root", "<preferences>\n</preferences>\n<more/>\n", 3},
        {"empty file", "", 1},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        QString const file = flatPath();
        QFile::remove(file);
        QFile::remove(file + ".damaged");
        writeAll(file, c.contents);

        PR_Preference store;
        store.setIntValue("a", 42);  // whatever was there before is replaced by the defaults
        testing::internal::CaptureStderr();
        PR_Preference::LoadResult const result = store.load(file);
        std::string const message = testing::internal::GetCapturedStderr();

        EXPECT_EQ(result, PR_Preference::LoadResult::Damaged);
        EXPECT_NE(message.find(file.toStdString()), std::string::npos) << message;
        EXPECT_NE(message.find("line " + std::to_string(c.line) + ":"), std::string::npos) << message;
        EXPECT_TRUE(store.keys().isEmpty());
        EXPECT_EQ(store.getIntValue("a", -1), -1);
        EXPECT_FALSE(QFile::exists(file));
        EXPECT_EQ(readAll(file + ".damaged"), QByteArray(c.contents));

        // Saving now writes a fresh file and leaves the damaged one alone.
        store.setBoolValue("fresh", true);
        ASSERT_TRUE(store.save());
        EXPECT_EQ(readAll(file + ".damaged"), QByteArray(c.contents));
        PR_Preference reread;
        EXPECT_EQ(reread.load(file), PR_Preference::LoadResult::Loaded);
        EXPECT_TRUE(reread.getBoolValue("fresh", false));
    }
}

TEST_F(PreferenceFile, ASecondDamagedFileDoesNotReplaceTheFirstOneSetAside)
{
    writeAll(flatPath(), "first <");
    PR_Preference store;
    testing::internal::CaptureStderr();
    store.load(flatPath());
    writeAll(flatPath(), "second <");
    store.load(flatPath());
    std::string const message = testing::internal::GetCapturedStderr();
    EXPECT_EQ(readAll(flatPath() + ".damaged"), QByteArray("first <"));
    EXPECT_EQ(readAll(flatPath() + ".damaged.1"), QByteArray("second <"));
    EXPECT_NE(message.find((flatPath() + ".damaged.1").toStdString()), std::string::npos) << message;
}

TEST(CachedPreferences, FollowTheGlobalStoreAndRefuseAnUnusableFactor)
{
    ASSERT_NE(tuPref, nullptr);
    tuPref->setBoolValue(PR_CachedPreferences::HasNewShiftandTraceInDrawingViewKey, false);
    tuPref->setDoubleValue(PR_CachedPreferences::SPTranslateScaleFactorKey, 0.25);
    EXPECT_FALSE(PR_CachedPreferences::_HasNewShiftandTraceInDrawingView);
    EXPECT_EQ(PR_CachedPreferences::_SPTranslateScaleFactor, 0.25);

    for (double unusable : {0.0, -2.0}) {
        tuPref->setDoubleValue(PR_CachedPreferences::SPTranslateScaleFactorKey, unusable);
        EXPECT_EQ(PR_CachedPreferences::_SPTranslateScaleFactor, 1.0) << unusable;
    }
    tuPref->remove(PR_CachedPreferences::HasNewShiftandTraceInDrawingViewKey);
    EXPECT_TRUE(PR_CachedPreferences::_HasNewShiftandTraceInDrawingView);
    tuPref->remove(PR_CachedPreferences::SPTranslateScaleFactorKey);
}

}  // namespace

// The rule of the setters holds on load. A UTF-16 file can hold a lone surrogate, which no save
// can encode: such a file once loaded, and every save after it failed with "Unknown error".
namespace {

QByteArray utf16File(QString const &text)
{
    QByteArray bytes("\xff\xfe");  // little-endian byte order mark
    for (QChar c : text) {
        bytes += char(c.unicode() & 0xff);
        bytes += char(c.unicode() >> 8);
    }
    return bytes;
}

} // namespace

TEST_F(PreferenceFile, EntriesTheSettersWouldRefuseAreNamedAndTheFileSetAside)
{
    QString const head = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<preferences version=\"1\">\n<int key=\"a\" value=\"1\"/>\n");
    QString const tail = QStringLiteral("</preferences>\n");
    struct Case {
        char const *what;
        QString entry;
        char const *named;  // what the message says of it, after "line 4: "
    };
    QChar const high(0xD800), low(0xDC00);
    Case const cases[] = {
        {"key with a lone high surrogate", QStringLiteral("<int key=\"b") + high + QStringLiteral("\" value=\"1\"/>\n"),
         "the key of <int> holds characters a file cannot hold"},
        {"key with a lone low surrogate", QStringLiteral("<bool key=\"") + low + QStringLiteral("\" value=\"true\"/>\n"),
         "the key of <bool> holds characters a file cannot hold"},
        {"string with a lone surrogate", QStringLiteral("<string key=\"title\" value=\"x") + high + QStringLiteral("y\"/>\n"),
         "\"title\": the value holds characters a file cannot hold"},
        {"string with two low surrogates", QStringLiteral("<string key=\"title\" value=\"") + low + low + QStringLiteral("\"/>\n"),
         "\"title\": the value holds characters a file cannot hold"},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        QString const file = flatPath();
        QFile::remove(file + ".damaged");
        QByteArray const contents = utf16File(head + c.entry + tail);
        writeAll(file, contents);
        PR_Preference store;
        store.setIntValue("kept", 1);
        testing::internal::CaptureStderr();
        EXPECT_EQ(store.load(file), PR_Preference::LoadResult::Damaged);
        std::string const message = testing::internal::GetCapturedStderr();
        EXPECT_NE(message.find(std::string("line 4: ") + c.named), std::string::npos) << message;
        EXPECT_TRUE(store.keys().isEmpty());
        EXPECT_EQ(readAll(file + ".damaged"), contents);
        // What the store holds saves, and a set after it is kept.
        ASSERT_TRUE(store.setStringValue("title", "x"));
        EXPECT_TRUE(store.save());
        PR_Preference reread;
        EXPECT_EQ(reread.load(file), PR_Preference::LoadResult::Loaded);
        EXPECT_EQ(reread.getStringValue("title", QString()), "x");
    }
}
