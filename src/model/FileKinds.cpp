#include "model/FileKinds.h"

#include <QFileInfo>

namespace pelorin {
namespace {

// Each list ends with an empty word. Duplicates stand as they are; the first position wins.
constexpr const char* kRawList[] = {
    "DNG", "CR2", "MOS", "3FR", "RW2", "RAW", "MRW", "RAF", "ORF",
    "",
};

constexpr const char* kImageList[] = {
    "HEIC", "HEIF", "3DM", "3DMF", "3DS", "3FR", "ABM", "AFX", "AI", "ANI", "ART", "ARW", "BLD",
    "BLEND", "BMP", "BOO", "BR5", "CDR", "CDR", "CDT", "CGM", "CIFF", "CLP", "CMX", "CONT", "CPT",
    "CR2", "CRW", "CUR", "CVX", "DCM", "DCR", "DCR", "DIB", "DNG", "DRW", "DS4", "DSC", "DT2",
    "DWF", "DWG", "EMF", "EMZ", "ERF", "FH8", "FLC", "FOV", "FPF", "FPX", "FUJI", "FXG", "GIF",
    "HDP", "HPI", "ICNS", "ICO", "IDML", "IFF", "IMG", "INX", "IPX", "ISD", "ITC2", "IV", "JP2",
    "JPEG", "JPG", "JPX", "K25", "KDC", "LBM", "MA", "MAX", "MB", "MDI", "MDL", "MDX", "MINO",
    "MNG", "MOS", "MRW", "MSP", "NCR", "NEF", "OBJ", "ORF", "PAL", "PAT", "PBM", "PCS", "PCT",
    "PCX", "PEF", "PGM", "PIC", "PICT", "PICTCLIPPING", "PNG", "PPM", "PSD", "PSP", "PSPIMGE",
    "PTX", "PXN", "QXD", "RAF", "RAS", "RAW", "RELS", "RGB", "RLE", "RTD", "RW2", "SCT", "SHP",
    "SKF", "SKP", "SR2", "SRF", "STP", "SVG", "SVGZ", "TEX", "TGA", "THM", "TIF", "TIFF", "VWX",
    "WB1", "WBC", "WBD", "WBMP", "WBZ", "WEBP", "WMF", "WP", "WPG", "X3F", "XBM", "XCF", "XPM",
    "XPS",
    // Photo kinds of newer phones and cameras, after the classic list so that its positions stay.
    "AVIF", "HIF", "CR3",
    "",
};

constexpr const char* kVideoList[] = {
    "HEVC", "3G2", "3GP", "ANM", "ASF", "ASX", "AVI", "AVS", "CLK", "CPI", "DIVX", "DMSM", "DREAM",
    "DVDMEDIA", "DVM", "DVR-MS", "DXR", "F4V", "FBR", "FLA", "FLV", "HDMOV", "M2P", "M2TS", "M4P",
    "M4V", "MKV", "MOD", "MOI", "MOV", "MP4", "MPE", "MPEG", "MPG", "MXF", "OGM", "PSH", "QT",
    "QTM", "RCPROJECT", "RM", "RMVB", "SCM", "SMIL", "SMJPEG", "SRT", "STX", "SWF", "TIX", "TS",
    "VOB", "VRO", "WMV", "WTV", "XVID", "YUV",
    "",
};

constexpr const char* kAudioList[] = {
    "OPUS", "AMR", "RAM", "RFL", "RMI", "RNS", "RPS", "SIB", "SND", "VPM", "WAV", "WMA", "AA3",
    "AAC", "AC3", "AFC", "AIF", "AIFF", "AM", "AT3", "AU", "AUD", "CAF", "CDA", "CPF", "DMSA",
    "DMSE", "DSS", "EMP", "EMX", "FLAC", "KPI", "M3D", "M4A", "M4R", "MID", "MIDI", "MP3", "OGG",
    "OMF", "PTF",
    "",
};

char asciiLower(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalsIgnoringAsciiCase(const char* a, const char* b)
{
    for (; *a && *b; ++a, ++b) {
        if (asciiLower(*a) != asciiLower(*b))
            return false;
    }
    return *a == *b;
}

const char* const* wordsOf(FileKindList list)
{
    switch (list) {
    case FileKindList::Raw: return kRawList;
    case FileKindList::Image: return kImageList;
    case FileKindList::Video: return kVideoList;
    case FileKindList::Audio: return kAudioList;
    }
    return kRawList;
}

std::int32_t positionIn(const char* const* words, const char* extension)
{
    if (!extension)
        return -1;
    for (std::int32_t i = 0; words[i][0] != '\0'; ++i) {
        if (equalsIgnoringAsciiCase(words[i], extension))
            return i;
    }
    return -1;
}

}  // namespace

std::int32_t GetImageType(const char* extension) { return positionIn(kRawList, extension); }
std::int32_t GetDragImageType(const char* extension) { return positionIn(kImageList, extension); }
std::int32_t GetViedoType(const char* extension) { return positionIn(kVideoList, extension); }
std::int32_t GetAudioType(const char* extension) { return positionIn(kAudioList, extension); }

std::int32_t kindPosition(FileKindList list, const QString& extension)
{
    const QByteArray utf8 = extension.toUtf8();
    return positionIn(wordsOf(list), utf8.constData());
}

QStringList kindListWords(FileKindList list)
{
    QStringList out;
    for (const char* const* w = wordsOf(list); (*w)[0] != '\0'; ++w)
        out << QString::fromLatin1(*w);
    return out;
}

QString pathExtension(const QString& path)
{
    const QString name = QFileInfo(path).fileName();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

}  // namespace pelorin
