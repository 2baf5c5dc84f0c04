#include "video/MovieItemChanges.h"

#include "isobmff/ItemKeys.h"
#include "isobmff/MovieBoxRewrite.h"
#include "isobmff/QuickTimeKeys.h"
#include "video/MovieRecordFill.h"
#include "video/MovieItems.h"

#include <cmath>

namespace pelorin {

namespace {

constexpr std::uint16_t kUndetermined = 0x55c4;  // "und", packed

QByteArray u32(std::uint32_t value)
{
    QByteArray out;
    appendU32(out, value);
    return out;
}

QByteArray u16(std::uint16_t value)
{
    return QByteArray(1, char(value >> 8)) + char(value & 0xff);
}

BoxNode& childOrNew(BoxNode& parent, const BoxNode& fresh)
{
    if (BoxNode* existing = parent.child(fresh.type))
        return *existing;
    parent.children.push_back(fresh);
    return parent.children.back();
}

// iTunes atoms live in udta/meta/ilst. Where that 'meta' holds QuickTime keys instead (FFmpeg's
// use_metadata_tags writes it so), an iTunes atom cannot go into it: the item goes in as the
// key FFmpeg would have used.
bool changeItunes(BoxNode& moov, const QByteArray& type, const ItemChange& change, QString* error)
{
    if (const BoxNode* userData = moov.child("udta"); userData && holdsQuickTimeKeys(userData->child("meta"))) {
        const QString key = ffmpegKeyOfItunesAtom(type);
        if (!key.isEmpty())
            return changeQuickTimeKey(moov, key, change.value, change.dataType, error);
        if (!change.value)
            return true;
        *error = QStringLiteral("the movie keeps its metadata as QuickTime keys, which have no place for '%1'")
                     .arg(boxTypeName(type));
        return false;
    }
    BoxNode& udta = childOrNew(moov, BoxNode::parent("udta", {}));
    BoxNode& meta = childOrNew(udta, BoxNode::parent("meta", {metadataHandler("mdir")}, QByteArray(4, '\0')));
    BoxNode& ilst = childOrNew(meta, BoxNode::parent("ilst", {}));
    ilst.removeChildren(type);
    if (change.value)
        ilst.children.push_back(BoxNode::parent(type, {metadataDataBox(*change.value, change.dataType)}));
    return true;
}

// QuickTime user-data text: length, language, UTF-8 text.
void changeUserData(BoxNode& moov, const QByteArray& type, const ItemChange& change)
{
    BoxNode& udta = childOrNew(moov, BoxNode::parent("udta", {}));
    const auto at = std::find_if(udta.children.begin(), udta.children.end(),
                                 [&](const BoxNode& node) { return node.type == type; });
    const std::size_t position = std::size_t(at - udta.children.begin());
    udta.removeChildren(type);
    if (!change.value)
        return;
    const QByteArray text = change.value->toString().toUtf8().left(0xffff);
    const BoxNode atom = BoxNode::leaf(type, u16(std::uint16_t(text.size())) + u16(kUndetermined) + text);
    udta.children.insert(udta.children.begin() + qsizetype(std::min(position, udta.children.size())), atom);
}

// The 3GPP location box from an ISO 6709 text.
std::optional<QByteArray> locationPayload(const QString& text)
{
    IKImageItem parsed;
    applyIso6709Location(parsed, text);
    if (parsed.latitudeFormat.isEmpty() || parsed.longtitudeFormat.isEmpty())
        return std::nullopt;
    const auto sign = [](const QString& s) { return s == QLatin1String("-") ? -1.0 : 1.0; };
    const auto fixed = [](double value) { return u32(std::uint32_t(std::int32_t(std::lround(value * 65536.0)))); };
    return QByteArray(4, '\0') + u16(kUndetermined) + QByteArray(1, '\0') + QByteArray(1, '\0')
           + fixed(sign(parsed.longtitudeFormat) * parsed.filelongtitude)
           + fixed(sign(parsed.latitudeFormat) * parsed.filelatitude)
           + fixed(sign(parsed.AtitudeFormat) * parsed.fileAtitude) + QByteArray("earth\0", 6) + QByteArray(1, '\0');
}

// The 3GPP boxes that hold one language-tagged text.
bool isThreeGppText(const QByteArray& type)
{
    for (const char* box : {threeGppBox::title, threeGppBox::description, threeGppBox::copyright,
                            threeGppBox::performer, threeGppBox::author, threeGppBox::genre, threeGppBox::album}) {
        if (type == box)
            return true;
    }
    return false;
}

bool changeIsoUserData(BoxNode& moov, const QByteArray& type, const ItemChange& change, QString* error)
{
    BoxNode& udta = childOrNew(moov, BoxNode::parent("udta", {}));
    udta.removeChildren(type);
    if (!change.value)
        return true;
    QByteArray payload;
    if (type == threeGppBox::location) {
        const std::optional<QByteArray> location = locationPayload(change.value->toString());
        if (!location) {
            *error = QStringLiteral("'%1' is no ISO 6709 location").arg(change.value->toString());
            return false;
        }
        payload = *location;
    } else if (type == threeGppBox::date) {
        payload = change.value->toString().toUtf8();
    } else if (type == threeGppBox::recordingYear) {
        payload = QByteArray(4, '\0') + u16(std::uint16_t(change.value->toInt()));
    } else if (isThreeGppText(type)) {
        payload = QByteArray(4, '\0') + u16(kUndetermined) + change.value->toString().toUtf8() + '\0';
    } else if (type == threeGppBox::keywords) {
        payload = QByteArray(4, '\0') + u16(kUndetermined);
        const QStringList words = change.value->toString().split(QLatin1Char(','), Qt::SkipEmptyParts);
        payload.append(char(std::min<qsizetype>(words.size(), 255)));
        for (qsizetype i = 0; i < std::min<qsizetype>(words.size(), 255); ++i) {
            const QByteArray word = words[i].trimmed().toUtf8().left(254);
            payload.append(char(word.size() + 1)).append(word).append('\0');
        }
    } else {
        *error = QStringLiteral("user data box '%1' cannot be written").arg(QString::fromLatin1(type));
        return false;
    }
    udta.children.push_back(BoxNode::leaf(type, payload));
    return true;
}

bool applyItemChange(BoxNode& moov, const ItemChange& change, QString* error)
{
    const qsizetype slash = change.identifier.indexOf(QLatin1Char('/'));
    const QString key = change.identifier.mid(slash + 1);
    const QByteArray type = atomTypeOfKeyText(key);
    const std::optional<ItemKeySpace> space =
        slash > 0 && !key.isEmpty() ? keySpaceNamed(QStringView(change.identifier).left(slash)) : std::nullopt;
    if (space && (*space == ItemKeySpace::QuickTimeKeys || !type.isEmpty())) {
        switch (*space) {
        case ItemKeySpace::QuickTimeKeys: return changeQuickTimeKey(moov, key, change.value, change.dataType, error);
        case ItemKeySpace::ITunes: return changeItunes(moov, type, change, error);
        case ItemKeySpace::UserData: changeUserData(moov, type, change); return true;
        case ItemKeySpace::IsoUserData: return changeIsoUserData(moov, type, change, error);
        }
    }
    *error = QStringLiteral("items of '%1' cannot be written").arg(change.identifier);
    return false;
}

}  // namespace

bool applyItemChanges(BoxNode& moov, const QList<ItemChange>& changes, QString* error)
{
    for (const ItemChange& change : changes) {
        if (!applyItemChange(moov, change, error))
            return false;
    }
    return true;
}

bool isIsoMediaFile(const QString& path)
{
    FileByteSource source(path);
    if (!source.open(nullptr))
        return false;
    const BoxTree tree = readBoxTree(source);
    return tree.top("ftyp") || tree.top("moov");
}

RewriteReport writeMovieChanges(const QString& sourcePath, const QList<ItemChange>& changes,
                                const QString& targetPath, Durability durability, const MovieBoxEdit& extra,
                                FileLevelXmp xmp)
{
    const MovieBoxEditor edit = [&](BoxNode& moov, QString* error) {
        return applyItemChanges(moov, changes, error) && (!extra || extra(moov, error));
    };
    // A blanked XMP packet, in its registered 'uuid' box, becomes padding of the same size.
    const FileLevelEditor blankXmp = [](const BoxTree& tree, std::vector<TopLevelEdit>& edits, QString* error) {
        static const QByteArray xmpUuid = QByteArray::fromHex("BE7ACFCB97A942E89C71999491E3AFAC");
        for (std::size_t i = 0; i < tree.boxes.size(); ++i) {
            const Box& box = tree.boxes[i];
            if (!box.is("uuid") || box.userType != xmpUuid)
                continue;
            if (box.size > kMaxEditedMovieBox || box.size < 8) {
                *error = QStringLiteral("the file's XMP box is too large to blank");
                return false;
            }
            edits.push_back({i, BoxNode::leaf("free", QByteArray(qsizetype(box.size - 8), '\0')), {}, {}});
        }
        return true;
    };
    return rewriteMovieBox(sourcePath, targetPath, edit, durability,
                           xmp == FileLevelXmp::Blank ? blankXmp : FileLevelEditor());
}

}  // namespace pelorin
