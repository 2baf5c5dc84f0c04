#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

namespace pelorin {

// Kind tests by file-name extension. Each answers the extension's position in its list, or -1.
// The extension is passed as it stands in the file name (UTF-8, without the dot); letter case is
// folded in ASCII only, and the whole extension is compared ("ts.bak" is no kind at all).
std::int32_t GetImageType(const char* extension);      // camera RAW list
std::int32_t GetDragImageType(const char* extension);  // image list
std::int32_t GetViedoType(const char* extension);      // video list
std::int32_t GetAudioType(const char* extension);      // audio list

enum class FileKindList { Raw, Image, Video, Audio };

// Same tests for QString callers.
std::int32_t kindPosition(FileKindList list, const QString& extension);
inline bool isRawExtension(const QString& e) { return kindPosition(FileKindList::Raw, e) >= 0; }
inline bool isImageExtension(const QString& e) { return kindPosition(FileKindList::Image, e) >= 0; }
inline bool isVideoExtension(const QString& e) { return kindPosition(FileKindList::Video, e) >= 0; }
inline bool isAudioExtension(const QString& e) { return kindPosition(FileKindList::Audio, e) >= 0; }

// The words of a list in order, duplicates included, without the end marker.
QStringList kindListWords(FileKindList list);

// The extension of a path as the kind tests take it: everything after the last dot of the file
// name, empty when there is none.
QString pathExtension(const QString& path);

}  // namespace pelorin
