#include "model/Preferences.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

class PreferencesTest : public ::testing::Test {
protected:
    std::unique_ptr<QSettings> store() const
    {
        return std::make_unique<QSettings>(dir.filePath(QStringLiteral("prefs.ini")),
                                           QSettings::IniFormat);
    }
    QTemporaryDir dir;
};

TEST_F(PreferencesTest, SecondStartSelectsTheStoredCornerWhateverItsCase)
{
    Preferences(store()).loadAtStartup();
    EXPECT_FALSE(store()->contains(QStringLiteral("fontsize")));  // a first start writes no size
    const PreferenceValues v = Preferences(store()).loadAtStartup();
    EXPECT_EQ(v.cornerTitle, QStringLiteral("lower left corner"));
    EXPECT_EQ(stampCornerTitles().at(v.cornerIndex), QStringLiteral("Lower left corner"));
    // No size was ever written: the default holds at every start, and so it does for a size
    // that is not a usable number.
    EXPECT_EQ(v.fontSize, 14);
    for (const char* stored : {"0", "-3", "big", "100000"}) {
        store()->setValue(QStringLiteral("fontsize"), QString::fromLatin1(stored));
        EXPECT_EQ(Preferences(store()).loadAtStartup().fontSize, 14) << stored;
    }
    store()->setValue(QStringLiteral("fontName"), QString());
    EXPECT_EQ(Preferences(store()).peek().fontName, QStringLiteral("Lucida Grande"));
}

TEST_F(PreferencesTest, UnknownTitlesSelectTheFirstItem)
{
    auto s = store();
    s->setValue(QStringLiteral("Postion"), QStringLiteral("middle"));
    s->setValue(QStringLiteral("Dateformat"), QStringLiteral("DD/MM/YYYY HH:MM"));
    s->sync();
    const PreferenceValues v = Preferences(store()).loadAtStartup();
    EXPECT_EQ(v.cornerIndex, 0);
    EXPECT_EQ(v.dateFormatIndex, 1);
    EXPECT_EQ(store()->value(QStringLiteral("Postion")).toString(), QStringLiteral("middle"));
}

TEST_F(PreferencesTest, SaveWritesAllFiveKeys)
{
    Preferences prefs(store());
    PreferenceValues v = prefs.loadAtStartup();
    v.fontSize = 22;
    v.cornerTitle = stampCornerTitles().at(3);
    v.storagePath = dir.filePath(QStringLiteral("out"));
    prefs.save(v);
    const auto written = store();
    EXPECT_EQ(written->value(QStringLiteral("fontsize")).toInt(), 22);
    EXPECT_EQ(written->value(QStringLiteral("Postion")).toString(), QStringLiteral("Lower right corner"));
    EXPECT_EQ(written->value(QStringLiteral("storagePath")).toString(), v.storagePath);
    EXPECT_EQ(Preferences(store()).peek().fontSize, 22);
}

TEST_F(PreferencesTest, SetFromTextChecksValuesAndStoresCanonicalTitles)
{
    Preferences prefs(store());
    QString error;
    EXPECT_TRUE(prefs.setFromText(QStringLiteral("Postion"), QStringLiteral("upper RIGHT corner"), &error));
    EXPECT_EQ(store()->value(QStringLiteral("Postion")).toString(), QStringLiteral("Upper right corner"));
    EXPECT_TRUE(prefs.setFromText(QStringLiteral("fontsize"), QStringLiteral("18"), &error));
    EXPECT_EQ(store()->value(QStringLiteral("fontsize")).toInt(), 18);
    EXPECT_FALSE(prefs.setFromText(QStringLiteral("fontsize"), QStringLiteral("big"), &error));
    EXPECT_FALSE(prefs.setFromText(QStringLiteral("Position"), QStringLiteral("Upper left corner"), &error));
    EXPECT_FALSE(prefs.setFromText(QStringLiteral("Dateformat"), QStringLiteral("YYYY"), &error));
    EXPECT_FALSE(prefs.setFromText(QStringLiteral("storagePath"), QStringLiteral("  "), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(store()->value(QStringLiteral("fontsize")).toInt(), 18);
}

}  // namespace
}  // namespace pelorin
