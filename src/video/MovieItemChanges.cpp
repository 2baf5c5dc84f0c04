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

bool changeQuickTimeMetadata(BoxNode& moov, const QString& key, const ItemChange& change, QString* error);

bool holdsKeys(const BoxNode* meta)
{
    return meta && meta->child("keys") && meta->child("ilst");
}

// The key FFmpeg gives an iTunes atom in a QuickTime key table; empty for atoms without one.
QString keyForAtom(const QByteArray& type)
{
    static const std::pair<const char*, const char*> kKeys[] = {
        {"\251nam", "title"},   {"\251ART", "artist"},      {"\251alb", "album"},
        {"\251cmt", "comment"}, {"\251des", "description"}, {"cprt", "copyright"},
        {"\251day", "date"},    {"\251gen", "genre"},       {"\251pub", "publisher"},
        {"aART", "album_artist"}, {"\251wrt", "composer"},   {"\251too", "encoder"},
        {"covr", "com.apple.quicktime.artwork"},
    };
    for (const auto& [atom, key] : kKeys) {
        if (type == atom)
            return QString::fromLatin1(key);
    }
    return {};
}

// iTunes atoms live in udta/meta/ilst. Where that 'meta' holds QuickTime keys instead (FFmpeg's
// use_metadata_tags writes it so), an iTunes atom cannot go into it: the item goes in as the
// key FFmpeg would have used.
bool changeItunes(BoxNode& moov, const QByteArray& type, const ItemChange& change, QString* error)
{
    if (const BoxNode* userData = moov.child("udta"); userData && holdsKeys(userData->child("meta"))) {
        const QString key = keyForAtom(type);
        if (!key.isEmpty())
            return changeQuickTimeMetadata(moov, key, change, error);
        if (!change.value)
            return true;
        *error = QStringLiteral("the movie keeps its metadata as QuickTime keys, which have no place for '%1'")
                     .arg(boxTypeName(type));
        return false;
    }
    BoxNode& udta = childOrNew(moov, BoxNode::parent("udta", {}));
    BoxNode& meta = childOrNew(udta, BoxNode::parent("meta", {handler("mdir")}, QByteArray(4, '\0')));
    BoxNode& ilst = childOrNew(meta, BoxNode::parent("ilst", {}));
    ilst.removeChildren(type);
    if (change.value)
        ilst.children.push_back(BoxNode::parent(type, {dataBox(*change.value, change.dataType)}));
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

// The key table of a QuickTime 'meta' box: 'keys' names the 'ilst' entries by one-based index.
class KeyTable {
public:
    explicit KeyTable(BoxNode& meta) : keysBox_(*meta.child("keys")), ilst_(*meta.child("ilst")) {}

    bool load(QString* error)
    {
        const QByteArray& table = keysBox_.payload;
        qsizetype at = 8;
        for (std::uint32_t i = 0; i < readU32(table, 4); ++i) {
            const std::uint32_t size = readU32(table, at);
            if (size < 8 || at + size > table.size()) {
                *error = QStringLiteral("the movie's key table is damaged");
                return false;
            }
            keys_.append(table.mid(at, size));
            at += size;
        }
        return true;
    }

    qsizetype indexOf(const QString& key) const
    {
        const QByteArray wanted = key.toUtf8();
        for (qsizetype i = 0; i < keys_.size(); ++i) {
            if (keys_[i].mid(8) == wanted && keys_[i].mid(4, 4) == "mdta")
                return i;
        }
        return -1;
    }

    void set(const QString& key, const ItemChange& change)
    {
        qsizetype index = indexOf(key);
        if (index < 0) {
            const QByteArray name = key.toUtf8();
            keys_.append(u32(std::uint32_t(8 + name.size())) + "mdta" + name);
            index = keys_.size() - 1;
        }
        // The entry keeps its place in the list; a second entry of the same key goes.
        const std::uint32_t number = std::uint32_t(index + 1);
        BoxNode entry = BoxNode::parent(u32(number), {dataBox(*change.value, change.dataType)});
        const auto same = [&](const BoxNode& node) { return readU32(node.type, 0) == number; };
        const auto first = std::find_if(ilst_.children.begin(), ilst_.children.end(), same);
        if (first == ilst_.children.end()) {
            ilst_.children.push_back(std::move(entry));
        } else {
            *first = std::move(entry);
            ilst_.children.erase(std::remove_if(first + 1, ilst_.children.end(), same), ilst_.children.end());
        }
        store();
    }

    // Removing a key renumbers the entries after it.
    void remove(const QString& key)
    {
        const qsizetype index = indexOf(key);
        if (index < 0)
            return;
        const std::uint32_t number = std::uint32_t(index + 1);
        std::erase_if(ilst_.children, [&](const BoxNode& entry) { return readU32(entry.type, 0) == number; });
        keys_.removeAt(index);
        for (BoxNode& entry : ilst_.children) {
            const std::uint32_t old = readU32(entry.type, 0);
            if (old > number)
                entry.type = u32(old - 1);
        }
        store();
    }

private:
    void store() { keysBox_.payload = keysBox_.payload.left(4) + u32(std::uint32_t(keys_.size())) + keys_.join(); }

    BoxNode& keysBox_;
    BoxNode& ilst_;
    QList<QByteArray> keys_;
};

// The 'meta' boxes with QuickTime keys of the movie itself: in the movie box and in its user
// data. With tracks, the tracks' own as well.
std::vector<BoxNode*> keyMetas(BoxNode& moov, bool withTracks)
{
    std::vector<BoxNode*> metas;
    for (BoxNode& child : moov.children) {
        BoxNode* meta = nullptr;
        if (child.type == "meta")
            meta = &child;
        else if (child.type == "udta" || (withTracks && child.type == "trak"))
            meta = child.child("meta");
        if (holdsKeys(meta))
            metas.push_back(meta);
    }
    return metas;
}

// A key is changed where the movie keeps it, so that it stays in one place: a new value goes
// into the table that already names the key (and leaves any other), else into the movie's one
// key table, and only a movie without any gets a new 'meta' box. A removal clears the key from
// every table, the tracks' included.
bool changeQuickTimeMetadata(BoxNode& moov, const QString& key, const ItemChange& change, QString* error)
{
    std::vector<BoxNode*> metas = keyMetas(moov, !change.value);
    if (metas.empty()) {
        if (!change.value)
            return true;
        if (moov.child("meta")) {
            *error = QStringLiteral("the movie's metadata box has no key table");
            return false;
        }
        moov.children.push_back(BoxNode::parent("meta", {handler("mdta"), BoxNode::leaf("keys", QByteArray(8, '\0')),
                                                         BoxNode::parent("ilst", {})}));
        metas = keyMetas(moov, false);
    }
    std::vector<KeyTable> tables;
    for (BoxNode* meta : metas) {
        tables.emplace_back(*meta);
        if (!tables.back().load(error))
            return false;
    }
    if (!change.value) {
        for (KeyTable& table : tables)
            table.remove(key);
        return true;
    }
    const auto home = std::find_if(tables.begin(), tables.end(), [&](const KeyTable& t) { return t.indexOf(key) >= 0; });
    KeyTable& target = home == tables.end() ? tables.front() : *home;
    for (KeyTable& table : tables) {
        if (&table != &target)
            table.remove(key);
    }
    target.set(key, change);
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
            ok = changeItunes(moov, type, change, error);
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
