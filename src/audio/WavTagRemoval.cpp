#include "audio/WavTagRemoval.h"

namespace pelorin::taglib {
namespace {

// The fixed part of a 'bext' chunk (EBU Tech 3285); the coding history follows it.
constexpr unsigned int kBextFixed = 602;
// Description 256, originator 32, originator reference 32, date 10, time 8.
constexpr unsigned int kBextTextsEnd = 338;
// Behind the time reference (8) and the version (2): the UMID.
constexpr unsigned int kUmidBegin = 348;
constexpr unsigned int kUmidEnd = 412;

TagLib::ByteVector blankedBext(const TagLib::ByteVector& bext)
{
    TagLib::ByteVector kept = bext.mid(0, kBextFixed);
    for (unsigned int i = 0; i < kept.size(); ++i)
        if (i < kBextTextsEnd || (i >= kUmidBegin && i < kUmidEnd))
            kept[i] = '\0';
    return kept;
}

}  // namespace

void removeWavDescriptiveChunks(WavChunkFile& wav)
{
    for (unsigned int i = 0; i < wav.count(); ++i)
        if (wav.name(i) == "bext")
            wav.set(i, blankedBext(wav.data(i)));
    wav.remove("_PMX");
    wav.remove("cart");
}

}  // namespace pelorin::taglib
