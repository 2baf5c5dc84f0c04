#include "video/MovieItems.h"

#include "isobmff/ItemKeys.h"
#include "isobmff/QuickTimeKeys.h"

#include <QStringDecoder>

#include <cmath>
#include <cstring>
#include <optional>

namespace pelorin {

namespace {

constexpr std::int64_t kMaxItemPayload = std::int64_t(64) << 20;

MediaMetadataItem makeItem(ItemKeySpace space, const QString& key, QVariant value, const QString& dataType,
                           const QString& language = {})
{
    const QString keySpace = keySpaceName(space);
    return {keySpace, key, keySpace + QLatin1Char('/') + key, std::move(value), dataType, language};
}

// The packed ISO 639-2 code of user-data strings: three 5-bit letters.
QString packedLanguage(std::uint16_t code)
{
    if (code == 0 || code == 0x7fff || code < 0x400)
        return {};
    QString out;
    for (int shift = 10; shift >= 0; shift -= 5)
        out.append(QChar(char(((code >> shift) & 0x1f) + 0x60)));
    return out == QLatin1String("und") ? QString() : out;
}

// A null-terminated string in UTF-8, or UTF-16 with a byte-order mark; advances at.
QString isoString(const QByteArray& bytes, qsizetype& at)
{
    if (at + 1 < bytes.size() && uchar(bytes[at]) == 0xfe && uchar(bytes[at + 1]) == 0xff) {
        qsizetype end = at + 2;
        while (end + 1 < bytes.size() && (bytes[end] || bytes[end + 1]))
            end += 2;
        QStringDecoder decode(QStringDecoder::Utf16BE);
        const QString text = decode(bytes.mid(at + 2, end - at - 2));
        at = std::min(bytes.size(), end + 2);
        return text;
    }
    qsizetype end = bytes.indexOf('\0', at);
    if (end < 0)
        end = bytes.size();
    const QString text = QString::fromUtf8(bytes.mid(at, end - at));
    at = std::min(bytes.size(), end + 1);
    return text;
}

// Old QuickTime user-data texts with a Macintosh language code are Mac Roman.
QString fromMacRoman(const QByteArray& bytes)
{
    static const char16_t kHigh[] =
        u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
        u"¿¡¬√ƒ≈∆«»…\u00a0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uf8ffÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";
    QString out;
    out.reserve(bytes.size());
    for (char c : bytes) {
        const auto byte = uchar(c);
        out.append(byte < 0x80 ? QChar(byte) : QChar(kHigh[byte - 0x80]));
    }
    return out;
}

double fixed16(std::uint32_t raw)
{
    return static_cast<std::int32_t>(raw) / 65536.0;
}

std::optional<MediaMetadataItem> isoUserDataItem(const QByteArray& type, const QByteArray& payload)
{
    const QString key = boxTypeName(type);
    if (type == threeGppBox::date) {
        // Seen both as a full box and as bare text.
        const qsizetype start = payload.startsWith(QByteArray(4, '\0')) ? 4 : 0;
        qsizetype at = start;
        return makeItem(ItemKeySpace::IsoUserData, key, isoString(payload, at), "UTF-8");
    }
    if (payload.size() < 6)
        return std::nullopt;
    const QString language = packedLanguage(readU16(payload, 4));
    qsizetype at = 6;
    if (type == threeGppBox::recordingYear)
        return makeItem(ItemKeySpace::IsoUserData, key, int(readU16(payload, 4)), "BE Unsigned Integer");
    if (type == threeGppBox::location) {
        isoString(payload, at);  // the place name; the record keeps only the coordinates
        if (at + 13 > payload.size())
            return std::nullopt;
        const double longitude = fixed16(readU32(payload, at + 1));
        const double latitude = fixed16(readU32(payload, at + 5));
        const double altitude = fixed16(readU32(payload, at + 9));
        return makeItem(ItemKeySpace::IsoUserData, key, iso6709Text(latitude, longitude, altitude), "ISO 6709", language);
    }
    if (type == threeGppBox::keywords) {
        QStringList words;
        const int count = at < payload.size() ? uchar(payload[at++]) : 0;
        for (int i = 0; i < count && at < payload.size(); ++i) {
            const int size = uchar(payload[at++]);
            QByteArray word = payload.mid(at, size);
            qsizetype wordAt = 0;
            words.append(isoString(word, wordAt));
            at += size;
        }
        return makeItem(ItemKeySpace::IsoUserData, key, words.join(QStringLiteral(", ")), "UTF-8", language);
    }
    if (type == threeGppBox::thumbnail || type == threeGppBox::userRating || type == threeGppBox::rating
        || type == threeGppBox::classification)
        return makeItem(ItemKeySpace::IsoUserData, key, payload.mid(4), "Binary");
    return makeItem(ItemKeySpace::IsoUserData, key, isoString(payload, at), "UTF-8", language);
}

// The value of a 'data' box by its well-known type.
std::optional<MediaMetadataItem> dataItem(ItemKeySpace keySpace, const QString& key, const QByteArray& payload)
{
    if (payload.size() < 8)
        return std::nullopt;
    const std::uint32_t wellKnown = readU32(payload, 0) & 0xffffff;
    const QByteArray value = payload.mid(8);
    const auto integer = [&](bool isSigned) -> QVariant {
        std::uint64_t raw = 0;
        for (char c : value)
            raw = (raw << 8) | uchar(c);
        if (isSigned && !value.isEmpty() && value.size() < 8 && (uchar(value[0]) & 0x80))
            raw |= ~std::uint64_t(0) << (8 * value.size());
        return isSigned ? QVariant(qint64(raw)) : QVariant(quint64(raw));
    };
    switch (wellKnown) {
    case 1:
        return makeItem(keySpace, key, QString::fromUtf8(value), "UTF-8");
    case 2: {
        QStringDecoder decode(QStringDecoder::Utf16BE);
        return makeItem(keySpace, key, QString(decode(value)), "UTF-16");
    }
    case 13:
        return makeItem(keySpace, key, value, "JPEG");
    case 14:
        return makeItem(keySpace, key, value, "PNG");
    case 27:
        return makeItem(keySpace, key, value, "BMP");
    case 21:
        if (value.size() > 8)
            return std::nullopt;
        return makeItem(keySpace, key, integer(true), "BE Signed Integer");
    case 22:
        if (value.size() > 8)
            return std::nullopt;
        return makeItem(keySpace, key, integer(false), "BE Unsigned Integer");
    case 23: {
        const std::uint32_t raw = readU32(value, 0);
        float f;
        std::memcpy(&f, &raw, 4);
        return makeItem(keySpace, key, double(f), "BE Float32");
    }
    case 24: {
        const std::uint64_t raw = readU64(value, 0);
        double d;
        std::memcpy(&d, &raw, 8);
        return makeItem(keySpace, key, d, "BE Float64");
    }
    default:
        return makeItem(keySpace, key, value, "Binary");
    }
}

class ItemCollector {
public:
    ItemCollector(ByteSource& source, QStringList* problems) : source_(source), problems_(problems) {}

    QByteArray payload(const Box& box)
    {
        if (box.payloadSize() > kMaxItemPayload) {
            problem(QStringLiteral("metadata box '%1' is too large").arg(boxTypeName(box.type)));
            return {};
        }
        return source_.read(box.payloadOffset(), box.payloadSize());
    }

    void problem(const QString& text)
    {
        if (problems_)
            problems_->append(text);
    }

    void userData(const Box& udta)
    {
        for (const Box& box : udta.children) {
            if (box.is("meta")) {
                quickTimeMetadata(box);
            } else if (!box.type.isEmpty() && uchar(box.type[0]) == 0xa9) {
                quickTimeText(box);
            } else if (isThreeGppUserDataBox(box.type)) {
                if (auto item = isoUserDataItem(box.type, payload(box)))
                    items.append(*item);
                else
                    problem(QStringLiteral("user data box '%1' is too short").arg(boxTypeName(box.type)));
            }
        }
    }

    // A 'meta' box: QuickTime metadata, where 'keys' names the items of 'ilst' by their one-based
    // index, or an iTunes list. Keys turn up in the movie's 'meta', in its user data (FFmpeg's
    // use_metadata_tags) and in tracks.
    void quickTimeMetadata(const Box& meta)
    {
        const Box* keysBox = meta.child("keys");
        const Box* ilst = meta.child("ilst");
        if (!ilst)
            return;
        if (!keysBox) {
            // An ISO 'meta' of the iTunes kind.
            itunes(*ilst);
            return;
        }
        bool damaged = false;
        const QStringList names = quickTimeKeyNamesOf(payload(*keysBox), &damaged);
        if (damaged)
            problem(QStringLiteral("the metadata key table is damaged"));
        for (const Box& entry : ilst->children) {
            const std::uint32_t index = readU32(entry.type, 0);
            if (index == 0 || index > std::uint32_t(names.size())) {
                problem(QStringLiteral("a metadata item names no key (%1)").arg(index));
                continue;
            }
            for (const Box* data : entry.childrenOfType("data")) {
                if (auto item = dataItem(ItemKeySpace::QuickTimeKeys, names[int(index - 1)], payload(*data)))
                    items.append(*item);
            }
        }
    }

    void itunes(const Box& ilst)
    {
        for (const Box& entry : ilst.children) {
            for (const Box* data : entry.childrenOfType("data")) {
                if (auto item = dataItem(ItemKeySpace::ITunes, boxTypeName(entry.type), payload(*data)))
                    items.append(*item);
            }
        }
    }

    // A QuickTime user-data text: (length, language, text) entries, or an iTunes-style 'data' box.
    void quickTimeText(const Box& box)
    {
        const QString key = boxTypeName(box.type);
        const QByteArray bytes = payload(box);
        if (bytes.mid(4, 4) == "data") {
            if (auto item = dataItem(ItemKeySpace::UserData, key, bytes.mid(8, qsizetype(readU32(bytes, 0)) - 8)))
                items.append(*item);
            return;
        }
        if (bytes.size() < 4)
            return;
        const qsizetype length = readU16(bytes, 0);
        if (4 + length > bytes.size()) {
            problem(QStringLiteral("user data text '%1' is cut short").arg(key));
            return;
        }
        const std::uint16_t code = readU16(bytes, 2);
        // Codes below 0x400 are Macintosh language numbers with Mac Roman text.
        const QByteArray text = bytes.mid(4, length);
        const QString value = code < 0x400 ? fromMacRoman(text) : QString::fromUtf8(text);
        items.append(makeItem(ItemKeySpace::UserData, key, value, "UTF-8", packedLanguage(code)));
    }

    MediaMetadataItems items;

private:
    ByteSource& source_;
    QStringList* problems_;
};

}  // namespace

QString iso6709Text(double latitude, double longitude, std::optional<double> altitude)
{
    const auto part = [](double value, int width, int decimals) {
        QString digits = QString::number(std::fabs(value), 'f', decimals).rightJustified(width, QLatin1Char('0'));
        return (value < 0 ? QStringLiteral("-") : QStringLiteral("+")) + digits;
    };
    return part(latitude, 7, 4) + part(longitude, 8, 4) + (altitude ? part(*altitude, 7, 3) : QString())
           + QLatin1Char('/');
}

MediaMetadataItems readMovieItems(ByteSource& source, const BoxTree& tree, QStringList* problems)
{
    ItemCollector collect(source, problems);
    const Box* moov = tree.top("moov");
    if (!moov) {
        collect.problem(QStringLiteral("the file has no movie box"));
        return {};
    }
    for (const Box& box : moov->children) {
        if (box.is("udta"))
            collect.userData(box);
        else if (box.is("meta"))
            collect.quickTimeMetadata(box);
        else if (const Box* meta = box.is("trak") ? box.child("meta") : nullptr)
            collect.quickTimeMetadata(*meta);
    }
    return collect.items;
}

MediaMetadataItems readMovieItemsOfFile(const QString& path)
{
    FileByteSource source(path);
    if (!source.open(nullptr))
        return {};
    const BoxTree tree = readBoxTree(source);
    return tree.top("moov") ? readMovieItems(source, tree, nullptr) : MediaMetadataItems();
}

QString lastItemText(const MediaMetadataItems& items, const QString& identifier)
{
    QString text;
    for (const MediaMetadataItem& item : items) {
        if (item.identifier == identifier)
            text = item.value.toString();
    }
    return text;
}

std::optional<QDateTime> movieHeaderCreationTime(ByteSource& source, const BoxTree& tree)
{
    const Box* mvhd = tree.find("moov/mvhd");
    if (!mvhd || mvhd->payloadSize() < 12)
        return std::nullopt;
    const QByteArray head = source.read(mvhd->payloadOffset(), 12);
    const int version = head.isEmpty() ? -1 : uchar(head[0]);
    const std::uint64_t seconds = version == 1 ? readU64(head, 4) : version == 0 ? readU32(head, 4) : 0;
    // Zero means "not set"; anything past the year 9999 is damage.
    if (seconds == 0 || seconds > std::uint64_t(kMovieClockEpochOffset) + 253402300799ULL)
        return std::nullopt;
    return QDateTime::fromSecsSinceEpoch(std::int64_t(seconds) - kMovieClockEpochOffset, Qt::UTC);
}

}  // namespace pelorin
