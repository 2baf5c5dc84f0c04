#include "photo/PhotoProperties.h"
#include "photo/PictureHeaderFacts.h"

#include "ExifTool.h"
#include "ImageMagick.h"

#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::exiftool;
using test::imageMagick;

class PictureHeaderFactsTest : public ::testing::Test {
protected:
    // name may carry ImageMagick's format prefix ("TIFF64:pages.tif").
    QString make(const QString& name, QStringList convertArgs)
    {
        const QString format = name.contains(QLatin1Char(':')) ? name.section(QLatin1Char(':'), 0, 0) + QLatin1Char(':') : QString();
        const QString path = dir_.filePath(name.section(QLatin1Char(':'), -1));
        convertArgs << format + path;
        EXPECT_TRUE(imageMagick(convertArgs)) << convertArgs.join(QLatin1Char(' ')).toStdString();
        return path;
    }

    QTemporaryDir dir_;
};

// What exiftool says of a picture's samples, in the property model's terms.
struct Layout {
    QString colorModel;
    int depth = 0;
    bool hasAlpha = false;
};

Layout exiftoolLayout(const QJsonObject& tags)
{
    const auto number = [&](const char* key) { return tags.value(QLatin1String(key)).toVariant().toLongLong(); };
    if (tags.contains(QStringLiteral("PNG:ColorType"))) {
        const int type = int(number("PNG:ColorType"));
        const bool transparency = tags.contains(QStringLiteral("PNG:Transparency"));
        return {type == 0 || type == 4 ? QStringLiteral("Gray") : QStringLiteral("RGB"),
                type == 3 ? 8 : int(number("PNG:BitDepth")), type == 4 || type == 6 || transparency};
    }
    if (tags.contains(QStringLiteral("File:ColorComponents"))) {
        const int components = int(number("File:ColorComponents"));
        return {components == 1 ? QStringLiteral("Gray") : components == 4 ? QStringLiteral("CMYK") : QStringLiteral("RGB"),
                int(number("File:BitsPerSample")), false};
    }
    if (tags.contains(QStringLiteral("File:BitDepth"))) {  // BMP
        const int compression = int(number("File:Compression"));
        const bool alpha = number("File:BitDepth") == 32 && (compression == 3 || compression == 6) && number("File:AlphaMask") != 0;
        return {QStringLiteral("RGB"), 8, alpha};
    }
    const int photometric = int(number("IFD0:PhotometricInterpretation"));  // BigTIFF
    const QString bits = tags.value(QStringLiteral("IFD0:BitsPerSample")).toVariant().toString();
    return {photometric <= 1 ? QStringLiteral("Gray") : QStringLiteral("RGB"), bits.section(QLatin1Char(' '), 0, 0).toInt(),
            tags.contains(QStringLiteral("IFD0:ExtraSamples"))};
}

// The layout read from the header is the one exiftool reports, for every colour type, depth and
// kind of transparency of the kinds whose facts come from their headers; the size and the number
// of frames or pages agree with Qt's decoders.
TEST_F(PictureHeaderFactsTest, LayoutSizeAndFramesAgreeWithExiftoolAndQt)
{
    const QStringList gradient{QStringLiteral("-size"), QStringLiteral("40x30"), QStringLiteral("gradient:red-blue"),
                               QStringLiteral("-depth"), QStringLiteral("8")};
    const QStringList halfClear{QStringLiteral("-alpha"), QStringLiteral("set"), QStringLiteral("-channel"), QStringLiteral("A"),
                                QStringLiteral("-evaluate"), QStringLiteral("set"), QStringLiteral("50%"), QStringLiteral("+channel")};
    const auto colorType = [](int type, int depth) {
        return QStringList{QStringLiteral("-define"), QStringLiteral("png:color-type=%1").arg(type), QStringLiteral("-define"),
                           QStringLiteral("png:bit-depth=%1").arg(depth)};
    };
    const QList<std::pair<QString, QStringList>> samples{
        {QStringLiteral("rgb.jpg"), gradient},
        {QStringLiteral("gray.jpg"), gradient + QStringList{QStringLiteral("-colorspace"), QStringLiteral("Gray")}},
        {QStringLiteral("cmyk.jpg"), gradient + QStringList{QStringLiteral("-colorspace"), QStringLiteral("CMYK")}},
        {QStringLiteral("rgb8.png"), gradient + colorType(2, 8)},
        {QStringLiteral("rgb16.png"), gradient + QStringList{QStringLiteral("-depth"), QStringLiteral("16")} + colorType(2, 16)},
        {QStringLiteral("rgba.png"), gradient + halfClear + colorType(6, 8)},
        {QStringLiteral("gray.png"), gradient + QStringList{QStringLiteral("-colorspace"), QStringLiteral("Gray")} + colorType(0, 8)},
        {QStringLiteral("mono.png"), gradient + QStringList{QStringLiteral("-monochrome")} + colorType(0, 1)},
        {QStringLiteral("grayalpha.png"),
         gradient + QStringList{QStringLiteral("-colorspace"), QStringLiteral("Gray")} + halfClear + colorType(4, 8)},
        {QStringLiteral("palette.png"), gradient + QStringList{QStringLiteral("-colors"), QStringLiteral("16")} + colorType(3, 4)},
        {QStringLiteral("palette-clear.png"),
         {QStringLiteral("-size"), QStringLiteral("4x4"), QStringLiteral("xc:red"), QStringLiteral("-alpha"), QStringLiteral("set"),
          QStringLiteral("-fill"), QStringLiteral("none"), QStringLiteral("-draw"), QStringLiteral("color 0,0 point"),
          QStringLiteral("-define"), QStringLiteral("png:format=png8")}},
        {QStringLiteral("gray-clear.png"),
         QStringList{QStringLiteral("-size"), QStringLiteral("4x4"), QStringLiteral("xc:gray50"), QStringLiteral("-transparent"),
                     QStringLiteral("gray50")} + colorType(0, 8)},
        {QStringLiteral("rgb24.bmp"), gradient},
        {QStringLiteral("argb32.bmp"), gradient + halfClear},
        {QStringLiteral("palette.bmp"), gradient + QStringList{QStringLiteral("-colors"), QStringLiteral("16"), QStringLiteral("-type"),
                                                               QStringLiteral("Palette")}},
        {QStringLiteral("pages.tif"),
         QStringList{QStringLiteral("-size"), QStringLiteral("40x30"), QStringLiteral("gradient:red-blue"), QStringLiteral("-size"),
                     QStringLiteral("40x30"), QStringLiteral("xc:green"), QStringLiteral("-depth"), QStringLiteral("8")}},
    };
    for (const auto& [name, args] : samples) {
        SCOPED_TRACE(name.toStdString());
        // ImageMagick writes a BigTIFF when its output is named with the TIFF64 prefix.
        const QString path = make(name.endsWith(QLatin1String(".tif")) ? QStringLiteral("TIFF64:") + name : name, args);
        const QJsonObject tags = exiftool(path);
        ASSERT_FALSE(tags.isEmpty());
        const Layout expected = exiftoolLayout(tags);
        const PhotoProperties photo = readPhotoProperties(path);
        ASSERT_TRUE(photo.error.isEmpty()) << photo.error.toStdString();
        const QVariantMap& p = photo.properties;
        EXPECT_EQ(p.value(QStringLiteral("ColorModel")).toString(), expected.colorModel);
        EXPECT_EQ(p.value(QStringLiteral("Depth")).toInt(), expected.depth);
        EXPECT_EQ(p.value(QStringLiteral("HasAlpha")).toBool(), expected.hasAlpha);
        QImageReader qt(path);
        EXPECT_EQ(QSize(p.value(QStringLiteral("PixelWidth")).toInt(), p.value(QStringLiteral("PixelHeight")).toInt()), qt.size());
        if (name.endsWith(QLatin1String(".tif"))) {
            // Qt's TIFF reader sees one page in a BigTIFF; exiftool lists each directory.
            EXPECT_TRUE(tags.contains(QStringLiteral("IFD1:ImageWidth")));
            EXPECT_EQ(photo.imageCount, 2);
        } else {
            EXPECT_EQ(photo.imageCount, qMax(1, qt.imageCount()));
        }
    }

    // Animations: every frame counts, as exiftool and Qt count them.
    const QStringList frames{QStringLiteral("-size"), QStringLiteral("40x30"), QStringLiteral("xc:red"), QStringLiteral("xc:blue"),
                             QStringLiteral("xc:green"), QStringLiteral("-loop"), QStringLiteral("0")};
    const QString gif = make(QStringLiteral("frames.gif"), frames);
    EXPECT_EQ(exiftool(gif).value(QStringLiteral("GIF:FrameCount")).toInt(), 3);
    EXPECT_EQ(readPhotoProperties(gif).imageCount, 3);
    const QString webp = make(QStringLiteral("frames.webp"), frames);
    EXPECT_EQ(readPhotoProperties(webp).imageCount, QImageReader(webp).imageCount());
    EXPECT_EQ(readPhotoProperties(webp).imageCount, 3);
    EXPECT_EQ(readPhotoProperties(make(QStringLiteral("still.webp"), frames.mid(0, 3))).imageCount, 1);
}

// Cut-off and looping headers give what could be read, never a crash or a hang.
TEST_F(PictureHeaderFactsTest, DamagedHeadersGiveWhatCouldBeRead)
{
    const QStringList small{QStringLiteral("-size"), QStringLiteral("6x5"), QStringLiteral("xc:red"), QStringLiteral("xc:blue")};
    const QList<std::pair<PhotoContainer, QString>> samples{
        {PhotoContainer::Jpeg, make(QStringLiteral("a.jpg"), small.mid(0, 3))},
        {PhotoContainer::Png, make(QStringLiteral("a.png"), small.mid(0, 3))},
        {PhotoContainer::Gif, make(QStringLiteral("a.gif"), small)},
        {PhotoContainer::WebP, make(QStringLiteral("a.webp"), small)},
        {PhotoContainer::Bmp, make(QStringLiteral("a.bmp"), small.mid(0, 3))},
        {PhotoContainer::BigTiff, make(QStringLiteral("TIFF64:a.tif"), small)},
    };
    for (const auto& [container, path] : samples) {
        SCOPED_TRACE(path.toStdString());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray whole = file.readAll();
        const auto full = readPictureHeaderFacts(container, whole);
        ASSERT_TRUE(full);
        EXPECT_EQ(full->size, QSize(6, 5));
        for (qsizetype length = 0; length < whole.size(); ++length) {
            const auto cut = readPictureHeaderFacts(container, whole.left(length));
            ASSERT_TRUE(cut);
            EXPECT_TRUE(!cut->size.isValid() || cut->size == QSize(6, 5)) << length;
            EXPECT_LE(cut->imageCount, full->imageCount) << length;
        }
    }

    // A BigTIFF whose first directory names itself as the next one is one page.
    QFile tiff(samples.last().second);
    ASSERT_TRUE(tiff.open(QIODevice::ReadOnly));
    QByteArray looped = tiff.readAll();
    ASSERT_TRUE(looped.startsWith("II"));
    const quint64 first = qFromLittleEndian<quint64>(looped.constData() + 8);
    const quint64 entries = qFromLittleEndian<quint64>(looped.constData() + first);
    qToLittleEndian<quint64>(first, looped.data() + first + 8 + entries * 20);
    EXPECT_EQ(readPictureHeaderFacts(PhotoContainer::BigTiff, looped)->imageCount, 1);

    // The kinds whose facts come from their TIFF tags have no header facts.
    EXPECT_FALSE(readPictureHeaderFacts(PhotoContainer::Tiff, looped));
}

}  // namespace
}  // namespace pelorin
