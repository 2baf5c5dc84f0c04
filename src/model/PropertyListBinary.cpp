// Reader of binary property lists ("bplist00"): a header, objects, a table of object offsets and
// a 32-byte trailer. Objects refer to each other by index, so a hostile file can form cycles or
// refer to one object from everywhere; both are bounded here (path check, value count).
#include "model/PropertyList.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace pelorin::plist_detail {
namespace {

constexpr qint64 kHeaderSize = 8;
constexpr qint64 kTrailerSize = 32;

class BinaryReader {
public:
    explicit BinaryReader(const QByteArray& bytes)
        : data_(reinterpret_cast<const unsigned char*>(bytes.constData())), size_(bytes.size())
    {
    }

    PropertyListResult read()
    {
        if (!readTrailer())
            return {std::nullopt, error_};
        QVariant value;
        if (!readObject(top_, 0, &value))
            return {std::nullopt, error_};
        return {value, {}};
    }

private:
    bool fail(const char* why)
    {
        error_ = QStringLiteral("the binary property list is damaged: ") + QString::fromLatin1(why);
        return false;
    }

    // Big-endian unsigned integer of 1 to 8 bytes, inside [begin, end).
    bool readUInt(qint64 pos, int width, qint64 end, quint64* out) const
    {
        if (width < 1 || width > 8 || pos < 0 || pos > end - width)
            return false;
        quint64 v = 0;
        for (int i = 0; i < width; ++i)
            v = (v << 8) | data_[pos + i];
        *out = v;
        return true;
    }

    bool readTrailer()
    {
        if (size_ < kHeaderSize + 1 + kTrailerSize || std::memcmp(data_, "bplist00", 8) != 0)
            return fail("no header or trailer");
        const qint64 t = size_ - kTrailerSize;
        offsetSize_ = data_[t + 6];
        refSize_ = data_[t + 7];
        quint64 count = 0, top = 0, table = 0;
        readUInt(t + 8, 8, size_, &count);
        readUInt(t + 16, 8, size_, &top);
        readUInt(t + 24, 8, size_, &table);
        if (offsetSize_ < 1 || offsetSize_ > 8 || refSize_ < 1 || refSize_ > 8)
            return fail("bad integer sizes");
        if (count == 0 || top >= count)
            return fail("bad object count");
        // The table lies between the objects and the trailer; this also bounds the count.
        if (table < quint64(kHeaderSize + 1) || table >= quint64(t)
            || count > (quint64(t) - table) / quint64(offsetSize_))
            return fail("bad offset table");
        count_ = count;
        top_ = top;
        objectsEnd_ = static_cast<qint64>(table);
        table_ = static_cast<qint64>(table);
        onPath_.assign(count_, 0);
        // Every value is reached through a reference of at least one byte, so a list whose
        // values outnumber its bytes many times over shares containers to blow itself up.
        maxValues_ = std::min<qint64>(kMaxValues, std::max<qint64>(4096, 8 * size_));
        return true;
    }

    bool objectOffset(quint64 index, qint64* offset)
    {
        quint64 off = 0;
        if (index >= count_
            || !readUInt(table_ + qint64(index) * offsetSize_, offsetSize_, size_ - kTrailerSize, &off))
            return fail("bad object reference");
        if (off < quint64(kHeaderSize) || off >= quint64(objectsEnd_))
            return fail("object outside the object area");
        *offset = static_cast<qint64>(off);
        return true;
    }

    // Element count of a data, string or collection object, and where its content starts.
    bool readCount(qint64 off, int info, qint64* count, qint64* start)
    {
        if (info != 0xF) {
            *count = info;
            *start = off + 1;
            return true;
        }
        if (off + 1 >= objectsEnd_)
            return fail("count outside the object area");
        const unsigned char marker = data_[off + 1];
        const int width = 1 << (marker & 0xF);
        quint64 v = 0;
        if ((marker >> 4) != 0x1 || width > 8 || !readUInt(off + 2, width, objectsEnd_, &v))
            return fail("bad count");
        if (v > quint64(objectsEnd_))
            return fail("count larger than the file");
        *count = static_cast<qint64>(v);
        *start = off + 2 + width;
        return true;
    }

    bool fits(qint64 start, qint64 count, qint64 elementSize) const
    {
        return start <= objectsEnd_ && count <= (objectsEnd_ - start) / elementSize;
    }

    bool readObject(quint64 index, int depth, QVariant* out)
    {
        if (depth > kMaxDepth)
            return fail("nested too deeply");
        if (++values_ > maxValues_)
            return fail("objects are shared too often");
        if (index >= count_)
            return fail("bad object reference");
        if (onPath_[index])
            return fail("an object contains itself");
        qint64 off = 0;
        if (!objectOffset(index, &off))
            return false;
        onPath_[index] = 1;
        const bool ok = readObjectAt(off, depth, out);
        onPath_[index] = 0;
        return ok;
    }

    bool readObjectAt(qint64 off, int depth, QVariant* out)
    {
        const unsigned char marker = data_[off];
        const int type = marker >> 4;
        const int info = marker & 0xF;
        switch (type) {
        case 0x0:
            if (info == 0x8 || info == 0x9) {
                *out = QVariant(info == 0x9);
                return true;
            }
            return fail("null or fill value");
        case 0x1:
            return readInteger(off, info, out);
        case 0x2: {
            quint64 bits = 0;
            if (info == 2 && readUInt(off + 1, 4, objectsEnd_, &bits)) {
                float f;
                const quint32 b32 = static_cast<quint32>(bits);
                std::memcpy(&f, &b32, 4);
                *out = QVariant(static_cast<double>(f));
                return true;
            }
            if (info == 3 && readUInt(off + 1, 8, objectsEnd_, &bits)) {
                double d;
                std::memcpy(&d, &bits, 8);
                *out = QVariant(d);
                return true;
            }
            return fail("bad real");
        }
        case 0x3: {
            quint64 bits = 0;
            if (info != 3 || !readUInt(off + 1, 8, objectsEnd_, &bits))
                return fail("bad date");
            double seconds;
            std::memcpy(&seconds, &bits, 8);
            // Years 1 to 9999 lie within +-3.2e11 seconds of 2001.
            if (!std::isfinite(seconds) || std::fabs(seconds) > 3.2e11)
                return fail("date out of range");
            const qint64 ms = std::llround(seconds * 1000.0) + kEpochOffset * 1000;
            const QDateTime date = QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
            if (!date.isValid() || date.date().year() < 1 || date.date().year() > 9999)
                return fail("date out of range");
            *out = QVariant(date);
            return true;
        }
        case 0x4:
        case 0x5:
        case 0x6: {
            qint64 count = 0, start = 0;
            if (!readCount(off, info, &count, &start))
                return false;
            const qint64 unit = type == 0x6 ? 2 : 1;
            if (!fits(start, count, unit))
                return fail("text or data runs past the object area");
            const char* p = reinterpret_cast<const char*>(data_ + start);
            if (type == 0x4) {
                *out = QVariant(QByteArray(p, count));
            } else if (type == 0x5) {
                *out = QVariant(QString::fromLatin1(p, count));
            } else {
                QString text(count, Qt::Uninitialized);
                for (qint64 i = 0; i < count; ++i)
                    text[i] = QChar(char16_t((data_[start + 2 * i] << 8) | data_[start + 2 * i + 1]));
                *out = QVariant(text);
            }
            return true;
        }
        case 0x8: {
            quint64 uid = 0;
            if (!readUInt(off + 1, info + 1, objectsEnd_, &uid))
                return fail("bad UID");
            // As property-list tools show it in XML.
            *out = QVariant(QVariantMap{{QStringLiteral("CF$UID"), QVariant(qulonglong(uid))}});
            return true;
        }
        case 0xA:
        case 0xC:
        case 0xD: {
            qint64 count = 0, start = 0;
            if (!readCount(off, info, &count, &start))
                return false;
            const qint64 refs = type == 0xD ? 2 : 1;
            if (!fits(start, count, refSize_ * refs))
                return fail("collection runs past the object area");
            if (type == 0xD)
                return readDictionary(start, count, depth, out);
            QVariantList list;
            list.reserve(count);
            for (qint64 i = 0; i < count; ++i) {
                quint64 ref = 0;
                readUInt(start + i * refSize_, refSize_, objectsEnd_, &ref);
                QVariant item;
                if (!readObject(ref, depth + 1, &item))
                    return false;
                list.append(item);
            }
            *out = QVariant(list);
            return true;
        }
        default:
            return fail("unknown object type");
        }
    }

    bool readInteger(qint64 off, int info, QVariant* out)
    {
        if (info > 4)
            return fail("bad integer");
        const int width = 1 << info;
        if (width <= 8) {
            quint64 v = 0;
            if (!readUInt(off + 1, width, objectsEnd_, &v))
                return fail("bad integer");
            // Eight-byte integers are signed; shorter ones are unsigned.
            *out = QVariant(static_cast<qlonglong>(v));
            return true;
        }
        quint64 high = 0, low = 0;
        if (!readUInt(off + 1, 8, objectsEnd_, &high) || !readUInt(off + 9, 8, objectsEnd_, &low))
            return fail("bad integer");
        if (high == 0) {
            if (low <= quint64(std::numeric_limits<qint64>::max()))
                *out = QVariant(static_cast<qlonglong>(low));
            else
                *out = QVariant(static_cast<qulonglong>(low));
            return true;
        }
        if (high == ~quint64(0) && (low >> 63) == 1) {
            *out = QVariant(static_cast<qlonglong>(low));
            return true;
        }
        return fail("integer beyond 64 bits");
    }

    bool readDictionary(qint64 start, qint64 count, int depth, QVariant* out)
    {
        QVariantMap map;
        for (qint64 i = 0; i < count; ++i) {
            quint64 keyRef = 0, valueRef = 0;
            readUInt(start + i * refSize_, refSize_, objectsEnd_, &keyRef);
            readUInt(start + (count + i) * refSize_, refSize_, objectsEnd_, &valueRef);
            QVariant key, value;
            if (!readObject(keyRef, depth + 1, &key))
                return false;
            if (key.typeId() != QMetaType::QString)
                return fail("dictionary key is not a string");
            if (!readObject(valueRef, depth + 1, &value))
                return false;
            map.insert(key.toString(), value);
        }
        *out = QVariant(map);
        return true;
    }

    const unsigned char* data_;
    qint64 size_;
    int offsetSize_ = 0;
    int refSize_ = 0;
    quint64 count_ = 0;
    quint64 top_ = 0;
    qint64 table_ = 0;
    qint64 objectsEnd_ = 0;
    qint64 values_ = 0;
    qint64 maxValues_ = 0;
    std::vector<unsigned char> onPath_;
    QString error_;
};

}  // namespace

PropertyListResult readBinary(const QByteArray& bytes)
{
    return BinaryReader(bytes).read();
}

}  // namespace pelorin::plist_detail
