#include "isobmff/ItemKeys.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace pelorin;

TEST(ItemKeys, IdentifiersSpellTypesAsItemsDoAndReadBack)
{
    EXPECT_EQ(itemIdentifier(ItemKeySpace::ITunes, itunesAtom::title), "itsk/%A9nam");
    EXPECT_EQ(itemIdentifier(ItemKeySpace::QuickTimeKeys, appleKey::title), "mdta/com.apple.quicktime.title");
    EXPECT_EQ(itemIdentifier(ItemKeySpace::IsoUserData, threeGppBox::location), "uiso/loci");
    for (const char* atom : {itunesAtom::title, itunesAtom::freeform, userDataAtom::xmp, threeGppBox::date})
        EXPECT_EQ(atomTypeOfKeyText(itemKeyText(ItemKeySpace::UserData, atom)), QByteArray(atom)) << atom;
    // A percent sign is spelled too, so that it reads back as itself.
    EXPECT_EQ(itemKeyText(ItemKeySpace::ITunes, "a%bc"), "a%25bc");
    EXPECT_EQ(atomTypeOfKeyText(u"a%25bc"), "a%bc");
    for (const char16_t* broken : {u"%G9nam", u"nam", u"%A9name", u"\u00e9nam", u"%A9na"})
        EXPECT_TRUE(atomTypeOfKeyText(broken).isEmpty());
    EXPECT_EQ(keySpaceNamed(u"mdta"), ItemKeySpace::QuickTimeKeys);
    EXPECT_FALSE(keySpaceNamed(u"id3").has_value());
}
