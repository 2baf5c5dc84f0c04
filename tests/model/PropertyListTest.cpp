#include "model/PropertyList.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QPoint>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace pelorin {
namespace {

// A template as the exports write them, with every value type.
QVariantMap sample()
{
    QVariantMap exif;
    exif.insert(QStringLiteral("DateTimeOriginal"), QStringLiteral("2019:05:06 07:08:09"));
    exif.insert(QStringLiteral("ExposureTime"), 2.0);  // a whole-valued real stays a real
    exif.insert(QStringLiteral("FNumber"), 0.1 + 0.2);
    exif.insert(QStringLiteral("ISOSpeedRatings"), QVariantList{qlonglong(100), qlonglong(200)});
    exif.insert(QStringLiteral("Flash"), qlonglong(0));
    QVariantMap root;
    root.insert(QStringLiteral("{Exif}"), exif);
    root.insert(QStringLiteral("Negative"), qlonglong(-42));
    root.insert(QStringLiteral("Large"), std::numeric_limits<qlonglong>::max());
    root.insert(QStringLiteral("Small"), std::numeric_limits<qlonglong>::min());
    root.insert(QStringLiteral("HasAlpha"), false);
    root.insert(QStringLiteral("Orientation"), true);
    root.insert(QStringLiteral("Title"), QStringLiteral("Ünïcödé 東京 😀 <&> \"quoted\" ]]> tab\tend"));
    root.insert(QStringLiteral("Lines"), QStringLiteral("one\r\ntwo\rthree\n"));
    root.insert(QStringLiteral("Empty"), QString(""));
    root.insert(QStringLiteral("EmptyList"), QVariantList{});
    root.insert(QStringLiteral("EmptyDict"), QVariantMap{});
    root.insert(QStringLiteral("Thumbnail"), QByteArray("\x00\xff\x10 binary\x00", 11));
    root.insert(QStringLiteral("Captured"), QDateTime(QDate(2019, 5, 6), QTime(7, 8, 9), Qt::UTC));
    root.insert(QStringLiteral("Nested"), QVariantList{QVariantMap{{QStringLiteral("k"), QVariantList{1.5}}}});
    return root;
}

// Compares values and their types, which QVariant's == does not (it converts numbers).
void expectSame(const QVariant& expected, const QVariant& actual, const std::string& where)
{
    ASSERT_EQ(expected.typeId(), actual.typeId()) << where;
    if (expected.typeId() == QMetaType::QVariantMap) {
        const QVariantMap a = expected.toMap(), b = actual.toMap();
        ASSERT_EQ(a.keys(), b.keys()) << where;
        for (auto it = a.cbegin(); it != a.cend(); ++it)
            expectSame(it.value(), b.value(it.key()), where + "/" + it.key().toStdString());
    } else if (expected.typeId() == QMetaType::QVariantList) {
        const QVariantList a = expected.toList(), b = actual.toList();
        ASSERT_EQ(a.size(), b.size()) << where;
        for (qsizetype i = 0; i < a.size(); ++i)
            expectSame(a[i], b[i], where + "[" + std::to_string(i) + "]");
    } else {
        EXPECT_EQ(expected, actual) << where;
    }
}

QVariant roundTrip(const QVariant& value)
{
    const auto xml = writePropertyListXml(value);
    EXPECT_TRUE(xml.xml) << xml.error.toStdString();
    if (!xml.xml)
        return {};
    const auto read = readPropertyList(*xml.xml);
    EXPECT_TRUE(read.value) << read.error.toStdString();
    return read.value.value_or(QVariant());
}

TEST(PropertyList, WrittenAndReadBackKeepsEveryTypeAndValue)
{
    expectSame(QVariant(sample()), roundTrip(sample()), "root");
    const QVariantMap extremes{
        {QStringLiteral("Unsigned"), std::numeric_limits<qulonglong>::max()},
        {QStringLiteral("Inf"), -std::numeric_limits<double>::infinity()},
        {QStringLiteral("Tiny"), 5e-324},
        {QStringLiteral("Scanned"), QDateTime(QDate(1901, 3, 4), QTime(5, 6, 7), Qt::UTC)},
        {QStringLiteral("Far"), QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59), Qt::UTC)},
    };
    expectSame(QVariant(extremes), roundTrip(extremes), "extremes");
    EXPECT_TRUE(writePropertyListXml(sample()).xml->contains("<real>2</real>"));
}

// plistutil (libplist) is an independent reader and writer: it must accept our XML, and the
// binary list it makes from it must read back to the same values.
TEST(PropertyList, BinaryListsMadeByPlistutilFromOurXmlReadBackTheSame)
{
    QTemporaryDir dir;
    const QString xmlPath = dir.filePath(QStringLiteral("in.plist"));
    const QString binPath = dir.filePath(QStringLiteral("out.plist"));
    QFile file(xmlPath);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(*writePropertyListXml(sample()).xml);
    file.close();
    ASSERT_EQ(QProcess::execute(QStringLiteral("plistutil"),
                                {QStringLiteral("-i"), xmlPath, QStringLiteral("-o"), binPath,
                                 QStringLiteral("-f"), QStringLiteral("bin")}),
              0);
    QFile bin(binPath);
    ASSERT_TRUE(bin.open(QIODevice::ReadOnly));
    ASSERT_TRUE(bin.peek(8).startsWith("bplist00"));
    const auto read = readPropertyListFile(binPath);
    ASSERT_TRUE(read.value) << read.error.toStdString();
    expectSame(QVariant(sample()), *read.value, "root");
}

TEST(PropertyList, SharedAndCyclicObjectsCannotHangTheReader)
{
    // 41 objects, each an array holding the next one twice: 2^40 values if expanded.
    QFile bomb(QStringLiteral(PELORIN_TEST_DATA_DIR "/../fuzz/corpus/property_list/shared-refs.bin"));
    ASSERT_TRUE(bomb.open(QIODevice::ReadOnly));
    QElapsedTimer timer;
    timer.start();
    const auto read = readPropertyList(bomb.readAll());
    EXPECT_FALSE(read.value);
    EXPECT_LT(timer.elapsed(), 10000);

    // An array that holds itself.
    QByteArray cycle("bplist00");
    cycle += QByteArray("\xA1\x00", 2);       // object 0: array [object 0]
    cycle += QByteArray(1, '\x08');           // offset table: object 0 at 8
    cycle += QByteArray(6, '\0') + QByteArray("\x01\x01", 2);
    cycle += QByteArray("\0\0\0\0\0\0\0\x01", 8) + QByteArray(8, '\0') + QByteArray("\0\0\0\0\0\0\0\x0A", 8);
    const auto cyclic = readPropertyList(cycle);
    EXPECT_FALSE(cyclic.value);
    EXPECT_TRUE(cyclic.error.contains(QStringLiteral("contains itself"))) << cyclic.error.toStdString();
}

TEST(PropertyList, TextsWithNulCharactersReadWhole)
{
    QFile nulKey(QStringLiteral(PELORIN_TEST_DATA_DIR "/../fuzz/corpus/property_list/nul-key.bin"));
    ASSERT_TRUE(nulKey.open(QIODevice::ReadOnly));
    const auto read = readPropertyList(nulKey.readAll());
    ASSERT_TRUE(read.value) << read.error.toStdString();
    EXPECT_EQ(read.value->toMap().keys(), QStringList{QString::fromLatin1("a\0b", 3)});
    // XML cannot carry such a text: writing refuses instead of cutting it short.
    EXPECT_FALSE(writePropertyListXml(*read.value).xml);
}

TEST(PropertyList, BrokenInputGivesAnError)
{
    const char* broken[] = {
        "bplist00garbage",
        "<?xml version=\"1.0\"?><plist><dict><key>a",
        "<plist><dict><string>no key</string></dict></plist>",
        "<plist><integer>12x</integer></plist>",
        "<plist><date>yesterday</date></plist>",
        "<plist><data>!!!</data></plist>",
        "<plist><string>a</string><string>b</string></plist>",
        "<plist><unknown/></plist>",
        "just text",
    };
    for (const char* text : broken) {
        const auto read = readPropertyList(QByteArray(text));
        EXPECT_FALSE(read.value) << text;
        EXPECT_FALSE(read.error.isEmpty()) << text;
    }
    EXPECT_FALSE(readPropertyList(QByteArray()).value);
    EXPECT_FALSE(readPropertyListFile(QStringLiteral("/nonexistent/file.plist")).value);

    QByteArray deep("<plist version=\"1.0\">");
    for (int i = 0; i < 100000; ++i)
        deep += "<array>";
    for (int i = 0; i < 100000; ++i)
        deep += "</array>";
    deep += "</plist>";
    EXPECT_FALSE(readPropertyList(deep).value);
}

TEST(PropertyList, ValuesAListCannotHoldAreRefusedWithAReason)
{
    for (const QVariant& value :
         {QVariant(), QVariant(QStringLiteral("bell\a")), QVariant(QString(QChar(0xD800))),
          QVariant(QDateTime(QDate(10000, 1, 1), QTime(0, 0), Qt::UTC)),
          QVariant(QVariantMap{{QStringLiteral("p"), QPoint(1, 2)}})}) {
        const auto xml = writePropertyListXml(value);
        EXPECT_FALSE(xml.xml);
        EXPECT_FALSE(xml.error.isEmpty());
    }
}

}  // namespace
}  // namespace pelorin
