#include "update/UpdateDocument.h"

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

QByteArray xmlDocument(const QByteArray& root)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + root + "</plist>\n";
}

QByteArray versionDictionary(const QByteArray& version, const QByteArray& news)
{
    return xmlDocument("<dict><key>lastestVersion</key><string>" + version + "</string><key>WhatsNew</key><string>" +
                       news + "</string></dict>");
}

}  // namespace

TEST(UpdateDocument, ReadsXmlAndBinaryDocuments)
{
    const UpdateDocument xml = parseUpdateDocument(
        xmlDocument("<dict><key>WhatsNew</key><string>Faster*GPS &amp; dates</string><key>other</key><integer>3</integer>"
                    "<key>lastestVersion</key><string> 2.4.1 </string></dict>"));
    EXPECT_TRUE(xml.error.isEmpty()) << xml.error.toStdString();
    EXPECT_EQ(xml.lastestVersion, QStringLiteral("2.4.1"));
    EXPECT_EQ(xml.whatsNew, QStringLiteral("Faster*GPS & dates"));

    // Made by plistutil from {lastestVersion: "3.0", WhatsNew: "Faster*Safer"}.
    const UpdateDocument binary = parseUpdateDocument(QByteArray::fromHex(
        "62706c6973743030d2010302045e6c61737465737456657273696f6e53332e305857686174734e65775c4661737465722a536166"
        "6572080d1c20290000000000000101000000000000000500000000000000000000000000000036"));
    EXPECT_TRUE(binary.error.isEmpty()) << binary.error.toStdString();
    EXPECT_EQ(binary.lastestVersion, QStringLiteral("3.0"));
    EXPECT_EQ(binary.whatsNew, QStringLiteral("Faster*Safer"));

    // News is optional; the version is what the check needs.
    const UpdateDocument quiet = parseUpdateDocument(xmlDocument("<dict><key>lastestVersion</key><string>3.1</string></dict>"));
    EXPECT_TRUE(quiet.error.isEmpty() && quiet.whatsNew.isEmpty() && quiet.lastestVersion == QStringLiteral("3.1"));
}

TEST(UpdateDocument, UnusableDocumentsSayWhy)
{
    const QByteArray shell = versionDictionary("9.0", "");
    const QByteArray unusable[] = {
        xmlDocument("<dict><key>latestVersion</key><string>2.0</string></dict>"),  // the usual spelling is not the server's
        xmlDocument("<array><string>lastestVersion</string><string>2.0</string></array>"),
        xmlDocument("<dict><key>lastestVersion</key><integer>2</integer></dict>"),
        xmlDocument("<dict><key>lastestVersion</key><string>soon</string></dict>"),
        xmlDocument("<dict><key>lastestVersion</key><string>2.0</string><key>WhatsNew</key><array/></dict>"),
        QByteArray(),
        QByteArray("<html><body>502 Bad Gateway</body></html>"),
        QByteArray("bplist00\xff\xff\xff", 11),
        versionDictionary("9.0", QByteArray(kMaxUpdateDocumentSize - shell.size() + 1, 'x')),
    };
    for (const QByteArray& bytes : unusable)
        EXPECT_FALSE(parseUpdateDocument(bytes).error.isEmpty()) << bytes.left(100).toStdString();
    // One byte less is within the limit.
    EXPECT_TRUE(parseUpdateDocument(versionDictionary("9.0", QByteArray(kMaxUpdateDocumentSize - shell.size(), 'x')))
                    .error.isEmpty());
}

TEST(UpdateDocument, EveryStarOfTheNewsBecomesALineBreak)
{
    EXPECT_EQ(whatsNewDisplayText(QStringLiteral("One*Two**Four*")), QStringLiteral("One\nTwo\n\nFour\n"));
}
