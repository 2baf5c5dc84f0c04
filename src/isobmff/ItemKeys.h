#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <optional>

namespace pelorin {

// The places where an ISO base media file keeps metadata items, each with its own kind of key.
// Items name them by a short prefix of their identifier: "itsk/%A9nam", "udta/%A9nam",
// "mdta/com.apple.quicktime.title", "uiso/titl".
enum class ItemKeySpace {
    ITunes,         // "itsk": atoms of an iTunes item list (udta/meta/ilst), four-byte types
    UserData,       // "udta": QuickTime user-data atoms, four-byte types
    QuickTimeKeys,  // "mdta": entries of a QuickTime key table, named by text
    IsoUserData,    // "uiso": 3GPP and ISO user-data boxes, four-byte types
};

QLatin1String keySpaceName(ItemKeySpace space);
std::optional<ItemKeySpace> keySpaceNamed(QStringView name);

// A key as an item spells it: a four-byte type with '%' and every byte outside printable ASCII
// as %XX ("\251nam" gives "%A9nam"); a QuickTime key as its text.
QString itemKeyText(ItemKeySpace space, QByteArrayView key);

// The identifier of an item: "itsk/%A9nam", "mdta/com.apple.quicktime.title", ...
QString itemIdentifier(ItemKeySpace space, QByteArrayView key);

// "%A9nam" back to its four type bytes; empty when the text names no four-byte type.
QByteArray atomTypeOfKeyText(QStringView keyText);

// The QuickTime key FFmpeg gives an iTunes atom when it keeps a file's metadata as keys
// (use_metadata_tags); empty for atoms it has no key for.
QString ffmpegKeyOfItunesAtom(QByteArrayView type);

// True for the 3GPP and ISO user-data boxes that hold metadata items.
bool isThreeGppUserDataBox(QByteArrayView type);

// Atoms of an iTunes item list.
namespace itunesAtom {
inline constexpr char title[] = "\251nam";
inline constexpr char subtitle[] = "\251st3";
inline constexpr char artist[] = "\251ART";
inline constexpr char album[] = "\251alb";
inline constexpr char albumArtist[] = "aART";
inline constexpr char composer[] = "\251wrt";
inline constexpr char lyrics[] = "\251lyr";
inline constexpr char comment[] = "\251cmt";
inline constexpr char description[] = "\251des";
inline constexpr char genre[] = "\251gen";
inline constexpr char date[] = "\251day";
inline constexpr char trackNumber[] = "trkn";
inline constexpr char discNumber[] = "disk";
inline constexpr char tempo[] = "tmpo";
inline constexpr char copyright[] = "cprt";
inline constexpr char publisher[] = "\251pub";
inline constexpr char director[] = "\251dir";
inline constexpr char performer[] = "\251prf";
inline constexpr char producer[] = "\251prd";
inline constexpr char artwork[] = "covr";
inline constexpr char encoder[] = "\251too";
inline constexpr char freeform[] = "----";
inline constexpr char mediaKind[] = "stik";
inline constexpr char highDefinition[] = "hdvd";
inline constexpr char gapless[] = "pgap";
// A free-form item ("----" with a mean and a name) of the recording date, as several taggers write it.
inline constexpr char recordingDate[] = "----:com.apple.iTunes:RECORDINGDATE";
}  // namespace itunesAtom

// QuickTime user-data atoms.
namespace userDataAtom {
inline constexpr char title[] = "\251nam";
inline constexpr char artist[] = "\251ART";
inline constexpr char album[] = "\251alb";
inline constexpr char composer[] = "\251com";
inline constexpr char copyright[] = "\251cpy";
inline constexpr char keywords[] = "\251key";
inline constexpr char description[] = "\251des";
inline constexpr char date[] = "\251day";
inline constexpr char location[] = "\251xyz";  // ISO 6709 text without altitude
inline constexpr char encoder[] = "\251too";
inline constexpr char software[] = "\251swr";
inline constexpr char format[] = "\251fmt";
inline constexpr char encodedBy[] = "\251enc";
inline constexpr char make[] = "\251mak";
inline constexpr char model[] = "\251mod";
inline constexpr char hostComputer[] = "\251hst";
inline constexpr char requirements[] = "\251req";
inline constexpr char xmp[] = "XMP_";
}  // namespace userDataAtom

// Apple's QuickTime keys.
namespace appleKey {
inline constexpr char title[] = "com.apple.quicktime.title";
inline constexpr char artist[] = "com.apple.quicktime.artist";
inline constexpr char album[] = "com.apple.quicktime.album";
inline constexpr char artwork[] = "com.apple.quicktime.artwork";
inline constexpr char comment[] = "com.apple.quicktime.comment";
inline constexpr char description[] = "com.apple.quicktime.description";
inline constexpr char keywords[] = "com.apple.quicktime.keywords";
inline constexpr char copyright[] = "com.apple.quicktime.copyright";
inline constexpr char publisher[] = "com.apple.quicktime.publisher";
inline constexpr char director[] = "com.apple.quicktime.director";
inline constexpr char performer[] = "com.apple.quicktime.performer";
inline constexpr char producer[] = "com.apple.quicktime.producer";
inline constexpr char creationDate[] = "com.apple.quicktime.creationdate";
inline constexpr char location[] = "com.apple.quicktime.location.ISO6709";
inline constexpr char make[] = "com.apple.quicktime.make";
inline constexpr char model[] = "com.apple.quicktime.model";
inline constexpr char software[] = "com.apple.quicktime.software";
inline constexpr char pixelDensity[] = "com.apple.quicktime.pixeldensity";
inline constexpr char contentIdentifier[] = "com.apple.quicktime.content.identifier";
inline constexpr char videoOrientation[] = "com.apple.quicktime.video-orientation";
inline constexpr char preferredAffineTransform[] = "com.apple.quicktime.preferred-affine-transform";
// Families of camera keys, named by their beginning.
inline constexpr char cameraPrefix[] = "com.apple.quicktime.camera.";
inline constexpr char livePhotoPrefix[] = "com.apple.quicktime.live-photo";
inline constexpr char fullFrameRatePrefix[] = "com.apple.quicktime.full-frame-rate";
inline constexpr char stillImageTimePrefix[] = "com.apple.quicktime.still-image-time";
// Final Cut's producer.
inline constexpr char proAppsManufacturer[] = "com.apple.proapps.manufacturer";
}  // namespace appleKey

// Keys Android cameras write.
namespace androidKey {
inline constexpr char version[] = "com.android.version";
inline constexpr char captureFrameRate[] = "com.android.capture.fps";
}  // namespace androidKey

// FFmpeg's own names: its QuickTime keys (use_metadata_tags) and the tags it gives every container.
namespace ffmpegKey {
inline constexpr char title[] = "title";
inline constexpr char subtitle[] = "subtitle";
inline constexpr char artist[] = "artist";
inline constexpr char album[] = "album";
inline constexpr char albumArtist[] = "album_artist";
inline constexpr char composer[] = "composer";
inline constexpr char comment[] = "comment";
inline constexpr char description[] = "description";
inline constexpr char genre[] = "genre";
inline constexpr char copyright[] = "copyright";
inline constexpr char publisher[] = "publisher";
inline constexpr char date[] = "date";
inline constexpr char year[] = "year";
inline constexpr char track[] = "track";
inline constexpr char lyrics[] = "lyrics";
inline constexpr char creationTime[] = "creation_time";
inline constexpr char encoder[] = "encoder";
}  // namespace ffmpegKey

// 3GPP and ISO user-data boxes.
namespace threeGppBox {
inline constexpr char title[] = "titl";
inline constexpr char description[] = "dscp";
inline constexpr char copyright[] = "cprt";
inline constexpr char performer[] = "perf";
inline constexpr char author[] = "auth";
inline constexpr char genre[] = "gnre";
inline constexpr char album[] = "albm";
inline constexpr char recordingYear[] = "yrrc";
inline constexpr char date[] = "date";
inline constexpr char location[] = "loci";
inline constexpr char keywords[] = "kywd";
inline constexpr char collection[] = "coll";
inline constexpr char userRating[] = "urat";
inline constexpr char thumbnail[] = "thmb";
inline constexpr char classification[] = "clsf";
inline constexpr char rating[] = "rtng";
}  // namespace threeGppBox

}  // namespace pelorin
