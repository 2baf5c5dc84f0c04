#pragma once
// TagLib stays inside src/audio: only its .cpp files include this header.
#include "audio/AudioContainer.h"

#include <taglib/aifffile.h>
#include <taglib/wavfile.h>
#include <taglib/tfile.h>
#include <taglib/tiostream.h>
#include <taglib/tstring.h>

#include <QByteArray>
#include <QString>
#include <memory>

namespace pelorin::taglib {

// Opens the TagLib class for a container on a stream; null for containers TagLib does not
// handle (CAF, Unknown).
std::unique_ptr<TagLib::File> openFile(AudioContainer container, TagLib::IOStream* stream);

// AIFF text chunks (NAME, AUTH, "(c) ", ANNO) through TagLib's chunk API.
class AiffChunkFile : public TagLib::RIFF::AIFF::File {
public:
    using TagLib::RIFF::AIFF::File::File;
    unsigned int count() { return chunkCount(); }
    TagLib::ByteVector name(unsigned int i) { return chunkName(i); }
    TagLib::ByteVector data(unsigned int i) { return chunkData(i); }
    void set(const TagLib::ByteVector& chunk, const TagLib::ByteVector& bytes)
    {
        setChunkData(chunk, bytes);
    }
    void remove(const TagLib::ByteVector& chunk) { removeChunk(chunk); }
};

// A WAV file's chunks beside its tags (Broadcast Wave 'bext', XMP '_PMX', 'cart').
class WavChunkFile : public TagLib::RIFF::WAV::File {
public:
    using TagLib::RIFF::WAV::File::File;
    unsigned int count() { return chunkCount(); }
    TagLib::ByteVector name(unsigned int i) { return chunkName(i); }
    TagLib::ByteVector data(unsigned int i) { return chunkData(i); }
    void set(unsigned int i, const TagLib::ByteVector& bytes) { setChunkData(i, bytes); }
    void remove(const TagLib::ByteVector& chunk) { removeChunk(chunk); }
};

inline QString toQString(const TagLib::String& s) { return QString::fromStdWString(s.toWString()); }
inline TagLib::String toTString(const QString& s) { return TagLib::String(s.toStdWString()); }
inline QByteArray toBytes(const TagLib::ByteVector& v)
{
    return QByteArray(v.data(), static_cast<qsizetype>(v.size()));
}
inline TagLib::ByteVector toVector(const QByteArray& b)
{
    return TagLib::ByteVector(b.constData(), static_cast<unsigned int>(b.size()));
}
// Chunk text: UTF-8 when it is valid UTF-8, else Latin-1.
QString decodeChunkText(const QByteArray& bytes);

}  // namespace pelorin::taglib
