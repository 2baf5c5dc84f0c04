#include "isobmff/QuickTimeKeys.h"

#include <algorithm>
#include <cstring>

namespace pelorin {

namespace {

QByteArray bigEndian32(std::uint32_t value)
{
    QByteArray out;
    appendU32(out, value);
    return out;
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

    QStringList names() const
    {
        QStringList out;
        for (const QByteArray& entry : keys_) {
            if (entry.mid(4, 4) == "mdta")
                out.append(QString::fromUtf8(entry.mid(8)));
        }
        return out;
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

    void set(const QString& key, const QVariant& value, const QString& dataType)
    {
        qsizetype index = indexOf(key);
        if (index < 0) {
            const QByteArray name = key.toUtf8();
            keys_.append(bigEndian32(std::uint32_t(8 + name.size())) + "mdta" + name);
            index = keys_.size() - 1;
        }
        // The entry keeps its place in the list; a second entry of the same key goes.
        const std::uint32_t number = std::uint32_t(index + 1);
        BoxNode entry = BoxNode::parent(bigEndian32(number), {metadataDataBox(value, dataType)});
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
                entry.type = bigEndian32(old - 1);
        }
        store();
    }

private:
    void store() { keysBox_.payload = keysBox_.payload.left(4) + bigEndian32(std::uint32_t(keys_.size())) + keys_.join(); }

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
        if (holdsQuickTimeKeys(meta))
            metas.push_back(meta);
    }
    return metas;
}

}  // namespace

BoxNode metadataHandler(const char* kind)
{
    return BoxNode::leaf("hdlr", QByteArray(8, '\0') + kind + QByteArray(12, '\0') + QByteArray(1, '\0'));
}

// A 'data' box for a value: text, picture bytes, integer or real.
BoxNode metadataDataBox(const QVariant& value, const QString& dataType)
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
            bytes = bigEndian32(std::uint32_t(std::int32_t(number)));
        else
            bytes = bigEndian32(std::uint32_t(quint64(number) >> 32)) + bigEndian32(std::uint32_t(number));
        break;
    }
    case QMetaType::Double:
    case QMetaType::Float: {
        type = 24;
        const double real = value.toDouble();
        std::uint64_t raw;
        std::memcpy(&raw, &real, 8);
        bytes = bigEndian32(std::uint32_t(raw >> 32)) + bigEndian32(std::uint32_t(raw));
        break;
    }
    default:
        bytes = value.toString().toUtf8();
    }
    return BoxNode::leaf("data", bigEndian32(type) + bigEndian32(0) + bytes);
}

bool holdsQuickTimeKeys(const BoxNode* meta)
{
    return meta && meta->child("keys") && meta->child("ilst");
}

// A key is changed where the movie keeps it, so that it stays in one place: a new value goes
// into the table that already names the key (and leaves any other), else into the movie's one
// key table, and only a movie without any gets a new 'meta' box. A removal clears the key from
// every table, the tracks' included.
bool changeQuickTimeKey(BoxNode& moov, const QString& key, const std::optional<QVariant>& value,
                        const QString& dataType, QString* error)
{
    std::vector<BoxNode*> metas = keyMetas(moov, !value);
    if (metas.empty()) {
        if (!value)
            return true;
        if (moov.child("meta")) {
            *error = QStringLiteral("the movie's metadata box has no key table");
            return false;
        }
        moov.children.push_back(BoxNode::parent("meta", {metadataHandler("mdta"), BoxNode::leaf("keys", QByteArray(8, '\0')),
                                                         BoxNode::parent("ilst", {})}));
        metas = keyMetas(moov, false);
    }
    std::vector<KeyTable> tables;
    for (BoxNode* meta : metas) {
        tables.emplace_back(*meta);
        if (!tables.back().load(error))
            return false;
    }
    if (!value) {
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
    target.set(key, *value, dataType);
    return true;
}

QStringList quickTimeKeyNamesOf(const QByteArray& keys, bool* damaged)
{
    QStringList names;
    const std::uint32_t count = readU32(keys, 4);
    qsizetype at = 8;
    for (std::uint32_t i = 0; i < count && at + 8 <= keys.size(); ++i) {
        const std::uint32_t size = readU32(keys, at);
        if (size < 8 || size > keys.size() - at) {
            if (damaged)
                *damaged = true;
            break;
        }
        names.append(QString::fromUtf8(keys.mid(at + 8, size - 8)));
        at += size;
    }
    return names;
}

QStringList quickTimeKeyNames(BoxNode& moov)
{
    QStringList names;
    QString error;
    for (BoxNode* meta : keyMetas(moov, false)) {
        KeyTable table(*meta);
        if (table.load(&error))
            names += table.names();
    }
    return names;
}

}  // namespace pelorin
