#include "photo/UntouchedMetadata.h"

#include "photo/JpegSegments.h"

#include <QList>
#include <QRegularExpression>
#include <QString>

#include <cstring>

namespace pelorin {
namespace {

const QByteArray kPhotoshopSignature("Photoshop 3.0\0", 14);

struct Span {
    qsizetype start = 0;
    qsizetype end = 0;
};

// The Photoshop segments of a JPEG and where the first segment after its application
// segments starts; false when the header cannot be followed.
bool photoshopSpans(const QByteArray& jpeg, QList<Span>* spans, qsizetype* afterApplicationSegments)
{
    *afterApplicationSegments = -1;
    const qsizetype stop = forEachJpegSegment(jpeg, [&](const JpegSegment& s) {
        if (s.marker == 0xED && jpeg.mid(s.payload, kPhotoshopSignature.size()) == kPhotoshopSignature)
            spans->append({s.start, s.end()});
        if (*afterApplicationSegments < 0 && !(s.marker >= 0xE0 && s.marker <= 0xEF) && s.marker != 0xFE)
            *afterApplicationSegments = s.start;
        return true;
    });
    if (stop <= 0 || stop + 1 >= jpeg.size() || quint8(jpeg[stop]) != 0xFF || quint8(jpeg[stop + 1]) != 0xDA)
        return false;
    if (*afterApplicationSegments < 0)
        *afterApplicationSegments = stop;
    return true;
}

// The namespace declarations (prefix, URI) of a packet, in either quoting.
QList<std::pair<QString, QString>> namespaceDeclarations(const QString& packet)
{
    static const QRegularExpression declaration(QStringLiteral(R"(xmlns:([A-Za-z_][\w.-]*)\s*=\s*(["'])([^"']*)\2)"));
    QList<std::pair<QString, QString>> found;
    for (auto it = declaration.globalMatch(packet); it.hasNext();) {
        const auto match = it.next();
        found.append({match.captured(1), match.captured(3)});
    }
    return found;
}

}  // namespace

std::string withSourceNamespaceUris(const std::string& packet, const std::string& sourcePacket)
{
    QString out = QString::fromStdString(packet);
    for (const auto& [prefix, uri] : namespaceDeclarations(QString::fromStdString(sourcePacket))) {
        if (uri.isEmpty() || uri.endsWith(QLatin1Char('/')) || uri.endsWith(QLatin1Char('#')))
            continue;
        for (const QChar quote : {QLatin1Char('"'), QLatin1Char('\'')}) {
            const QString written = QStringLiteral("xmlns:%1=%2%3/%2").arg(prefix, quote, uri);
            out.replace(written, QStringLiteral("xmlns:%1=%2%3%2").arg(prefix, quote, uri));
        }
    }
    return out.toStdString();
}

std::optional<std::string> rawJpegXmpPacket(const QByteArray& jpeg)
{
    static const QByteArray main("http://ns.adobe.com/xap/1.0/\0", 29);
    static const QByteArray extension("http://ns.adobe.com/xmp/extension/\0", 35);
    std::optional<std::string> packet;
    bool extended = false;
    forEachJpegSegment(jpeg, [&](const JpegSegment& s) {
        if (s.marker != 0xE1)
            return true;
        if (!packet && s.length > main.size() && jpeg.mid(s.payload, main.size()) == main)
            packet = jpeg.mid(s.payload + main.size(), s.length - main.size()).toStdString();
        else if (jpeg.mid(s.payload, extension.size()) == extension)
            extended = true;
        return true;
    });
    return extended ? std::nullopt : packet;
}

std::optional<std::string> writtenXmp(const Exiv2::XmpData& xmp)
{
    std::string packet;
    try {
        if (Exiv2::XmpParser::encode(packet, xmp, Exiv2::XmpParser::useCompactFormat | Exiv2::XmpParser::omitAllFormatting) > 1)
            return std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return packet;
}

bool sameIptc(const Exiv2::IptcData& a, const Exiv2::IptcData& b)
{
    if (a.count() != b.count())
        return false;
    const Exiv2::DataBuf first = Exiv2::IptcParser::encode(a);
    const Exiv2::DataBuf second = Exiv2::IptcParser::encode(b);
    return first.size_ == second.size_ && (first.size_ == 0 || std::memcmp(first.pData_, second.pData_, size_t(first.size_)) == 0);
}

QByteArray jpegWithPhotoshopSegmentsOf(const QByteArray& source, const QByteArray& output)
{
    QList<Span> fromSource;
    QList<Span> inOutput;
    qsizetype sourceInsert = 0;
    qsizetype outputInsert = 0;
    if (!photoshopSpans(source, &fromSource, &sourceInsert) || !photoshopSpans(output, &inOutput, &outputInsert)
        || fromSource.isEmpty())
        return output;
    QByteArray segments;
    for (const Span& s : fromSource)
        segments += source.mid(s.start, s.end - s.start);
    QByteArray out = output;
    qsizetype at = inOutput.isEmpty() ? outputInsert : inOutput.first().start;
    for (auto s = inOutput.crbegin(); s != inOutput.crend(); ++s)
        out.remove(s->start, s->end - s->start);
    out.insert(at, segments);
    return out;
}

}  // namespace pelorin
