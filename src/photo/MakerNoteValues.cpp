#include "photo/MakerNoteValues.h"

#include "photo/UnreadableExifEntries.h"

#include <QCryptographicHash>

#include <vector>

namespace pelorin {
namespace {

QString digestOf(const Exiv2::byte* data, long size)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(QByteArrayView(reinterpret_cast<const char*>(data), size), QCryptographicHash::Sha1)
            .toHex());
}

QString valueOf(const Exiv2::Exifdatum& d)
{
    if (d.sizeDataArea() > 0) {
        const Exiv2::DataBuf area = d.dataArea();
        return QStringLiteral("data ") + digestOf(area.pData_, area.size_);
    }
    const Exiv2::TypeId type = d.typeId();
    if (d.count() == 1 && (type == Exiv2::unsignedLong || type == Exiv2::signedLong || type == Exiv2::tiffIfd))
        return QStringLiteral("present");
    std::vector<Exiv2::byte> bytes(d.size());
    d.copy(bytes.data(), Exiv2::littleEndian);
    return digestOf(bytes.data(), long(bytes.size()));
}

QString lineOf(const Exiv2::Exifdatum& d, const QString& value)
{
    return QStringLiteral("%1 %2 %3 %4")
        .arg(QString::fromStdString(d.key()), QString::fromLatin1(d.typeName() ? d.typeName() : "?"))
        .arg(d.count())
        .arg(value);
}

}  // namespace

QStringList makerNoteValues(const Exiv2::ExifData& exif)
{
    QStringList lines;
    for (const Exiv2::Exifdatum& d : exif) {
        const std::string group = d.groupName();
        // The "MakerNote" group holds where exiv2 found the maker note, not what it says.
        if (group == "MakerNote" || !Exiv2::ExifTags::isMakerGroup(group) || !isTiffFieldType(d.typeId()))
            continue;
        lines << lineOf(d, valueOf(d));
    }
    if (lines.isEmpty()) {
        const auto raw = exif.findKey(Exiv2::ExifKey("Exif.Photo.MakerNote"));
        if (raw != exif.end())
            lines << lineOf(*raw, valueOf(*raw));
    }
    lines.sort();
    return lines;
}

bool sameCamera(const Exiv2::ExifData& a, const Exiv2::ExifData& b)
{
    for (const char* key : {"Exif.Image.Make", "Exif.Image.Model"}) {
        const auto x = a.findKey(Exiv2::ExifKey(key));
        const auto y = b.findKey(Exiv2::ExifKey(key));
        if ((x == a.end()) != (y == b.end()) || (x != a.end() && x->toString() != y->toString()))
            return false;
    }
    return true;
}

QString firstDifference(const QStringList& before, const QStringList& after)
{
    for (const QString& line : before) {
        if (!after.contains(line))
            return line;
    }
    for (const QString& line : after) {
        if (!before.contains(line))
            return line;
    }
    return {};
}

}  // namespace pelorin
