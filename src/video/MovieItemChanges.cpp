#include "video/MovieItemChanges.h"

#include "video/MovieFields.h"
#include "video/MovieItems.h"

#include <cmath>
#include <cstring>

namespace pelorin {

namespace {

constexpr std::int64_t kMaxMovieBox = std::int64_t(256) << 20;
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

// "%A9nam" back to its four type bytes; empty when it is no four-byte type.
QByteArray typeBytes(const QString& key)
{
    QByteArray out;
    for (qsizetype i = 0; i < key.size(); ++i) {
        if (key[i] == QLatin1Char('%') && i + 2 < key.size()) {
            bool ok = false;
            out.append(char(key.mid(i + 1, 2).toInt(&ok, 16)));
            if (!ok)
                return {};
            i += 2;
        } else if (key[i].unicode() < 0x80) {
            out.append(char(key[i].unicode()));
        } else {
            return {};
        }
    }
    return out.size() == 4 ? out : QByteArray();
}

BoxNode handler(const char* kind)
{
    return BoxNode::leaf("hdlr", QByteArray(8, '\0') + kind + QByteArray(12, '\0') + QByteArray(1, '\0'));
}

// A 'data' box for a value: text, picture bytes, integer or real.
BoxNode dataBox(const QVariant& value, const QString& dataType)
{
    std::uint32_t type = 1;
    QByteArray bytes;
    switch (value.typeId()) {
    case QMetaType::QByteArray:
        bytes = value.toByteArray();
        type = dataType == QLatin1String("JPEG") ? 13 : dataType == QLatin1String("PNG") ? 14 : 0;
        break;
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong: {
        type = 21;
        const qint64 number = value.toLongLong();
        if (number >= INT32_MIN && number <= INT32_MAX)
            bytes = u32(std::uint32_t(std::int32_t(number)));
        else
            bytes = u32(std::uint32_t(quint64(number) >> 32)) + u32(std::uint32_t(number));
        break;
    }
    case QMetaType::Double:
    case QMetaType::Float: {
        type = 24;
        const double real = value.toDouble();
        std::uint64_t raw;
        std::memcpy(&raw, &real, 8);
        bytes = u32(std::uint32_t(raw >> 32)) + u32(std::uint32_t(raw));
        break;
    }
    default:
        bytes = value.toString().toUtf8();
    }
    return BoxNode::leaf("data", u32(type) + u32(0) + bytes);
}

BoxNode& childOrNew(BoxNode& parent, const BoxNode& fresh)
{
    if (BoxNode* existing = parent.child(fresh.type))
        return *existing;
    parent.children.push_back(fresh);
    return parent.children.back();
}

// iTunes atoms live in udta/meta/ilst.
void changeItunes(BoxNode& moov, const QByteArray& type, const ItemChange& change)
{
    BoxNode& udta = childOrNew(moov, BoxNode::parent("udta", {}));
    BoxNode& meta = childOrNew(udta, BoxNode::parent("meta", {handler("mdir")}, QByteArray(4, '\0')));
    BoxNode& ilst = childOrNew(meta, BoxNode::parent("ilst", {}));
    ilst.removeChildren(type);
    if (change.value)
        ilst.children.push_back(BoxNode::parent(type, {dataBox(*change.value, change.dataType)}));
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

bool changeIsoUserData(BoxNode& moov, const QByteArray& type, const ItemChange& change, QString* error)
{
    BoxNode& udta = childOrNew(moov, BoxNode::parent("udta", {}));
    udta.removeChildren(type);
    if (!change.value)
        return true;
    QByteArray payload;
    if (type == "loci") {
        const std::optional<QByteArray> location = locationPayload(change.value->toString());
        if (!location) {
            *error = QStringLiteral("'%1' is no ISO 6709 location").arg(change.value->toString());
            return false;
        }
        payload = *location;
    } else if (type == "date") {
        payload = change.value->toString().toUtf8();
    } else if (type == "yrrc") {
        payload = QByteArray(4, '\0') + u16(std::uint16_t(change.value->toInt()));
    } else if (type == "titl" || type == "dscp" || type == "cprt" || type == "perf" || type == "auth"
               || type == "gnre" || type == "albm") {
        payload = QByteArray(4, '\0') + u16(kUndetermined) + change.value->toString().toUtf8() + '\0';
    } else if (type == "kywd") {
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

// QuickTime metadata: 'keys' names the 'ilst' entries by one-based index. Removing a key
// renumbers the entries after it.
bool changeQuickTimeMetadata(BoxNode& moov, const QString& key, const ItemChange& change, QString* error)
{
    BoxNode* meta = moov.child("meta");
    if (!meta) {
        if (!change.value)
            return true;
        moov.children.push_back(BoxNode::parent("meta", {handler("mdta"), BoxNode::leaf("keys", QByteArray(8, '\0')),
                                                         BoxNode::parent("ilst", {})}));
        meta = &moov.children.back();
    }
    BoxNode* keysBox = meta->child("keys");
    BoxNode* ilst = meta->child("ilst");
    if (!keysBox || !ilst) {
        *error = QStringLiteral("the movie's metadata box has no key table");
        return false;
    }
    QList<QByteArray> keys;
    const QByteArray& table = keysBox->payload;
    qsizetype at = 8;
    for (std::uint32_t i = 0; i < readU32(table, 4); ++i) {
        const std::uint32_t size = readU32(table, at);
        if (size < 8 || at + size > table.size()) {
            *error = QStringLiteral("the movie's key table is damaged");
            return false;
        }
        keys.append(table.mid(at, size));
        at += size;
    }
    const QByteArray wanted = key.toUtf8();
    qsizetype index = -1;
    for (qsizetype i = 0; i < keys.size(); ++i) {
        if (keys[i].mid(8) == wanted && keys[i].mid(4, 4) == "mdta")
            index = i;
    }
    if (index < 0 && !change.value)
        return true;
    if (index < 0) {
        keys.append(u32(std::uint32_t(8 + wanted.size())) + "mdta" + wanted);
        index = keys.size() - 1;
    }
    const std::uint32_t number = std::uint32_t(index + 1);
    std::erase_if(ilst->children, [&](const BoxNode& entry) { return readU32(entry.type, 0) == number; });
    if (change.value) {
        ilst->children.push_back(BoxNode::parent(u32(number), {dataBox(*change.value, change.dataType)}));
    } else {
        keys.removeAt(index);
        for (BoxNode& entry : ilst->children) {
            const std::uint32_t old = readU32(entry.type, 0);
            if (old > number)
                entry.type = u32(old - 1);
        }
    }
    keysBox->payload = table.left(4) + u32(std::uint32_t(keys.size())) + keys.join();
    return true;
}

}  // namespace

bool applyItemChanges(BoxNode& moov, const QList<ItemChange>& changes, QString* error)
{
    for (const ItemChange& change : changes) {
        const qsizetype slash = change.identifier.indexOf(QLatin1Char('/'));
        const QString space = change.identifier.left(slash);
        const QString key = change.identifier.mid(slash + 1);
        const QByteArray type = typeBytes(key);
        bool ok = true;
        if (space == QLatin1String("mdta") && slash > 0 && !key.isEmpty()) {
            ok = changeQuickTimeMetadata(moov, key, change, error);
        } else if (space == QLatin1String("itsk") && !type.isEmpty()) {
            changeItunes(moov, type, change);
        } else if (space == QLatin1String("udta") && !type.isEmpty()) {
            changeUserData(moov, type, change);
        } else if (space == QLatin1String("uiso") && !type.isEmpty()) {
            ok = changeIsoUserData(moov, type, change, error);
        } else {
            *error = QStringLiteral("items of '%1' cannot be written").arg(change.identifier);
            ok = false;
        }
        if (!ok)
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
    RewriteReport report;
    FileByteSource source(sourcePath);
    if (!source.open(&report.error))
        return report;
    const BoxTree tree = readBoxTree(source);
    if (!tree.top("ftyp") && !tree.top("moov")) {
        report.error = QStringLiteral("the file is not an MP4 or QuickTime movie");
        return report;
    }
    report.error = rewriteRefusal(tree);
    if (!report.error.isEmpty())
        return report;
    std::size_t index = 0;
    while (index < tree.boxes.size() && !tree.boxes[index].is("moov"))
        ++index;
    if (index == tree.boxes.size()) {
        report.error = QStringLiteral("the file has no movie box");
        return report;
    }
    std::optional<BoxNode> moov = loadBoxNode(source, tree.boxes[index], kMaxMovieBox);
    if (!moov) {
        report.error = QStringLiteral("the movie box is too large to rebuild");
        return report;
    }
    if (!applyItemChanges(*moov, changes, &report.error) || (extra && !extra(*moov, &report.error)))
        return report;
    std::vector<TopLevelEdit> edits;
    edits.push_back({index, std::move(*moov)});
    if (xmp == FileLevelXmp::Blank) {
        // The XMP packet's registered 'uuid' type.
        static const QByteArray xmpUuid = QByteArray::fromHex("BE7ACFCB97A942E89C71999491E3AFAC");
        for (std::size_t i = 0; i < tree.boxes.size(); ++i) {
            const Box& box = tree.boxes[i];
            if (!box.is("uuid") || box.userType != xmpUuid)
                continue;
            if (box.size > kMaxMovieBox || box.size < 8) {
                report.error = QStringLiteral("the file's XMP box is too large to blank");
                return report;
            }
            edits.push_back({i, BoxNode::leaf("free", QByteArray(qsizetype(box.size - 8), '\0'))});
        }
    }
    return rewriteTopLevelBoxes(sourcePath, tree, std::move(edits), targetPath, durability);
}

}  // namespace pelorin
