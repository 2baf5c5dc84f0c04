#include "model/FileKinds.h"

#include <gtest/gtest.h>

namespace pelorin {
namespace {

TEST(FileKinds, EveryWordAnswersItsFirstPositionInAnyCase)
{
    for (FileKindList list :
         {FileKindList::Raw, FileKindList::Image, FileKindList::Video, FileKindList::Audio}) {
        const QStringList words = kindListWords(list);
        for (qsizetype i = 0; i < words.size(); ++i) {
            const int first = static_cast<int>(words.indexOf(words[i]));
            EXPECT_EQ(kindPosition(list, words[i]), first) << words[i].toStdString();
            EXPECT_EQ(kindPosition(list, words[i].toLower()), first) << words[i].toStdString();
        }
    }
}

TEST(FileKinds, ClassicExtensions)
{
    const int jpgPosition = static_cast<int>(kindListWords(FileKindList::Image).indexOf(QStringLiteral("JPG")));
    EXPECT_EQ(GetDragImageType("jpg"), jpgPosition);
    EXPECT_EQ(GetDragImageType("Jpg"), jpgPosition);
    EXPECT_EQ(GetDragImageType("jpeg"), jpgPosition - 1);  // "JPEG" stands right before "JPG"
    EXPECT_EQ(GetDragImageType("cdr"), 17);
    EXPECT_EQ(GetDragImageType("HEIC"), 0);
    // AVIF, Sony's HEIF and Canon's CR3 are photos too, imported and edited like HEIC.
    EXPECT_EQ(GetDragImageType("avif"), 142);
    EXPECT_EQ(GetDragImageType("HIF"), 143);
    EXPECT_EQ(GetDragImageType("cr3"), 144);
    EXPECT_EQ(GetViedoType("HEVC"), 0);
    EXPECT_GE(GetViedoType("mp4"), 0);
    EXPECT_GE(GetViedoType("M4V"), 0);
    EXPECT_LT(GetViedoType("m4a"), 0);
    EXPECT_GE(GetAudioType("M4A"), 0);
    EXPECT_GE(GetViedoType("ts"), 0);
    EXPECT_EQ(GetImageType("cr2"), 1);
    EXPECT_GE(GetDragImageType("CR2"), 0);  // a RAW kind is also an image
}

TEST(FileKinds, OnlyWholeAsciiExtensionsMatch)
{
    for (auto test : {GetImageType, GetDragImageType, GetViedoType, GetAudioType}) {
        EXPECT_EQ(test(nullptr), -1);
        EXPECT_EQ(test(""), -1);
        EXPECT_EQ(test("ts.bak"), -1);
        EXPECT_EQ(test(".jpg"), -1);
        EXPECT_EQ(test("jp"), -1);
    }
    EXPECT_EQ(GetViedoType("tsx"), -1);
    EXPECT_EQ(GetDragImageType("jpgg"), -1);
    // Only ASCII letters fold: a Kelvin sign or a dotless i is not a letter of an extension.
    EXPECT_EQ(kindPosition(FileKindList::Image, QStringLiteral("\u212Adc")), -1);
    EXPECT_EQ(kindPosition(FileKindList::Image, QStringLiteral("t\u0131f")), -1);
}

TEST(FileKinds, PathExtensionIsWhatFollowsTheLastDotOfTheName)
{
    EXPECT_EQ(pathExtension(QStringLiteral("/a.b/photo.JPG")), QStringLiteral("JPG"));
    EXPECT_EQ(pathExtension(QStringLiteral("/a.b/clip.ts.bak")), QStringLiteral("bak"));
    EXPECT_EQ(pathExtension(QStringLiteral("/a.b/README")), QString());
}

}  // namespace
}  // namespace pelorin
