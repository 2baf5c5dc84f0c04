#include "isobmff/ItemKeys.h"

#include "isobmff/BoxTree.h"

#include <array>
#include <utility>

namespace pelorin {

namespace {

constexpr std::array<std::pair<ItemKeySpace, const char*>, 4> kSpaceNames = {{
    {ItemKeySpace::ITunes, "itsk"},
    {ItemKeySpace::UserData, "udta"},
    {ItemKeySpace::QuickTimeKeys, "mdta"},
    {ItemKeySpace::IsoUserData, "uiso"},
}};

}  // namespace

QLatin1String keySpaceName(ItemKeySpace space)
{
    for (const auto& [each, name] : kSpaceNames) {
        if (each == space)
            return QLatin1String(name);
    }
    return {};
}

std::optional<ItemKeySpace> keySpaceNamed(QStringView name)
{
    for (const auto& [space, each] : kSpaceNames) {
        if (name == QLatin1String(each))
            return space;
    }
    return std::nullopt;
}

QString itemKeyText(ItemKeySpace space, QByteArrayView key)
{
    return space == ItemKeySpace::QuickTimeKeys ? QString::fromUtf8(key) : boxTypeName(key);
}

QString itemIdentifier(ItemKeySpace space, QByteArrayView key)
{
    return QString(keySpaceName(space)) + QLatin1Char('/') + itemKeyText(space, key);
}

QByteArray atomTypeOfKeyText(QStringView keyText)
{
    QByteArray out;
    for (qsizetype i = 0; i < keyText.size(); ++i) {
        if (keyText[i] == QLatin1Char('%') && i + 2 < keyText.size()) {
            bool ok = false;
            out.append(char(keyText.mid(i + 1, 2).toInt(&ok, 16)));
            if (!ok)
                return {};
            i += 2;
        } else if (keyText[i].unicode() < 0x80) {
            out.append(char(keyText[i].unicode()));
        } else {
            return {};
        }
    }
    return out.size() == 4 ? out : QByteArray();
}

QString ffmpegKeyOfItunesAtom(QByteArrayView type)
{
    static constexpr std::pair<const char*, const char*> kKeys[] = {
        {itunesAtom::title, ffmpegKey::title},
        {itunesAtom::artist, ffmpegKey::artist},
        {itunesAtom::album, ffmpegKey::album},
        {itunesAtom::albumArtist, ffmpegKey::albumArtist},
        {itunesAtom::composer, ffmpegKey::composer},
        {itunesAtom::comment, ffmpegKey::comment},
        {itunesAtom::description, ffmpegKey::description},
        {itunesAtom::genre, ffmpegKey::genre},
        {itunesAtom::copyright, ffmpegKey::copyright},
        {itunesAtom::publisher, ffmpegKey::publisher},
        {itunesAtom::date, ffmpegKey::date},
        {itunesAtom::encoder, ffmpegKey::encoder},
        {itunesAtom::artwork, appleKey::artwork},
    };
    for (const auto& [atom, key] : kKeys) {
        if (type == QByteArrayView(atom))
            return QString::fromLatin1(key);
    }
    return {};
}

bool isThreeGppUserDataBox(QByteArrayView type)
{
    static constexpr const char* kBoxes[] = {
        threeGppBox::title,      threeGppBox::description,   threeGppBox::copyright, threeGppBox::performer,
        threeGppBox::author,     threeGppBox::genre,         threeGppBox::album,     threeGppBox::recordingYear,
        threeGppBox::date,       threeGppBox::location,      threeGppBox::keywords,  threeGppBox::collection,
        threeGppBox::userRating, threeGppBox::thumbnail,     threeGppBox::classification, threeGppBox::rating,
    };
    for (const char* box : kBoxes) {
        if (type == QByteArrayView(box))
            return true;
    }
    return false;
}

}  // namespace pelorin
