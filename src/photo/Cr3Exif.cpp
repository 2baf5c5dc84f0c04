#include "photo/Cr3Exif.h"

#include "photo/Exiv2Model.h"

#include <array>

namespace pelorin {
namespace {

// exiv2's group for the directory of each CMT box, in the order of Cr3Metadata::Stream.
constexpr std::array<const char*, 4> kGroups = {"Image", "Photo", "Canon", "GPSInfo"};
constexpr std::array<Cr3Metadata::Stream, 3> kWrittenStreams = {Cr3Metadata::Ifd0, Cr3Metadata::ExifIfd,
                                                                Cr3Metadata::GpsIfd};

const Exiv2::byte* bytesOf(const QByteArray& bytes)
{
    return reinterpret_cast<const Exiv2::byte*>(bytes.constData());
}

constexpr std::array<const char*, 4> kBoxes = {"CMT1", "CMT2", "CMT3", "CMT4"};

// The directory of one stream, under IFD0 keys as exiv2 decodes it. A CR3 directory points to
// no other; anything exiv2 finds beyond it is not of this box, and is only counted in more.
Exiv2::ByteOrder decodeStream(const QByteArray& stream, Exiv2::ExifData* directory, bool* more = nullptr)
{
    Exiv2::ExifData decoded;
    const Exiv2::ByteOrder order = Exiv2::ExifParser::decode(decoded, bytesOf(stream), uint32_t(stream.size()));
    for (const Exiv2::Exifdatum& d : decoded) {
        if (d.groupName() == "Image")
            directory->add(d);
        else if (more)
            *more = true;
    }
    return order;
}

// The entries of one group under IFD0 keys, ready to be encoded as a stream of their own.
Exiv2::ExifData directoryOf(const Exiv2::ExifData& exif, const char* group)
{
    Exiv2::ExifData directory;
    for (const Exiv2::Exifdatum& d : exif) {
        if (d.groupName() == group)
            directory.add(Exiv2::ExifKey(d.tag(), "Image"), &d.value());
    }
    return directory;
}

// A TIFF structure with one empty directory: the box stays, as Canon's readers expect it.
QByteArray emptyTiff(Exiv2::ByteOrder order)
{
    const bool little = order != Exiv2::bigEndian;
    QByteArray out = little ? QByteArray("II\x2A\0\x08\0\0\0", 8) : QByteArray("MM\0\x2A\0\0\0\x08", 8);
    out.append(QByteArray(6, '\0'));  // no entries, no next directory
    return out;
}

// exiv2 edits the stream in place where every value still fits, else writes it anew.
QByteArray encodeStream(const QByteArray& original, Exiv2::ByteOrder order, const Exiv2::ExifData& directory)
{
    if (directory.empty())
        return emptyTiff(order);
    QByteArray buffer(original.constData(), original.size());  // exiv2 writes into what it is given
    Exiv2::Blob blob;
    const Exiv2::WriteMethod method = Exiv2::ExifParser::encode(
        blob, buffer.isEmpty() ? nullptr : reinterpret_cast<const Exiv2::byte*>(buffer.constData()),
        uint32_t(buffer.size()), order, directory);
    if (method == Exiv2::wmNonIntrusive && !buffer.isEmpty())
        return buffer;
    return QByteArray(reinterpret_cast<const char*>(blob.data()), qsizetype(blob.size()));
}

QByteArray packetText(const QByteArray& packet)
{
    // Padding of zeros after the packet is no part of it.
    qsizetype end = packet.size();
    while (end > 0 && packet[end - 1] == '\0')
        --end;
    return packet.left(end);
}

QByteArray encodeXmp(const Exiv2::XmpData& xmp)
{
    std::string packet;
    if (!xmp.empty() && Exiv2::XmpParser::encode(packet, xmp, Exiv2::XmpParser::useCompactFormat) != 0)
        return {};
    if (packet.empty())
        return QByteArrayLiteral("<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?>"
                                 "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>\n<?xpacket end='w'?>");
    return QByteArray::fromStdString(packet);
}

// Whitespace before the packet's trailer, the place XMP keeps for growth, brings a packet to
// the size of the one it replaces, so that the boxes after it need not move.
QByteArray paddedTo(QByteArray packet, qsizetype size)
{
    const qsizetype trailer = packet.lastIndexOf("<?xpacket end");
    if (packet.size() >= size || trailer < 0)
        return packet;
    QByteArray padding(size - packet.size(), ' ');
    for (qsizetype i = 99; i < padding.size(); i += 100)
        padding[i] = '\n';
    padding[padding.size() - 1] = '\n';
    packet.insert(trailer, padding);
    return packet;
}

}  // namespace

bool decodeCr3Metadata(const Cr3Metadata& metadata, Cr3Exiv2Data* data, QString* error)
{
    data->exif.clear();
    data->xmp.clear();
    for (std::size_t n = 0; n < metadata.tiff.size(); ++n) {
        if (metadata.tiff[n].isEmpty())
            continue;
        Exiv2::ExifData directory;
        const Exiv2::ByteOrder order = decodeStream(metadata.tiff[n], &directory);
        if (n == Cr3Metadata::Ifd0 && order != Exiv2::invalidByteOrder)
            data->byteOrder = order;
        for (const Exiv2::Exifdatum& d : directory)
            data->exif.add(Exiv2::ExifKey(d.tag(), kGroups[n]), &d.value());
    }
    const QByteArray packet = packetText(metadata.xmp);
    if (!packet.trimmed().isEmpty() && Exiv2::XmpParser::decode(data->xmp, packet.toStdString()) != 0) {
        *error = QStringLiteral("the photo's XMP packet cannot be read");
        return false;
    }
    return true;
}

bool encodeCr3Metadata(const Cr3Exiv2Data& data, Cr3Metadata* metadata, QString* error)
{
    for (const Cr3Metadata::Stream n : kWrittenStreams) {
        QByteArray& stream = metadata->tiff[n];
        Exiv2::ExifData before;
        Exiv2::ByteOrder order = data.byteOrder;
        bool more = false;
        if (!stream.isEmpty()) {
            const Exiv2::ByteOrder found = decodeStream(stream, &before, &more);
            if (found != Exiv2::invalidByteOrder)
                order = found;
        }
        const Exiv2::ExifData after = directoryOf(data.exif, kGroups[n]);
        if (stream.isEmpty() && after.empty())
            continue;
        // A directory whose values did not change keeps its bytes as they are.
        if (!stream.isEmpty() && encodeStream({}, order, before) == encodeStream({}, order, after))
            continue;
        if (more) {
            *error = QStringLiteral("the '%1' box holds more than its own directory, which a rewrite would lose")
                         .arg(QLatin1String(kBoxes[n]));
            return false;
        }
        stream = encodeStream(stream, order, after);
    }
    Exiv2::XmpData before;
    const QByteArray packet = packetText(metadata->xmp);
    const bool readable = packet.trimmed().isEmpty() || Exiv2::XmpParser::decode(before, packet.toStdString()) == 0;
    const QByteArray after = encodeXmp(data.xmp);
    if (metadata->xmp.isEmpty() ? data.xmp.empty() : readable && after == encodeXmp(before))
        return true;
    metadata->xmp = paddedTo(after, metadata->xmp.size());
    return true;
}

bool readCr3Properties(const QByteArray& bytes, QVariantMap* properties, QString* error)
{
    MemoryByteSource source(bytes);
    const std::optional<Cr3Metadata> metadata = readCr3Metadata(source, error);
    Cr3Exiv2Data data;
    if (!metadata || !decodeCr3Metadata(*metadata, &data, error))
        return false;
    exiv2_model::readExif(data.exif, properties);
    exiv2_model::readXmp(data.xmp, properties);
    return true;
}

}  // namespace pelorin
