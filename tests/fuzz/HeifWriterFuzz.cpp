// The HEIF metadata writer takes photos from anywhere: whatever the bytes, it either refuses or
// writes a file in which our reader finds exactly the metadata the editor asked for, and which
// libheif still opens whenever it opened the original. Every input goes through each kind of edit.
#include "isobmff/HeifMetadataRewrite.h"
#include "photo/HeifFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <tuple>
#include <vector>

using namespace pelorin;

namespace {

using Kind = HeifMetadataBlock::Kind;

enum class Edit { Flip, Truncate, Empty, AddXmp, ReplaceAll, Count };

const QByteArray kNewExif = QByteArrayLiteral("MM\x00\x2a\x00\x00\x00\x08\x00\x00\x00\x00\x00\x00\x00\x00");
const QByteArray kNewXmp = QByteArrayLiteral(
    "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'>"
    "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'/></x:xmpmeta><?xpacket end='w'?>");

// Changes the blocks as one kind of edit would; what comes back is what the output must hold.
void apply(Edit edit, std::vector<HeifMetadataBlock>& blocks)
{
    for (HeifMetadataBlock& block : blocks) {
        const bool exif = block.kind == Kind::Exif;
        switch (edit) {
        case Edit::Flip:
            if (exif && block.bytes.size() > 8)
                block.bytes[block.bytes.size() / 2 + 4] = char(~block.bytes[block.bytes.size() / 2 + 4]);
            else if (!exif)
                block.bytes.append("<!-- edited -->");
            break;
        case Edit::Truncate:
            if (exif)
                block.bytes.truncate(std::max<qsizetype>(8, block.bytes.size() / 2));
            break;
        case Edit::Empty:
            if (exif)
                block.bytes.clear();
            break;
        case Edit::ReplaceAll:
            block.bytes.clear();
            break;
        default:
            break;
        }
    }
    if (edit == Edit::AddXmp || edit == Edit::ReplaceAll) {
        HeifMetadataBlock xmp;
        xmp.kind = Kind::Xmp;
        xmp.bytes = kNewXmp;
        blocks.push_back(xmp);
    }
    if (edit == Edit::ReplaceAll) {
        HeifMetadataBlock exif;
        exif.kind = Kind::Exif;
        exif.bytes = kNewExif;
        blocks.push_back(exif);
    }
}

using Seen = std::vector<std::tuple<int, bool, QByteArray>>;

Seen seen(const std::vector<HeifMetadataBlock>& blocks)
{
    Seen result;
    for (const HeifMetadataBlock& block : blocks) {
        if (!block.bytes.isEmpty())
            result.emplace_back(int(block.kind), block.describesPrimary, block.bytes);
    }
    std::sort(result.begin(), result.end());
    return result;
}

void check(bool condition, const char* what, Edit edit)
{
    if (!condition) {
        std::fprintf(stderr, "%s (edit %d)\n", what, int(edit));
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static QTemporaryDir dir;
    const QString input = dir.filePath(QStringLiteral("input.heic"));
    const QString output = dir.filePath(QStringLiteral("output.heic"));
    {
        QFile file(input);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        file.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    const bool libheifReadsInput = readHeifMetadata(input).has_value();
    RewriteOutput options;
    options.durability = Durability::Deferred;
    for (int e = 0; e < int(Edit::Count); ++e) {
        const Edit edit = Edit(e);
        QFile::remove(output);
        Seen expected;
        const HeifRewriteReport report = rewriteHeifMetadata(
            input, output,
            [&](std::vector<HeifMetadataBlock>& blocks, QString*) {
                apply(edit, blocks);
                expected = seen(blocks);
                return true;
            },
            options);
        if (!report.written) {
            check(!QFile::exists(output), "a refused rewrite left a file behind", edit);
            continue;
        }
        QString error;
        const std::vector<HeifMetadataBlock> reread = readHeifMetadataBlocks(output, &error);
        check(error.isEmpty(), "the written file cannot be read again", edit);
        check(seen(reread) == expected, "the written file does not hold what the editor wrote", edit);

        const std::optional<HeifMetadata> heif = readHeifMetadata(output);
        check(heif || !libheifReadsInput, "libheif opened the original but not the output", edit);
        // libheif reports the first item of each kind, so the new ones only when nothing else
        // stayed; an item of no bytes does (to the editor it looks removed already).
        if (heif && edit == Edit::ReplaceAll && reread.size() == 2) {
            check(heif->exif == kNewExif, "libheif finds other Exif than the one written", edit);
            check(heif->xmp == kNewXmp, "libheif finds other XMP than the one written", edit);
        }
    }
    return 0;
}
